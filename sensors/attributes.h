// The attributes of "Sensor_" rows. To add one: its row in one of the tables of sensor_keys.cpp.
#pragma once

#include <span>

#include "collector/state/export.h"
#include "collector/state/row_tables.h"

namespace sensors {

// The attributes with exact names, in byte order of name.
COLLECTOR_API std::span<const rows::Attribute> ExactAttributes();

// The attributes known by how they begin, in any case of letters: those of I/O points, which no
// exact name can be confused with, and the others, which come after the exact names, in this order.
COLLECTOR_API std::span<const rows::Attribute> PointFamilies();
COLLECTOR_API std::span<const rows::Attribute> AttributeFamilies();

// The parts of a point ("Label" of "Input_3_Label"), by name. Each row of "Type" is stored: the
// part alone makes a point present.
COLLECTOR_API std::span<const rows::Field<DcioPoint>> PointParts();

// The attribute that a row of this name is taken for; null when there is none.
COLLECTOR_API const rows::Attribute* FindAttribute(const char* name);

}  // namespace sensors
