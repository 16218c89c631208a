#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <string>

#include "sandbox/format/limits.h"

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

// Throws std::runtime_error when `nodes` or `bytes`, which are in all, are beyond the limits.
void RequireWithinLimits(std::size_t nodes, std::uint64_t bytes);

// Reads a folder. Throws std::runtime_error, also when something in it is neither file, folder nor
// link, or when it is beyond the limits.
Tree ReadTree(const std::filesystem::path& folder);

}  // namespace sandbox
