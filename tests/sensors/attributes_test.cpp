// Where each attribute of a "Sensor_" row is stored, and what of it is read.
#include <gmock/gmock.h>

#include <cctype>
#include <cstring>
#include <functional>

#include "tests/sensors/sensor_test.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

class SensorAttributes : public SensorTest {
 protected:
  // Output 0 as its own rows leave it.
  void MakeOutput(std::uint32_t mode, std::uint32_t flags) {
    Status_VerifyOutput(&status_, 0);
    status_.Outputs[0]->Dimming.DimmingMode = mode;
    status_.Outputs[0]->StatusFlags = flags;
  }
};

// What a row of this attribute with this value must leave where.
struct Stored {
  const char* Attribute;
  const char* Value;
  std::function<double()> Where;
  double Expected;
};

template <class T>
std::function<double()> In(const T& variable) {
  return [&variable] { return static_cast<double>(variable); };
}

void PrintTo(const Stored& row, std::ostream* out) { *out << row.Attribute << " = " << row.Value; }

}  // namespace

TEST_F(SensorAttributes, StoreEachExactAttributeInItsPlace) {
  const Stored rows[] = {
      {"Address", "17", In(u32_Address), 17},
      {"Bus", "2", In(u32_Bus), 2},
      {"Connected", "true", In(b_Connected), 1},
      {"Location", "Local_I2C", In(at_Type), 3},
      {"NumAttribute", "9", In(u32_NumAttribute), 9},
      {"SyncLossCounter", "5", In(uiSyncLossCounter), 5},
      {"DispInterfaceNumber", "4", In(u32_DispInterfaceNumAttribute), 4},
      {"DispInterfaceAddress", "16384", In(u16_DispInterfaceAddress), 16384},
      {"Face", "1", In(u32_Face), 1},
      {"Rev", "-2", In(s32_Revision), -2},
      {"IdType", "300", In(u16_IdType), 300},
      {"HardwareID", "200", In(u8_HardwareID), 200},
      {"Celsius", "21.5", In(f_celsius), 21.5},
      {"OneMin", "11", In(u16_OneMinAverage), 11},
      {"TenMin", "12", In(u16_TenMinAverage), 12},
      {"OneMinLux", "13", In(u16_OneMinLuxAverage), 13},
      {"TenMinLux", "14", In(u16_TenMinLuxAverage), 14},
      {"LongTermAverage", "15", In(u16_LongTermAverage), 15},
      {"HumidityOneMin", "45.25", In(f_Humidity_OneMinAverage), 45.25},
      {"HumidityTenMin", "46.75", In(f_Humidity_TenMinAverage), 46.75},
      {"AverageRpm", "1200", In(u16_AverageRpm), 1200},
      {"CurrentRpm", "1250", In(u16_CurrentRpm), 1250},
      {"IsoVin", "24.5", In(f_inputVoltage), 24.5},
      {"IsoVout", "5.125", In(f_outputVoltage), 5.125},
      {"IsoTemperature", "-12.5", In(f_celsiusTemperature), -12.5},
      {"PortStatus", "4294967295", In(u32_PortStatus), 4294967295.0},
      {"Ambient", "80", In(u16_Ambient), 80},
      {"Front", "70", In(u32_Front), 70},
      {"Back", "60", In(u32_Back), 60},
      {"Locked", "locked_time", In(Locked), 1},
      {"Latitude", "44", In(dLatitude), 44},
      {"Longitude", "-88", In(dLongitude), -88},
      {"Altitude", "210", In(dAltitude), 210},
      {"Compass", "359", In(uiCompass), 359},
      {"FansEnabled", "6", In(u32_FansEnabled), 6},
  };
  // Of the exact names only "Type" is missing here.
  EXPECT_EQ(std::size(rows) + 1, sensors::ExactAttributes().size());
  for (const Stored& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row));
    ClearScratch();
    EXPECT_EQ(Send(8, row.Attribute, row.Value), 0);
    EXPECT_EQ(row.Where(), row.Expected);
    EXPECT_THAT(Differences(SaveScratch(), FreshBut(8)), SizeIs(1));
  }
}

TEST_F(SensorAttributes, MatchExactNamesWithTheirCaseAndAsAWhole) {
  for (const char* const name :
       {"address", "ADDRESS", "Addres", "AddressX", "Address ", "ONEMIN", "OneMinLu", ""}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(Send(1, name, "77"), 0);
  }
  EXPECT_EQ(u32_Address, 0U);
  EXPECT_EQ(u16_OneMinAverage, 0U);
  EXPECT_EQ(u16_OneMinLuxAverage, 0U);
}

TEST_F(SensorAttributes, StoreEachFamilyOfAttributesInItsPlaceInAnyCase) {
  const Stored rows[] = {
      {"Psrb_HwErrors", "3", In(u8_Psrb_HardwareErrors), 3},
      {"TemperatureKelvin", "300", In(beaconRoundel.TemperatureKelvin), 300},
      {"Humidity", "55", In(beaconRoundel.Humidity), 55},
      {"RedDimLevel", "10", In(beaconRoundel.RedDimLevel), 10},
      {"AmberDimLevel", "20", In(beaconRoundel.AmberDimLevel), 20},
      {"ErrorFlags", "30", In(beaconRoundel.ErrorFlags), 30},
      {"RedLedErrorCount", "400", In(beaconRoundel.RedLedErrorCount), 400},
      {"AmberLedErrorCount", "500", In(beaconRoundel.AmberLedErrorCount), 500},
      {"StatusFlags", "60", In(beaconRoundel.StatusFlags), 60},
      {"SyncControlStartBit", "7", In(beaconRoundel.SyncControlStartBit), 7},
      {"PerColorLedCount", "800", In(beaconRoundel.PerColorLedCount), 800},
  };
  // Beside them there are the fans and the two kinds of voltages.
  EXPECT_EQ(std::size(rows) + 3, sensors::AttributeFamilies().size());
  for (const Stored& row : rows) {
    std::string upper = row.Attribute;
    std::string lower = row.Attribute;
    for (std::size_t i = 0; i < upper.size(); ++i) {
      upper[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(upper[i])));
      lower[i] = static_cast<char>(std::tolower(static_cast<unsigned char>(lower[i])));
    }
    for (const std::string& name : {std::string(row.Attribute), upper, lower, upper + "_x"}) {
      SCOPED_TRACE(name);
      ClearScratch();
      EXPECT_EQ(Send(1, name, row.Value), 0);
      EXPECT_EQ(row.Where(), row.Expected);
      EXPECT_THAT(Differences(SaveScratch(), FreshBut(1)), SizeIs(1));
    }
    ClearScratch();
    Send(1, std::string(row.Attribute).substr(0, std::strlen(row.Attribute) - 1), row.Value);
    EXPECT_EQ(row.Where(), 0) << "one letter short of " << row.Attribute;
  }
}

TEST_F(SensorAttributes, WrapIntegersToTheWidthOfTheirPlace) {
  const Stored rows[] = {
      {"Bus", "4294967301", In(u32_Bus), 5},
      {"Address", "-1", In(u32_Address), 4294967295.0},
      {"Address", "99999999999999999999", In(u32_Address), 4294967295.0},
      {"Rev", "4294967295", In(s32_Revision), -1},
      {"Rev", "2147483648", In(s32_Revision), -2147483648.0},
      {"IdType", "65541", In(u16_IdType), 5},
      {"IdType", "-1", In(u16_IdType), 65535},
      {"DispInterfaceAddress", "81920", In(u16_DispInterfaceAddress), 16384},
      {"HardwareID", "261", In(u8_HardwareID), 5},
      {"Humidity", "511", In(beaconRoundel.Humidity), 255},
      {"TemperatureKelvin", "131071", In(beaconRoundel.TemperatureKelvin), 65535},
      // One past the largest signed long: the signed reading stops there, the unsigned one goes on.
      {"Front", "9223372036854775808", In(u32_Front), 4294967295.0},
      {"PortStatus", "9223372036854775808", In(u32_PortStatus), 0},
      {"PortStatus", "-1", In(u32_PortStatus), 4294967295.0},
  };
  for (const Stored& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row));
    Send(1, row.Attribute, row.Value);
    EXPECT_EQ(row.Where(), row.Expected);
  }
}

TEST_F(SensorAttributes, ReadWhatIsNoNumberAsZero) {
  const Stored rows[] = {
      {"Address", "", In(u32_Address), 0},       {"Address", "x17", In(u32_Address), 0},
      {"Address", " 17 ", In(u32_Address), 17},  {"Address", "17x", In(u32_Address), 17},
      {"Address", "0x11", In(u32_Address), 0},   {"Celsius", "", In(f_celsius), 0},
      {"Celsius", "warm", In(f_celsius), 0},     {"Celsius", "21,5", In(f_celsius), 21},
      {"Celsius", "21.5 C", In(f_celsius), 21.5}};
  for (const Stored& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row));
    u32_Address = 5;
    f_celsius = 5;
    Send(1, row.Attribute, row.Value);
    EXPECT_EQ(row.Where(), row.Expected);
  }
}

TEST_F(SensorAttributes, ReadThePositionAsWholeNumbers) {
  Send(1, {{"Latitude", "44.9"}, {"Longitude", "-88.9"}, {"Altitude", "210.5"}});
  EXPECT_EQ(dLatitude, 44.0);
  EXPECT_EQ(dLongitude, -88.0);
  EXPECT_EQ(dAltitude, 210.0);
}

TEST_F(SensorAttributes, TakeConnectedForTrueOnlyWhenItSaysTrue) {
  for (const char* const text : {"True", "TRUE", "1", "true ", "", "false"}) {
    b_Connected = true;
    Send(1, "Connected", text);
    EXPECT_FALSE(b_Connected) << text;
  }
  Send(1, "Connected", "true");
  EXPECT_TRUE(b_Connected);
}

TEST_F(SensorAttributes, KnowTheThreeLockTextsAndTakeAnyOtherForUnknown) {
  constexpr struct {
    const char* Text;
    std::uint32_t Code;
  } kLocks[] = {{"locked_location", 0},
                {"locked_time", 1},
                {"locked_not_locked", 2},
                {"Locked_time", 3},
                {"", 3},
                {"locked_location", 0},
                {"locked", 3}};
  for (const auto& lock : kLocks) {
    Send(1, "Locked", lock.Text);
    EXPECT_EQ(Locked, lock.Code) << lock.Text;
  }
}

TEST_F(SensorAttributes, ReplaceTheAmbientLightWhileItIsOverriddenByHand) {
  constexpr struct {
    std::uint32_t Mode;
    std::uint32_t Flags;
    std::uint16_t Stored;
  } kRows[] = {{1, 0x4000, 201}, {1, 0xFFFFFFFF, 201}, {1, 0x2000, 80}, {1, 0, 80},
               {0, 0x4000, 80},  {2, 0x4000, 80},      {6, 0x4000, 80}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << "mode " << row.Mode << ", flags " << row.Flags);
    MakeOutput(row.Mode, row.Flags);
    Send(1, "Ambient", "80");
    EXPECT_EQ(u16_Ambient, row.Stored);
    // Only the reading is replaced.
    EXPECT_EQ(status_.Outputs[0]->StatusFlags, row.Flags);
  }
}

TEST_F(SensorAttributes, KeepTheAmbientLightAndMakeNoOutputWhereThereIsNone) {
  Send(1, "Ambient", "80");
  EXPECT_EQ(u16_Ambient, 80);
  EXPECT_EQ(status_.Outputs.Count(), 0U);
}

TEST_F(SensorAttributes, TryExactNamesBeforeFamilies) {
  Send(1, "HumidityOneMin", "45.5");
  EXPECT_EQ(f_Humidity_OneMinAverage, 45.5F);
  EXPECT_EQ(beaconRoundel.Humidity, 0);
  Send(1, "HUMIDITYONEMIN", "46");
  EXPECT_EQ(f_Humidity_OneMinAverage, 45.5F);
  EXPECT_EQ(beaconRoundel.Humidity, 46);
}

TEST_F(SensorAttributes, TryPointsBeforeAnythingElse) {
  // Whatever begins like a point is taken for one, and ignored when it is none.
  for (const char* const name : {"InputVoltage", "Inputs", "OutputVoltage", "input_Type"}) {
    EXPECT_EQ(Send(1, name, "5"), 0) << name;
  }
  EXPECT_EQ(SaveScratch(), FreshBut(1));
}

TEST_F(SensorAttributes, StageTheFourAttributesOfAPoint) {
  Send(1, {{"Input_2_Index", "3"},
           {"Input_2_Label", "Door left"},
           {"Input_2_State", "1"},
           {"Input_2_Type", "3"},
           {"Output_1_Index", "-4"},
           {"Output_1_Label", ""},
           {"Output_1_State", "2"},
           {"Output_1_Type", "4294967306"}});
  EXPECT_EQ(dcioInputs[2], (DcioPoint{1, 3, 3, 1, "Door left"}));
  EXPECT_EQ(dcioOutputs[1], (DcioPoint{1, 10, -4, 2, ""}));
}

TEST_F(SensorAttributes, MarkAPointPresentByItsTypeAlone) {
  Send(1, {{"Input_0_Index", "3"}, {"Input_0_Label", "Door"}, {"Input_0_State", "1"}});
  EXPECT_EQ(dcioInputs[0], (DcioPoint{0, 0, 3, 1, "Door"}));
  Send(1, "Input_0_Type", "0");
  EXPECT_EQ(dcioInputs[0], (DcioPoint{1, 0, 3, 1, "Door"}));
}

TEST_F(SensorAttributes, TakeInputAndOutputInAnyCaseButTheirAttributesOnlyAsTheyAreSpelt) {
  Send(1, "INPUT_2_Label", "upper");
  Send(1, "oUtPuT_2_Label", "mixed");
  EXPECT_EQ(dcioInputs[2].Label, "upper");
  EXPECT_EQ(dcioOutputs[2].Label, "mixed");
  for (const char* const name : {"INPUT_2_label", "Input_2_LABEL", "Input_2_Labe", "Input_2_Labels",
                                 "Input_2_type", "Input_2_", "Input_2_Label_2"}) {
    Send(1, name, "7");
    EXPECT_EQ(dcioInputs[2], (DcioPoint{0, 0, 0, 0, "upper"})) << name;
  }
}

TEST_F(SensorAttributes, FindTheNumberOfAPointAfterItsFirstUnderscore) {
  Send(1, "Inputs on board_2_Label", "found");
  EXPECT_EQ(dcioInputs[2].Label, "found");
  Send(1, "Input_ 3_Label", "padded");
  EXPECT_EQ(dcioInputs[3].Label, "padded");
  Send(1, "Input_+4_Label", "signed");
  EXPECT_EQ(dcioInputs[4].Label, "signed");
  Send(1, "Input_x_Label", "no number");
  EXPECT_EQ(dcioInputs[0].Label, "no number");
}

TEST_F(SensorAttributes, IgnorePointsBeyondTheStagingTables) {
  Send(1, {{"Input_23_Type", "1"}, {"Output_11_Type", "1"}});
  EXPECT_EQ(dcioInputs[23].Present, 1);
  EXPECT_EQ(dcioOutputs[11].Present, 1);
  const Scratch before = SaveScratch();
  // Numbers that would fall into the tables if they were narrowed first are among them.
  for (const char* const number : {"24", "-1", "255", "256", "65536", "4294967296", "4294967297",
                                   "-4294967295", "9223372036854775807", "9223372036854775808",
                                   "-9223372036854775808", "18446744073709551616"}) {
    SCOPED_TRACE(number);
    Send(1, std::string("Input_") + number + "_Label", "beyond");
    Send(1, std::string("Output_") + number + "_Label", "beyond");
    EXPECT_EQ(SaveScratch(), before);
  }
  Send(1, "Output_12_Label", "beyond");
  EXPECT_EQ(SaveScratch(), before);
}

TEST_F(SensorAttributes, KeepTheFirstSpeedOfAFan) {
  Send(1, "Fan_1_Rpm", "1200");
  Send(1, "Fan_1_Rpm", "1300");
  EXPECT_THAT(FanRpms, ElementsAre(Pair(1, 1200)));
}

TEST_F(SensorAttributes, NarrowTheNumberOfAFanBeforeItIsLookedUp) {
  Send(1, "Fan_1_Rpm", "1200");
  Send(1, "Fan_257_Rpm", "1300");
  Send(1, "Fan_-1_Rpm", "65537");
  EXPECT_THAT(FanRpms, ElementsAre(Pair(1, 1200), Pair(255, 1)));
}

TEST_F(SensorAttributes, TakeFansInAnyCaseButTheirSpeedOnlyAsRpm) {
  Send(1, "fan_2_Rpm", "900");
  Send(1, "FAN_3_Rpm", "910");
  for (const char* const name : {"Fan_1_RPM", "Fan_1_rpm", "Fan_1_Rpms", "Fan_1_", "Fan_1", "Fan_",
                                 "Fan1_Rpm", "Fan_1Rpm"}) {
    EXPECT_EQ(Send(1, name, "1"), 0) << name;
  }
  EXPECT_THAT(FanRpms, ElementsAre(Pair(2, 900), Pair(3, 910)));
}

TEST_F(SensorAttributes, AppendVoltagesInOrderOfArrivalWhateverTheirNumbers) {
  Send(1, {{"PsrbVin_9_Volts", "24.5"},
           {"PsrbVin_1_Volts", "24.25"},
           {"PsrbVin_1_Volts", "24.25"},
           {"PSRBVIN_Volts", "1"},
           {"psrbvin_0_mVolts_x", "-2"},
           {"PsrbVout_0_Volts", "12.5"},
           {"psrbVOUT_Volts", "nonsense"}});
  EXPECT_THAT(f_Psrb_InputVoltages, ElementsAre(24.5F, 24.25F, 24.25F, 1.0F, -2.0F));
  EXPECT_THAT(f_Psrb_OutputVoltages, ElementsAre(12.5F, 0.0F));
}

TEST_F(SensorAttributes, AppendNoVoltageWithoutVoltsInTheAttribute) {
  for (const char* const name : {"PsrbVin_0", "PsrbVin_0_volts", "PsrbVin_0_VOLTS", "PsrbVin_",
                                 "PsrbVout_0_Volt", "PsrbVout_", "PsrbVinVolts", "Volts"}) {
    Send(1, name, "24");
    EXPECT_THAT(f_Psrb_InputVoltages, IsEmpty()) << name;
    EXPECT_THAT(f_Psrb_OutputVoltages, IsEmpty()) << name;
  }
}

TEST_F(SensorAttributes, SortTheTypeOfASensorAfterItsOtherExactAttributes) {
  for (const rows::Attribute& attribute : sensors::ExactAttributes()) {
    EXPECT_LE(attribute.Name, "Type");
  }
  for (const auto families : {sensors::PointFamilies(), sensors::AttributeFamilies()}) {
    for (const rows::Attribute& family : families) {
      EXPECT_LT(family.Name, "Type");
    }
  }
}

TEST_F(SensorAttributes, AreFoundUnderEveryNameOfTheTable) {
  // Each exact name reaches its own destination, none is hidden by the look-up.
  for (const rows::Attribute& attribute : sensors::ExactAttributes()) {
    if (attribute.Name == "Type" || attribute.Name == "Location") {
      continue;
    }
    SCOPED_TRACE(attribute.Name);
    ClearScratch();
    Send(0, std::string(attribute.Name), attribute.Name == "Connected" ? "true" : "1");
    EXPECT_NE(SaveScratch(), Scratch());
  }
}
