#include "hardware/parse_packages.h"

#include <algorithm>
#include <utility>

namespace hardware {
namespace {

constexpr auto kNone = std::string_view::npos;
constexpr std::string_view kPackage = "Package: ";
constexpr std::string_view kVersion = "Version: ";

std::size_t EndOfLine(std::string_view text) { return text.find('\n'); }

std::size_t EndOfDigits(std::string_view text) {
  return text.find_first_not_of("0123456789abcdef.-");
}

}  // namespace

constexpr std::array<PackageSearch::Rule, PackageSearch::kNameCount> PackageSearch::kRules = {{
    {kDistribution, kDistributionPackage, Stage::kLineEnd, EndOfLine},
    {kDisplay, kDisplayPackage, Stage::kLabel, EndOfDigits},
    {kDisplayFallback, "Package: display-firmware", Stage::kLabel, EndOfDigits},
}};

// By its first letter, which is enough to pass by almost every other package.
constexpr bool PackageSearch::BeginsAName(char letter) {
  return std::ranges::any_of(
      kRules, [letter](const Rule& rule) { return rule.Package[kPackage.size()] == letter; });
}

bool PackageSearch::Take(std::string_view piece) {
  static_assert(kRules[kDistribution].Of == kDistribution && kRules[kDisplay].Of == kDisplay &&
                kRules[kDisplayFallback].Of == kDisplayFallback);
  // The longest part of a label that can stand at the end of a piece.
  constexpr std::size_t kOverlap = kRules[kDisplayFallback].Package.size() - 1;
  const std::size_t begin = size_ - tail_.size();
  tail_ += piece.substr(0, kOverlap);
  Search(tail_, begin);
  if (piece.size() > kOverlap) {
    Search(piece, size_);
    tail_ = piece.substr(piece.size() - kOverlap);
  } else {
    tail_.erase(0, tail_.size() - std::min(tail_.size(), kOverlap));
  }
  size_ += piece.size();
  return found_[kDistribution].Wanted != Stage::kDone || found_[kDisplay].Wanted != Stage::kDone;
}

PackageVersions PackageSearch::TakeVersions() {
  const auto version = [](Found* found) -> std::optional<std::string> {
    if (found->Wanted < Stage::kVersionEnd) {
      return std::nullopt;
    }
    return std::move(found->Version);
  };
  const bool has_display = found_[kDisplay].Wanted != Stage::kName;
  return {version(&found_[kDistribution]),
          version(&found_[has_display ? kDisplay : kDisplayFallback])};
}

void PackageSearch::Search(std::string_view text, std::size_t begin) {
  // The fallback is only wanted as long as the display's own package is.
  if (found_[kDistribution].Wanted == Stage::kName || found_[kDisplay].Wanted == Stage::kName) {
    FindNames(text, begin);
  }
  for (std::size_t i = 0; i < kNameCount; ++i) {
    Advance(text, begin, kRules[i], &found_[i]);
  }
}

void PackageSearch::FindNames(std::string_view text, std::size_t begin) {
  std::size_t position = text.find(kPackage, names_from_ - begin);
  // From here on a name may begin that the next piece continues; that part is searched again.
  std::size_t open = text.size() - std::min(text.size(), kPackage.size() - 1);
  for (; position != kNone; position = text.find(kPackage, position + 1)) {
    const std::string_view rest = text.substr(position);
    if (rest.size() > kPackage.size() && !BeginsAName(rest[kPackage.size()])) {
      continue;
    }
    for (std::size_t i = 0; i < kNameCount; ++i) {
      if (found_[i].Wanted == Stage::kName && rest.starts_with(kRules[i].Package)) {
        found_[i] = {kRules[i].Next, begin + position, {}};
      }
    }
    if (rest.size() < kRules[kDisplayFallback].Package.size()) {
      open = std::min(open, position);
    }
  }
  names_from_ = std::max(names_from_, begin + open);
}

void PackageSearch::Advance(std::string_view text, std::size_t begin, const Rule& rule,
                            Found* found) {
  const std::size_t end = begin + text.size();
  if (found->Wanted == Stage::kLineEnd) {
    const std::size_t position = text.find('\n', found->From - begin);
    if (position == kNone) {
      found->From = end;
      return;
    }
    found->Wanted = Stage::kLabel;
    found->From = begin + position;
  }
  if (found->Wanted == Stage::kLabel) {
    const std::size_t position = text.find(kVersion, found->From - begin);
    if (position == kNone) {
      found->From = std::max(found->From, end - std::min(end, kVersion.size() - 1));
      return;
    }
    found->Wanted = Stage::kVersionEnd;
    found->From = begin + position + kVersion.size();
  }
  if (found->Wanted == Stage::kVersionEnd) {
    const std::string_view rest = text.substr(found->From - begin);
    const std::size_t length = rule.VersionEnd(rest);
    found->Version += rest.substr(0, std::min(length, kLongestVersion - found->Version.size()));
    found->From = end;
    if (length != kNone || found->Version.size() == kLongestVersion) {
      found->Wanted = Stage::kDone;
    }
  }
}

}  // namespace hardware
