#include "tests/replay/captured.h"

#include <chrono>

#include "capture/assembler.h"
#include "capture/contents.h"
#include "capture/recorder.h"
#include "collector/status_interface.h"
#include "model/xml.h"

namespace replay {

capture::Entries Captured(const sandbox::Scenario& scenario) {
  scenario.Apply();
  capture::Assembler assembler;
  const auto take = [&assembler](const capture::Observation& seen) {
    assembler.Take(seen, std::chrono::steady_clock::now());
  };
  {
    const capture::Recorder recorder(take);
    CStatusInterface collector;
    collector.m_Hardware.m_bLogTrackerPixel = false;
    collector.InitDatabase(false);
    for (std::size_t cycle = 0; cycle <= scenario.Steps(); ++cycle) {
      if (cycle > 0) {
        scenario.Step(cycle).ApplyAfter(scenario.Step(cycle - 1));
      }
      collector.QueryDatabase();
      take({.What = capture::Saw::kDocument, .Texts = {QtSts::WriteDocument(collector.m_Status)}});
    }
    collector.CloseDatabase();
  }
  return capture::ContentsOf({.Cycles = assembler.TakeCycles()}, {}, capture::ThisMachine());
}

}  // namespace replay
