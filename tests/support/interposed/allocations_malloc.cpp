// In front of the C library's allocator, whose own names for it are called from here, and of
// operator new, which AddressSanitizer would answer without malloc.
#include <malloc.h>

#include <cerrno>
#include <cstdlib>
#include <new>

#include "tests/support/interposed/allocations.h"
#include "tests/support/interposed/failure.h"

#ifdef __SANITIZE_ADDRESS__
#define ALLOCATOR(name) __interceptor_##name
#else
#define ALLOCATOR(name) __libc_##name
#endif

namespace {

bool NoMemory(const char* function) {
  return interposed::Fails(interposed::Call::kMemory, ENOMEM, function);
}

}  // namespace

void* operator new(std::size_t size) {
  void* const block = std::malloc(size);
  return block != nullptr ? block : throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return std::malloc(size);
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t /*size*/) noexcept { std::free(block); }

#pragma GCC visibility push(default)
extern "C" {

void* ALLOCATOR(malloc)(std::size_t size);
void* ALLOCATOR(calloc)(std::size_t count, std::size_t size);
void* ALLOCATOR(realloc)(void* block, std::size_t size);
void ALLOCATOR(free)(void* block);

void* malloc(std::size_t size) {
  return NoMemory(__func__) ? nullptr : interposed::CountMade(ALLOCATOR(malloc)(size));
}

void* calloc(std::size_t count, std::size_t size) {
  return NoMemory(__func__) ? nullptr : interposed::CountMade(ALLOCATOR(calloc)(count, size));
}

void* realloc(void* block, std::size_t size) {
  if (NoMemory(__func__)) {
    return nullptr;
  }
  const interposed::Allocations before = interposed::g_allocations;
  interposed::CountFreed(block);
  void* const made = interposed::CountMade(ALLOCATOR(realloc)(block, size));
  if (made == nullptr) {
    interposed::g_allocations = before;  // the block is where it was
  }
  return made;
}

void free(void* block) {
  interposed::CountFreed(block);
  ALLOCATOR(free)(block);
}

}  // extern "C"
#pragma GCC visibility pop
