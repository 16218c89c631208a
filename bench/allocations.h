// Counts what the program allocates.
#pragma once

#include <cstdint>

namespace bench {

// Calls of malloc, calloc and realloc since the start, those of every library among them.
std::uint64_t Allocations();

}  // namespace bench
