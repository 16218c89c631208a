#include "replay/cycles.h"

#include <cstdlib>
#include <ctime>
#include <exception>

#include "collector/status_interface.h"
#include "model/xml.h"

namespace replay {

void Begin(const Recording& recording) {
  recording.Controller.Apply();
  if (!recording.Zone.empty()) {
    setenv("TZ", recording.Zone.c_str(), 1);
    tzset();
  }
}

void RunCycles(const Recording& recording,
               const std::function<void(std::size_t cycle, const std::string& document)>& use) {
  Begin(recording);
  CStatusInterface collector;
  // As `show` runs them: the limiter of the reports is as old as the process.
  collector.m_Hardware.m_bLogTrackerPixel = false;
  collector.InitDatabase(false);
  sandbox::StepByStep steps(recording.Controller);
  for (std::size_t cycle = 0; cycle < recording.Cycles.size(); ++cycle) {
    if (cycle > 0) {
      steps.ApplyNext();
    }
    static_cast<void>(collector.QueryDatabase());
    use(cycle, QtSts::WriteDocument(collector.m_Status));
  }
  collector.CloseDatabase();
}

Stepper::Stepper(const sandbox::Scenario& controller)
    : steps_(controller), before_(observe::SetObserver(this)) {}

Stepper::~Stepper() { observe::SetObserver(before_); }

void Stepper::See(const observe::Event& event) {
  if (event.As<observe::CycleEnds>() == nullptr || steps_.AtEnd() || !trouble_.empty()) {
    return;
  }
  try {
    steps_.ApplyNext();
  } catch (const std::exception& error) {
    trouble_ = error.what();
  }
}

}  // namespace replay
