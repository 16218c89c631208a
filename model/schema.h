// The XML schema of the document, from the listings.
#pragma once

#include <string>

#include "model/export.h"

namespace QtSts {

// An XML Schema 1.0 document in UTF-8: one type per listed class with its fields in order, their
// types, whether they may be absent, and their meaning, unit and code names as documentation.
// Every document that WriteDocument writes is valid against it.
STATUS_API std::string WriteSchema();

}  // namespace QtSts
