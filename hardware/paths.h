// Every path that the collector reads, once.
#pragma once

#include <fcntl.h>

#include <cstddef>
#include <string>

namespace hardware {

// How a file is opened. It is never created, and programs that the host starts do not inherit it. A
// terminal does not become the controlling terminal of the host, which would end with it.
enum class Access : int {
  // Does not wait: somebody may have put a named pipe in place of the file.
  kRead = O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK,
  // The drivers' device nodes and register dumps.
  kReadWrite = O_RDWR | O_CLOEXEC | O_NOCTTY,
};

// Which symbolic links lead to a file.
enum class Links {
  kAnyones,
  // In the name of the file, the name of its folder and what trusted links lead to, only links of
  // root and of the effective user: others who may write there may read less than the collector.
  kTrusted,
};

// A text that is read once, up to Limit bytes; what comes after them is ignored.
struct TextSource {
  const char* Path;
  Access Mode;
  std::size_t Limit;  // bytes
  Links Followed = Links::kAnyones;
};

namespace paths {

// The cycle itself.
inline constexpr char kStatusDatabase[] = "/dev/shm/status.db";
inline constexpr TextSource kConfigurationTimestamp{
    "/var/www/localhost/htdocs/korvane/syscontrol/1.0/configuration/conftimestamp", Access::kRead,
    512, Links::kTrusted};

// Device nodes.
inline constexpr char kRouter[] = "/dev/travex";
inline constexpr char kDisplay[] = "/dev/zetdisplay";
inline constexpr char kDiagnostics[] = "/dev/diagnostics";

// Register dumps of the drivers.
inline constexpr TextSource kFrameControl{"/proc/driver/frame_control/registers",
                                          Access::kReadWrite, 2662};
inline constexpr TextSource kVideoMux{"/proc/driver/video_mux/registers", Access::kReadWrite, 2662};

// Exists after a watchdog event.
inline constexpr char kWatchdogEvent[] = "/var/run/wd_event";

// Identity and versions.
inline constexpr TextSource kUuid{"/home/Zet/.settings/uuid", Access::kRead, 128, Links::kTrusted};
inline constexpr TextSource kSerial{"/home/Zet/.settings/serial#", Access::kRead, 16,
                                    Links::kTrusted};
inline constexpr char kPackages[] = "/var/lib/dpkg/status";

// Resources.
inline constexpr TextSource kMemory{"/proc/meminfo", Access::kRead, 2048};
inline constexpr char kRootFolder[] = "/";

// Network.
inline constexpr char kRoutes[] = "/proc/net/route";
inline constexpr TextSource kLinkCounters{"/proc/net/dev", Access::kRead, 2048};
inline constexpr TextSource kResolver{"/etc/resolv.conf", Access::kRead, 2662};

// "1" while the interface has a link, "0" while it has none.
inline constexpr std::size_t kCarrierLimit = 2;
inline std::string Carrier(const std::string& interface) {
  return "/sys/class/net/" + interface + "/carrier";
}

// Decimal count of link transitions, kept by another process of the system.
inline constexpr std::size_t kTransitionsLimit = 128;
inline std::string Transitions(const std::string& interface) {
  return "/dev/shm/netlink-" + interface;
}

}  // namespace paths
}  // namespace hardware
