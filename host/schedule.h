// When cycles begin.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace host {

// The moments at which cycles begin: an interval apart, whatever the cycles take. A cycle that
// takes longer than the interval leaves out the moments that it misses, so that two never overlap
// and none makes up for a missed one.
class Schedule {
 public:
  using Clock = std::chrono::steady_clock;

  explicit Schedule(std::chrono::seconds interval) : interval_(interval) {}

  Clock::time_point Next() {
    const auto missed = (Clock::now() - next_) / interval_;
    next_ += interval_ * (std::max<std::int64_t>(missed, 0) + 1);
    return next_;
  }

 private:
  std::chrono::seconds interval_;
  Clock::time_point next_ = Clock::now();
};

}  // namespace host
