// The beginning of the page: how all is, and what needs attention.
#pragma once

#include "host/page.h"
#include "insight/snapshot.h"

namespace host {

enum class Extent {
  kBrief,     // a line for each finding
  kAbridged,  // of many findings of one kind the first ones
  kFull,
};

// The first line, with numbers: "critical: 2 critical, 1 warning", or "all well: ...". A second one
// has the rows and when the database last changed.
void ShowHeadline(const insight::Snapshot& snapshot, Page* page);

// Each finding: what is wrong and where, what to look at, and the path and row key that it is
// about, beside that where the page has room, otherwise below.
void ShowFindings(const insight::Snapshot& snapshot, Extent extent, Page* page);

}  // namespace host
