// `statuscollector capture` where the file system, such as that of a memory stick, has no files
// without names and no modes.
#pragma once

#include <string>

namespace captured {

// Runs `statuscollector capture FILE`, for which opening such a file fails with `error`, and
// fchmod() as well; and sends it the signal, if any, while the file is being written. Returns the
// status that wait() gives. Throws std::system_error when the kernel does not let programs be kept
// from something.
int CaptureWithoutUnnamedFiles(const std::string& file, int error, int signal = 0);

}  // namespace captured
