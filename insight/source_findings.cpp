#include "insight/source_findings.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <string>
#include <string_view>
#include <utility>

#include "hardware/paths.h"
#include "insight/finding_rules.h"
#include "insight/finding_texts.h"
#include "insight/source_database.h"
#include "insight/source_talk.h"

namespace insight {
namespace {

bool NeedsAttention(const Source& source) {
  return source.Required && source.State != SourceState::kOk;
}

// The required source that stopped the probe before `source`, so that its finding says it; null
// when there is none.
// NOLINTNEXTLINE(misc-no-recursion): as deep as sources stop each other
const Source* StopperOf(const Snapshot& snapshot, const Source& source) {
  if (source.State != SourceState::kNotAsked || source.StoppedBy == source.Id) {
    return nullptr;
  }
  const auto stopper = std::ranges::find(snapshot.Sources, source.StoppedBy, &Source::Id);
  if (stopper == snapshot.Sources.end() || !NeedsAttention(*stopper)) {
    return nullptr;
  }
  const Source* const first = StopperOf(snapshot, *stopper);
  return first != nullptr ? first : &*stopper;
}

// "the list of network interfaces (getifaddrs)"
std::string NameForPeople(const Source& source) {
  const auto words = std::ranges::find(SourcesInWords(), source.Id, &SourceWords::Id);
  return words == SourcesInWords().end() ? source.Name : words->Words + (" (" + source.Name + ")");
}

const char* HintFor(const Source& source, const SourceRule& rule) {
  const auto hint = std::ranges::find_if(SourceHints(), [&](const SourceHint& candidate) {
    return candidate.Id == source.Id &&
           std::ranges::find(candidate.States, source.State) != candidate.States.end();
  });
  return hint == SourceHints().end() ? rule.Hint : hint->Hint;
}

const SourceRule& RuleFor(const Source& source) {
  return source.Reason == kNotRegular || source.Error == EISDIR
             ? OtherFileRule()
             : *std::ranges::find(SourceRules(), source.State, &SourceRule::State);
}

// "is missing", "is missing: No such device", "does not answer 1 of 10 requests: ...".
std::string WhatIsWrong(const Source& source, const SourceRule& rule) {
  if (source.Reason.starts_with(kNoAnswerTo)) {
    return rule.Message + (" " + source.Reason.substr(std::string_view(kNoAnswerTo).size()));
  }
  const bool said = source.Reason.empty() || source.Reason == kNothingInIt ||
                    &rule == &OtherFileRule() ||
                    (source.State == SourceState::kMissing && source.Error == ENOENT);
  return rule.Message + (said ? "" : ": " + source.Reason);
}

// "; therefore not asked: statistics, registers".
std::string NotAskedAfter(const Snapshot& snapshot, const Source& stopper) {
  std::string names;
  for (const Source& source : snapshot.Sources) {
    if (StopperOf(snapshot, source) == &stopper) {
      names += (names.empty() ? "; therefore not asked: " : ", ") + NameForPeople(source);
    }
  }
  return names;
}

// Rows of a database that nobody writes say nothing about now.
void FindInAge(std::chrono::seconds unchanged, const Limits& limits,
               std::vector<Finding>* findings) {
  constexpr const char* kName = "database-age";
  const auto seconds = static_cast<double>(unchanged.count());
  const Limit& limit = limits.Of(kName);
  if (!limit.Critical.Holds(seconds) || !limit.Warning.Holds(seconds)) {
    AddOfDatabase(
        MakeFinding(kName, limit.Critical.Holds(seconds) ? Severity::kUnknown : Severity::kCritical,
                    "the database has not changed for " + Duration(unchanged),
                    "whether the programs that write rows run"),
        findings);
    findings->back().Value = seconds;
  }
}

}  // namespace

void AddOfDatabase(Finding finding, std::vector<Finding>* findings) {
  finding.Where = hardware::paths::kStatusDatabase;
  finding.Source = kDatabaseId;
  findings->push_back(std::move(finding));
}

void FindInSources(const Snapshot& snapshot, std::vector<Finding>* findings) {
  for (const Source& source : snapshot.Sources) {
    // A finding of its own says that there are no rows.
    const bool no_rows = source.Id == kDatabaseId && source.State == SourceState::kEmpty;
    if (NeedsAttention(source) && StopperOf(snapshot, source) == nullptr && !no_rows) {
      const SourceRule& rule = RuleFor(source);
      findings->push_back(MakeFinding(
          rule.Id, Severity::kUnknown,
          NameForPeople(source) + " " + WhatIsWrong(source, rule) + NotAskedAfter(snapshot, source),
          HintFor(source, rule)));
      findings->back().Source = source.Id;
    }
  }
}

void FindInDatabase(const Snapshot& snapshot, const Limits& limits,
                    std::vector<Finding>* findings) {
  const bool reported = std::ranges::any_of(snapshot.Sources, [](const Source& source) {
    return source.Id == kDatabaseId && NeedsAttention(source) &&
           source.State != SourceState::kEmpty;
  });
  if (snapshot.Result != 0 && !reported) {
    AddOfDatabase(
        MakeFinding("cycle-failed", Severity::kUnknown, "not all rows of the database were read",
                    "the reason on standard error"),
        findings);
  }
  if (snapshot.Result == 0 && snapshot.Rows.empty()) {
    AddOfDatabase(MakeFinding("no-rows", Severity::kUnknown, "the database has no rows",
                              "whether the programs that write rows run"),
                  findings);
  }
  if (snapshot.Database.EveryoneMayWrite) {
    AddOfDatabase(
        MakeFinding("database-writable", Severity::kWarning, "every user may write the database",
                    "its mode: no user but those who write rows may write it"),
        findings);
  }
  if (const auto unchanged = snapshot.Database.Unchanged) {
    FindInAge(*unchanged, limits, findings);
  }
}

}  // namespace insight
