// The cycles of a recording, run again. What stands here is called in a sandbox.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "collector/observer.h"
#include "replay/recording.h"

namespace replay {

// Makes the sandbox the controller as it was before the first cycle, and the clock's zone its own.
void Begin(const Recording& recording);

// Runs the cycles one after the other, in one process, as they were. Each document is handed to
// `use`, with the number of its cycle, the first one being 0.
void RunCycles(const Recording& recording,
               const std::function<void(std::size_t cycle, const std::string& document)>& use);

// While it lives, the controller goes on by a step after each cycle that anybody runs in this
// process.
class Stepper : public observe::Observer {
 public:
  explicit Stepper(const sandbox::Scenario& controller);
  ~Stepper() override;
  Stepper(const Stepper&) = delete;
  Stepper& operator=(const Stepper&) = delete;

  void See(const observe::Event& event) override;

  // What went wrong with a step; "" for nothing.
  const std::string& Trouble() const { return trouble_; }

 private:
  sandbox::StepByStep steps_;
  observe::Observer* before_;
  std::string trouble_;
};

}  // namespace replay
