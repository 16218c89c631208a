// The end of a process that waits for a source for too long.
#pragma once

#include <chrono>
#include <memory>

#include "collector/observer.h"

namespace host {

// As long as it lives: when `timeout` is over, writes to `descriptor` that the state is unknown and
// which source was asked last, and ends the process with `status`. Observes the collector; the
// observer before it sees the same.
class Watchdog : public observe::Observer {
 public:
  Watchdog(std::chrono::seconds timeout, int descriptor, int status);
  ~Watchdog() override;
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;

  void See(const observe::Event& event) override;

 private:
  class State;
  std::unique_ptr<State> state_;
  observe::Observer* before_;
};

}  // namespace host
