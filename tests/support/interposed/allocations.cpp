#include "tests/support/interposed/allocations.h"

#include <malloc.h>

#include <algorithm>

namespace interposed {

Allocations g_allocations;
std::function<void()> g_on_next_allocation;

// The first blocks are made before AddressSanitizer has begun, when nothing may be asked of it and
// nothing may be read but plain variables.

void* CountMade(void* block) {
  if (block != nullptr) {
    ++g_allocations.Made;
    ++g_allocations.Live;
    if constexpr (kCountsBlocks) {
      g_allocations.Bytes += malloc_usable_size(block);
      g_allocations.MostBytes = std::max(g_allocations.MostBytes, g_allocations.Bytes);
    }
  }
  return block;
}

void CountFreed(void* block) {
  if (block != nullptr) {
    --g_allocations.Live;
    if constexpr (kCountsBlocks) {
      g_allocations.Bytes -= malloc_usable_size(block);
    }
  }
}

}  // namespace interposed
