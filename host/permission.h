// What a user lacks to reach a file.
#pragma once

#include <string>

namespace host {

// Why the effective user may not reach the file at `path`, and who may; "" when he may, or when
// there is no such file. `access`: R_OK, W_OK or both.
//
//   user monitor may not read /dev/travex (root:video, mode 0640); members of group video may
std::string WhyDenied(const std::string& path, int access);

}  // namespace host
