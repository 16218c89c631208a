// What of a snapshot needs attention.
#pragma once

#include <span>
#include <vector>

#include "insight/export.h"
#include "insight/limits.h"
#include "insight/snapshot.h"

namespace insight {

// The findings of `snapshot` by `limits`: the worst first, then in order of the document. Its own
// list of findings is not looked at.
INSIGHT_API std::vector<Finding> FindFindings(const Snapshot& snapshot, const Limits& limits);

struct FindingInfo {
  const char* Id;
  Severity Level;    // a finding with a limit is critical beyond the critical one
  const char* When;  // one sentence without the closing stop
};

// Every finding that there can be once, in alphabetic order. The table of statuscollector(1) says
// the same, and a test compares them.
INSIGHT_API std::span<const FindingInfo> FindingTable();

}  // namespace insight
