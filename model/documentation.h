// What schemas say about fields and classes in words; private to this folder.
#pragma once

#include <string>

#include "model/listing.h"

namespace QtSts {

// "Temperature. Unit: °C.", for codes also "Values: 0 auto, 1 manual.", and of what may be absent
// that it may.
std::string DocumentationOf(const Field& field);

// Of which documents a schema is.
inline constexpr const char* kOfWhichDocuments =
    "Of documents of this release. Later releases add fields and classes, which a schema refuses "
    "and a reader passes over, and codes.";

}  // namespace QtSts
