#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "sandbox/format/devices.h"

namespace sandbox {

// Answer files, one for each device node, named like it. Programs in the sandbox may edit them.
inline constexpr const char* kDeviceFolder = "/.sandbox/devices";

// Whether device nodes can be had; the reason when not.
bool DevicesAvailable();
std::string DevicesRefusal();

// Makes /dev/`node` answer so, from its next request on; creates the node when it is absent.
// Throws Refused when device nodes cannot be had.
void SetDevice(const std::string& node, const DeviceAnswers& answers);

// Changes or adds one answer; creates the node when it is absent.
void SetAnswer(const std::string& node, std::uint32_t request, std::int32_t value);

// Makes open() of an existing node fail with `error`, an errno; 0 lets it succeed again.
void SetOpenError(const std::string& node, int error);

// Takes /dev/`node` away: open() fails with ENOENT. Descriptors that are open get ENODEV.
void RemoveDevice(const std::string& node);
void RemoveDevices();

// What was done with all nodes since the start or the last ClearDeviceLog(), in order, such as
// "travex open", "travex ioctl 0x8004DA0C", "travex close", "travex open refused".
std::vector<std::string> DeviceLog();
void ClearDeviceLog();

}  // namespace sandbox
