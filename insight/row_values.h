// What is remarkable about the value of a row. Private to this library.
#pragma once

#include "collector/observer.h"
#include "collector/state/store.h"
#include "insight/snapshot.h"

namespace insight {

// How a value is read and stored, as the tables of the collector have it.
struct ValueFormat {
  const rows::Parser* Parser = nullptr;  // null: unknown
  rows::Type Is = rows::Type::kString;
};

// Ends the remark on a word that is not known where what was there before is kept.
inline constexpr char kStays[] = " stays";

// Of the value that `store` has read by `format`.
void JudgeValue(const observe::Stores& store, const ValueFormat& format, Row* row);

}  // namespace insight
