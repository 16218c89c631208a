// What of a snapshot needs attention. Private to this library.
#pragma once

#include <string>
#include <vector>

#include "insight/limits.h"
#include "insight/snapshot.h"

namespace insight {

// The worst first, then in order of the document. Everything of `snapshot` but its findings is
// there.
std::vector<Finding> FindFindings(const Snapshot& snapshot, const Limits& limits);

}  // namespace insight
