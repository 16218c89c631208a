// Compares what cycles give now with what they gave when they were captured.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "replay/recording.h"

namespace replay {

struct Verdict {
  std::vector<std::string> Differences;  // "cycle 2: Uptime: ... -> ...", in order
  std::size_t Compared = 0;              // cycles
};

// Replays a recording in a sandbox, once for all its cycles, and compares the documents but for
// LocalTime, Uptime, storage, and what the recording says a replay does not give. Throws Refused
// where there is no sandbox, and std::runtime_error when the cycles do not end.
Verdict Verify(const Recording& recording);

// The documents of a recording's cycles, from a replay in a sandbox.
std::vector<std::string> DocumentsOf(const Recording& recording);

// What differs between two documents; `left_out` are paths as `statuscollector diff` takes them, or
// "*". Throws std::runtime_error when one is no document, or a path none of a document.
std::vector<std::string> Compare(const std::string& before, const std::string& after,
                                 const std::vector<std::string>& left_out);

}  // namespace replay
