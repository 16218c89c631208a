#pragma once

#include <map>
#include <string>

namespace sandbox {

// What SIOCGIFHWADDR answers of an interface: an errno, or an address that the kernel would not
// give it, such as "00:00:00:00:00:00".
struct HardwareAnswer {
  int Error = 0;
  std::string Mac = {};

  bool operator==(const HardwareAnswer&) const = default;
};

// Makes these the answers of the interfaces of these names, for this process from now on and those
// it starts; the kernel answers of all others. The system call is a real one, which the kernel
// hands to a process beside (seccomp). Throws Refused where the kernel does not do that.
void SetHardwareAddresses(const std::map<std::string, HardwareAnswer>& answers);

}  // namespace sandbox
