#pragma once

#include "sandbox/format/faults.h"

namespace sandbox {

// One folder for each file that fails: what it holds, as a file, and how it fails, as text.
inline constexpr const char* kFaultFolder = "/.sandbox/faults";
inline constexpr const char* kBytes = "/bytes";
inline constexpr const char* kFault = "/fault";
// Its name in the device file system begins so and ends with the name of its folder.
inline constexpr const char* kFaultyNode = "faulty:";

// Makes these the files that fail, for everybody, root included; former ones are themselves again.
// A file that is there keeps its bytes as long as it can be read, one that is not is empty. Throws
// Refused when that takes the device file system, which cannot be had.
void SetFileFaults(const Faults& faults);

}  // namespace sandbox
