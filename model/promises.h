// What the values of a document promise beyond their types; private to this folder. Who reads a
// document asks for it, since no list and no setter refuses what is read.
#pragma once

#include <optional>
#include <string>

#include "model/listing.h"

namespace QtSts {

// An object and the listing of its class.
struct ReadObject {
  const ClassInfo* Class;
  const void* Object;
};

struct BrokenPromise {
  const char* Field;    // of the object
  std::string Message;  // "25 is refused: the list takes indices from 1 to 24"
};

// What an object breaks, as far as its own values and those of `holder` say; nothing when all is
// well. `holder` is the object that has the list which `object` is for, or null.
std::optional<BrokenPromise> BrokenBy(const ReadObject& object, const ReadObject* holder);

}  // namespace QtSts
