#include "hardware/parse_packages.h"

#include <array>

namespace hardware {
namespace {

constexpr auto kNone = std::string_view::npos;

enum Name { kDistribution, kDisplay, kDisplayFallback, kNameCount };
constexpr std::array<std::string_view, kNameCount> kNames = {"qtm-distro", "dispfw",
                                                             "display-firmware"};

// Where "Package: " with each of the names stands first; kNone where it does not.
std::array<std::size_t, kNameCount> FindNames(std::string_view packages) {
  constexpr std::string_view kPackage = "Package: ";
  std::array<std::size_t, kNameCount> found;
  found.fill(kNone);
  for (std::size_t package = packages.find(kPackage); package != kNone;
       package = packages.find(kPackage, package + 1)) {
    const std::string_view name = packages.substr(package + kPackage.size());
    for (std::size_t i = 0; i < kNameCount; ++i) {
      if (found[i] == kNone && name.starts_with(kNames[i])) {
        found[i] = package;
      }
    }
  }
  return found;
}

// What stands behind the first "Version: " from `position` on, to the end of `packages`.
std::optional<std::string_view> BehindVersion(std::string_view packages, std::size_t position) {
  constexpr std::string_view kVersion = "Version: ";
  const std::size_t version = position != kNone ? packages.find(kVersion, position) : kNone;
  if (version == kNone) {
    return std::nullopt;
  }
  return packages.substr(version + kVersion.size());
}

}  // namespace

PackageVersions ParsePackages(std::string_view packages) {
  const auto found = FindNames(packages);
  const std::size_t line = found[kDistribution];
  auto distribution = BehindVersion(packages, line != kNone ? packages.find('\n', line) : kNone);
  if (distribution) {
    distribution = distribution->substr(0, distribution->find('\n'));
  }
  auto display =
      BehindVersion(packages, found[kDisplay] != kNone ? found[kDisplay] : found[kDisplayFallback]);
  if (display) {
    display = display->substr(0, display->find_first_not_of("0123456789abcdef.-"));
  }
  return {distribution, display};
}

}  // namespace hardware
