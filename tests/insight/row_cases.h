// For each outcome rows that make it and rows that just miss it.
#pragma once

#include <ostream>
#include <vector>

#include "insight/outcomes.h"
#include "sandbox/rows.h"

struct RowCase {
  insight::Outcome What;
  const char* Key;      // of the row that it befalls
  const char* Says;     // what its remark contains
  sandbox::Rows Makes;  // rows that make it
  sandbox::Rows Misses;
  // SQL that makes another table than the usual one; "" for that.
  const char* Table = "";
  // SQL that changes the rows that make it.
  const char* Changes = "";
};

inline void PrintTo(const RowCase& expected, std::ostream* out) {
  *out << insight::InfoOf(expected.What).Id;
}

const std::vector<RowCase>& ErrorCases();
const std::vector<RowCase>& OtherCases();
