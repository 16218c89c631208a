// What a stream of events carries.
#pragma once

#include <string>

#include "serve/cycle.h"

namespace serve {

// One event, named "state": what there is in `now`, and what its cycle has changed when it is
// another one than that of `before`. The data is one object; docs/host.md lists its members.
std::string EventOf(const State& before, const State& now);

}  // namespace serve
