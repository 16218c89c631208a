// From which values on a reading needs attention. The table of statuscollector(1) says the same,
// and a test compares them.
#pragma once

#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "insight/export.h"

namespace insight {

// From Least to Most, both included; with Excluded all numbers but those. Not a number is in none.
struct Range {
  double Least = -std::numeric_limits<double>::infinity();
  double Most = std::numeric_limits<double>::infinity();
  bool Excluded = false;

  bool Holds(double value) const {
    return value == value && (value >= Least && value <= Most) != Excluded;
  }
  // Whether it holds every number.
  bool IsEverything() const { return *this == Range{}; }
  bool operator==(const Range&) const = default;
};

// The range that a text gives in the form of monitoring plugins; nothing for any other text.
//
//   10       0 to 10         10:      10 and more        ~:10     10 and less
//   10:20    10 to 20        :20      0 to 20            @10:20   below 10 or above 20
//
// Numbers have a decimal point, whatever the locale, and are finite. The first is not the greater.
INSIGHT_API std::optional<Range> ParseRange(std::string_view text);

// `range` in that form; "" when it holds every number.
INSIGHT_API std::string Written(const Range& range);

// A reading outside of Warning needs attention, one outside of Critical at once.
struct Limit {
  Range Warning;
  Range Critical;
};

struct LimitInfo {
  const char* Name;   // stable: "temperature"
  const char* Unit;   // as in performance data: "C", "%", "s", "c" for a count that only grows
  const char* About;  // what is read, one sentence without the closing stop
  Limit Default;
};

// Every limit once.
INSIGHT_API std::span<const LimitInfo> LimitTable();

// The limits of one caller; the defaults where nothing else was given.
class INSIGHT_API Limits {
 public:
  Limits();

  // By name, as in LimitTable(). Throws std::out_of_range for another name.
  const Limit& Of(std::string_view name) const;
  Limit& Of(std::string_view name);

 private:
  std::vector<Limit> limits_;  // in the order of the table
};

}  // namespace insight
