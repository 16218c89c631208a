// Controllers made from a seed, with faults of every kind.
#pragma once

#include "sandbox/scenario.h"

namespace reliability {

// A controller whose sources are there, missing, empty, unreadable or full of rubbish, whose
// devices answer, refuse or are away, and whose rows are any of row_maker's and of the other
// families. The same seed gives the same controller everywhere.
sandbox::Scenario RandomController(unsigned seed);

}  // namespace reliability
