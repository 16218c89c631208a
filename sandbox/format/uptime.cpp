#include "sandbox/format/uptime.h"

#include <optional>
#include <stdexcept>
#include <vector>

#include "sandbox/format/text.h"

namespace sandbox {

std::chrono::seconds ParseUptime(std::string_view text) {
  // Beyond, its nanoseconds would not go into 64 bits.
  constexpr std::uint64_t kMost = 9'000'000'000;
  std::optional<std::chrono::seconds> uptime;
  ForEachLine(text, [&uptime](const std::vector<std::string>& words) {
    uptime = std::chrono::seconds(NumberOf(words[0], kMost));
  });
  if (!uptime) {
    throw std::runtime_error("expected a number of seconds");
  }
  return *uptime;
}

std::string UptimeText(std::chrono::seconds uptime) {
  return std::to_string(uptime.count()) + "\n";
}

}  // namespace sandbox
