// The errors of rows, those that are alike together.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "insight/snapshot.h"

namespace host {

// The rows of one element stand together, those of all other keys too: "Sensor_03", or "".
std::string_view FamilyOf(std::string_view key);

// One error, and the other rows of the same family that have it, too.
struct Problem {
  const insight::Row* Of;
  const insight::Remark* What;
  std::vector<const insight::Row*> Likewise;
};

enum class Remarks { kFirst, kAll };  // of a row, the worst first

// The errors of `rows`, in their order.
std::vector<Problem> ProblemsOf(const std::vector<const insight::Row*>& rows, Remarks remarks);

// "58 more rows of Sensor_12: Bus, Connected, ... and 46 more"; "" for none. Printable.
std::string LikewiseText(const Problem& problem);

// What the remark says; of one without a text what its outcome means.
std::string TextOf(const insight::Remark& remark);

}  // namespace host
