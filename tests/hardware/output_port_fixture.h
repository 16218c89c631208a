// An output port and the devices that report its state.
#pragma once

#include <cstdint>

#include "sandbox/scenario.h"
#include "tests/hardware/probe_fixture.h"

inline constexpr std::uint32_t kFrameRate = 0x8004DA0C;
inline constexpr std::uint32_t kTrackerEnable = 0x8004DA1C;
inline constexpr std::uint32_t kOutputLevel = 0x8004DA55;
inline constexpr std::uint32_t kStatistics[2][2] = {{0x8004DA5E, 0x8004DA5F},
                                                    {0x8004DA60, 0x8004DA61}};
inline constexpr std::uint32_t kPower = 0x8004DA1E;
inline constexpr std::uint32_t kLevel = 0x8004DA65;
inline constexpr std::uint32_t kTracker = 0x8004DA70;
inline constexpr std::uint32_t kDiagnostics = 0x8004DB17;

// A port in good health: every flag is clear.
inline sandbox::Scenario Healthy() {
  return sandbox::Scenario()
      .Answer("travex", kFrameRate, 59940)
      .Answer("travex", kOutputLevel, 75)
      .Answer("travex", kStatistics[0][0], 1)
      .Answer("travex", kStatistics[0][1], 2)
      .Answer("travex", kStatistics[1][0], 3)
      .Answer("travex", kStatistics[1][1], 4)
      .Answer("travex", kTrackerEnable, 1)
      .Answer("zetdisplay", kLevel, 0)
      .Answer("zetdisplay", kPower, 1)
      .Answer("zetdisplay", kTracker, 0)
      .Answer("diagnostics", kDiagnostics, 0)
      .File(kFrameControl, "scale_output_width: 0x180\nscale_output_height: 0xC0\n");
}

class OutputPortTest : public ProbeTest {
 protected:
  QtSts::COutput* Output() { return status_.Outputs[0]; }
};
