// Stands in front of the C library's allocator, whose own names for it are used behind.
#include "bench/allocations.h"

#include <cstddef>

namespace {
std::uint64_t g_count = 0;  // one thread
}  // namespace

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);

void* malloc(std::size_t size) {
  ++g_count;
  return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
  ++g_count;
  return __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size) {
  ++g_count;
  return __libc_realloc(block, size);
}

}  // extern "C"

namespace bench {

std::uint64_t Allocations() { return g_count; }

}  // namespace bench
