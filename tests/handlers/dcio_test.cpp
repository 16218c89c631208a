#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "collector/state/scratch.h"
#include "tests/handlers/handler_fixture.h"

namespace {

using testing::ElementsAre;

class DcioHandler : public HandlerTest {
 protected:
  int Dcio(const std::string& key, const char* value) {
    return Row(Status_DCIO, key.c_str(), value);
  }

  QtSts::CDCIODevice* Device(unsigned int position) { return status_.DCIO.Devices[position]; }
  unsigned int Count() { return status_.DCIO.Devices.Count(); }
};

TEST_F(DcioHandler, ParksFiveRowsAndCompletesTheDeviceAtTheLast) {
  u32_DCIO_ErrCntr = 9;  // neither of these two is what its row stores
  st_DCIO_Type = kRunLed;
  EXPECT_EQ(Dcio("DCIO_4_State", "1"), 0);
  EXPECT_EQ(Dcio("DCIO_4_ErrCnt", "0"), 0);
  EXPECT_EQ(Dcio("DCIO_4_NumAttribute", "3"), 0);
  EXPECT_EQ(Dcio("DCIO_4_Address", "12"), 0);
  EXPECT_EQ(Count(), 0U);
  EXPECT_EQ(Dcio("DCIO_4_Type", "DoorSwitch"), 0);
  EXPECT_EQ(u32_DCIO_SensorNumber, 4U);
  EXPECT_EQ(u32_DCIO_State, 1U);
  EXPECT_EQ(u32_DCIO_ErrCntr, 0U);
  EXPECT_EQ(u32_DCIO_NumAttr, 3U);
  EXPECT_EQ(u32_DCIO_Address, 12U);
  EXPECT_EQ(st_DCIO_Type, kDoorSwitch);

  ASSERT_EQ(Count(), 1U);
  ASSERT_NE(dynamic_cast<QtSts::CDoorSwitch*>(Device(0)), nullptr);
  EXPECT_EQ(Device(0)->NumberOfAttributes, 3U);
  EXPECT_EQ(*Device(0)->State, 1U);
  EXPECT_EQ(*Device(0)->ErrorCounter, 0U);
  EXPECT_EQ(*Device(0)->Address, 12U);
}

TEST_F(DcioHandler, KnowsTheTypesByTheirExactText) {
  constexpr struct {
    const char* Value;
    std::uint32_t Code;
  } kRows[] = {{"DoorSwitch", 0},
               {"PowerMonitor", 1},
               {"RunLED", 2},
               {"GenericInput", 3},
               {"GenericOutput", 4}};
  for (const auto& row : kRows) {
    st_DCIO_Type = static_cast<DcioType>(99);
    EXPECT_EQ(Dcio("DCIO_1_Type", row.Value), 0);
    EXPECT_EQ(st_DCIO_Type, row.Code) << row.Value;
  }
}

TEST_F(DcioHandler, KeepsTheTypeForAnUnknownTextAndStillCompletesTheDevice) {
  unsigned int expected = 0;
  for (const char* unknown : {"doorswitch", "RunLed", "", "DoorSwitch ", "Generic"}) {
    st_DCIO_Type = kPowerMonitor;
    EXPECT_EQ(Dcio("DCIO_" + std::to_string(expected) + "_Type", unknown), 0);
    EXPECT_EQ(st_DCIO_Type, kPowerMonitor) << '"' << unknown << '"';
    ASSERT_EQ(Count(), ++expected);
    EXPECT_NE(dynamic_cast<QtSts::CPowerMonitor*>(Device(expected - 1)), nullptr);
  }
}

TEST_F(DcioHandler, RefusesANumberThatBeginsWithASign) {
  u32_DCIO_SensorNumber = 7;
  u32_DCIO_State = 8;
  for (const char* number : {"-1", "(", ")", "*", "+1", ",", ".1", "/"}) {
    EXPECT_EQ(Dcio(std::string("DCIO_") + number + "_State", "1"), -1) << number;
    EXPECT_EQ(Dcio(std::string("DCIO_") + number + "_Type", "DoorSwitch"), -1) << number;
  }
  EXPECT_EQ(u32_DCIO_SensorNumber, 7U);
  EXPECT_EQ(u32_DCIO_State, 8U);
  EXPECT_EQ(Count(), 0U);
}

TEST_F(DcioHandler, LooksAtTheFirstCharacterOfTheNumberOnly) {
  EXPECT_EQ(Dcio("DCIO_'_State", "1"), 0);
  EXPECT_EQ(Dcio("DCIO_:_State", "2"), 0);
  EXPECT_EQ(u32_DCIO_State, 2U);
  EXPECT_EQ(Dcio("DCIO_ -3_State", "3"), 0);
  EXPECT_EQ(u32_DCIO_SensorNumber, 4294967293U);
}

TEST_F(DcioHandler, StoresTheNumberOfARowWithAnUnknownAttribute) {
  for (const char* attribute : {"state", "STATE", "Stat", "State2", "", "Label", "Err_Cnt"}) {
    u32_DCIO_SensorNumber = 0;
    EXPECT_EQ(Dcio(std::string("DCIO_9_") + attribute, "5"), 0) << attribute;
    EXPECT_EQ(u32_DCIO_SensorNumber, 9U) << attribute;
  }
  EXPECT_EQ(u32_DCIO_State, 0U);
  EXPECT_EQ(u32_DCIO_ErrCntr, 0U);
  EXPECT_EQ(Count(), 0U);
}

TEST_F(DcioHandler, StoresTheNumberOfARowWithoutAnAttribute) {
  EXPECT_EQ(Dcio("DCIO_9", "5"), 0);
  EXPECT_EQ(u32_DCIO_SensorNumber, 9U);
  EXPECT_EQ(Dcio("DCIO_", "5"), 0);
  EXPECT_EQ(u32_DCIO_SensorNumber, 0U);
  EXPECT_EQ(Count(), 0U);
}

TEST_F(DcioHandler, TakesTheAttributeAfterTheFirstUnderscore) {
  EXPECT_EQ(Dcio("DCIO__State", "6"), 0);
  EXPECT_EQ(u32_DCIO_State, 6U);
  EXPECT_EQ(Dcio("DCIO_1_2_State", "7"), 0);
  EXPECT_EQ(u32_DCIO_State, 6U);
  EXPECT_EQ(Dcio("DCIO_1x_State", "8"), 0);
  EXPECT_EQ(u32_DCIO_State, 8U);
  EXPECT_EQ(u32_DCIO_SensorNumber, 1U);
}

TEST_F(DcioHandler, WrapsNumbersToThirtyTwoBits) {
  Dcio("DCIO_4294967297_Address", "-1");
  EXPECT_EQ(u32_DCIO_SensorNumber, 1U);
  EXPECT_EQ(u32_DCIO_Address, 4294967295U);
  Dcio("DCIO_1_ErrCnt", "4294967298");
  EXPECT_EQ(u32_DCIO_ErrCntr, 2U);
  Dcio("DCIO_1_NumAttribute", "garbage");
  EXPECT_EQ(u32_DCIO_NumAttr, 0U);
}

TEST_F(DcioHandler, ReducesTheStateOfTheDeviceToAFlagButNotTheParkedOne) {
  Dcio("DCIO_0_State", "7");
  Dcio("DCIO_0_Type", "GenericInput");
  EXPECT_EQ(u32_DCIO_State, 7U);
  EXPECT_EQ(*Device(0)->State, 1U);
}

TEST_F(DcioHandler, GivesLedsAndOutputsAnAddressOnly) {
  for (const char* type : {"RunLED", "GenericOutput"}) {
    status_.DCIO.Devices.Clear();
    Dcio("DCIO_0_State", "1");
    Dcio("DCIO_0_ErrCnt", "2");
    Dcio("DCIO_0_Address", "34");
    Dcio("DCIO_0_Type", type);
    ASSERT_EQ(Count(), 1U) << type;
    EXPECT_EQ(Device(0)->State, nullptr) << type;
    EXPECT_EQ(Device(0)->ErrorCounter, nullptr) << type;
    EXPECT_EQ(*Device(0)->Address, 34U) << type;
  }
}

TEST_F(DcioHandler, InheritsWhatTheDeviceDoesNotMention) {
  Dcio("DCIO_0_Address", "34");
  Dcio("DCIO_0_State", "1");
  Dcio("DCIO_0_Type", "DoorSwitch");
  Dcio("DCIO_1_State", "0");
  Dcio("DCIO_1_Type", "DoorSwitch");
  ASSERT_EQ(Count(), 2U);
  EXPECT_EQ(*Device(1)->Address, 34U);
  EXPECT_EQ(*Device(1)->State, 0U);
}

TEST_F(DcioHandler, LeavesADeviceAloneThatIsCompletedTwice) {
  Dcio("DCIO_0_Address", "34");
  Dcio("DCIO_0_Type", "DoorSwitch");
  Dcio("DCIO_0_Address", "35");
  Dcio("DCIO_0_Type", "RunLED");
  ASSERT_EQ(Count(), 1U);
  EXPECT_EQ(*Device(0)->Address, 34U);
  EXPECT_NE(dynamic_cast<QtSts::CDoorSwitch*>(Device(0)), nullptr);
}

TEST_F(DcioHandler, TouchesNoScratchVariableButItsOwn) {
  FillScratch();
  const Scratch before = SaveScratch();
  for (const char* attribute : {"State", "ErrCnt", "NumAttribute", "Address"}) {
    Dcio(std::string("DCIO_5_") + attribute, "77");
  }
  Dcio("DCIO_5_Type", "GenericOutput");
  EXPECT_EQ(Count(), 1U);
  EXPECT_THAT(Differences(SaveScratch(), before),
              ElementsAre("u32_DCIO_SensorNumber", "u32_DCIO_State", "u32_DCIO_ErrCntr",
                          "u32_DCIO_NumAttr", "u32_DCIO_Address", "st_DCIO_Type"));
}

TEST_F(DcioHandler, DoesNothingForAKeyShorterThanItsPrefix) {
  u32_DCIO_SensorNumber = 7;
  for (const char* key : {"DCIO", "D", ""}) {
    EXPECT_EQ(Dcio(key, "1"), 0) << key;
  }
  EXPECT_EQ(Row(Status_DCIO, nullptr, "1"), 0);
  EXPECT_EQ(u32_DCIO_SensorNumber, 7U);
}

TEST_F(DcioHandler, StoresNothingButTheNumberWithoutAValue) {
  u32_DCIO_State = 5;
  EXPECT_EQ(Dcio("DCIO_3_State", nullptr), 0);
  EXPECT_EQ(u32_DCIO_SensorNumber, 3U);
  EXPECT_EQ(u32_DCIO_State, 5U);
  EXPECT_EQ(Count(), 0U);
}

// A "Type" row without a value used to complete nothing.
TEST_F(DcioHandler, KeepsTheTypeWithoutAValueAndStillCompletesTheDevice) {
  st_DCIO_Type = kRunLed;
  EXPECT_EQ(Dcio("DCIO_0_Type", nullptr), 0);
  EXPECT_EQ(st_DCIO_Type, kRunLed);
  ASSERT_EQ(Count(), 1U);
  EXPECT_NE(dynamic_cast<QtSts::CRunLED*>(Device(0)), nullptr);
  EXPECT_EQ(Dcio("DCIO_-3_Type", nullptr), -1);
  EXPECT_EQ(Count(), 1U);
}

}  // namespace
