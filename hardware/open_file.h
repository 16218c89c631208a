// Opens a file by a path on which somebody else may have placed a link.
#pragma once

#include <string>

#include "hardware/paths.h"

namespace hardware {

// Descriptor of the file at the absolute `path`, -1 when it cannot be opened. With Links::kTrusted,
// a symbolic link counts as absent from the folder that holds the file on, wherever trusted links
// lead, unless root or the effective user owns it. The links above that folder are the system's.
int OpenFile(const std::string& path, Access mode, Links links);

}  // namespace hardware
