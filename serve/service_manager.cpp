#include "serve/service_manager.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace serve {
namespace {

std::string_view Variable(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? "" : value;
}

std::optional<std::int64_t> NumberIn(const char* name) {
  const std::string_view text = Variable(name);
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool whole = error == std::errc() && end == text.data() + text.size() && !text.empty();
  return whole && number > 0 ? std::optional(number) : std::nullopt;
}

// How often a watching manager is to be notified; nothing when none watches this process.
std::optional<std::chrono::milliseconds> TimeToFeed() {
  const std::optional<std::int64_t> microseconds = NumberIn("WATCHDOG_USEC");
  const bool mine =
      Variable("WATCHDOG_PID").empty() || NumberIn("WATCHDOG_PID") == std::int64_t{getpid()};
  if (!microseconds || !mine) {
    return std::nullopt;
  }
  const auto half =
      std::chrono::floor<std::chrono::milliseconds>(std::chrono::microseconds(*microseconds / 2));
  return std::max(half, std::chrono::milliseconds(1));
}

}  // namespace

ServiceManager::ServiceManager() : address_(Variable("NOTIFY_SOCKET")) {
  // A path, or a name of the kernel's own after "@".
  const bool named = address_.starts_with('/') || address_.starts_with('@');
  if (named && address_.size() < sizeof(sockaddr_un::sun_path)) {
    socket_ = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    each_ = TimeToFeed();
  }
}

ServiceManager::~ServiceManager() {
  if (socket_ != -1) {
    close(socket_);
  }
}

void ServiceManager::Notify(const std::string& state) const {
  if (socket_ == -1) {
    return;
  }
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  address_.copy(address.sun_path, address_.size());
  if (address_.starts_with('@')) {
    address.sun_path[0] = '\0';
  }
  const std::size_t size = offsetof(sockaddr_un, sun_path) + address_.size();
  sendto(socket_, state.data(), state.size(), MSG_NOSIGNAL,
         reinterpret_cast<const sockaddr*>(&address), static_cast<socklen_t>(size));
}

void ServiceManager::Feed() {
  const Clock::time_point now = Clock::now();
  if (each_ && now >= next_) {
    next_ = now + *each_;
    Notify("WATCHDOG=1");
  }
}

std::chrono::milliseconds ServiceManager::MostWait(std::chrono::milliseconds most) const {
  if (!each_) {
    return most;
  }
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(next_ - Clock::now());
  return std::clamp(left, std::chrono::milliseconds(0), most);
}

}  // namespace serve
