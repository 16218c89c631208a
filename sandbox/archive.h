#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "sandbox/scenario.h"
#include "sandbox/tree.h"

namespace sandbox {

// Reads a capture, which is a scenario folder as a tar archive, compressed by zstd or not, into
// memory; nothing is written. It may come from anywhere: everything but files and folders below one
// folder is refused, and so is one that is not whole or beyond the limits of a tree. Throws
// std::runtime_error, which names the file.
Tree ReadArchive(const std::filesystem::path& file);

// The same from its bytes; the std::runtime_error says what is wrong with them.
Tree ParseArchive(std::string_view bytes);

// The scenario that is this folder or capture. Throws std::runtime_error.
Scenario LoadScenario(const std::filesystem::path& path);

}  // namespace sandbox
