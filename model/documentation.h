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
    "Of documents of this release. Later releases add fields, classes and codes: a schema refuses "
    "these, a reader passes over them.";

}  // namespace QtSts
