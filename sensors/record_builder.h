// The one place where the scratch state of a sensor becomes its record.
#pragma once

#include <cstddef>
#include <memory>
#include <span>

#include "collector/state/codes.h"
#include "collector/state/elements.h"
#include "collector/state/export.h"
#include "collector/state/row_tables.h"
#include "model/sensors.h"

namespace sensors {

// Where a record goes.
enum class Placement {
  kOwnBus,           // the document's own list
  kBehindInterface,  // the list of a display interface
};

// One kind of sensor. To add one: its class, its code, its row in the kind table.
struct SensorKind {
  SensorType Code;
  bool IsCan;                              // may stand behind an interface, too
  const char* Text;                        // value of the "Type" row
  const QtSts::ClassInfo* Class;           // of its records
  std::span<const elements::Taken> Takes;  // in the order of taking
  std::unique_ptr<QtSts::CSensor> (*Make)(Placement placement);  // filled from the scratch state
};

// Every kind in ascending order of code.
COLLECTOR_API std::span<const SensorKind> SensorKinds();

// True when records of this kind take this variable or field, in one placement at least.
COLLECTOR_API bool Takes(const SensorKind& kind, const rows::Place& place);

// The text of a "Type" row to the code of its kind. Deliberate: an unknown text does not keep the
// old code, unlike an unknown location, but gives kUnknownSensor.
extern const rows::Parser kSensorTypeParser;

// The record that the scratch state describes; null when st_Type has no record in this placement.
// A DCIO board takes its staged points, and its fans if it has them; a power-supply redundancy
// board takes the staged voltages. Without a record nothing is taken.
std::unique_ptr<QtSts::CSensor> BuildRecord(Placement placement);

}  // namespace sensors
