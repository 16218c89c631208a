#pragma once

#include <chrono>

namespace sandbox {

// Makes the machine this old for the calling process and those it starts: sysinfo() counts on from
// `uptime`, at its full second. May be repeated. False when the calling process itself is left out
// since it has several threads, as under ThreadSanitizer. Throws std::system_error where the
// kernel knows no time namespaces.
bool SetUptime(std::chrono::seconds uptime);

}  // namespace sandbox
