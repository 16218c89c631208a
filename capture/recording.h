// Runs cycles in a process of their own and keeps what they were given.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "capture/cycle.h"

namespace capture {

struct Plan {
  int Cycles = 1;
  std::chrono::seconds Interval{1};  // from the beginning of a cycle to that of the next
  std::chrono::seconds Timeout{30};  // for a cycle, and for opening the database
};

// Why there is less than was planned.
struct Stopped {
  std::string Why = {};               // "no answer within 30 s", "the cycle was ended by signal 11"
  std::optional<Question> Last = {};  // what was asked last; nothing when no source was
};

struct Recording {
  std::chrono::system_clock::time_point Began = {};
  std::vector<Cycle> Cycles = {};
  std::optional<capture::Stopped> Stopped = {};
};

// Runs the cycles of one collector in a child and returns what has arrived of them, after the last
// one or when a source does not answer in time. A child that cannot be ended, because a source
// keeps it in the kernel, is left behind. What the collector prints goes to standard error. Call it
// while the process has one thread. Throws std::system_error.
Recording Record(const Plan& plan);

}  // namespace capture
