// What of the sources and the database needs attention. Private to this library.
#pragma once

#include <vector>

#include "insight/limits.h"
#include "insight/snapshot.h"

namespace insight {

// Of the required sources that did not give all they were asked for.
void FindInSources(const Snapshot& snapshot, std::vector<Finding>* findings);

// Of the database: whether it was read, has rows, is old, or may be written by everyone.
void FindInDatabase(const Snapshot& snapshot, const Limits& limits, std::vector<Finding>* findings);

// Appends a finding of the database as a whole, which says so.
void AddOfDatabase(Finding finding, std::vector<Finding>* findings);

}  // namespace insight
