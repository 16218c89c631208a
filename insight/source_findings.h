// What of the sources, the database and the rows as a whole needs attention. Private to this
// library.
#pragma once

#include <vector>

#include "insight/limits.h"
#include "insight/snapshot.h"
#include "insight/wrong_rows.h"

namespace insight {

// Of the required sources that did not give all they were asked for.
void FindInSources(const Snapshot& snapshot, std::vector<Finding>* findings);

// Of the database: whether it was read, has rows, is old, or may be written by everyone.
void FindInDatabase(const Snapshot& snapshot, const Limits& limits, std::vector<Finding>* findings);

// One finding for all rows that have errors.
void FindInRows(const WrongRows& wrong_rows, std::vector<Finding>* findings);

}  // namespace insight
