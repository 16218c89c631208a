// Notifies the service manager that started the program.
#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace serve {

// Sends messages as sd_notify(3) has them: datagrams to the socket that NOTIFY_SOCKET names.
// Without that variable nothing is sent. Never waits: what cannot be sent is lost. One
// thread.
class ServiceManager {
 public:
  // Reads NOTIFY_SOCKET, WATCHDOG_USEC and WATCHDOG_PID of the environment.
  ServiceManager();
  ~ServiceManager();
  ServiceManager(const ServiceManager&) = delete;
  ServiceManager& operator=(const ServiceManager&) = delete;

  // `state` is "READY=1" or "STOPPING=1".
  void Notify(const std::string& state) const;

  // Notifies a manager that watches this program that it goes on, each time half of the time is
  // over after which it would be ended.
  void Feed();

  // `most`, but not longer than until Feed() has to be called again.
  std::chrono::milliseconds MostWait(std::chrono::milliseconds most) const;

 private:
  using Clock = std::chrono::steady_clock;

  int socket_ = -1;
  std::string address_;  // of the manager, as it stands in the environment
  std::optional<std::chrono::milliseconds> each_;
  Clock::time_point next_ = {};
};

}  // namespace serve
