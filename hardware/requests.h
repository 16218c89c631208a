// Every ioctl request of the probe, once. A driver's request takes no argument, and its answer is
// the value that ioctl returns: -1 stands for "not available". The same number means one thing to
// one device and another to the next.
#pragma once

#include <sys/ioctl.h>

namespace hardware::requests {

namespace router {                                       // paths::kRouter
inline constexpr unsigned long kFrameRate = 0x8004DA0C;  // thousandths of a hertz
inline constexpr unsigned long kTrackerEnable = 0x8004DA1C;
inline constexpr unsigned long kOutputLevel = 0x8004DA55;
inline constexpr unsigned long kStatistic0First = 0x8004DA5E;
inline constexpr unsigned long kStatistic0Second = 0x8004DA5F;
inline constexpr unsigned long kStatistic1First = 0x8004DA60;
inline constexpr unsigned long kStatistic1Second = 0x8004DA61;
inline constexpr unsigned long kContentFirst = 0x8004DA63;
inline constexpr unsigned long kContentThird = 0x8004DA64;
inline constexpr unsigned long kContentSecond = 0x8004DA65;
}  // namespace router

namespace display {                                  // paths::kDisplay
inline constexpr unsigned long kPower = 0x8004DA1E;  // bit 0: on
inline constexpr unsigned long kDviSignal = 0x8004DA50;
inline constexpr unsigned long kHardwareId1 = 0x8004DA5C;
// The numbers of identifiers 2 and 3 are crossed, deliberately: the driver counts them that way.
inline constexpr unsigned long kHardwareId2 = 0x8004DA5E;
inline constexpr unsigned long kHardwareId3 = 0x8004DA5D;
inline constexpr unsigned long kCompositorState = 0x8004DA5F;
inline constexpr unsigned long kLevel = 0x8004DA65;    // bits of the output's status flags
inline constexpr unsigned long kTracker = 0x8004DA70;  // bit 4: the pixel tracker runs
}  // namespace display

namespace diagnostics {                              // paths::kDiagnostics
inline constexpr unsigned long kFlags = 0x8004DB17;  // become the status flags from 0x10 on
}  // namespace diagnostics

namespace socket {
inline constexpr unsigned long kHardwareAddress = SIOCGIFHWADDR;
}  // namespace socket

}  // namespace hardware::requests
