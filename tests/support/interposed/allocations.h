// What this program allocates. It is counted where the program links one of two sources in front of
// the allocator: allocations_new.cpp counts what is made with new, so without SQLite and libxml2;
// allocations_malloc.cpp counts what every library takes. Both fail as Call::kMemory.
#pragma once

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

#include <cstddef>
#include <cstdint>
#include <functional>

namespace interposed {

struct Allocations {
  std::uint64_t Made = 0;  // since the start
  std::int64_t Live = 0;   // blocks that are not freed
  std::size_t Bytes = 0;   // of these blocks
  std::size_t MostBytes = 0;
};

// One thread. With allocations_malloc.cpp and AddressSanitizer only Made is right: the sanitizer's
// own functions allocate elsewhere, and the leak check at the end of the program takes over.
extern Allocations g_allocations;

// Runs once, with the next allocation that allocations_new.cpp makes.
extern std::function<void()> g_on_next_allocation;

// Counts a block that was made, null for none, and returns it; one that is to be freed.
void* CountMade(void* block);
void CountFreed(void* block);

// While it lives, what is allocated may be forgotten: the leak check leaves it out.
#ifdef __SANITIZE_ADDRESS__
using LeaksAllowed = __lsan::ScopedDisabler;
inline constexpr bool kCountsBlocks = false;
#else
struct LeaksAllowed {
  LeaksAllowed() {}
};
inline constexpr bool kCountsBlocks = true;
#endif

}  // namespace interposed
