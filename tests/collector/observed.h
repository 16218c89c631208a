// An observer for tests: what it saw, as lines of text.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "collector/observer.h"

// Sees everything as long as it lives; afterwards the observer before it is in place again.
class Observed : public observe::Observer {
 public:
  Observed();
  Observed(const Observed&) = delete;
  Observed& operator=(const Observed&) = delete;
  ~Observed() override;

  void See(const observe::Event& event) override;

  // The lines that begin with one of the `wanted` texts.
  std::vector<std::string> Lines(const std::vector<std::string>& wanted) const;

  // A line for each event.
  std::vector<std::string> All;

  // Called after each event.
  std::function<void(const observe::Event&)> Then;

 private:
  observe::Observer* before_;
};

// The event in a line: "asks open /proc/meminfo", "row 3 DimmingLevel=75".
std::string TextOf(const observe::Event& event);
