// The data members of the model's classes as a compiler sees them.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace record_layouts {

// One line of a class's layout: a base, a member, or what lies within one.
struct Line {
  int Depth = 0;      // 1: the class's own
  bool Base = false;  // a base class, otherwise a member
  std::string Name;   // of the base class or of the member
};

using Layouts = std::map<std::string, std::vector<Line>>;

// The layouts of `classes` ("QtSts::CArea"), defined in `headers` (relative to the source tree), as
// clang++ prints them. Throws std::runtime_error with the reason when it does not.
Layouts Dump(const std::vector<std::string>& headers, const std::vector<std::string>& classes);

}  // namespace record_layouts
