#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <string>

namespace sandbox {

// A file, folder or symbolic link of a scenario folder.
struct Node {
  enum class Kind { kFile, kFolder, kLink };
  Kind What = Kind::kFile;
  std::string Bytes = {};  // of a file; of a link its target
  mode_t Mode = 0644;
};

// The contents of a scenario folder, by path below it: "root/proc/meminfo".
using Tree = std::map<std::string, Node>;

// A scenario is held in memory, and goes into the box's file system, which is in memory too.
inline constexpr std::size_t kMostNodes = 100'000;
inline constexpr std::uint64_t kMostBytes = std::uint64_t{256} << 20;

// Throws std::runtime_error when `nodes` or `bytes`, which are in all, are beyond these limits.
void RequireWithinLimits(std::size_t nodes, std::uint64_t bytes);

// Reads a folder. Throws std::runtime_error, also when something in it is neither file, folder nor
// link, or when it is beyond the limits.
Tree ReadTree(const std::filesystem::path& folder);

}  // namespace sandbox
