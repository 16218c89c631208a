#include <collector/status_interface.h>
#include <insight/snapshot.h>

#include <iostream>

// Prints the sources that gave nothing, the rows that were lost, and what needs attention.
int main() {
  CStatusInterface collector;
  collector.InitDatabase(false);
  insight::Recorder recorder(collector);
  const insight::Snapshot snapshot = recorder.RunCycle();
  for (const insight::Source& source : snapshot.Sources) {
    if (source.State != insight::SourceState::kOk) {
      std::cout << source.Name << ": " << insight::NameOf(source.State) << '\n';
    }
  }
  for (const insight::Row& row : snapshot.Rows) {
    if (row.Class() == insight::OutcomeClass::kError) {
      std::cout << row.Key << ": " << row.Remarks.front().Text << '\n';
    }
  }
  for (const insight::Finding& finding : snapshot.Findings) {
    std::cout << insight::NameOf(finding.Level) << ": " << finding.Message << '\n';
  }
  return snapshot.Result;
}
