// Where the values of rows stand, and what they change.
#include "tests/insight/row_fixture.h"

namespace {

using insight::Outcome;
using testing::ElementsAre;
using testing::IsEmpty;

using RowPaths = ExplainedRows;

TEST_F(RowPaths, OfKeysAreTheirFieldsWithWhatStoodThereBefore) {
  Explain({{"DimmingLevel", "62.5"}, {"GUID", "abc"}, {"TtableColumns", "15"}});
  EXPECT_EQ(RowOf("GUID").Path, "GUID");
  EXPECT_EQ(RowOf("GUID").After, "abc");
  EXPECT_EQ(RowOf("DimmingLevel").Path, "Outputs[0]/Dimming/DimmingLevel");
  EXPECT_EQ(RowOf("DimmingLevel").Before, "") << "there was no output";
  EXPECT_EQ(RowOf("DimmingLevel").After, "62.5");
  EXPECT_EQ(RowOf("TtableColumns").Path, "Outputs[0]/Ttable/Columns");
  EXPECT_EQ(RowOf("TtableColumns").Before, "0");
  EXPECT_EQ(RowOf("TtableColumns").After, "15");
  EXPECT_THAT(Problems(), IsEmpty());

  Explain({{"GUID", "def"}});
  EXPECT_EQ(RowOf("GUID").Before, "abc");
  EXPECT_EQ(RowOf("GUID").After, "def");
}

TEST_F(RowPaths, OfASensorAreTheFieldsOfItsElement) {
  Explain({{"Sensor_00_Address", "17"},
           {"Sensor_00_Bus", "1"},
           {"Sensor_00_Celsius", "31.5"},
           {"Sensor_00_Connected", "true"},
           {"Sensor_00_Location", "Local_CAN"},
           {"Sensor_00_NumAttribute", "9"},
           {"Sensor_00_Rev", "2"},
           {"Sensor_00_SyncLossCounter", "0"},
           {"Sensor_00_Type", "CANTemp"}});
  EXPECT_THAT(Problems(), IsEmpty());
  EXPECT_EQ(RowOf("Sensor_00_Celsius").Path, "Sensors[0]/Celsius");
  EXPECT_EQ(RowOf("Sensor_00_Celsius").After, "31.5");
  EXPECT_EQ(RowOf("Sensor_00_Rev").Path, "Sensors[0]/Revision");
  EXPECT_EQ(RowOf("Sensor_00_Type").Path, "Sensors[0]");
  EXPECT_EQ(RowOf("Sensor_00_Type").After, "CANTempSensor");
  EXPECT_EQ(TextOf("Sensor_00_Type", Outcome::kCompleted), "completes Sensors[0]");
  EXPECT_EQ(TextOf("Sensor_00_Bus", Outcome::kParked),
            "kept for Sensor_00_Type, which completes Sensors[0]");
}

TEST_F(RowPaths, OfASensorBehindAnInterfaceLeadThroughIt) {
  Explain({{"Sensor_00_Celsius", "1"},
           {"Sensor_00_DispInterfaceAddress", "5"},
           {"Sensor_00_DispInterfaceNumber", "2"},
           {"Sensor_00_Location", "TXR_CAN"},
           {"Sensor_00_Type", "CANTemp"},
           {"Sensor_01_Celsius", "2"},
           {"Sensor_01_DispInterfaceAddress", "5"},
           {"Sensor_01_DispInterfaceNumber", "2"},
           {"Sensor_01_Location", "TXR_CAN"},
           {"Sensor_01_Type", "CANTemp"}});
  EXPECT_EQ(RowOf("Sensor_01_Celsius").Path, "Outputs[0]/DisplayInterfaces[0]/Sensors[1]/Celsius");
  EXPECT_EQ(RowOf("Sensor_00_DispInterfaceNumber").Path,
            "Outputs[0]/DisplayInterfaces[0]/NumberOfAttributes");
  EXPECT_EQ(RowOf("Sensor_01_DispInterfaceAddress").Path,
            "Outputs[0]/DisplayInterfaces[0]/Address");
  std::vector<std::string> made;
  for (const insight::Change& change : RowOf("Sensor_00_Type").Changes) {
    made.push_back(change.Path + " " + change.After);
  }
  EXPECT_THAT(made, ElementsAre("Outputs[0] Travex6Output",
                                "Outputs[0]/DisplayInterfaces[0] TravexRouterDisplayInterface",
                                "Outputs[0]/DisplayInterfaces[0]/Sensors[0] CANTempSensor"));
}

TEST_F(RowPaths, OfADcioDeviceAndOfADeviceNodeAreTheirElements) {
  Explain({{"DCIO_00_State", "7"}, {"DCIO_00_Type", "DoorSwitch"}, {"TtableDeviceNode_07", "4"}});
  EXPECT_EQ(RowOf("DCIO_00_State").Path, "DCIO/Devices[0]/State");
  EXPECT_EQ(RowOf("DCIO_00_State").After, "1");
  EXPECT_EQ(RowOf("DCIO_00_Type").Path, "DCIO/Devices[0]");
  EXPECT_EQ(RowOf("TtableDeviceNode_07").Path, "Outputs[0]/Devices[0]/Value");
  EXPECT_EQ(RowOf("TtableDeviceNode_07").After, "4");
}

TEST_F(RowPaths, OfABoardLeadToItsPointsFansAndVoltages) {
  Explain({{"Sensor_00_Fan_03_Rpm", "900"},
           {"Sensor_00_Input_05_Index", "2"},
           {"Sensor_00_Input_05_Label", "Door"},
           {"Sensor_00_Input_05_State", "1"},
           {"Sensor_00_Input_05_Type", "3"},
           {"Sensor_00_Output_00_Index", "1"},
           {"Sensor_00_Output_00_State", "1"},
           {"Sensor_00_Output_00_Type", "6"},
           {"Sensor_00_Type", "CANDcioAndFanRpm"},
           {"Sensor_01_PsrbVin_00_Volts", "230.5"},
           {"Sensor_01_PsrbVin_01_Volts", "229"},
           {"Sensor_01_Type", "CANPowerSupplyRedundancyBoard"}});
  EXPECT_EQ(RowOf("Sensor_00_Fan_03_Rpm").Path, "Sensors[0]/FanRpms[0]/Rpm");
  EXPECT_EQ(RowOf("Sensor_00_Input_05_Label").Path, "Sensors[0]/Points/Inputs/Points[0]/Label");
  EXPECT_EQ(RowOf("Sensor_00_Input_05_Type").Path, "Sensors[0]/Points/Inputs/Points[0]");
  EXPECT_EQ(RowOf("Sensor_00_Input_05_Type").After, "DoorSensorInputType");
  EXPECT_EQ(RowOf("Sensor_00_Output_00_State").Path,
            "Sensors[0]/Points/Outputs/Points[0]/StoredState");
  EXPECT_EQ(RowOf("Sensor_00_Output_00_State").After, "0") << "stored inverted";
  EXPECT_EQ(RowOf("Sensor_01_PsrbVin_01_Volts").Path, "Sensors[1]/InputVoltages");
  EXPECT_EQ(RowOf("Sensor_01_PsrbVin_01_Volts").After, "230.5 229");
}

TEST_F(RowPaths, LeadToValuesOfTheDocument) {
  sandbox::Scenario::Load(sandbox::SourcePath("scenarios/demo")).Apply();
  Explain();
  Explain();
  int found = 0;
  for (const insight::Row& row : snapshot_->Rows) {
    if (const auto* const value = snapshot_->Document.Root().FindValue(row.Path)) {
      EXPECT_EQ(value->Written(), row.After) << row.Key;
      ++found;
    } else if (!row.Path.empty()) {
      EXPECT_NE(snapshot_->Document.Root().Find(row.Path), nullptr) << row.Key << " " << row.Path;
    }
  }
  EXPECT_GT(found, 300);
}

TEST_F(RowPaths, OfTheDemoHaveNoErrors) {
  sandbox::Scenario::Load(sandbox::SourcePath("scenarios/demo")).Apply();
  Explain();
  for (const insight::Row& row : snapshot_->Rows) {
    EXPECT_NE(row.Class(), insight::OutcomeClass::kError)
        << row.Key << ": " << row.Remarks.front().Text;
  }
}

}  // namespace
