// A snapshot as JSON, for programs. The document alone is QtSts::WriteJson's.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "insight/snapshot.h"

namespace host {

// The snapshot's document as model/json.h describes it, with one more member of the root, the last:
// "Insight", an object with what docs/host.md lists.
std::string RenderJson(const insight::Snapshot& snapshot);

// That object alone: "Insight".
std::string RenderInsightJson(const insight::Snapshot& snapshot);

// The same, with the time "Since" when each finding has been there, in their order.
std::string RenderInsightJson(const insight::Snapshot& snapshot,
                              const std::vector<std::chrono::system_clock::time_point>& since);

// The same, and "Differing" with the keys of the rows that became something
// else than in the cycle before.
std::string RenderInsightJson(const insight::Snapshot& snapshot,
                              const std::vector<std::string>& differing);

}  // namespace host
