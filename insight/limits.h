// From which values on a reading needs attention. The table of docs/host.md says the same, and a
// test compares them.
#pragma once

#include <limits>
#include <span>
#include <string_view>
#include <vector>

#include "insight/export.h"

namespace insight {

// From Least to Most, both included. Not a number is in none.
struct Range {
  double Least = -std::numeric_limits<double>::infinity();
  double Most = std::numeric_limits<double>::infinity();

  bool Holds(double value) const { return value >= Least && value <= Most; }
};

// A reading outside of Warning needs attention, one outside of Critical at once.
struct Limit {
  Range Warning;
  Range Critical;
};

struct LimitInfo {
  const char* Name;   // stable: "temperature"
  const char* Unit;   // as in performance data: "C", "%", "s", "" for a count
  const char* About;  // one sentence without the closing stop
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
  std::vector<Limit> m_Limits;  // in the order of the table
};

}  // namespace insight
