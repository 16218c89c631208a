#pragma once

#include <vector>

#include "sandbox/format/interfaces.h"

namespace sandbox {

// Whether the kernel gives an interface this MAC address: neither zero nor one of a group, which
// others than Ethernet may have. Throws std::runtime_error when it is none.
bool CanHaveMac(const NetworkInterface& interface);

// Makes these the interfaces of the sandbox, besides lo, and waits until their flags are as asked.
// Former ones go. One that cannot have its MAC address gets another one. Throws std::system_error
// when the kernel refuses, std::runtime_error when an address cannot be read.
void SetInterfaces(const std::vector<NetworkInterface>& interfaces);

// Sets lo up.
void RaiseLoopback();

}  // namespace sandbox
