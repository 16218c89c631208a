#pragma once

#include <string>

// What is missing for a sandbox, and what to do about it.
namespace sandbox {

// Why there will be no device nodes; "" when there seem to be.
//
//   there is no /dev/fuse, which device nodes need; load its driver with modprobe fuse
std::string WhyNoDevices();

// What to do where no sandbox can be made.
std::string HowToAllow();

// The path of a program on this machine, found along PATH; "" when there is none.
std::string FindProgram(const std::string& name);

// What to do about a program that is not in the sandbox. `outside` is where it is on this machine,
// "" when it is not there either.
std::string HowToBring(const std::string& name, const std::string& outside);

}  // namespace sandbox
