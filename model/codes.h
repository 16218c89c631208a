// Codes of the document and the system's own names for them, each once.
#pragma once

#include <cstdint>
#include <span>

namespace QtSts {

struct Code {
  std::uint32_t Value;
  const char* Text;
};

// A table of codes; empty for a field that holds a plain value.
using CodeTable = std::span<const Code>;

// What an input element is; see CInput::GetType.
enum InputType : std::uint32_t {
  kPlayerInput = 0,
  kAnalogInput = 1,
  kDigitalInput = 2,
};

// How the display's brightness is chosen.
inline constexpr Code kDimmingModes[] = {
    {0, "auto"}, {1, "manual"}, {3, "gps"},      {2, "schedule"},
    {4, "vmax"}, {5, "remote"}, {6, "override"},
};
inline constexpr std::uint32_t kDimmingManual = 1;

// Who overrides the fans.
inline constexpr Code kFansOverrides[] = {
    {0, "none"}, {1, "player"}, {2, "thermal"}, {3, "sensor"}, {4, "brightness"},
};

// Product families by model name, in the order in which a text is searched for them. Deliberately 0
// for "qtm3310", and no name stands for 2 or 8: see Status_ProductFamily.
inline constexpr Code kProductFamilies[] = {
    {3, "qtm3400"}, {4, "qtm3300"}, {5, "qtm3200"}, {0, "qtm3310"}, {1, "qtm3210"},
};

// Position lock of a multi-directional sensor.
inline constexpr Code kLockStates[] = {
    {0, "locked_location"},
    {1, "locked_time"},
    {2, "locked_not_locked"},
};
inline constexpr std::uint32_t kLockUnknown = 3;

// Bits of the output's status flags.
inline constexpr std::uint32_t kFlagPowerOff = 0x4;
inline constexpr std::uint32_t kFlagWatchdogEvent = 0x400;
inline constexpr std::uint32_t kFlagTrackerActive = 0x800;
inline constexpr std::uint32_t kFlagTrackerBlanked = 0x1000;
inline constexpr std::uint32_t kFlagAmbientFailure = 0x2000;
inline constexpr std::uint32_t kFlagAmbientOverride = 0x4000;

}  // namespace QtSts
