// What `capture` takes; the program of that name runs it.
#pragma once

#include <string>
#include <vector>

#include "host/commands.h"

namespace host {

struct CaptureOptions {
  int Cycles = 1;
  int Interval = 1;  // seconds
  int Timeout = 30;  // seconds
  bool Redact = false;
  std::string File = {};  // "-": standard output
};

// `options` holds the values and must outlive them.
std::vector<Argument> CaptureArguments(CaptureOptions* options);

}  // namespace host
