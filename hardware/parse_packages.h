// Versions in the package database. The two differ on purpose: the distribution's is taken to the
// end of its line, the display firmware's only as far as digits of a version go.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace hardware {

// Nothing for a version that is absent.
struct PackageVersions {
  // Of the first package whose name begins with qtm-distro: the text after the first "Version: "
  // that follows its "Package" line, up to the end of the line, even if it is in a later stanza.
  std::optional<std::string> Distribution;

  // Of the first package whose name begins with dispfw, or if there is none, with display-firmware:
  // the digits, letters a to f, dots and hyphens after the next "Version: ", even if it is in a
  // later stanza.
  std::optional<std::string> DisplayFirmware;
};

// The beginnings of the lines that name these packages.
inline constexpr char kDistributionPackage[] = "Package: qtm-distro";
inline constexpr char kDisplayPackage[] = "Package: dispfw";

// Where a version that does not end is cut, in bytes.
inline constexpr std::size_t kLongestVersion = std::size_t{1} << 20;

// Finds both versions in one pass through the database, which has megabytes. It comes in pieces,
// cut anywhere; nothing of them is kept but the versions and what may be the beginning of a label.
class PackageSearch {
 public:
  // Takes the next piece. False when no later piece can change a version.
  bool Take(std::string_view piece);

  // The versions that the pieces held. Ends the search.
  PackageVersions TakeVersions();

 private:
  enum Name { kDistribution, kDisplay, kDisplayFallback, kNameCount };

  // What is looked for next.
  enum class Stage { kName, kLineEnd, kLabel, kVersionEnd, kDone };

  // A package name, what follows it and how far its version goes.
  struct Rule {
    Name Of;
    std::string_view Package;
    Stage Next;
    std::size_t (*VersionEnd)(std::string_view text);
  };
  static const std::array<Rule, kNameCount> kRules;

  static constexpr bool BeginsAName(char letter);

  // The first package of a name. Positions count from the beginning of the database.
  struct Found {
    Stage Wanted = Stage::kName;
    std::size_t From = 0;  // where to go on
    std::string Version;
  };

  // Searches `text`, which begins at the position `begin`.
  void Search(std::string_view text, std::size_t begin);
  void FindNames(std::string_view text, std::size_t begin);
  static void Advance(std::string_view text, std::size_t begin, const Rule& rule, Found* found);

  std::array<Found, kNameCount> found_;
  std::size_t names_from_ = 0;  // where to go on looking for names
  std::size_t size_ = 0;        // of all pieces
  std::string tail_;            // the last of them
};

}  // namespace hardware
