// Where on a display an element of the document is, in a technician's words.
#pragma once

#include <string>

#include "insight/export.h"
#include "model/tree.h"

namespace insight {

// "fan 3 of the I/O board 2 at address 33 behind the router at address 12"; "" for what belongs to
// the controller as a whole, or to its one output.
INSIGHT_API std::string PlaceOf(const QtSts::TreeElement& element);

}  // namespace insight
