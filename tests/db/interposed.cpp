#include "tests/db/interposed.h"

#include <dlfcn.h>
#include <malloc.h>
#include <sqlite3.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <utility>

int g_allocations = 0;
std::size_t g_bytes = 0;
std::size_t g_most_bytes = 0;
int g_finalize_result = 0;
int g_reset_result = 0;
int g_close_result = 0;
int g_open_flags = 0;
int g_coarse_clock_shift = 0;
int g_thread_clock_shift = 0;
int g_coarse_clock_gain = 0;
std::function<void(char const*)> g_on_compile;

namespace {

void* Allocate(std::size_t size) noexcept {
  ++g_allocations;
  void* const memory = std::malloc(size);
  g_bytes += malloc_usable_size(memory);
  g_most_bytes = std::max(g_most_bytes, g_bytes);
  return memory;
}

void Free(void* memory) noexcept {
  g_bytes -= malloc_usable_size(memory);
  std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) {
  if (void* memory = Allocate(size)) {
    return memory;
  }
  throw std::bad_alloc();
}

void* operator new(std::size_t size, std::nothrow_t const&) noexcept { return Allocate(size); }

void operator delete(void* memory) noexcept { Free(memory); }

void operator delete(void* memory, std::size_t) noexcept { Free(memory); }

namespace {

template <class Handle>
int Call(char const* name, Handle* handle, int& result) {
  auto const real = reinterpret_cast<int (*)(Handle*)>(dlsym(RTLD_NEXT, name));
  int const code = real(handle);
  int const forced = std::exchange(result, 0);
  return forced != 0 ? forced : code;
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) int clock_gettime(clockid_t clock, timespec* now) noexcept {
  int const result = static_cast<int>(syscall(SYS_clock_gettime, clock, now));
  if (clock == CLOCK_MONOTONIC_COARSE) {
    now->tv_sec += g_coarse_clock_shift += g_coarse_clock_gain;
  } else if (clock == CLOCK_THREAD_CPUTIME_ID) {
    now->tv_sec += g_thread_clock_shift;
  }
  return result;
}

__attribute__((visibility("default"))) int sqlite3_finalize(sqlite3_stmt* stmt) {
  return Call("sqlite3_finalize", stmt, g_finalize_result);
}

__attribute__((visibility("default"))) int sqlite3_reset(sqlite3_stmt* stmt) {
  return Call("sqlite3_reset", stmt, g_reset_result);
}

__attribute__((visibility("default"))) int sqlite3_close(sqlite3* db) {
  return Call("sqlite3_close", db, g_close_result);
}

__attribute__((visibility("default"))) int sqlite3_open_v2(char const* file, sqlite3** db,
                                                           int flags, char const* vfs) {
  g_open_flags = flags;
  static auto const real =
      reinterpret_cast<decltype(&sqlite3_open_v2)>(dlsym(RTLD_NEXT, "sqlite3_open_v2"));
  return real(file, db, flags, vfs);
}

__attribute__((visibility("default"))) int sqlite3_prepare_v2(sqlite3* db, char const* sql,
                                                              int size, sqlite3_stmt** stmt,
                                                              char const** tail) {
  if (g_on_compile) {
    g_on_compile(sql);
  }
  static auto const real =
      reinterpret_cast<decltype(&sqlite3_prepare_v2)>(dlsym(RTLD_NEXT, "sqlite3_prepare_v2"));
  return real(db, sql, size, stmt, tail);
}

}  // extern "C"
