// The tables of the rows that each fill one field or one variable, for programs that look up where
// a row goes. In the order of the sources.
#pragma once

#include <span>

#include "collector/state/export.h"
#include "collector/state/row_tables.h"
#include "model/document.h"

namespace handlers {

// Keys of the document's own fields, and of output 0: dimming, fans, flags, and the T-table.
COLLECTOR_API std::span<const rows::Field<QtSts::CStatus>> RootFields();
COLLECTOR_API std::span<const rows::Field<QtSts::COutput>> OutputFields();
COLLECTOR_API std::span<const rows::Field<QtSts::COutput>> TtableFields();

// Attributes of DCIO devices.
COLLECTOR_API std::span<const rows::Attribute> DcioAttributes();

}  // namespace handlers
