// How a test looks into the middle of a cycle: rows whose key begins with "ThermalScaler", which
// the product consumes without a trace, reach a function of the test.
#pragma once

#include <functional>
#include <string>

#include "model/document.h"

struct DispatchedRow {
  QtSts::CStatus* Status;
  std::string Value;
  std::string Key;
};

// Called for each such row; empty: nothing happens. What it throws leaves the handler.
extern std::function<void(const DispatchedRow&)> g_on_thermal_scaler;
