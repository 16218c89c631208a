// How large a scenario is at most: whoever writes one keeps to what the box takes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace sandbox {

// A scenario is held in memory, and goes into the box's file system, which is in memory too.
inline constexpr std::size_t kMostNodes = 100'000;
inline constexpr std::uint64_t kMostBytes = std::uint64_t{256} << 20;

}  // namespace sandbox
