// How the probe reaches files and device nodes.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "hardware/descriptor.h"
#include "hardware/paths.h"
#include "hardware/system_calls.h"

namespace hardware {

// What one read of `source` returns: "" when it is empty or cannot be read, nothing when it cannot
// be opened. What is not a regular file (a folder, a pipe, a terminal) is opened and never read.
std::optional<std::string> ReadText(const TextSource& source);

// How the reading of a file ended.
enum class Reading {
  kNotOpened,
  kBroken,  // a read failed, perhaps the first
  kDone,    // at the end of the file or at kLongestFile, or `take` returned false
};

// No file is read further, so that every source ends.
inline constexpr std::size_t kLongestFile = std::size_t{1} << 30;  // bytes

// Passes the file to `take` in blocks, as long as that returns true.
Reading ReadBlocks(const char* path, Access mode,
                   const std::function<bool(std::string_view block)>& take);

// What can be read of a file, nothing when it cannot be opened.
std::optional<std::string> ReadWhole(const char* path, Access mode);

bool Exists(const char* path);

// Opens the device node, sends it the requests in order and closes it. Returns the answers, nothing
// when the node cannot be opened.
template <std::size_t kCount>
std::optional<std::array<int, kCount>> AskDevice(const char* path,
                                                 const unsigned long (&requests)[kCount]) {
  const Descriptor device(calls::Open(path, static_cast<int>(Access::kReadWrite)));
  if (!device.IsOpen()) {
    return std::nullopt;
  }
  std::array<int, kCount> answers;
  for (std::size_t i = 0; i < kCount; ++i) {
    answers[i] = calls::Request(device.Number(), path, requests[i]);
  }
  return answers;
}

}  // namespace hardware
