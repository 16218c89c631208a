// Rows to their handlers, without a database.
#include "collector/dispatch.h"

#include <gtest/gtest.h>

#include "tests/collector/scratch_variables.h"

namespace {

class DispatcherTest : public testing::Test {
 protected:
  DispatcherTest() { ClearScratch(); }
  ~DispatcherTest() override { ClearScratch(); }

  QtSts::CStatus m_Status;
  rows::Dispatcher m_Dispatcher{&m_Status};
};

TEST_F(DispatcherTest, FindsAHandlerByTheBeginningOfTheKey) {
  m_Dispatcher.Dispatch("GUIDX", "abc");
  EXPECT_EQ(m_Status.GUID, "abc");
  m_Dispatcher.Dispatch("TtableTitle2", "title");
  ASSERT_EQ(m_Status.Outputs.Count(), 1U);
  EXPECT_EQ(m_Status.Outputs[0]->Title, "title");
}

TEST_F(DispatcherTest, IgnoresUnknownKeysAndFindsTheNextOne) {
  for (const char* const key : {"", "DCIO", "Guid", "GUI", "Zzz"}) {
    m_Dispatcher.Dispatch(key, "1");
  }
  EXPECT_EQ(m_Status.GUID, QtSts::CStatus().GUID);
  EXPECT_EQ(SaveScratch(), Scratch());
  m_Dispatcher.Dispatch("GUID", "abc");
  EXPECT_EQ(m_Status.GUID, "abc") << "an unknown key moves nothing on";
}

TEST_F(DispatcherTest, NeverGoesBackToAKeyBeforeTheLastMatch) {
  m_Dispatcher.Dispatch("GUID", "abc");
  m_Dispatcher.Dispatch("ErrorFlags", "0x1");
  EXPECT_EQ(m_Status.ErrorFlags, QtSts::CStatus().ErrorFlags);
  rows::Dispatcher next_cycle(&m_Status);
  next_cycle.Dispatch("ErrorFlags", "0x1");
  EXPECT_EQ(m_Status.ErrorFlags, "0x1");
}

TEST_F(DispatcherTest, HandsManyRowsToTheHandlerOfOneKey) {
  m_Dispatcher.Dispatch("Sensor_1_Address", "17");
  m_Dispatcher.Dispatch("Sensor_1_Bus", "2");
  m_Dispatcher.Dispatch("Sensor_2_Address", "18");
  EXPECT_EQ(u32_SensorNumber, 2U);
  EXPECT_EQ(u32_Address, 18U);
  EXPECT_EQ(u32_Bus, 2U);
}

TEST_F(DispatcherTest, CutsTextsToWhatTheTableAllowsAndPassesShorterOnesWhole) {
  const std::string fits(CSQLdatabase::kMaxValueBytes, 'v');
  m_Dispatcher.Dispatch("GUID", (fits + "w").c_str());
  EXPECT_EQ(m_Status.GUID, fits);
  m_Dispatcher.Dispatch("GUID", "w");
  EXPECT_EQ(m_Status.GUID, "w") << "nothing is left of the longer row";
  // The attribute of the first of these keys loses its last letter.
  const std::string prefix = "Sensor_" + std::string(CSQLdatabase::kMaxAddressBytes - 11, '0');
  m_Dispatcher.Dispatch((prefix + "_Face").c_str(), "5");
  EXPECT_EQ(u32_Face, 0U);
  m_Dispatcher.Dispatch((prefix + "_Bus").c_str(), "5");
  EXPECT_EQ(u32_Bus, 5U);
}

TEST_F(DispatcherTest, DoesTheSameWithTextsOfTheCaller) {
  char key[] = "GUIDX";
  char value[] = "abc";
  m_Dispatcher.DispatchInPlace(key, value);
  EXPECT_EQ(m_Status.GUID, "abc");
  char earlier[] = "ErrorFlags";
  m_Dispatcher.DispatchInPlace(earlier, value);
  EXPECT_EQ(m_Status.ErrorFlags, QtSts::CStatus().ErrorFlags);
}

}  // namespace
