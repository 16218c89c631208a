#include "host/watchdog.h"

#include <unistd.h>

#include <string>

#include "host/plugin_text.h"

namespace host {

Watchdog::Watchdog(std::chrono::seconds timeout, int descriptor, int status)
    : timeout_(timeout), output_(descriptor), status_(status), thread_([this] { Wait(); }) {}

Watchdog::~Watchdog() {
  {
    const std::lock_guard lock(mutex_);
    over_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

void Watchdog::Wait() {
  std::unique_lock lock(mutex_);
  if (changed_.wait_for(lock, timeout_, [this] { return over_; })) {
    return;
  }
  const std::string text = "UNKNOWN - no answer within " + std::to_string(timeout_.count()) +
                           " s: still " + PluginText(last_.InWords()) + "\n";
  const ssize_t written = write(output_, text.data(), text.size());
  static_cast<void>(written);  // the program ends in any case
  _exit(status_);
}

}  // namespace host
