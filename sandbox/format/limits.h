// How large a scenario is at most: whoever writes one keeps to what the box takes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace sandbox {

// A scenario is held in memory, and goes into the box's file system, which is in memory too.
inline constexpr std::size_t kMostNodes = 100'000;
inline constexpr std::uint64_t kMostBytes = std::uint64_t{256} << 20;

// What is made of a text takes far more memory than the text.
inline constexpr std::size_t kMostLines = 10'000;  // of all texts but rows
inline constexpr std::size_t kMostRows = 1'000'000;
inline constexpr std::size_t kMostSteps = 1000;

}  // namespace sandbox
