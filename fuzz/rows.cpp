// Rows of table `status` through the handlers: two cycles in one run, since the scratch state is
// carried from one to the next.
//
// Input: a row a line, key TAB value; a line "=" parts the first cycle's rows from the second's.
#include "collector/state/scratch.h"
#include "fuzz/dispatch.h"
#include "model/compare.h"
#include "model/lookup/verify.h"
#include "model/xml.h"
#include "tests/collector/scratch_variables.h"
#include "tests/support/tree_of_xml.h"

namespace {

// More rows than a real table has; larger inputs only make the fuzzer slow.
constexpr std::size_t kLargestInput = std::size_t{64} << 10;

struct Cycles {
  fuzz::Rows First;
  fuzz::Rows Second;
};

Cycles ParseCycles(std::string_view text) {
  Cycles cycles;
  fuzz::Rows* rows = &cycles.First;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    if (line == "=") {
      rows = &cycles.Second;
      continue;
    }
    const std::size_t tab = std::min(line.find('\t'), line.size());
    rows->insert_or_assign(std::string(line.substr(0, tab)),
                           std::string(line.substr(std::min(tab + 1, line.size()))));
  }
  return cycles;
}

using Dispatch = void (*)(const fuzz::Rows& rows, QtSts::CStatus* status);

void RunCycle(const fuzz::Rows& rows, Dispatch dispatch, QtSts::CStatus* status) {
  Status_ClearLists(status);
  Reset_Globals();
  dispatch(rows, status);
}

// Both cycles in a fresh process; returns the scratch state that they leave.
std::string RunCycles(const Cycles& cycles, Dispatch dispatch, QtSts::CStatus* status) {
  ClearScratch();
  RunCycle(cycles.First, dispatch, status);
  RunCycle(cycles.Second, dispatch, status);
  return ScratchText();
}

void CheckRoundTrip(QtSts::CStatus* status) {
  QtSts::XmlError error;
  const std::string written = QtSts::WriteDocument(*status);
  const auto read = QtSts::ReadDocument(written, &error);
  FUZZ_CHECK(read != nullptr);
  FUZZ_CHECK(QtSts::Compare(*status, *read).empty());
  FUZZ_CHECK(test_support::TreeDiffersFromXml(*status, written).empty());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > kLargestInput) {
    return 0;
  }
  const Cycles cycles = ParseCycles(fuzz::Text(data, size));
  QtSts::CStatus status;
  const std::string scratch = RunCycles(cycles, &fuzz::Dispatch, &status);
  QtSts::CStatus again;
  FUZZ_CHECK(RunCycles(cycles, &fuzz::DispatchExact, &again) == scratch);
  FUZZ_CHECK(QtSts::Compare(status, again).empty());
  CheckRoundTrip(&status);
  ClearScratch();
  return 0;
}
