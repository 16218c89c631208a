// The values of a snapshot that there are limits for.
#pragma once

#include <string>
#include <vector>

#include "insight/export.h"
#include "insight/limits.h"
#include "insight/snapshot.h"

namespace insight {

struct Reading {
  std::string Name;  // of its limit, as in LimitTable()
  std::string Path;  // of the value, as DocumentTree spells it; "" for the database's age
  double Value = 0;  // in the unit of the limit
};

// Every reading of `snapshot`, in order of the document. What is not reported is left out, and so
// is what a sensor holds that is not connected, and what no such reading can be.
INSIGHT_API std::vector<Reading> Readings(const Snapshot& snapshot);

}  // namespace insight
