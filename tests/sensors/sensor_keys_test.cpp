// How a "Sensor_" row is split, and what completes a sensor.
#include "sensors/sensor_keys.h"

#include <gmock/gmock.h>

#include "model/can_sensors.h"
#include "sensors/record_builder.h"
#include "tests/sensors/sensor_test.h"

namespace {

using testing::ElementsAre;

class SensorKeys : public SensorTest {};

}  // namespace

TEST_F(SensorKeys, OfOneSensorEndAsItsScratchStateAndOneRecord) {
  at_Type = kRouterCan;
  EXPECT_EQ(Send(3, "Address", "17"), 0);
  EXPECT_EQ(Send(3, "Location", "Local_CAN"), 0);
  EXPECT_EQ(status_.Sensors.Count(), 0U);
  EXPECT_EQ(Send(3, "Type", "CANTemp"), 0);
  EXPECT_EQ(u32_SensorNumber, 3U);
  EXPECT_EQ(u32_Address, 17U);
  EXPECT_EQ(at_Type, kLocalCan);
  EXPECT_EQ(st_Type, kCanTemp);
  EXPECT_THAT(Addresses(status_.Sensors), ElementsAre(17));
  EXPECT_EQ(status_.Outputs.Count(), 0U);
}

TEST_F(SensorKeys, BehindTheRouterEndAsARecordOfTheInterface) {
  Send(3, {{"Address", "17"}, {"Location", "TXR_CAN"}, {"Type", "CANTemp"}});
  EXPECT_EQ(status_.Sensors.Count(), 0U);
  EXPECT_EQ(at_Type, kRouterCan);
  EXPECT_THAT(Addresses(InterfaceAt(status_, 0).Sensors), ElementsAre(17));
}

TEST_F(SensorKeys, GoToTheOwnListFromEveryLocationButTheTwoInterfaces) {
  constexpr struct {
    const char* Location;
    std::uint32_t Code;
    bool Own;
  } kRows[] = {{"Local_CAN", 0, true},
               {"TXR_CAN", 1, false},
               {"SCBII_CAN", 2, false},
               {"Local_I2C", 3, true}};
  constexpr auto kNoAttachment = static_cast<AttachmentType>(7);
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.Location);
    Status_ClearLists(&status_);
    at_Type = kNoAttachment;
    Send(0, "Location", row.Location);
    EXPECT_EQ(at_Type, row.Code);
    Send(0, "Type", "CANDoor");
    EXPECT_EQ(status_.Sensors.Count(), row.Own ? 1U : 0U);
    EXPECT_EQ(status_.Outputs.Count(), row.Own ? 0U : 1U);
  }
  Status_ClearLists(&status_);
  at_Type = kNoAttachment;
  Send(0, "Type", "CANDoor");
  EXPECT_EQ(status_.Sensors.Count(), 1U);
}

TEST_F(SensorKeys, KeepTheOldLocationWhenTheTextIsUnknown) {
  Send(0, "Location", "SCBII_CAN");
  for (const char* const unknown : {"", "local_can", "Local_CAN ", "TXR", "1"}) {
    Send(0, "Location", unknown);
    EXPECT_EQ(at_Type, kControlBoardCan) << unknown;
  }
}

TEST_F(SensorKeys, SetTypeTwentyForAnUnknownTypeAndCompleteAllTheSame) {
  Send(0, "Location", "TXR_CAN");
  for (const char* const unknown : {"cantemp", "CANTemp ", "", "CANAirflow", "20"}) {
    SCOPED_TRACE(unknown);
    Status_ClearLists(&status_);
    st_Type = kCanDoor;
    EXPECT_EQ(Send(0, "Type", unknown), 0);
    EXPECT_EQ(st_Type, kUnknownSensor);
    // The completion has made output and interface before it refused the type.
    EXPECT_EQ(InterfaceAt(status_, 0).Sensors.Count(), 0U);
  }
}

TEST_F(SensorKeys, KnowTheTypeByItsExactText) {
  constexpr struct {
    const char* Text;
    std::uint32_t Code;
  } kTypes[] = {
      {"CANTemp", 0},
      {"CANLight", 1},
      {"CANLightLux", 2},
      {"CANAirFlow", 10},
      {"CANHumidity", 5},
      {"CANFanRpm", 9},
      {"CANIsolationBoard", 11},
      {"CANMultiDirectional", 3},
      {"CANDoor", 4},
      {"OnboardTemp", 17},
      {"CANDcio16in3out8cfg", 6},
      {"CANDcio2in1out", 7},
      {"CANDcioAndFanRpm", 8},
      {"CANPowerSupplyRedundancyBoard", 13},
      {"CANBeacon", 14},
      {"CANRoundel", 15},
      {"OnboardCabinetFanControl", 19},
  };
  EXPECT_EQ(std::size(kTypes), sensors::SensorKinds().size());
  for (const auto& type : kTypes) {
    SCOPED_TRACE(type.Text);
    Status_ClearLists(&status_);
    Send(0, "Type", type.Text);
    EXPECT_EQ(st_Type, type.Code);
    EXPECT_EQ(status_.Sensors.Count(), 1U);
  }
}

TEST_F(SensorKeys, AreRefusedWhenTheNumberBeginsWithASignOrTheLike) {
  u32_SensorNumber = 4;
  const Scratch before = SaveScratch();
  for (const char first : {'(', ')', '*', '+', ',', '-', '.', '/'}) {
    SCOPED_TRACE(first);
    EXPECT_EQ(Send(std::string("Sensor_") + first + "5_Address", "17"), -1);
    EXPECT_EQ(SaveScratch(), before);
  }
  // The neighbours of the refused range are taken for numbers.
  EXPECT_EQ(Send("Sensor_'5_Address", "17"), 0);
  EXPECT_EQ(u32_SensorNumber, 0U);
  EXPECT_EQ(u32_Address, 17U);
  EXPECT_EQ(Send("Sensor_0_Address", "18"), 0);
  EXPECT_EQ(u32_Address, 18U);
}

TEST_F(SensorKeys, StoreTheNumberAsItWrapsWhateverTheAttribute) {
  constexpr struct {
    const char* Key;
    std::uint32_t Number;
  } kKeys[] = {{"Sensor_3_Nonsense", 3},
               {"Sensor_007_Nonsense", 7},
               {"Sensor_ 8_Nonsense", 8},
               {"Sensor_x_Nonsense", 0},
               {"Sensor__Nonsense", 0},
               {"Sensor_4294967298_Nonsense", 2},
               {"Sensor_99999999999999999999_Nonsense", 4294967295},
               {"Sensor_5x_Nonsense", 5},
               {"Sensor_ -6_Nonsense", 4294967290}};
  for (const auto& row : kKeys) {
    SCOPED_TRACE(row.Key);
    u32_SensorNumber = 99;
    EXPECT_EQ(Send(row.Key, "1"), 0);
    EXPECT_EQ(u32_SensorNumber, row.Number);
  }
}

TEST_F(SensorKeys, WithoutASecondUnderscoreStoreTheNumberAlone) {
  EXPECT_EQ(Send("Sensor_12", "CANTemp"), 0);
  EXPECT_EQ(SaveScratch(), FreshBut(12));
  EXPECT_EQ(Send("Sensor_12Type", "CANTemp"), 0);
  EXPECT_EQ(SaveScratch(), FreshBut(12));
  EXPECT_EQ(Send("Sensor_", "CANTemp"), 0);
  EXPECT_EQ(SaveScratch(), Scratch());
  EXPECT_EQ(status_.Sensors.Count(), 0U);
}

TEST_F(SensorKeys, HaveTheirAttributeAfterTheUnderscoreWhateverEndsTheNumber) {
  for (const char* const number : {"5", "5x", "5`", "5.5", "5 ", "x", ""}) {
    SCOPED_TRACE(number);
    u32_Address = 0;
    EXPECT_EQ(Send(std::string("Sensor_") + number + "_Address", "17"), 0);
    EXPECT_EQ(u32_Address, 17U);
  }
}

TEST_F(SensorKeys, OfPointsAndFansWithoutTheirUnderscoresAreIgnored) {
  const Scratch before = SaveScratch();
  for (const char* const name :
       {"Input", "Input_", "Input_0", "Output_3", "Input2_Label", "Output", "Fan_", "Fan_1"}) {
    EXPECT_EQ(Send(0, name, "1"), 0) << name;
    EXPECT_EQ(SaveScratch(), before) << name;
  }
}

TEST_F(SensorKeys, WithoutAValueStoreTheNumberAlone) {
  const Scratch before = FreshBut(6);
  for (const char* const attribute : {"Address", "Type", "Connected", "Input_0_Type", "Fan_1_Rpm",
                                      "Latitude", "Location", "Locked", "Humidity"}) {
    SCOPED_TRACE(attribute);
    std::string key = std::string("Sensor_6_") + attribute;
    EXPECT_EQ(Status_Sensor(&status_, nullptr, key.data()), 0);
    EXPECT_EQ(SaveScratch(), before);
  }
  EXPECT_EQ(status_.Sensors.Count(), 0U);
  std::string refused = "Sensor_-6_Address";
  EXPECT_EQ(Status_Sensor(&status_, nullptr, refused.data()), -1);
}

TEST_F(SensorKeys, ShorterThanTheirPrefixChangeNothing) {
  u32_SensorNumber = 4;
  const Scratch before = SaveScratch();
  char value[] = "5";
  EXPECT_EQ(Status_Sensor(&status_, value, nullptr), 0);
  for (const char* const key : {"", "S", "Sensor"}) {
    EXPECT_EQ(Send(key, "5"), 0) << key;
  }
  EXPECT_EQ(SaveScratch(), before);
}

TEST_F(SensorKeys, ClearNothingWhenTheSensorIsComplete) {
  Send(0, {{"Address", "17"},
           {"Bus", "2"},
           {"Celsius", "21.5"},
           {"Connected", "true"},
           {"Face", "1"},
           {"Rev", "4"}});
  const Scratch before = SaveScratch();
  Send(0, "Type", "CANTemp");
  EXPECT_EQ(SaveScratch(), before);
  // So the next sensor inherits what its own rows do not say.
  Send(1, {{"Address", "18"}, {"Type", "CANTemp"}});
  const auto& second = At<QtSts::CCANTempSensor>(status_.Sensors, 1);
  EXPECT_EQ(second.Address, 18U);
  EXPECT_EQ(second.Bus, 2);
  EXPECT_EQ(second.Celsius, 21.5F);
  EXPECT_TRUE(second.Connected);
}

TEST_F(SensorKeys, HandTheirAttributesOnToTheNextCycle) {
  Cycle({{"Sensor_0_Bus", "2"}, {"Sensor_0_Type", "CANTemp"}});
  Cycle({{"Sensor_0_Type", "CANTemp"}});
  EXPECT_EQ(At<QtSts::CCANTempSensor>(status_.Sensors, 0).Bus, 2);
}

TEST(Strnicmp, ComparesTheFirstBytesWithoutRegardToCase) {
  constexpr struct {
    const char* Left;
    const char* Right;
    unsigned int Count;
    int Result;
  } kRows[] = {
      {"", "", 0, 0},
      {"a", "b", 0, 0},
      {"INPUT_2_Label", "Input", 5, 0},
      {"input", "INPUT", 5, 0},
      {"Inpu", "Input", 5, -1},
      {"Input", "Inpu", 5, 1},
      {"Inpus", "Input", 5, -1},
      {"Inpuu", "Input", 5, 1},
      {"INPUS", "inputx", 4, 0},
      // Compared in lower case: '_' comes before 'a', not after 'A'.
      {"_", "A", 1, -1},
      {"[", "a", 1, -1},
      // Bytes, not characters: beyond ASCII they are larger than any letter and have no case.
      {"\xE4", "z", 1, 1},
      {"\xC4", "\xE4", 1, -1},
      {"\xFF", "\x7F", 1, 1},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.Left << " " << row.Right << " " << row.Count);
    EXPECT_EQ(Strnicmp(row.Left, row.Right, row.Count), row.Result);
  }
}

TEST(Strnicmp, DoesNotStopAtATerminatingNul) {
  EXPECT_EQ(Strnicmp("ab\0c", "AB\0C", 4), 0);
  EXPECT_EQ(Strnicmp("ab\0c", "ab\0d", 4), -1);
  EXPECT_EQ(Strnicmp("ab\0d", "ab\0c", 4), 1);
}
