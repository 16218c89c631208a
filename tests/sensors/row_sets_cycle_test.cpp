// The row sets in the status database, read by whole cycles.
#include "collector/status_interface.h"
#include "sandbox/scenario.h"
#include "tests/sensors/row_sets.h"

namespace {

class RowSetCycles : public SensorTest, public testing::WithParamInterface<RowSet> {};

TEST_P(RowSetCycles, GiveTheirDocumentInTheFirstAndTheSecondCycle) {
  sandbox::Scenario scenario;
  for (const auto& [key, value] : GetParam().Make()) {
    scenario.Row(key, value);
  }
  scenario.Apply();
  CStatusInterface collector;
  ASSERT_EQ(collector.InitDatabase(false), 0);
  for (const int cycle : {1, 2}) {
    SCOPED_TRACE(testing::Message() << "cycle " << cycle);
    ASSERT_EQ(collector.QueryDatabase(), 0);
    GetParam().Expect(collector.m_Status, cycle);
  }
  EXPECT_EQ(collector.CloseDatabase(), 0);
}

INSTANTIATE_TEST_SUITE_P(Database, RowSetCycles, testing::ValuesIn(kRowSets),
                         [](const testing::TestParamInfo<RowSet>& set) { return set.param.Name; });

}  // namespace
