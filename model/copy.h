// A document of one's own.
#pragma once

#include <memory>

#include "model/document.h"
#include "model/export.h"

namespace QtSts {

// A document that says what `status` says and shares nothing with it, so that a thread that
// collects can hand out documents. Every field of every listed class is copied bit by bit, texts
// included. A point of a class that is not listed becomes one of the nearest class that is, an
// output point under its own name. A list keeps its positions: null stands where null stood, and
// where an element stood that documents pass over. An element that was added twice becomes two.
// Throws std::bad_alloc.
STATUS_API std::unique_ptr<CStatus> Copy(const CStatus& status);

}  // namespace QtSts
