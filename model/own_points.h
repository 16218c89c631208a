// Points of classes that a program adds to those of the model.
#pragma once

#include <memory>

#include "model/listing.h"

namespace QtSts {

// A new point with the class `own` in ListedObject: of the nearest listed class, under the name of
// `own`. Null when `own` is no class of output points with a name of its own.
std::unique_ptr<CBaseStatus> MakeOwnPoint(const ClassInfo& own);

}  // namespace QtSts
