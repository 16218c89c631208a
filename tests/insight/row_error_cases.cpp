#include <string>

#include "tests/insight/row_cases.h"

using insight::Outcome;
using sandbox::Rows;

namespace {

const char* const kWithoutTriggers =
    "DROP TABLE status; CREATE TABLE status(address TEXT PRIMARY KEY, value TEXT) WITHOUT ROWID;";
// A group of rows of an element whose own rows say everything that a CANTemp takes.
Rows Temp(const std::string& prefix) {
  return {{prefix + "Address", "1"},
          {prefix + "Bus", "0"},
          {prefix + "Celsius", "20"},
          {prefix + "Connected", "true"},
          {prefix + "Location", "Local_CAN"},
          {prefix + "NumAttribute", "8"},
          {prefix + "Rev", "1"},
          {prefix + "SyncLossCounter", "0"},
          {prefix + "Type", "CANTemp"}};
}

Rows Join(std::initializer_list<Rows> parts) {
  Rows all;
  for (const Rows& part : parts) {
    for (const auto& [key, value] : part) {
      all[key] = value;
    }
  }
  return all;
}

// A board with one input and one output.
Rows Board(const std::string& index, const std::string& type) {
  return {{"Sensor_00_Input_00_Index", index},
          {"Sensor_00_Input_00_Type", type},
          {"Sensor_00_Output_00_Index", "1"},
          {"Sensor_00_Output_00_Type", "5"},
          {"Sensor_00_Type", "CANDcio2in1out"}};
}

}  // namespace

const std::vector<RowCase>& ErrorCases() {
  static const std::vector<RowCase> kCases = {
      {Outcome::kUnknownKey,
       "sensor_01_Celsius",
       "\"Sensor_\"",
       {{"sensor_01_Celsius", "1"}},
       Temp("Sensor_01_")},
      {Outcome::kIgnoredKey,
       "ErrorFlagsX",
       "goes on after \"ErrorFlags\"",
       {{"ErrorFlagsX", "0"}},
       {{"ErrorFlags", "0"}}},
      // Blobs come after texts.
      {Outcome::kOutOfOrder,
       "GUID",
       "\"TtableED\", which is after \"GUID\"",
       {{"GUID", "abc"}, {"TtableED", "x"}},
       {{"GUID", "abc"}, {"TtableED", "x"}},
       "",
       "UPDATE status SET address = CAST(address AS BLOB) WHERE address = 'GUID';"},
      {Outcome::kBadNumber,
       "Sensor_-1_Type",
       "begins with \"-\"",
       {{"Sensor_-1_Type", "CANDoor"}},
       {{"Sensor_1_Type", "CANDoor"}}},
      {Outcome::kNoAttribute,
       "Sensor_01",
       "before its attribute",
       {{"Sensor_01", "1"}},
       {{"Sensor_01_Type", "CANDoor"}}},
      {Outcome::kUnknownAttribute,
       "Sensor_90_celsius",
       "\"Celsius\"",
       {{"Sensor_90_celsius", "1"}, {"Sensor_90_Type", "CANTemp"}},
       Temp("Sensor_90_")},
      {Outcome::kAfterType,
       "Sensor_00_fan_01_Rpm",
       "after Sensor_00_Type",
       {{"Sensor_00_Type", "CANDcioAndFanRpm"}, {"Sensor_00_fan_01_Rpm", "900"}},
       {{"Sensor_00_Fan_01_Rpm", "900"}, {"Sensor_00_Type", "CANDcioAndFanRpm"}}},
      {Outcome::kUnknownWord,
       "DimmingMode",
       "the nearest is \"manual\"; \"auto\" stays, which no row reports",
       {{"DimmingMode", "Manual"}},
       {{"DimmingMode", "manual"}, {"ProductFamily", "qtm2100"}}},
      {Outcome::kLooksTrue,
       "FansEnabled",
       "\"1\" looks true",
       {{"FansEnabled", "1"}},
       {{"FansEnabled", "false"}, {"MdlsAmbientFailure", "1"}}},
      {Outcome::kNoNumber,
       "DimmingLevel",
       "\"bright\" is no number",
       {{"DimmingLevel", "bright"}},
       {{"ActualDimmingLevel", "1e38"}, {"DimmingLevel", "1 bright"}}},
      {Outcome::kTextAfterNumber,
       "DimmingLevel",
       "\",5\" follows the number: 62 is stored",
       {{"DimmingLevel", "62,5"}},
       {{"DimmingLevel", "62.5e1"}, {"TtableRows", "1.5"}}},
      {Outcome::kTooLong,
       "GUID",
       "has 512 bytes and is cut to 511",
       {{"GUID", std::string(512, 'x')}},
       {{"GUID", std::string(511, 'x')}},
       kWithoutTriggers},
      {Outcome::kPositionTaken, "Sensor_1_Type", "position 1 is taken by Sensor_10_Type",
       Join({Temp("Sensor_0_"), Temp("Sensor_10_"), Temp("Sensor_1_")}),
       Join({Temp("Sensor_0_"), Temp("Sensor_1_"), Temp("Sensor_2_")})},
      {Outcome::kRefusedKind,
       "Sensor_00_Type",
       "OnboardTemp does not stand behind",
       {{"Sensor_00_Location", "TXR_CAN"}, {"Sensor_00_Type", "OnboardTemp"}},
       {{"Sensor_00_Location", "Local_I2C"}, {"Sensor_00_Type", "OnboardTemp"}}},
      {Outcome::kPointOutsideTable,
       "Sensor_00_Input_24_Type",
       "no entry 24",
       {{"Sensor_00_Input_24_Type", "3"}, {"Sensor_00_Type", "CANDcio2in1out"}},
       {{"Sensor_00_Input_23_Index", "1"},
        {"Sensor_00_Input_23_Type", "3"},
        {"Sensor_00_Type", "CANDcio2in1out"}}},
      {Outcome::kPointIndex, "Sensor_00_Input_00_Index", "no point with index 3", Board("3", "3"),
       Board("2", "3")},
      {Outcome::kPointType, "Sensor_00_Input_00_Type", "no point has type 12", Board("1", "12"),
       Board("1", "11")},
      {Outcome::kNotVolts,
       "Sensor_00_PsrbVin_00",
       "lacks \"Volts\"",
       {{"Sensor_00_PsrbVin_00", "230"}, {"Sensor_00_Type", "CANPowerSupplyRedundancyBoard"}},
       {{"Sensor_00_PsrbVin_00_Volts", "230"},
        {"Sensor_00_Type", "CANPowerSupplyRedundancyBoard"}}},
      {Outcome::kNoType,
       "Sensor_07_Celsius",
       "no row Sensor_07_Type",
       {{"Sensor_07_Celsius", "1"}, {"Sensor_08_Type", "CANTemp"}},
       Temp("Sensor_07_")},
  };
  return kCases;
}
