#include "serve/history_findings.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace serve {
namespace {

using insight::Finding;

// The first bytes of a text, in whole characters.
FindingText Short(std::string_view text) {
  constexpr unsigned int kMark = 0xC0;
  constexpr unsigned int kContinues = 0x80;
  std::size_t size = std::min(text.size(), HistoryFindings::kMostTextBytes);
  while (size < text.size() && size > 0 &&
         (static_cast<unsigned char>(text[size]) & kMark) == kContinues) {
    --size;
  }
  return FindingText(text.substr(0, size));
}

// An open finding that is worse than before is known by what it is now.
void Raise(const Finding& finding, Episode* episode) {
  if (finding.Level >= episode->Level) {
    return;
  }
  episode->Level = finding.Level;
  if (HistoryBytesOf<HistoryPart::kFindings>() < HistoryFindings::kMostBytes) {
    episode->Message = Short(finding.Message);
  }
}

// A finding of a value that is not reported may be there or not.
bool CouldSee(const insight::Snapshot& snapshot, const Episode& episode) {
  return snapshot.Result == 0 &&
         (episode.Path.empty() || snapshot.IsReported(std::string(episode.Path)));
}

}  // namespace

std::vector<std::string> IdentitiesOf(const std::vector<Finding>& findings,
                                      const Identities& identities) {
  std::vector<std::string_view> paths;
  paths.reserve(findings.size());
  for (const Finding& finding : findings) {
    paths.emplace_back(finding.Path);
  }
  std::vector<std::string> of_paths = identities.OfPaths(paths);
  std::unordered_map<std::string, std::size_t> counts;
  std::vector<std::string> all;
  all.reserve(findings.size());
  for (std::size_t at = 0; at < findings.size(); ++at) {
    const Finding& finding = findings[at];
    std::string identity = finding.Id + '\n' + finding.Source + '\n';
    identity += finding.Path.empty() ? finding.Key : of_paths[at];
    if (const std::size_t count = ++counts[identity]; count > 1) {
      identity += "#" + std::to_string(count);
    }
    all.push_back(std::move(identity));
  }
  return all;
}

std::vector<std::optional<HistoryFindings::Beginning>> HistoryFindings::Update(
    const insight::Snapshot& snapshot, const std::vector<std::string>& identities, UnixSeconds now,
    bool first) {
  std::unordered_map<std::string_view, Episode*> open;
  for (Episode& episode : episodes_) {
    if (!episode.End) {
      open.emplace(episode.Identity, &episode);
    }
  }
  std::vector<std::optional<Beginning>> beginnings(snapshot.Findings.size());
  std::vector<std::size_t> begin;
  for (std::size_t at = 0; at < beginnings.size(); ++at) {
    const Finding& finding = snapshot.Findings[at];
    const auto known = open.find(identities[at]);
    if (known == open.end()) {
      begin.push_back(at);
      continue;
    }
    Episode* const episode = known->second;
    episode->Path = Short(finding.Path);
    Raise(finding, episode);
    beginnings[at] = {episode->Begin, episode->Before};
    open.erase(known);
  }
  for (const auto& [identity, episode] : open) {
    if (CouldSee(snapshot, *episode)) {
      episode->End = now;
      episode->EndedHere = true;
    }
  }
  auto oldest = episodes_.begin();
  for (const std::size_t at : begin) {
    const Finding& finding = snapshot.Findings[at];
    if (MakeRoom(&oldest)) {
      episodes_.push_back({.Begin = now,
                           .Before = first,
                           .Level = finding.Level,
                           .Identity = FindingText(identities[at]),
                           .Id = Short(finding.Id),
                           .Message = Short(finding.Message),
                           .Where = Short(finding.Where),
                           .Path = Short(finding.Path)});
      beginnings[at] = {now, first};
    }
  }
  return beginnings;
}

bool HistoryFindings::MakeRoom(Episodes::iterator* from) {
  while (episodes_.size() >= kMost || HistoryBytesOf<HistoryPart::kFindings>() > kMostBytes) {
    for (; *from != episodes_.end() && !(*from)->End; ++*from) {
      ++looked_at_;
    }
    if (*from == episodes_.end()) {
      return false;
    }
    *from = episodes_.erase(*from);
  }
  return true;
}

void HistoryFindings::Forget(UnixSeconds now, bool others) {
  std::erase_if(episodes_, [&](const Episode& episode) {
    return episode.End && (*episode.End < now - kHistorySeconds || (others && !episode.EndedHere));
  });
}

void HistoryFindings::Shift(UnixSeconds seconds) {
  for (Episode& episode : episodes_) {
    if (episode.BeganHere) {
      episode.Begin += seconds;
    }
    if (episode.End && episode.EndedHere) {
      *episode.End += seconds;
    }
  }
}

bool HistoryFindings::Restore(Episode episode) {
  auto oldest = episodes_.begin();
  if (!MakeRoom(&oldest)) {
    return false;
  }
  episodes_.push_back(std::move(episode));
  return true;
}

void HistoryFindings::EndRestoring(UnixSeconds clock_set) {
  std::erase_if(episodes_, [clock_set](const Episode& episode) {
    return episode.Begin < clock_set || (episode.End && *episode.End < clock_set);
  });
  for (Episode& episode : episodes_) {
    episode.BeganHere = episode.EndedHere = false;
  }
}

}  // namespace serve
