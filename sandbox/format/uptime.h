#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace sandbox {

// Reads for how many seconds the machine is up. `#` starts a comment. Throws std::runtime_error
// with the line number when that is no number of seconds.
std::chrono::seconds ParseUptime(std::string_view text);

// Writes it.
std::string UptimeText(std::chrono::seconds uptime);

}  // namespace sandbox
