// Versions in the package database. The two differ on purpose: the distribution's is taken to the
// end of its line, the display firmware's only as far as digits of a version go.
#pragma once

#include <optional>
#include <string_view>

namespace hardware {

// Version of the first package whose name begins with qtm-distro: the rest of the first line behind
// its "Package" line that contains "Version: ", be it in a later stanza. Nothing without one.
std::optional<std::string_view> ParseFirmwareVersion(std::string_view packages);

// Version of the first package whose name begins with dispfw, without one of the first whose name
// begins with display-firmware: the digits, a to f, dots and hyphens behind the next "Version: ",
// be it in a later stanza. Nothing without one.
std::optional<std::string_view> ParseDisplayFirmwareVersion(std::string_view packages);

}  // namespace hardware
