// A capture as one file.
#pragma once

#include <string>

#include "capture/controller.h"

namespace capture {

// The folder in the archive in which all entries stand.
inline constexpr const char* kFolder = "capture";

// The entries as a compressed archive (tar, zstd), in the order of their names, without owners and
// times: equal entries are equal archives. Throws std::runtime_error, also when a replay would not
// take it.
std::string Pack(const Entries& entries);

}  // namespace capture
