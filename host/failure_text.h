// What ended a command, in words.
#pragma once

#include <exception>
#include <string>

namespace host {

// What `failure` says, and what to do about it. The text is not printable as it is.
//
//   /nowhere/status.xml: No such file or directory; give a file in a folder that is there
std::string InWords(const std::exception& failure);

}  // namespace host
