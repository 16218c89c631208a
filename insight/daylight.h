// Whether there is light at the display. Private to this library.
#pragma once

#include "model/tree.h"

namespace insight {

// What a light sensor reads at least by day, in any of its units.
inline constexpr double kLeastByDay = 50;

// Whether the value is light that a sensor reads, which is never below 0.
bool IsLight(const QtSts::TreeElement& element, const QtSts::TreeValue& value);

// Whether all that the light sensor reads is 0; false for other elements.
bool IsBlind(const QtSts::TreeElement& sensor);

// Whether a light sensor of the document, which `root` is, reads light; without one by the times of
// sunrise and sunset, or else by the local time. An hour after sunrise and before sunset counts as
// night, as do the hours before 10 and after 15 without these times. False when nothing says it.
bool IsByDay(const QtSts::TreeElement& root);

}  // namespace insight
