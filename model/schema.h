// The schemas of the document, from the listings.
#pragma once

#include <string>

#include "model/export.h"

namespace QtSts {

// An XML Schema 1.0 document in UTF-8: one type per listed class with its fields in order, their
// types, whether they may be absent, and their meaning, unit and code names as documentation.
// Every document that WriteDocument writes is valid against it, but for points of a program's own
// classes.
STATUS_API std::string WriteSchema();

// The same of the document in JSON, as a schema of JSON Schema 2020-12 in UTF-8. It also allows a
// member "Insight" of the root, and does not say what that holds.
STATUS_API std::string WriteJsonSchema();

}  // namespace QtSts
