#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace sandbox {

// Answer files, one for each device node, named like it. Programs in the sandbox may edit them.
inline constexpr const char* kDeviceFolder = "/.sandbox/devices";

// What a device node answers.
//
// As text, one line each, `#` starts a comment:
//
//     0x8004DA0C 59940   the ioctl() request and the value it returns
//     open 13            open() fails with this errno
//
// Numbers are decimal or, with 0x, hexadecimal. Values from -4095 to -1 arrive as -1, as from any
// driver; a request that is not listed fails with ENOTTY.
struct DeviceAnswers {
  int OpenError = 0;  // errno of open(), 0: it succeeds
  std::map<std::uint32_t, std::int32_t> Values;

  // Throws std::runtime_error with the line number when a line is neither of the above.
  static DeviceAnswers Parse(std::string_view text);
  [[nodiscard]] std::string Text() const;
};

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
