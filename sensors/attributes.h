// The attributes of "Sensor_" rows. To add one: its row in one of the tables of sensor_keys.cpp.
#pragma once

#include <span>

#include "collector/state/export.h"
#include "collector/state/row_tables.h"

namespace sensors {

// The attributes with exact names, in byte order of name.
COLLECTOR_API std::span<const rows::Attribute> ExactAttributes();

// The attributes that are known by the beginning of their name, in upper or lower case. Those of
// I/O points come before the exact names, none of which begins like them; the others come after the
// exact names, in this order.
COLLECTOR_API std::span<const rows::Attribute> PointFamilies();
COLLECTOR_API std::span<const rows::Attribute> AttributeFamilies();

// The parts of a point ("Label" of "Input_3_Label"), by name. "Type" has two rows, and both are
// stored: only this part makes a point present.
COLLECTOR_API std::span<const rows::Field<DcioPoint>> PointParts();

// The attribute that a row of this name is taken for; null when there is none.
COLLECTOR_API const rows::Attribute* FindAttribute(const char* name);

}  // namespace sensors
