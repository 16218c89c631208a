// Captures of controllers that change between their cycles.
#pragma once

#include "capture/controller.h"
#include "sandbox/scenario.h"

namespace replay {

// Runs the cycles of the scenario in this sandbox, as `statuscollector capture` does but with a
// step between two cycles instead of an interval, and returns what is in their capture.
capture::Entries Captured(const sandbox::Scenario& scenario);

}  // namespace replay
