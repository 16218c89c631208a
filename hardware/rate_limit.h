// Limits how often a message is written that could come in every cycle.
#pragma once

#include <cstdint>
#include <mutex>

#include "collector/state/export.h"

// NOLINTBEGIN(readability-identifier-naming): prescribed names

// How often an event may be emitted, and how often it was in the current period.
struct ratelimit_state {
  std::mutex lock;            // guards the members from `printed` on
  std::int32_t interval = 0;  // length of a period in seconds; 0: nothing is limited
  std::int32_t burst = 0;     // events allowed in a period
  std::int32_t printed = 0;   // events allowed in the current period
  std::int32_t missed = 0;    // events refused since the period began
  std::uint32_t begin = 0;    // start of the period, seconds since the epoch; 0: not started
};

// The limiter of the process: one event an hour, whoever asks.
COLLECTOR_API extern ratelimit_state rs;

// Non-zero when the caller may emit its event now, 0 when the event is to be suppressed. When a
// period with suppressed events has ended, writes their number to the system log (LOG_INFO) after
// `func`, the caller's name. Throws std::system_error when the lock fails. Any thread.
COLLECTOR_API int ___ratelimit(ratelimit_state* state, const char* func);

// NOLINTEND(readability-identifier-naming)
