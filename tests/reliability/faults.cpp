#include "tests/reliability/faults.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <ifaddrs.h>
#include <netdb.h>
#include <sqlite3.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysinfo.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <new>

namespace {

struct {
  bool armed;
  bool struck;
  faults::Call call;
  faults::Extent extent;
  unsigned long nth;
  unsigned long calls;
} g_plan;

long g_live_blocks = 0;

// The names of the functions that were called during an injection, without memory to note them.
constexpr std::size_t kMostFunctions = 64;
const char* g_called[kMostFunctions];

void NoteCall(const char* function) {
  for (const char*& called : g_called) {
    if (called == nullptr || called == function) {
      called = function;
      return;
    }
  }
}

// Whether this call of the kind is to fail. `function` is the __func__ of who asks.
bool Fails(faults::Call call, const char* function) {
  if (!g_plan.armed) {
    return false;
  }
  NoteCall(function);
  if (g_plan.call != call) {
    return false;
  }
  ++g_plan.calls;
  const bool fails =
      g_plan.nth != 0 && (g_plan.extent == faults::Extent::kOnce ? g_plan.calls == g_plan.nth
                                                                 : g_plan.calls >= g_plan.nth);
  g_plan.struck |= fails;
  return fails;
}

int FailWith(int error) {
  errno = error;
  return -1;
}

void* NoMemory() {
  errno = ENOMEM;
  return nullptr;
}

// Counts a block that came into being.
void* Born(void* block) {
  g_live_blocks += block != nullptr ? 1 : 0;
  return block;
}

}  // namespace

// The function that would have been called, had this program not put itself in front of it.
#define REAL(name) \
  static const auto real = reinterpret_cast<decltype(&::name)>(dlsym(RTLD_NEXT, #name))
#ifdef __SANITIZE_ADDRESS__
#define ALLOCATOR(name) __interceptor_##name
#else
#define ALLOCATOR(name) __libc_##name
#endif

namespace faults {

const char* NameOf(Call call) {
  constexpr const char* kNames[] = {
      "Memory",     "Open",        "Read",       "Write",        "Ioctl",    "Socket",
      "Getifaddrs", "Getnameinfo", "FileStatus", "SystemStatus", "SqlOpen",  "SqlSet",
      "SqlPrepare", "SqlStep",     "SqlReset",   "SqlFinalize",  "SqlClose",
  };
  return kNames[static_cast<std::size_t>(call)];
}

Injection::Injection(Call call, unsigned long nth, Extent extent) {
  g_plan = {true, false, call, extent, nth, 0};
}

Injection::~Injection() { g_plan.armed = false; }

bool Struck() { return g_plan.struck; }

std::set<std::string> Called() {
  std::set<std::string> names;
  for (const char* const* called = g_called; *called != nullptr; ++called) {
    names.insert(*called);
  }
  return names;
}

long LiveBlocks() { return g_live_blocks; }

}  // namespace faults

using faults::Call;

void* operator new(std::size_t size) {
  if (void* block = std::malloc(size)) {
    return block;
  }
  throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size); }

void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }

#pragma GCC visibility push(default)
extern "C" {

void* ALLOCATOR(malloc)(std::size_t size);
void* ALLOCATOR(calloc)(std::size_t count, std::size_t size);
void* ALLOCATOR(realloc)(void* block, std::size_t size);
void ALLOCATOR(free)(void* block);

void* malloc(std::size_t size) {
  return Fails(Call::kMemory, __func__) ? NoMemory() : Born(ALLOCATOR(malloc)(size));
}

void* calloc(std::size_t count, std::size_t size) {
  return Fails(Call::kMemory, __func__) ? NoMemory() : Born(ALLOCATOR(calloc)(count, size));
}

void* realloc(void* block, std::size_t size) {
  if (Fails(Call::kMemory, __func__)) {
    return NoMemory();
  }
  return block == nullptr ? Born(ALLOCATOR(realloc)(block, size)) : ALLOCATOR(realloc)(block, size);
}

void free(void* block) {
  g_live_blocks -= block != nullptr ? 1 : 0;
  ALLOCATOR(free)(block);
}

#define OPEN(name)                                                                    \
  int name(const char* path, int flags, ...) {                                        \
    REAL(name);                                                                       \
    std::va_list rest;                                                                \
    va_start(rest, flags);                                                            \
    const auto mode = va_arg(rest, mode_t);                                           \
    va_end(rest);                                                                     \
    return Fails(Call::kOpen, __func__) ? FailWith(EMFILE) : real(path, flags, mode); \
  }
OPEN(open)
OPEN(open64)

int openat(int folder, const char* name, int flags, ...) {  // of files that are there
  REAL(openat);
  return Fails(Call::kOpen, __func__) ? FailWith(EMFILE) : real(folder, name, flags);
}

ssize_t read(int file, void* bytes, std::size_t count) {
  REAL(read);
  return Fails(Call::kRead, __func__) ? FailWith(EIO) : real(file, bytes, count);
}

ssize_t pread64(int file, void* bytes, std::size_t count, off64_t offset) {
  REAL(pread64);
  return Fails(Call::kRead, __func__) ? FailWith(EIO) : real(file, bytes, count, offset);
}

ssize_t pwrite64(int file, const void* bytes, std::size_t count, off64_t offset) {
  REAL(pwrite64);
  return Fails(Call::kWrite, __func__) ? FailWith(ENOSPC) : real(file, bytes, count, offset);
}

int ftruncate64(int file, off64_t length) noexcept {
  REAL(ftruncate64);
  return Fails(Call::kWrite, __func__) ? FailWith(ENOSPC) : real(file, length);
}

int ioctl(int file, unsigned long request, ...) noexcept {
  REAL(ioctl);
  std::va_list rest;
  va_start(rest, request);
  void* const argument = va_arg(rest, void*);
  va_end(rest);
  return Fails(Call::kIoctl, __func__) ? FailWith(EIO) : real(file, request, argument);
}

int socket(int domain, int type, int protocol) noexcept {
  REAL(socket);
  return Fails(Call::kSocket, __func__) ? FailWith(EMFILE) : real(domain, type, protocol);
}

int getifaddrs(ifaddrs** list) noexcept {
  REAL(getifaddrs);
  return Fails(Call::kGetifaddrs, __func__) ? FailWith(ENOBUFS) : real(list);
}

int getnameinfo(const sockaddr* address, socklen_t length, char* host, socklen_t host_size,
                char* service, socklen_t service_size, int flags) {
  REAL(getnameinfo);
  return Fails(Call::kGetnameinfo, __func__)
             ? EAI_FAIL
             : real(address, length, host, host_size, service, service_size, flags);
}

int stat(const char* path, struct stat* status) noexcept {
  REAL(stat);
  return Fails(Call::kFileStatus, __func__) ? FailWith(EACCES) : real(path, status);
}

int lstat(const char* path, struct stat* status) noexcept {
  REAL(lstat);
  return Fails(Call::kFileStatus, __func__) ? FailWith(EACCES) : real(path, status);
}

int fstat(int file, struct stat* status) noexcept {
  REAL(fstat);
  return Fails(Call::kFileStatus, __func__) ? FailWith(EIO) : real(file, status);
}

ssize_t readlinkat(int folder, const char* name, char* target, std::size_t size) noexcept {
  REAL(readlinkat);
  return Fails(Call::kFileStatus, __func__) ? FailWith(EIO) : real(folder, name, target, size);
}

int statfs(const char* path, struct statfs* status) noexcept {
  REAL(statfs);
  return Fails(Call::kSystemStatus, __func__) ? FailWith(EIO) : real(path, status);
}

int sysinfo(struct sysinfo* status) noexcept {
  REAL(sysinfo);
  return Fails(Call::kSystemStatus, __func__) ? FailWith(EFAULT) : real(status);
}

int sqlite3_open_v2(const char* file, sqlite3** db, int flags, const char* vfs) {
  REAL(sqlite3_open_v2);
  const int code = real(file, db, flags, vfs);
  return Fails(Call::kSqlOpen, __func__) ? SQLITE_CANTOPEN : code;
}

int sqlite3_db_config(sqlite3* db, int option, ...) {
  REAL(sqlite3_db_config);
  std::va_list rest;
  va_start(rest, option);
  const int value = va_arg(rest, int);
  int* const result = va_arg(rest, int*);
  va_end(rest);
  return Fails(Call::kSqlSet, __func__) ? SQLITE_ERROR : real(db, option, value, result);
}

int sqlite3_busy_timeout(sqlite3* db, int milliseconds) {
  REAL(sqlite3_busy_timeout);
  return Fails(Call::kSqlSet, __func__) ? SQLITE_ERROR : real(db, milliseconds);
}

int sqlite3_exec(sqlite3* db, const char* sql, int (*row)(void*, int, char**, char**),
                 void* context, char** message) {
  REAL(sqlite3_exec);
  return Fails(Call::kSqlSet, __func__) ? SQLITE_ERROR : real(db, sql, row, context, message);
}

int sqlite3_file_control(sqlite3* db, const char* name, int operation, void* argument) {
  REAL(sqlite3_file_control);
  return Fails(Call::kSqlSet, __func__) ? SQLITE_IOERR : real(db, name, operation, argument);
}

int sqlite3_prepare_v2(sqlite3* db, const char* sql, int length, sqlite3_stmt** statement,
                       const char** tail) {
  REAL(sqlite3_prepare_v2);
  if (Fails(Call::kSqlPrepare, __func__)) {
    *statement = nullptr;
    return SQLITE_IOERR;
  }
  return real(db, sql, length, statement, tail);
}

int sqlite3_step(sqlite3_stmt* statement) {
  REAL(sqlite3_step);
  return Fails(Call::kSqlStep, __func__) ? SQLITE_IOERR : real(statement);
}

#define WORKS_ALL_THE_SAME(name, handle, call)          \
  int name(handle* object) {                            \
    REAL(name);                                         \
    const int code = real(object);                      \
    return Fails(call, __func__) ? SQLITE_IOERR : code; \
  }
WORKS_ALL_THE_SAME(sqlite3_reset, sqlite3_stmt, Call::kSqlReset)
WORKS_ALL_THE_SAME(sqlite3_finalize, sqlite3_stmt, Call::kSqlFinalize)
WORKS_ALL_THE_SAME(sqlite3_close, sqlite3, Call::kSqlClose)

}  // extern "C"
#pragma GCC visibility pop
