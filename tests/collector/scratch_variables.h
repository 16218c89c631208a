// Every variable of the scratch state by name, so that tests can set, compare and clear them all.
#pragma once

#include <span>
#include <string>

struct ScratchVariable {
  const char* Name;
  const void* Address;
  void (*Fill)();         // with something that is not its value at load
  void (*Clear)();        // as it is at load
  std::string (*Text)();  // its whole value
};

// In the order of collector/state/scratch.h; the rate limiter is not among them.
std::span<const ScratchVariable> ScratchVariables();

// Makes the scratch state that of a fresh process.
void ClearScratch();
