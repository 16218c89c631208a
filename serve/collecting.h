// The thread that runs cycles.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "host/last_asked.h"
#include "host/output.h"
#include "serve/cycle.h"
#include "serve/history.h"

namespace serve {

// Runs cycles an interval apart from its making on, on a thread of its own, and publishes what they
// give. One in a process, since the collector is one.
class Collecting {
 public:
  // What the cycles give goes to `history`, too; what the probes print comes from `output`. Both
  // must outlive it. Throws std::system_error.
  Collecting(std::chrono::seconds interval, const host::StandardOutput& output, History* history);
  // Ends the process, as a failure, when the thread has not ended: a cycle that hangs cannot be
  // stopped. Stop() waits for it.
  ~Collecting();
  Collecting(const Collecting&) = delete;
  Collecting& operator=(const Collecting&) = delete;

  // Readable for poll() after each cycle, until Look() is called.
  int Descriptor() const { return published_; }

  // What there is to answer from now. Never waits for a cycle.
  State Look();

  // Lets the cycle that runs be the last one, and waits for it. False: it is not over in time.
  bool Stop(std::chrono::milliseconds at_most);

 private:
  using Clock = std::chrono::steady_clock;

  void Run();
  void RunCycles();
  void PassOnLines();
  void Begin();
  void Publish(std::shared_ptr<const Cycle> cycle, std::string failure);
  bool WaitUntil(Clock::time_point next);
  std::optional<Hang> Hanging() const;

  const std::chrono::seconds interval_;
  const host::StandardOutput& output_;
  History* const history_;
  std::string lines_;  // that the probes printed in the latest cycle
  const int published_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool stops_ = false;
  bool ended_ = false;
  std::shared_ptr<const Cycle> latest_;
  std::string failure_;
  const host::LastAsked* last_asked_ = nullptr;  // while the thread runs
  struct Running {
    Clock::time_point Since;
    SystemTime Began;
  };
  std::optional<Running> running_;
  std::uint64_t version_ = 0;
  State looked_;
  std::thread thread_;  // begins when all else is there
};

}  // namespace serve
