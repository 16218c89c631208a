// What stands in a capture.
#pragma once

#include <string>
#include <vector>

#include "capture/controller.h"
#include "capture/recording.h"

namespace capture {

// What was replaced in a capture, without what it replaces.
struct Replaced {
  std::string Kind = {};  // "GUID", "IPv4 address"
  std::string Now = {};
};

// The machine that captures.
struct Machine {
  std::string Kernel = {};  // "6.1.0-18-amd64"
  std::string Type = {};    // "x86_64"
};
Machine ThisMachine();

// All files of the capture, below its folder: a scenario with a step for each further cycle, the
// documents, and capture.json.
Entries ContentsOf(const Recording& recording, const std::vector<Replaced>& replaced,
                   const Machine& machine);

}  // namespace capture
