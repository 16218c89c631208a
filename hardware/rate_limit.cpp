#include "hardware/rate_limit.h"

#include <syslog.h>

#include <ctime>

ratelimit_state rs{{}, 3600, 1};

int ___ratelimit(ratelimit_state* state, const char* func) {
  if (state->interval == 0) {
    return 1;
  }
  const std::lock_guard guard(state->lock);
  const auto now = static_cast<std::uint32_t>(time(nullptr));
  if (state->begin == 0) {
    state->begin = now;
  }
  if (now > state->begin + static_cast<std::uint32_t>(state->interval)) {
    if (state->missed != 0) {
      syslog(LOG_INFO, "%s: %d callbacks suppressed\n", func, state->missed);
    }
    state->printed = 0;
    state->missed = 0;
    // Deliberate: the new period begins only with the next call. An event that this call grants is
    // counted in that period, so that the next call is refused.
    state->begin = 0;
  }
  if (state->burst != 0 && state->burst > state->printed) {
    ++state->printed;
    return 1;
  }
  ++state->missed;
  return 0;
}
