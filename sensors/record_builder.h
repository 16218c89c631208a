// The one place where the scratch state of a sensor becomes its record.
#pragma once

#include <memory>
#include <span>

#include "collector/state/codes.h"
#include "collector/state/export.h"
#include "model/sensors.h"

namespace sensors {

// Where a record goes.
enum class Placement {
  kOwnBus,           // the document's own list
  kBehindInterface,  // the list of a display interface
};

// Which placements accept a kind.
enum class Home {
  kAnywhere,
  kOwnBusOnly,
};

// Where a record of a kind tells its face.
enum class FaceRule {
  kBehindInterface,
  kEverywhere,
};

// One kind of sensor. To add one: its class, its code, its Fill, its row in the kind table.
struct SensorKind {
  SensorType Code;
  const char* Text;  // value of the "Type" row
  Home Accepted;
  FaceRule Face;
  std::unique_ptr<QtSts::CSensor> (*Make)(bool with_face);  // filled from the scratch state
};

// Every kind in ascending order of code.
COLLECTOR_API std::span<const SensorKind> SensorKinds();

// The record that the scratch state describes; null when st_Type has no record in this placement.
// A DCIO board takes its staged points, and its fans if it has them; a power-supply redundancy
// board takes the staged voltages. Without a record nothing is taken.
std::unique_ptr<QtSts::CSensor> BuildRecord(Placement placement);

}  // namespace sensors
