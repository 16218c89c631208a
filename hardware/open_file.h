// Opens a file by a path on which somebody else may have placed a link.
#pragma once

#include <string>

#include "hardware/paths.h"

namespace hardware {

// Returns a descriptor of the file at the absolute `path`, -1 when it cannot be opened. With
// Links::kTrusted, a symbolic link counts as absent unless root or the effective user owns it. This
// holds for the file's own name, the name of its folder, and every name on a path that a trusted
// link leads to. Links in the names before belong to the system and are followed.
int OpenFile(const std::string& path, Access mode, Links links);

}  // namespace hardware
