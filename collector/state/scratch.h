// The scratch state of a collection cycle: where row handlers park one attribute after another
// until a "Type" row turns what is parked into a record. Its variables stand in scratch_list.h.
//
// Process-wide, exported, all zero at load. Every cycle clears u32_TTableNumAttribute, and a record
// the fans, voltages and staged points that it takes; all else keeps the value of the last row that
// wrote it, across sensors, boards and cycles. This carry-over is deliberate: a sensor that lacks
// an attribute row inherits that attribute from the sensor read before it. Nothing here is locked:
// one cycle at a time in a process.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "collector/state/codes.h"
#include "collector/state/export.h"
#include "collector/state/scratch_list.h"

#define SCRATCH_DECLARE_FIELD(name, ...) __VA_ARGS__ name;
#define SCRATCH_DECLARE_VARIABLE(name, ...) COLLECTOR_API extern __VA_ARGS__ name;

// State of a beacon or roundel.
struct BeaconRoundel {
  BEACON_ROUNDEL_FIELDS(SCRATCH_DECLARE_FIELD)

  bool operator==(const BeaconRoundel&) const = default;
};

// One input or output point of a DCIO board, staged until its board is built.
struct DcioPoint {
  std::uint8_t Present = 0;  // 0: empty, skipped when a board takes its points
  std::uint32_t Type = 0;    // which point class is made
  std::int32_t Index = 0;    // 1-based number of the point on its board
  std::int32_t State = 0;    // 1: active; anything else: inactive
  std::string Label;

  bool operator==(const DcioPoint&) const = default;
};

inline constexpr std::size_t kStagedInputs = 24;
inline constexpr std::size_t kStagedOutputs = 12;

SCRATCH_VARIABLES(SCRATCH_DECLARE_VARIABLE)

#undef SCRATCH_DECLARE_FIELD
#undef SCRATCH_DECLARE_VARIABLE

// Sets u32_TTableNumAttribute to 0 and nothing else; called once per cycle, before the rows.
COLLECTOR_API void Reset_Globals();
