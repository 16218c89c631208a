// What the page shows beside the document.
#pragma once

#include <chrono>
#include <string>

#include "serve/cycle.h"
#include "serve/history.h"

namespace serve {

// One object of JSON; docs/host.md lists its members. Throws std::bad_alloc.
std::string OverviewOf(const State& state, std::chrono::seconds interval, const History& history);

}  // namespace serve
