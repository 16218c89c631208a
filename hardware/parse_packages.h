// Versions in the package database. The two differ on purpose: the distribution's is taken to the
// end of its line, the display firmware's only as far as digits of a version go.
#pragma once

#include <optional>
#include <string_view>

namespace hardware {

// Both found in one pass, since the database has megabytes; what is absent has none.
struct PackageVersions {
  // Of the first package whose name begins with qtm-distro: the rest of the first line behind its
  // "Package" line that contains "Version: ", be it in a later stanza.
  std::optional<std::string_view> Distribution;

  // Of the first package whose name begins with dispfw, without one of the first whose name begins
  // with display-firmware: the digits, a to f, dots and hyphens behind the next "Version: ", be it
  // in a later stanza.
  std::optional<std::string_view> DisplayFirmware;
};

PackageVersions ParsePackages(std::string_view packages);

}  // namespace hardware
