// What a stream of events carries.
#pragma once

#include <string>

#include "model/json_text.h"
#include "serve/cycle.h"

namespace serve {

// One event, named "state": what there is in `now`, and what its cycle has changed when it is
// another one than that of `before`. The data is one object; docs/host.md lists its members.
std::string EventOf(const State& before, const State& now);

// The members of such an object that say how things are, without findings and changes.
void AddState(const State& state, QtSts::JsonText* json);

}  // namespace serve
