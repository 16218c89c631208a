// Random rows through whole cycles: the database and the cycle hand them on unchanged.
#include <gmock/gmock.h>

#include "collector/status_interface.h"
#include "model/xml.h"
#include "sandbox/rows.h"
#include "sandbox/scenario.h"
#include "tests/sensors/row_maker.h"

namespace {

using testing::IsEmpty;

unsigned int InterfacesOf(const QtSts::CStatus& status) {
  const QtSts::COutput* const output = status.Outputs[0];
  return output == nullptr ? 0 : output->DisplayInterfaces.Count();
}

class RandomCycles : public SensorTest {
 protected:
  void ExpectTheSameSensorsAs(const QtSts::CStatus& status) const {
    EXPECT_EQ(status_.Sensors.Count(), status.Sensors.Count());
    for (unsigned int i = 0; i < status_.Sensors.Count(); ++i) {
      EXPECT_THAT(DifferencesOf(*status_.Sensors[i], *status.Sensors[i]), IsEmpty());
    }
    EXPECT_EQ(InterfacesOf(status_), InterfacesOf(status));
    for (unsigned int i = 0; i < InterfacesOf(status_); ++i) {
      EXPECT_THAT(DifferencesOf(InterfaceAt(status_, i), InterfaceAt(status, i)), IsEmpty());
    }
  }

  // Reading refuses what lists and boards refuse, of which a cycle makes none.
  static void ExpectReadable(QtSts::CStatus& status) {
    QtSts::XmlError error;
    EXPECT_NE(QtSts::ReadDocument(QtSts::WriteDocument(status), &error), nullptr) << error.Text();
  }
};

}  // namespace

TEST_F(RandomCycles, GiveTheSensorsThatTheHandlerGivesFromTheSameRowsInOrder) {
  sandbox::Scenario().Database().Apply();
  CStatusInterface collector;
  ASSERT_EQ(collector.InitDatabase(false), 0);
  for (unsigned seed = 1001; seed <= 1040; ++seed) {
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    const Rows rows = RowMaker(seed).Make();
    const Scratch before = SaveScratch();
    Cycle(rows);
    const Scratch after = SaveScratch();

    sandbox::SetRows(sandbox::Rows(rows.begin(), rows.end()));
    RestoreScratch(before);
    ASSERT_EQ(collector.QueryDatabase(), 0);
    ExpectTheSameSensorsAs(collector.m_Status);
    ExpectReadable(collector.m_Status);
    EXPECT_EQ(dcioInputs, after.dcioInputs);
    EXPECT_EQ(dcioOutputs, after.dcioOutputs);
    EXPECT_EQ(FanRpms, after.FanRpms);
    ASSERT_FALSE(HasFailure());
  }
}
