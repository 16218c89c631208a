// In front of operator new, as AddressSanitizer stands: what is made with new is counted.
#include <cerrno>
#include <cstdlib>
#include <new>
#include <utility>

#include "tests/support/interposed/allocations.h"
#include "tests/support/interposed/failure.h"

namespace {

void* Allocate(std::size_t size) {
  if (interposed::g_on_next_allocation) {
    std::exchange(interposed::g_on_next_allocation, nullptr)();
  }
  const bool fails = interposed::Fails(interposed::Call::kMemory, ENOMEM, "operator new");
  return fails ? nullptr : interposed::CountMade(std::malloc(size));
}

void Free(void* block) noexcept {
  interposed::CountFreed(block);
  std::free(block);
}

}  // namespace

void* operator new(std::size_t size) {
  void* const block = Allocate(size);
  return block != nullptr ? block : throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return Allocate(size);
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
  return operator new(size, tag);
}
void operator delete(void* block) noexcept { Free(block); }
void operator delete(void* block, std::size_t /*size*/) noexcept { Free(block); }
void operator delete[](void* block) noexcept { Free(block); }
void operator delete[](void* block, std::size_t /*size*/) noexcept { Free(block); }
