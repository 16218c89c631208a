// A snapshot against a plain cycle.
#include "insight/snapshot.h"

#include "collector/observer.h"
#include "model/xml.h"
#include "sandbox/enter.h"
#include "sandbox/scenario.h"
#include "sandbox/testing.h"

namespace {

using sandbox::Scenario;

std::string WithoutTime(QtSts::CStatus& status) {
  status.LocalTime.clear();
  status.Uptime.clear();
  return QtSts::WriteDocument(status);
}

TEST(Snapshot, HasTheDocumentThatAPlainCycleGives) {
  Scenario::Load(sandbox::SourcePath("scenarios/demo")).Apply();
  CStatusInterface collector;
  collector.InitDatabase(false);
  ASSERT_EQ(collector.QueryDatabase(), 0);
  ASSERT_EQ(collector.QueryDatabase(), 0);
  const std::string plain = WithoutTime(collector.m_Status);

  insight::Recorder recorder(collector);
  const insight::Snapshot snapshot = recorder.RunCycle();
  EXPECT_EQ(WithoutTime(collector.m_Status), plain);
  EXPECT_EQ(snapshot.Result, 0);
  EXPECT_EQ(snapshot.Rows.size(), snapshot.Database.Rows);
  EXPECT_GT(snapshot.Rows.size(), 100U);
}

TEST(Snapshot, LeavesTheObserverBeforeItInPlace) {
  CStatusInterface collector;
  insight::Recorder recorder(collector);
  recorder.RunCycle();
  EXPECT_EQ(observe::CurrentObserver(), nullptr);
}

}  // namespace
