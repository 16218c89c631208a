#include "host/sources_text.h"

#include <algorithm>
#include <string>
#include <vector>

#include "host/annotations.h"
#include "host/printable.h"
#include "host/text_template.h"

namespace host {
namespace {

using insight::Snapshot;
using insight::Source;
using insight::SourceState;

// The name of the source that stopped the probe, as the system has it.
std::string StopperOf(const Snapshot& snapshot, const Source& source) {
  const auto stopper = std::ranges::find(snapshot.Sources, source.StoppedBy, &Source::Id);
  return stopper == snapshot.Sources.end() ? source.StoppedBy : stopper->Name;
}

// "" for a source that answered all it was asked.
std::string WhyOf(const Snapshot& snapshot, const Source& source) {
  const bool stopped = !source.StoppedBy.empty();
  if (stopped && source.State == SourceState::kNotAsked) {
    return "because of " + StopperOf(snapshot, source);
  }
  if (stopped && source.Reason.empty()) {
    return "in part not asked, because of " + StopperOf(snapshot, source);
  }
  return source.Reason;
}

bool Differs(const Source& source, const Snapshot& before) {
  const auto same = std::ranges::find(before.Sources, source.Id, &Source::Id);
  return same == before.Sources.end() || same->State != source.State;
}

}  // namespace

void ShowSources(const Snapshot& snapshot, const Snapshot* before, Page* page) {
  page->Title("Sources");
  std::vector<Row> rows;
  for (const Source& source : snapshot.Sources) {
    const bool trouble = source.Required && source.State != SourceState::kOk;
    const bool optional = !source.Required && source.State != SourceState::kOk;
    const std::string why = WhyOf(snapshot, source);
    rows.push_back({trouble ? Mark::kUnknown : Mark::kNone,
                    {Printable(source.Id), NameOf(source.State),
                     Printable((optional ? "(optional) " : "") + source.Name +
                               (why.empty() ? "" : ": " + why)) +
                         (before != nullptr && Differs(source, *before) ? kDiffers : "")}});
  }
  if (rows.empty()) {
    page->Line(kNotReported);
  } else {
    page->Table({{"Source"}, {"State"}, {"What is asked"}}, rows);
  }
}

}  // namespace host
