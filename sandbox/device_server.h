#pragma once

namespace sandbox {

inline constexpr const char* kDeviceLog = "/.sandbox/devices.log";
// Where the device file system is mounted; one file for each answer file and each file that fails.
inline constexpr const char* kDeviceNodes = "/.sandbox/nodes";
// Exists when there is no device file system; holds the reason.
inline constexpr const char* kDeviceRefusal = "/.sandbox/devices.refused";

// Mounts the device file system and starts the process that serves it, a child of the caller. When
// the system refuses, the reason is noted in kDeviceRefusal instead.
void StartDeviceServer();

}  // namespace sandbox
