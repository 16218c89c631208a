// Sets of rows with the document that they must give, for the handler and for whole cycles alike.
#pragma once

#include "tests/sensors/sensor_test.h"

struct RowSet {
  const char* Name;
  Rows (*Make)();
  // Cycle counts from 1; some sets give another document in their second cycle.
  void (*Expect)(const QtSts::CStatus& status, int cycle);
};

// The sets A to E.
extern const RowSet kRowSets[5];

inline void PrintTo(const RowSet& set, std::ostream* out) { *out << set.Name; }
