// What of the rows as a whole needs attention. Private to this library.
#pragma once

#include <vector>

#include "insight/snapshot.h"
#include "insight/wrong_rows.h"

namespace insight {

// One finding for all rows that have errors.
void FindInRows(const WrongRows& wrong_rows, std::vector<Finding>* findings);

}  // namespace insight
