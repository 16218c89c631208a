// The beginning of the page: how all is, and what needs attention.
#pragma once

#include "host/page.h"
#include "insight/snapshot.h"

namespace host {

enum class Extent {
  kAbridged,  // of many findings of one kind in a row the first ones
  kBrief,     // likewise, and a line for each
  kFull,
};

// The first line, with numbers: "critical: 2 critical, 1 warning", or "all well: ...". A second one
// has the rows and when the database last changed.
void ShowHeadline(const insight::Snapshot& snapshot, Page* page);

// Each finding: what is wrong and where, what to look at, and the path and row key that it is
// about, beside that where the page has room, otherwise below. The finding that counts rows with
// errors has the first of them.
void ShowFindings(const insight::Snapshot& snapshot, Extent extent, Page* page);

}  // namespace host
