// Rows to their handlers, without a database.
#include "collector/dispatch.h"

#include <gtest/gtest.h>

#include "tests/collector/scratch_variables.h"

namespace {

class DispatcherTest : public testing::Test {
 protected:
  DispatcherTest() { ClearScratch(); }
  ~DispatcherTest() override { ClearScratch(); }

  QtSts::CStatus status_;
  rows::Dispatcher dispatcher_{&status_};
};

TEST_F(DispatcherTest, FindsAHandlerByTheBeginningOfTheKey) {
  dispatcher_.Dispatch("GUIDX", "abc");
  EXPECT_EQ(status_.GUID, "abc");
  dispatcher_.Dispatch("TtableTitle2", "title");
  ASSERT_EQ(status_.Outputs.Count(), 1U);
  EXPECT_EQ(status_.Outputs[0]->Title, "title");
}

TEST_F(DispatcherTest, IgnoresUnknownKeysAndFindsTheNextOne) {
  for (const char* const key : {"", "DCIO", "Guid", "GUI", "Zzz"}) {
    dispatcher_.Dispatch(key, "1");
  }
  EXPECT_EQ(status_.GUID, QtSts::CStatus().GUID);
  EXPECT_EQ(SaveScratch(), Scratch());
  dispatcher_.Dispatch("GUID", "abc");
  EXPECT_EQ(status_.GUID, "abc") << "an unknown key moves nothing on";
}

TEST_F(DispatcherTest, NeverGoesBackToAKeyBeforeTheLastMatch) {
  dispatcher_.Dispatch("GUID", "abc");
  dispatcher_.Dispatch("Zzz", "1");  // a key that matches nothing begins no new search either
  dispatcher_.Dispatch("ErrorFlags", "0x1");
  EXPECT_EQ(status_.ErrorFlags, QtSts::CStatus().ErrorFlags);
  rows::Dispatcher next_cycle(&status_);
  next_cycle.Dispatch("ErrorFlags", "0x1");
  EXPECT_EQ(status_.ErrorFlags, "0x1");
}

TEST_F(DispatcherTest, HandsManyRowsToTheHandlerOfOneKey) {
  dispatcher_.Dispatch("Sensor_1_Address", "17");
  dispatcher_.Dispatch("Sensor_1_Bus", "2");
  dispatcher_.Dispatch("Sensor_2_Address", "18");
  EXPECT_EQ(u32_SensorNumber, 2U);
  EXPECT_EQ(u32_Address, 18U);
  EXPECT_EQ(u32_Bus, 2U);
}

TEST_F(DispatcherTest, CutsTextsToWhatTheTableAllowsAndPassesShorterOnesWhole) {
  const std::string fits(CSQLdatabase::kMaxValueBytes, 'v');
  dispatcher_.Dispatch("GUID", (fits + "w").c_str());
  EXPECT_EQ(status_.GUID, fits);
  dispatcher_.Dispatch("GUID", "w");
  EXPECT_EQ(status_.GUID, "w") << "nothing is left of the longer row";
  // The attribute of the first of these keys loses its last letter.
  const std::string prefix = "Sensor_" + std::string(CSQLdatabase::kMaxAddressBytes - 11, '0');
  dispatcher_.Dispatch((prefix + "_Face").c_str(), "5");
  EXPECT_EQ(u32_Face, 0U);
  dispatcher_.Dispatch((prefix + "_Bus").c_str(), "5");
  EXPECT_EQ(u32_Bus, 5U);
}

TEST_F(DispatcherTest, DoesTheSameWithTextsOfTheCaller) {
  char key[] = "GUIDX";
  char value[] = "abc";
  dispatcher_.DispatchInPlace(key, value);
  EXPECT_EQ(status_.GUID, "abc");
  char earlier[] = "ErrorFlags";
  dispatcher_.DispatchInPlace(earlier, value);
  EXPECT_EQ(status_.ErrorFlags, QtSts::CStatus().ErrorFlags);
}

}  // namespace
