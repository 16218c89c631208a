#include "host/watchdog.h"

#include <unistd.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "host/plugin_text.h"
#include "host/trouble.h"

namespace host {
namespace {

// What a call does to a source.
const char* VerbOf(observe::Call call) {
  switch (call) {
    case observe::Call::kOpen:
      return "opening ";
    case observe::Call::kRead:
      return "reading ";
    case observe::Call::kRequest:
      return "request of ";
    default:
      return "asking ";
  }
}

// A file that was found is opened once more, by its descriptor: its name came before.
bool IsAgain(const observe::Asks& asks) {
  return std::string_view(asks.Source).starts_with("/proc/thread-self/fd/");
}

std::string TextOf(const observe::Asks& asks) {
  return VerbOf(asks.What) + std::string(*asks.Source == '\0' ? "the system" : asks.Source);
}

}  // namespace

class Watchdog::State {
 public:
  State(std::chrono::seconds timeout, int descriptor, int status)
      : timeout_(timeout), output_(descriptor), status_(status), thread_([this] { Wait(); }) {}
  ~State() {
    {
      const std::lock_guard lock(mutex_);
      over_ = true;
    }
    changed_.notify_one();
    thread_.join();
  }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  void SetLast(std::string last) {
    const std::lock_guard lock(mutex_);
    last_ = std::move(last);
  }

 private:
  void Wait() {
    std::unique_lock lock(mutex_);
    if (changed_.wait_for(lock, timeout_, [this] { return over_; })) {
      return;
    }
    const std::string text = "UNKNOWN - no answer within " + std::to_string(timeout_.count()) +
                             " s: still " + PluginText(last_) + "\n";
    const ssize_t written = write(output_, text.data(), text.size());
    static_cast<void>(written);  // the program ends in any case
    _exit(status_);
  }

  const std::chrono::seconds timeout_;
  const int output_;
  const int status_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool over_ = false;
  std::string last_ = "starting";
  std::thread thread_;  // begins when all else is there
};

Watchdog::Watchdog(std::chrono::seconds timeout, int descriptor, int status)
    : state_(std::make_unique<State>(timeout, descriptor, status)),
      before_(observe::SetObserver(this)) {}

Watchdog::~Watchdog() { observe::SetObserver(before_); }

void Watchdog::See(const observe::Event& event) {
  if (const auto* const asks = event.As<observe::Asks>(); asks && !IsAgain(*asks)) {
    state_->SetLast(TextOf(*asks));
  } else if (event.As<observe::AsksDatabase>() != nullptr) {
    state_->SetLast(std::string("reading ") + kDatabaseFile);
  }
  if (before_ != nullptr) {
    before_->See(event);
  }
}

}  // namespace host
