// Each rule of the findings: a controller that makes it, and one that just misses it.
#pragma once

#include <ostream>
#include <vector>

#include "insight/findings.h"
#include "model/document.h"

struct DocumentCase {
  const char* Name;
  const char* Id;
  insight::Severity Level;
  const char* Message;
  void (*Makes)(QtSts::CStatus& status);
  void (*JustMisses)(QtSts::CStatus& status);
};

inline std::ostream& operator<<(std::ostream& out, const DocumentCase& row) {
  return out << row.Name;
}

// What the cycle itself, its sources, its database and its rows say.
struct CycleCase {
  const char* Name;
  const char* Id;
  insight::Severity Level;
  const char* Message;
  void (*Makes)(insight::Snapshot& snapshot);
  void (*JustMisses)(insight::Snapshot& snapshot);
};

inline std::ostream& operator<<(std::ostream& out, const CycleCase& row) { return out << row.Name; }

// Of the display and the controller, of doors, fans, air and heaters.
std::vector<DocumentCase> DisplayCases();

// Of supplies, light, lamps and readings.
std::vector<DocumentCase> SensorCases();

std::vector<CycleCase> CycleCases();
