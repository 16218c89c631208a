// The versions of a package database, found in its whole text by plain searches.
#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

inline std::optional<std::string> VersionAfter(std::string_view packages, std::size_t position) {
  constexpr std::string_view kVersion = "Version: ";
  const std::size_t version = packages.find(kVersion, position);
  if (position == packages.npos || version == packages.npos) {
    return std::nullopt;
  }
  return std::string(packages.substr(version + kVersion.size()));
}

inline std::optional<std::string> ReferenceDistribution(std::string_view packages) {
  const std::size_t package = packages.find("Package: qtm-distro");
  const std::size_t line_end =
      package == packages.npos ? packages.npos : packages.find('\n', package);
  auto version = VersionAfter(packages, line_end);
  if (version) {
    version->erase(std::min(version->find('\n'), version->size()));
  }
  return version;
}

inline std::optional<std::string> ReferenceDisplayFirmware(std::string_view packages) {
  std::size_t package = packages.find("Package: dispfw");
  if (package == packages.npos) {
    package = packages.find("Package: display-firmware");
  }
  auto version = VersionAfter(packages, package);
  if (version) {
    version->erase(std::min(version->find_first_not_of("0123456789abcdef.-"), version->size()));
  }
  return version;
}
