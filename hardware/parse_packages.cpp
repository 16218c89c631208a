#include "hardware/parse_packages.h"

namespace hardware {
namespace {

constexpr std::string_view kVersion = "Version: ";
constexpr auto kNone = std::string_view::npos;

// What stands behind the first "Version: " from `position` on, to the end of `packages`.
std::optional<std::string_view> BehindVersion(std::string_view packages, std::size_t position) {
  const std::size_t version = position != kNone ? packages.find(kVersion, position) : kNone;
  if (version == kNone) {
    return std::nullopt;
  }
  return packages.substr(version + kVersion.size());
}

// The first dispfw, without one the first display-firmware. One pass for both: the database has
// megabytes.
std::size_t FindDisplayFirmware(std::string_view packages) {
  constexpr std::string_view kBoth = "Package: disp";
  std::size_t fallback = kNone;
  for (std::size_t package = packages.find(kBoth); package != kNone;
       package = packages.find(kBoth, package + 1)) {
    const std::string_view rest = packages.substr(package);
    if (rest.starts_with("Package: dispfw")) {
      return package;
    }
    if (fallback == kNone && rest.starts_with("Package: display-firmware")) {
      fallback = package;
    }
  }
  return fallback;
}

}  // namespace

std::optional<std::string_view> ParseFirmwareVersion(std::string_view packages) {
  const std::size_t package = packages.find("Package: qtm-distro");
  const std::size_t line_end = package != kNone ? packages.find('\n', package) : kNone;
  const auto version = BehindVersion(packages, line_end);
  if (!version) {
    return std::nullopt;
  }
  return version->substr(0, version->find('\n'));
}

std::optional<std::string_view> ParseDisplayFirmwareVersion(std::string_view packages) {
  const auto version = BehindVersion(packages, FindDisplayFirmware(packages));
  if (!version) {
    return std::nullopt;
  }
  return version->substr(0, version->find_first_not_of("0123456789abcdef.-"));
}

}  // namespace hardware
