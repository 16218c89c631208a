// The whole scratch state, made from its list: by name, and as a value that tests save, restore and
// compare.
#pragma once

#include <ostream>
#include <span>
#include <string>
#include <vector>

#include "collector/state/scratch.h"

struct ScratchVariable {
  const char* Name;
  const void* Address;
  void (*Fill)();         // with something that is not its value at load
  void (*Clear)();        // as it is at load
  std::string (*Text)();  // its whole value
};

// In the order of the list; the rate limiter is not among them.
std::span<const ScratchVariable> ScratchVariables();

// Makes the scratch state that of a fresh process.
void ClearScratch();

// Gives every variable something that is not its value at load.
void FillScratch();

// The values of all variables. A default-constructed one is the state of a fresh process.
struct Scratch {
#define MEMBER(name, ...) __VA_ARGS__ name = {};
  SCRATCH_VARIABLES(MEMBER)
#undef MEMBER

  bool operator==(const Scratch&) const = default;
};

Scratch SaveScratch();
void RestoreScratch(const Scratch& saved);

// The names of the variables that differ.
std::vector<std::string> Differences(const Scratch& left, const Scratch& right);

// The scratch state as text, a variable a line; equal for equal states.
std::string ScratchText();

// The same of a saved state; a failed comparison prints it.
void PrintTo(const Scratch& scratch, std::ostream* out);
