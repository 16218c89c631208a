// The numbers of a document that there are metrics for.
#pragma once

#include <functional>
#include <string>

#include "insight/snapshot.h"
#include "model/tree.h"

namespace views {

// The path of a field of the element at `path`, which is empty for the document itself.
std::string FieldPath(const std::string& path, const std::string& field);

// Calls `visit` with each number, as the document has it, in order of the document: the element
// that has it, and the path from there: "CurrentRpm", "Dimming/DimmingLevel", "InputVoltages[2]". A
// flag is 0 or 1. Absent are those that the metrics leave out, and masks of bits.
void VisitNumbers(const insight::Snapshot& snapshot,
                  const std::function<void(const QtSts::TreeElement& element,
                                           const std::string& field, double number)>& visit);

}  // namespace views
