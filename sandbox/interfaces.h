#pragma once

#include <vector>

#include "sandbox/format/interfaces.h"

namespace sandbox {

// Makes these the interfaces of the sandbox, besides lo, and waits until their flags are as asked.
// Former ones go. Throws std::system_error when the kernel refuses, std::runtime_error when an
// address cannot be read.
void SetInterfaces(const std::vector<NetworkInterface>& interfaces);

// Sets lo up.
void RaiseLoopback();

}  // namespace sandbox
