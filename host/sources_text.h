// What the sources of a cycle answered, as a table.
#pragma once

#include "host/page.h"
#include "insight/snapshot.h"

namespace host {

// Each source: its identifier, its state, and what was asked, with the reason when something is
// wrong with it. Required ones that are not ok are marked. With `before`, a source that had another
// state there ends with kDiffers.
void ShowSources(const insight::Snapshot& snapshot, const insight::Snapshot* before, Page* page);

// A line that differs from the cycle before ends with it.
inline constexpr const char* kDiffers = " ~";

}  // namespace host
