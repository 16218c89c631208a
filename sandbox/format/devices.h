#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace sandbox {

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

}  // namespace sandbox
