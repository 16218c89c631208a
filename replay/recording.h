// What a replay needs to know of a capture.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/scenario.h"

namespace replay {

struct Cycle {
  std::optional<std::string> Document;  // XML; nothing when the cycle did not end
  std::vector<std::string> LeftOut;     // paths of fields that a replay does not give the same
};

struct Recording {
  std::string Name;
  sandbox::Scenario Controller;
  std::vector<Cycle> Cycles;  // one more than the controller has steps
  std::string Zone;           // for TZ; "" when it is unknown
  std::uint64_t RootBytes = 0;
};

// Reads a capture, or a scenario folder, which may be one that was unpacked. Throws
// std::runtime_error, which names the file.
Recording Read(const std::filesystem::path& path);

// The description of a capture as its capture.json has it. Throws std::runtime_error.
struct Description {
  std::string Zone;
  std::uint64_t StorageBlocks = 0;
  std::vector<std::vector<std::string>> LeftOut;  // by cycle
};
Description ParseDescription(std::string_view json);

}  // namespace replay
