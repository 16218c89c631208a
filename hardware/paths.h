// Every path that the collector reads, once.
#pragma once

#include <fcntl.h>

#include <cstddef>
#include <string>

namespace hardware {

// How a file is opened; it is never created, no program that the host starts inherits it, and no
// terminal becomes the host's controlling one, whose end would be the host's.
enum class Access : int {
  // Where anyone may place a file, a named pipe must not hold up the cycle.
  kRead = O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK,
  // The drivers' device nodes and register dumps.
  kReadWrite = O_RDWR | O_CLOEXEC | O_NOCTTY,
};

// Which symbolic links lead to a file.
enum class Links {
  kAnyones,
  // From the folder that holds the file on, only those of root and of the effective user: not
  // everyone who may write there may read what the collector may.
  kTrusted,
};

// A text of which one read of at most Limit bytes is enough; what lies behind is not seen.
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

// Exists once the watchdog has struck.
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
