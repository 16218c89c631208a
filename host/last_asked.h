// What a cycle waits for, for other threads.
#pragma once

#include <chrono>
#include <mutex>
#include <string>

#include "collector/observer.h"

namespace host {

// As long as it lives, what the collector asked last. Observes the collector from the thread that
// makes it and destroys it; the observer before it sees the same. Every thread may ask.
class LastAsked : public observe::Observer {
 public:
  LastAsked();
  ~LastAsked() override;
  LastAsked(const LastAsked&) = delete;
  LastAsked& operator=(const LastAsked&) = delete;

  void See(const observe::Event& event) override;

  // "reading /dev/travex"; before the first question "starting". The text is not printable as it
  // is.
  std::string InWords() const;

 private:
  void Set(std::string words);

  observe::Observer* before_;
  mutable std::mutex mutex_;
  std::string words_ = "starting";
};

}  // namespace host
