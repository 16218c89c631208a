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

bool PackageSearch::Take(std::string_view piece) {
  static_assert(kRules[kDistribution].Of == kDistribution && kRules[kDisplay].Of == kDisplay &&
                kRules[kDisplayFallback].Of == kDisplayFallback);
  // The longest part of a label that can stand at the end of a piece.
  constexpr std::size_t kOverlap = kRules[kDisplayFallback].Package.size() - 1;
  const std::size_t begin = m_Size - m_Tail.size();
  m_Tail += piece.substr(0, kOverlap);
  Search(m_Tail, begin);
  if (piece.size() > kOverlap) {
    Search(piece, m_Size);
    m_Tail = piece.substr(piece.size() - kOverlap);
  } else {
    m_Tail.erase(0, m_Tail.size() - std::min(m_Tail.size(), kOverlap));
  }
  m_Size += piece.size();
  return m_Found[kDistribution].Wanted != Stage::kDone || m_Found[kDisplay].Wanted != Stage::kDone;
}

PackageVersions PackageSearch::TakeVersions() {
  const auto version = [](Found* found) -> std::optional<std::string> {
    if (found->Wanted < Stage::kVersionEnd) {
      return std::nullopt;
    }
    return std::move(found->Version);
  };
  const bool has_display = m_Found[kDisplay].Wanted != Stage::kName;
  return {version(&m_Found[kDistribution]),
          version(&m_Found[has_display ? kDisplay : kDisplayFallback])};
}

void PackageSearch::Search(std::string_view text, std::size_t begin) {
  // The fallback is only wanted as long as the display's own package is.
  if (m_Found[kDistribution].Wanted == Stage::kName || m_Found[kDisplay].Wanted == Stage::kName) {
    FindNames(text, begin);
  }
  for (std::size_t i = 0; i < kNameCount; ++i) {
    Advance(text, begin, kRules[i], &m_Found[i]);
  }
}

void PackageSearch::FindNames(std::string_view text, std::size_t begin) {
  std::size_t position = text.find(kPackage, m_NamesFrom - begin);
  // From here on a name may begin that the next piece continues; that part is searched again.
  std::size_t open = text.size() - std::min(text.size(), kPackage.size() - 1);
  for (; position != kNone; position = text.find(kPackage, position + 1)) {
    const std::string_view rest = text.substr(position);
    for (std::size_t i = 0; i < kNameCount; ++i) {
      if (m_Found[i].Wanted == Stage::kName && rest.starts_with(kRules[i].Package)) {
        m_Found[i] = {kRules[i].Next, begin + position, {}};
      }
    }
    if (rest.size() < kRules[kDisplayFallback].Package.size()) {
      open = std::min(open, position);
    }
  }
  m_NamesFrom = std::max(m_NamesFrom, begin + open);
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
