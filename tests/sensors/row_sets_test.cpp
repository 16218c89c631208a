// The row sets, handed to the handler in byte order of key.
#include "tests/sensors/row_sets.h"

namespace {

class RowSets : public SensorTest, public testing::WithParamInterface<RowSet> {};

TEST_P(RowSets, GiveTheirDocumentInTheFirstAndTheSecondCycle) {
  for (const int cycle : {1, 2}) {
    SCOPED_TRACE(testing::Message() << "cycle " << cycle);
    Cycle(GetParam().Make());
    GetParam().Expect(status_, cycle);
  }
}

INSTANTIATE_TEST_SUITE_P(Handler, RowSets, testing::ValuesIn(kRowSets),
                         [](const testing::TestParamInfo<RowSet>& set) { return set.param.Name; });

}  // namespace
