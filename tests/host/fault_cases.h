// Controllers with one fault each, and what the first 40 lines of `show` say of it.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "sandbox/scenario.h"

inline constexpr const char* kDatabase = "/dev/shm/status.db";

struct Fault {
  const char* Name;
  void (*Change)(sandbox::Scenario& scenario);  // of the demo, before it becomes the controller
  void (*Afterwards)();                         // null: nothing more
  const char* Beginning;                        // of the first line
  std::vector<std::string> Words;               // of the first 40 lines
};

void PrintTo(const Fault& fault, std::ostream* stream);

// For faults that come afterwards alone.
inline void Nothing(sandbox::Scenario& /*scenario*/) {}

// Of nodes, files, network and the database as a whole.
std::vector<Fault> FaultsOfController();

// Of what rows report.
std::vector<Fault> FaultsOfRows();
