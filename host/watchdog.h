// The end of a process that waits for a source for too long.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "host/last_asked.h"

namespace host {

// As long as it lives: when `timeout` is over, writes to `descriptor` that the state is unknown and
// which source was asked last, and ends the process with `status`.
class Watchdog {
 public:
  Watchdog(std::chrono::seconds timeout, int descriptor, int status);
  ~Watchdog();
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;

 private:
  void Wait();

  const std::chrono::seconds timeout_;
  const int output_;
  const int status_;
  LastAsked last_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool over_ = false;
  std::thread thread_;  // begins when all else is there
};

}  // namespace host
