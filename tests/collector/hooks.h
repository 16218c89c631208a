// How a test acts in the middle of a cycle: some calls of the library go through functions of this
// program.
#pragma once

#include <functional>
#include <string>

#include "model/document.h"

struct DispatchedRow {
  QtSts::CStatus* Status;
  std::string Value;
  std::string Key;
};

// Called for each row whose key begins with "ThermalScaler", which the product consumes without a
// trace; empty: nothing happens. What it throws leaves the handler.
extern std::function<void(const DispatchedRow&)> g_on_thermal_scaler;

// Called with the name of each of Status_ClearLists, Reset_Globals, GetTime and time that is about
// to be called; empty: nothing happens. What it throws leaves the call, but not that of time.
extern std::function<void(const char* call)> g_on_call;
