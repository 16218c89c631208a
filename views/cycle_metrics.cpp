#include "views/cycle_metrics.h"

#include <statuscollector/version.h>

#include <algorithm>
#include <chrono>
#include <map>

namespace views {
namespace {

using insight::OutcomeClass;
using insight::Severity;

double Seconds(std::chrono::system_clock::time_point time) {
  return std::chrono::duration<double>(time.time_since_epoch()).count();
}

void Add(double value, Samples* samples) { samples->push_back({{}, value}); }

void CountRows(const Sources& from, OutcomeClass wanted, Samples* samples) {
  if (from.Snapshot != nullptr) {
    Add(static_cast<double>(std::ranges::count(from.Snapshot->Rows, wanted, &insight::Row::Class)),
        samples);
  }
}

}  // namespace

void CollectVersion(const Metric& /*metric*/, const Sources& /*from*/, Samples* samples) {
  samples->push_back({{{"version", QtSts::LibraryVersion()}}, 1});
}

void CollectInterval(const Metric& /*metric*/, const Sources& from, Samples* samples) {
  Add(static_cast<double>(from.Server.Interval.count()), samples);
}

void CollectCycles(const Metric& /*metric*/, const Sources& from, Samples* samples) {
  Add(static_cast<double>(from.Server.Cycles), samples);
}

void CollectFailed(const Metric& /*metric*/, const Sources& from, Samples* samples) {
  Add(static_cast<double>(from.Server.Failed), samples);
}

void CollectLastSuccess(const Metric& /*metric*/, const Sources& from, Samples* samples) {
  if (from.Server.LastSuccess) {
    Add(Seconds(*from.Server.LastSuccess), samples);
  }
}

void CollectHanging(const Metric& /*metric*/, const Sources& from, Samples* samples) {
  Add(from.Server.HangsSince ? 1 : 0, samples);
}

void CollectHangingSince(const Metric& /*metric*/, const Sources& from, Samples* samples) {
  if (from.Server.HangsSince) {
    samples->push_back({{{"asked", from.Server.Asked}}, Seconds(*from.Server.HangsSince)});
  }
}

void CollectSuccess(const Metric& /*metric*/, const Sources& from, Samples* samples) {
  if (from.Snapshot != nullptr) {
    Add(from.Snapshot->Result == 0 ? 1 : 0, samples);
  }
}

void CollectBegan(const Metric& /*metric*/, const Sources& from, Samples* samples) {
  if (from.Snapshot != nullptr) {
    Add(Seconds(from.Snapshot->Began), samples);
  }
}

void CollectDuration(const Metric& /*metric*/, const Sources& from, Samples* samples) {
  if (from.Snapshot != nullptr) {
    Add(std::chrono::duration<double>(from.Snapshot->Took).count(), samples);
  }
}

void CollectRowCount(const Metric& /*metric*/, const Sources& from, Samples* samples) {
  if (from.Snapshot != nullptr) {
    Add(static_cast<double>(from.Snapshot->Database.Rows), samples);
  }
}

void CollectRowErrors(const Metric& /*metric*/, const Sources& from, Samples* samples) {
  CountRows(from, OutcomeClass::kError, samples);
}

void CollectRowNotices(const Metric& /*metric*/, const Sources& from, Samples* samples) {
  CountRows(from, OutcomeClass::kNotice, samples);
}

void CollectUnchanged(const Metric& /*metric*/, const Sources& from, Samples* samples) {
  if (from.Snapshot != nullptr && from.Snapshot->Database.Unchanged) {
    Add(static_cast<double>(from.Snapshot->Database.Unchanged->count()), samples);
  }
}

void CollectSources(const Metric& /*metric*/, const Sources& from, Samples* samples) {
  if (from.Snapshot == nullptr) {
    return;
  }
  for (const insight::Source& source : from.Snapshot->Sources) {
    samples->push_back({{{"source", source.Id}, {"required", source.Required ? "true" : "false"}},
                        source.State == insight::SourceState::kOk ? 1.0 : 0.0});
  }
}

void CollectSeverities(const Metric& /*metric*/, const Sources& from, Samples* samples) {
  if (from.Snapshot == nullptr) {
    return;
  }
  for (const Severity severity : {Severity::kCritical, Severity::kUnknown, Severity::kWarning}) {
    samples->push_back({{{"severity", NameOf(severity)}},
                        static_cast<double>(std::ranges::count(from.Snapshot->Findings, severity,
                                                               &insight::Finding::Level))});
  }
}

void CollectFindings(const Metric& /*metric*/, const Sources& from, Samples* samples) {
  if (from.Snapshot == nullptr) {
    return;
  }
  std::map<std::pair<std::string, Severity>, std::size_t> counts;
  for (const insight::Finding& finding : from.Snapshot->Findings) {
    ++counts[{finding.Id, finding.Level}];
  }
  for (const auto& [what, count] : counts) {
    samples->push_back(
        {{{"id", what.first}, {"severity", NameOf(what.second)}}, static_cast<double>(count)});
  }
}

}  // namespace views
