// Rows on their way from the database into the document.

#include "collector/state/scratch.h"
#include "sandbox/rows.h"
#include "tests/collector/cycle_fixture.h"
#include "tests/collector/hooks.h"

namespace {

using sandbox::RemoveRow;
using sandbox::RunSql;
using sandbox::SetRow;
using sandbox::SetRows;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class DispatchTest : public CycleTest {
 protected:
  // Key and value of each row that a cycle hands to the handler of "ThermalScaler".
  std::vector<std::pair<std::string, std::string>> Dispatched() {
    std::vector<std::pair<std::string, std::string>> rows;
    g_on_thermal_scaler = [&](const DispatchedRow& row) { rows.emplace_back(row.Key, row.Value); };
    EXPECT_EQ(Cycle(), kDone);
    g_on_thermal_scaler = nullptr;
    return rows;
  }
};

TEST_F(DispatchTest, OfAnEmptyTableLeavesTheProbesResultsAndTheTime) {
  Open();
  EXPECT_EQ(Cycle(), kDone);
  EXPECT_NE(status_.LocalTime, "");
  EXPECT_NE(status_.Uptime, "P0S");
  EXPECT_EQ(status_.Outputs.Count(), 0U);
  EXPECT_EQ(status_.DCIO.Devices.Count(), 0U);
  EXPECT_EQ(status_.Sensors.Count(), 0U);
  EXPECT_EQ(status_.GUID, "");
}

TEST_F(DispatchTest, HandsEachRowToTheHandlerOfItsKey) {
  SetRows({{"ActualDimmingLevel", "55"},
           {"CalculatedSunrise", "06:00"},
           {"CalculatedSunset", "22:00"},
           {"ContentLevelAvg", "1"},
           {"DCIO_01_Address", "100"},
           {"DCIO_01_Type", "DoorSwitch"},
           {"DimmingLevel", "56"},
           {"DimmingMode", "gps"},
           {"ErrorFlags", "0x01"},
           {"FansEnabled", "true"},
           {"FansOverride", "sensor"},
           {"GUID", "abc"},
           {"MdlsAmbientFailure", "1"},
           {"MdlsAmbientOverride", "1"},
           {"ProductFamily", "qtm3300"},
           {"Sensor_01_Location", "Local_CAN"},
           {"Sensor_01_Type", "CANTemp"},
           {"ThermalScaler", "1"},
           {"TtableAuthor", "author"},
           {"TtableColumns", "15"},
           {"TtableContract", "contract"},
           {"TtableDate", "date"},
           {"TtableDeviceNode_01", "11"},
           {"TtableED", "ED"},
           {"TtableFaceCnt", "2"},
           {"TtableInterleaved", "2"},
           {"TtableModHeight", "16"},
           {"TtableModWidth", "17"},
           {"TtablePixelPitch", "20"},
           {"TtableRefreshRate", "60"},
           {"TtableRows", "9"},
           {"TtableTask", "task"},
           {"TtableTime", "time"},
           {"TtableTitle", "title"}});
  Open();
  EXPECT_EQ(Cycle(), kDone);
  EXPECT_EQ(status_.SolarInfo.CalculatedSunrise, "06:00");
  EXPECT_EQ(status_.SolarInfo.CalculatedSunset, "22:00");
  EXPECT_EQ(status_.ErrorFlags, "0x01");
  EXPECT_EQ(status_.GUID, "abc");
  EXPECT_EQ(status_.ProductFamily, 4);
  EXPECT_EQ(status_.DCIO.Devices.Count(), 1U);
  EXPECT_EQ(status_.Sensors.Count(), 1U);
  ASSERT_EQ(status_.Outputs.Count(), 1U);
  const QtSts::COutput& output = *status_.Outputs[0];
  EXPECT_EQ(output.Dimming.ActualDimmingLevel, 55);
  EXPECT_EQ(output.Dimming.DimmingLevel, 56);
  EXPECT_EQ(output.Dimming.DimmingMode, 3U);
  EXPECT_TRUE(output.Fans.Enabled);
  EXPECT_EQ(output.Fans.Override, 3U);
  EXPECT_EQ(output.StatusFlags & 0x6000, 0x6000U);
  EXPECT_EQ(output.Author, "author");
  EXPECT_EQ(output.Ttable.Columns, 15U);
  EXPECT_EQ(output.Contract, "contract");
  EXPECT_EQ(output.Date, "date");
  EXPECT_EQ(output.Devices.Count(), 1U);
  EXPECT_EQ(output.ED, "ED");
  EXPECT_EQ(output.Ttable.FaceCount, 2U);
  EXPECT_EQ(output.Ttable.Interleaved, 2U);
  EXPECT_EQ(output.Ttable.ModuleHeight, 16U);
  EXPECT_EQ(output.Ttable.ModuleWidth, 17U);
  EXPECT_EQ(output.Ttable.PixelPitch, 20);
  EXPECT_EQ(output.Ttable.RefreshRate, 60);
  EXPECT_EQ(output.Ttable.Rows, 9U);
  EXPECT_EQ(output.Task, "task");
  EXPECT_EQ(output.Time, "time");
  EXPECT_EQ(output.Title, "title");
}

TEST_F(DispatchTest, MatchesAKeyThatBeginsWithATableKeyInItsCase) {
  SetRows({{"GUIDX", "by prefix"}, {"guid", "lower"}});
  Open();
  EXPECT_EQ(Cycle(), kDone);
  EXPECT_EQ(status_.GUID, "by prefix");

  SetRows({{"TtableTitleX", "title"}, {"Zzz", "1"}, {"ttableTitle", "lower"}});
  EXPECT_EQ(Cycle(), kDone);
  ASSERT_EQ(status_.Outputs.Count(), 1U);
  EXPECT_EQ(status_.Outputs[0]->Title, "title");
}

TEST_F(DispatchTest, PassesTheWholeKeyToAHandlerThatComparesIt) {
  SetRows({{"CalculatedSunriseX", "1"}, {"CalculatedSunsetX", "2"}, {"ErrorFlagsX", "3"}});
  Open();
  EXPECT_EQ(Cycle(), kDone);
  EXPECT_EQ(status_.SolarInfo.CalculatedSunrise, "nil");
  EXPECT_EQ(status_.SolarInfo.CalculatedSunset, "nil");
  EXPECT_EQ(status_.ErrorFlags, "0x0000000000000000");
}

TEST_F(DispatchTest, IgnoresKeysThatAreShorterThanTheirTableKey) {
  u32_DCIO_SensorNumber = 99;
  SetRows({{"DCIO", "1"}, {"TtableDevice", "1"}, {"Sensor", "1"}, {"TtableTitl", "x"}, {"G", "x"}});
  Open();
  EXPECT_EQ(Cycle(), kDone);
  EXPECT_EQ(u32_DCIO_SensorNumber, 99U);
  EXPECT_EQ(status_.Outputs.Count(), 0U);
  EXPECT_EQ(status_.GUID, "");
}

TEST_F(DispatchTest, TakesABarePrefixAsItsFamily) {
  u32_DCIO_SensorNumber = 99;
  SetRows({{"DCIO_", "1"}, {"TtableDeviceNode_3", "7"}});
  Open();
  EXPECT_EQ(Cycle(), kDone);
  EXPECT_EQ(u32_DCIO_SensorNumber, 0U);
  ASSERT_EQ(status_.Outputs.Count(), 1U);
  ASSERT_EQ(status_.Outputs[0]->Devices.Count(), 1U);
  EXPECT_EQ(status_.Outputs[0]->Devices[0]->Node, 3);
}

TEST_F(DispatchTest, FindsTheLastTableKeyAndIgnoresWhatSortsAfterIt) {
  SetRows({{"TtableTime", "time"},
           {"TtableTitle", "title"},
           {"TtableTitld", "x"},
           {"TtableTitmf", "x"},
           {"a", "x"}});
  Open();
  EXPECT_EQ(Cycle(), kDone);
  ASSERT_EQ(status_.Outputs.Count(), 1U);
  EXPECT_EQ(status_.Outputs[0]->Time, "time");
  EXPECT_EQ(status_.Outputs[0]->Title, "title");
}

TEST_F(DispatchTest, GoesOnAfterAKeyThatMatchesNothing) {
  // "Nothing" sorts between two rows of one prefix and between two prefixes
  SetRows(
      {{"DimmingLevel", "37.5"}, {"DimmingLevelX", "38.5"}, {"Dimmingx", "1"}, {"GUID", "abc"}});
  Open();
  EXPECT_EQ(Cycle(), kDone);
  EXPECT_EQ(status_.Outputs[0]->Dimming.DimmingLevel, 38.5F);
  EXPECT_EQ(status_.GUID, "abc");
}

TEST_F(DispatchTest, HandsAllRowsOfOnePrefixToItsHandler) {
  SetRows({{"DCIO_1_State", "1"},
           {"DCIO_2_State", "2"},
           {"DimmingLevel", "3"},
           {"Sensor_5_Celsius", "21.5"},
           {"Sensor_5_Fan_1_Rpm", "700"},
           {"Sensor_6_Fan_2_Rpm", "800"},
           {"Sensor_7_Bus", "9"},
           {"ThermalScaler", "a"},
           {"ThermalScalerX", "b"},
           {"ThermalScalerY", "c"}});
  Open();
  EXPECT_THAT(Dispatched(), ElementsAre(Pair("ThermalScaler", "a"), Pair("ThermalScalerX", "b"),
                                        Pair("ThermalScalerY", "c")));
  EXPECT_EQ(u32_DCIO_SensorNumber, 2U);
  EXPECT_EQ(u32_DCIO_State, 2U);
  EXPECT_EQ(status_.Outputs[0]->Dimming.DimmingLevel, 3);
  EXPECT_EQ(f_celsius, 21.5F);
  EXPECT_THAT(FanRpms, ElementsAre(Pair(1, 700), Pair(2, 800)));
  EXPECT_EQ(u32_SensorNumber, 7U);
  EXPECT_EQ(u32_Bus, 9U);
}

// Blobs sort after all texts, so this row comes after one whose table key stands later.
TEST_F(DispatchTest, NeverGoesBackToAnEarlierTableKeyWithinACycle) {
  RunSql("INSERT INTO status VALUES(CAST('ActualDimmingLevel' AS BLOB), '55');");
  SetRow("DimmingLevel", "37.5");
  Open();
  EXPECT_EQ(Cycle(), kDone);
  EXPECT_EQ(status_.Outputs[0]->Dimming.DimmingLevel, 37.5F);
  EXPECT_EQ(status_.Outputs[0]->Dimming.ActualDimmingLevel, 1) << "not delivered";

  RemoveRow("DimmingLevel");
  EXPECT_EQ(Cycle(), kDone);
  EXPECT_EQ(status_.Outputs[0]->Dimming.ActualDimmingLevel, 55) << "found from the start again";
}

TEST_F(DispatchTest, StaysWhereItWasAfterAKeyBeyondTheLastTableKey) {
  SetRows({{"TtableTime", "time"}, {"Zzz", "1"}});
  RunSql(
      "INSERT INTO status VALUES(CAST('ActualDimmingLevel' AS BLOB), '55'),"
      "(CAST('TtableTitle' AS BLOB), 'title');");
  Open();
  EXPECT_EQ(Cycle(), kDone);
  EXPECT_EQ(status_.Outputs[0]->Dimming.ActualDimmingLevel, 1) << "before it: not delivered";
  EXPECT_EQ(status_.Outputs[0]->Title, "title") << "after it";
}

TEST_F(DispatchTest, StartsAtTheFirstTableKeyInEveryCycle) {
  SetRows({{"ActualDimmingLevel", "55"}, {"TtableTitle", "title"}});
  Open();
  for (int cycle = 0; cycle < 3; ++cycle) {
    EXPECT_EQ(Cycle(), kDone);
    EXPECT_EQ(status_.Outputs[0]->Dimming.ActualDimmingLevel, 55);
  }
}

TEST_F(DispatchTest, HandsTheDocumentToTheHandler) {
  SetRow("ThermalScaler", "1");
  QtSts::CStatus* given = nullptr;
  g_on_thermal_scaler = [&](const DispatchedRow& row) { given = row.Status; };
  Open();
  EXPECT_EQ(Cycle(), kDone);
  EXPECT_EQ(given, &collector_.m_Status);
}

TEST_F(DispatchTest, GoesOnAfterAHandlerThatRefusedItsRow) {
  SetRows({{"DCIO_-1_Type", "DoorSwitch"},
           {"GUID", "abc"},
           {"Sensor_-1_Type", "CANTemp"},
           {"TtableDeviceNode_-2", "1"},
           {"TtableTitle", "title"}});
  Open();
  EXPECT_EQ(Cycle(), kDone);
  EXPECT_EQ(status_.DCIO.Devices.Count(), 0U);
  EXPECT_EQ(status_.Sensors.Count(), 0U);
  EXPECT_EQ(status_.GUID, "abc");
  EXPECT_EQ(status_.Outputs[0]->Devices.Count(), 0U);
  EXPECT_EQ(status_.Outputs[0]->Title, "title");
}

TEST_F(DispatchTest, ReadsNullAsEmptyText) {
  RunSql(
      "DROP TABLE status; CREATE TABLE status(address TEXT, value TEXT);"
      "INSERT INTO status VALUES(NULL, 'no key'), ('', 'empty key'), ('GUID', NULL),"
      "('ProductFamily', NULL), ('ThermalScaler', NULL), ('TtableTitle', NULL);");
  status_.GUID = "old";
  Open();
  EXPECT_THAT(Dispatched(), ElementsAre(Pair("ThermalScaler", "")));
  EXPECT_EQ(status_.GUID, "");
  EXPECT_EQ(status_.ProductFamily, 8);
  ASSERT_EQ(status_.Outputs.Count(), 1U);
  EXPECT_EQ(status_.Outputs[0]->Title, "");
}

// Only a database without our triggers can hold such rows.
TEST_F(DispatchTest, CutsKeyAndValueToTheirBuffers) {
  const std::string key = "ThermalScaler" + std::string(187, 'k');
  const std::string value(2000, 'v');
  SetRow(key, value);
  Open();
  EXPECT_THAT(Dispatched(), ElementsAre(Pair(key.substr(0, 127), value.substr(0, 511))));
}

TEST_F(DispatchTest, PassesKeyAndValueThatJustFitWhole) {
  const std::string key = "ThermalScaler" + std::string(114, 'k');
  const std::string value(511, 'v');
  SetRow(key, value);
  Open();
  EXPECT_THAT(Dispatched(), ElementsAre(Pair(key, value)));
}

TEST_F(DispatchTest, DoesNotLeaveTheEndOfALongRowInTheNext) {
  SetRow("ThermalScaler" + std::string(187, 'k'), std::string(2000, 'v'));
  SetRow("ThermalScalerz", "w");
  Open();
  EXPECT_EQ(Dispatched().back(), (std::pair<std::string, std::string>("ThermalScalerz", "w")));
}

TEST_F(DispatchTest, KeepsTheBytesOfARow) {
  SetRow("ThermalScaler\xFF\t", "\x01\xC3\x28\x80 \n");
  Open();
  EXPECT_THAT(Dispatched(), ElementsAre(Pair("ThermalScaler\xFF\t", "\x01\xC3\x28\x80 \n")));
}

TEST_F(DispatchTest, ReadsTheFirstTwoColumnsOnly) {
  RunSql(
      "DROP TABLE status; CREATE TABLE status(address TEXT, value TEXT, note TEXT, time INT);"
      "INSERT INTO status VALUES('ThermalScaler', 'value', 'note', 5);");
  Open();
  EXPECT_THAT(Dispatched(), ElementsAre(Pair("ThermalScaler", "value")));
}

TEST_F(DispatchTest, ReadsRowsInByteOrderWhateverOrderTheyWereWrittenIn) {
  RunSql(
      "DROP TABLE status; CREATE TABLE status(address TEXT, value TEXT);"
      "INSERT INTO status VALUES('ThermalScaler_', '3'), ('ThermalScalerb', '4'),"
      "('ThermalScalerB', '2'), ('ThermalScaler', '1'), ('GUID', 'abc');");
  Open();
  EXPECT_THAT(Dispatched(), ElementsAre(Pair("ThermalScaler", "1"), Pair("ThermalScalerB", "2"),
                                        Pair("ThermalScaler_", "3"), Pair("ThermalScalerb", "4")));
  EXPECT_EQ(status_.GUID, "abc");
}

TEST_F(DispatchTest, SeesWhatAnotherProcessWroteBetweenTwoCycles) {
  Open();
  EXPECT_THAT(Dispatched(), IsEmpty());
  SetRow("ThermalScaler", "1");
  EXPECT_THAT(Dispatched(), ElementsAre(Pair("ThermalScaler", "1")));
  SetRow("ThermalScaler", "2");
  EXPECT_THAT(Dispatched(), ElementsAre(Pair("ThermalScaler", "2")));
  RemoveRow("ThermalScaler");
  EXPECT_THAT(Dispatched(), IsEmpty());
}

}  // namespace
