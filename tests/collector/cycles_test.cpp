// What a cycle leaves for the next, and what it makes of whole families of rows.

#include "collector/state/scratch.h"
#include "model/can_sensors.h"
#include "sandbox/enter.h"
#include "sandbox/files.h"
#include "sandbox/rows.h"
#include "tests/collector/cycle_fixture.h"
#include "tests/collector/hooks.h"
#include "tests/collector/scratch_variables.h"

namespace {

using sandbox::RemoveRow;
using sandbox::SetRow;
using sandbox::SetRows;
using testing::ElementsAre;

class CyclesTest : public CycleTest {
 protected:
  std::vector<std::uint32_t> DcioAddresses() {
    std::vector<std::uint32_t> addresses;
    for (unsigned int i = 0; i < status_.DCIO.Devices.Count(); ++i) {
      addresses.push_back(*status_.DCIO.Devices[i]->Address);
    }
    return addresses;
  }

  // "index/node" of each device node of output 0.
  std::vector<std::string> Nodes() {
    std::vector<std::string> nodes;
    const QtSts::CDeviceList& devices = status_.Outputs[0]->Devices;
    for (unsigned int i = 0; i < devices.Count(); ++i) {
      nodes.push_back(std::to_string(devices[i]->Index) + "/" + std::to_string(devices[i]->Node));
    }
    return nodes;
  }
};

// Thirteen door switches with the addresses 100 to 112 whose numbers are written as `format` says.
sandbox::Rows DoorSwitches(const char* format) {
  sandbox::Rows rows;
  for (int number = 0; number <= 12; ++number) {
    char prefix[16];
    std::snprintf(prefix, sizeof prefix, format, number);
    rows[std::string(prefix) + "Address"] = std::to_string(100 + number);
    rows[std::string(prefix) + "Type"] = "DoorSwitch";
  }
  return rows;
}

// '0' sorts before '_', so 10, 11 and 12 come before 1, and devices are looked up by position: 1, 2
// and 3 find the places 1 to 3 taken. This is how the system works; writers pad their numbers.
TEST_F(CyclesTest, LoseThreeOfThirteenUnpaddedDcioDevices) {
  SetRows(DoorSwitches("DCIO_%d_"));
  Open();
  EXPECT_EQ(Cycle(), kDone);
  EXPECT_THAT(DcioAddresses(), ElementsAre(100, 110, 111, 112, 104, 105, 106, 107, 108, 109));
}

TEST_F(CyclesTest, KeepThirteenPaddedDcioDevicesInTheirOrder) {
  SetRows(DoorSwitches("DCIO_%02d_"));
  Open();
  EXPECT_EQ(Cycle(), kDone);
  EXPECT_THAT(DcioAddresses(),
              ElementsAre(100, 101, 102, 103, 104, 105, 106, 107, 108, 109, 110, 111, 112));
}

TEST_F(CyclesTest, NumberDeviceNodesAnewInTheOrderOfTheDatabase) {
  SetRows({{"TtableDeviceNode_1", "1"}, {"TtableDeviceNode_2", "1"}, {"TtableDeviceNode_10", "1"}});
  Open();
  for (int cycle = 0; cycle < 2; ++cycle) {
    EXPECT_EQ(Cycle(), kDone);
    EXPECT_THAT(Nodes(), ElementsAre("0/1", "1/10", "2/2"));
  }
}

TEST_F(CyclesTest, ResetTheNodeCounterBeforeTheFirstRow) {
  SetRow("ThermalScaler", "1");
  u32_TTableNumAttribute = 55;
  std::uint32_t at_row = 99;
  g_on_thermal_scaler = [&](const DispatchedRow&) { at_row = u32_TTableNumAttribute; };
  Open();
  EXPECT_EQ(Cycle(), kDone);
  EXPECT_EQ(at_row, 0U);
}

TEST_F(CyclesTest, ResetNoOtherScratchVariable) {
  Open();
  FillScratch();
  const Scratch before = SaveScratch();
  EXPECT_EQ(Cycle(), kDone);
  EXPECT_THAT(Differences(SaveScratch(), before), ElementsAre("u32_TTableNumAttribute"));
  EXPECT_EQ(u32_TTableNumAttribute, 0U);
}

TEST_F(CyclesTest, HandASensorsAttributesOnToTheNextAlsoAcrossCycles) {
  SetRows({{"Sensor_01_Address", "17"},
           {"Sensor_01_Celsius", "21.5"},
           {"Sensor_01_Location", "Local_CAN"},
           {"Sensor_01_Type", "CANTemp"},
           {"Sensor_02_Address", "18"},
           {"Sensor_02_Type", "CANTemp"}});
  Open();
  EXPECT_EQ(Cycle(), kDone);
  ASSERT_EQ(status_.Sensors.Count(), 2U);
  const auto* const second = dynamic_cast<QtSts::CCANTempSensor*>(status_.Sensors[1]);
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(second->Address, 18U);
  EXPECT_EQ(second->Celsius, 21.5F);

  SetRows({{"Sensor_03_Type", "CANTemp"}});
  EXPECT_EQ(Cycle(), kDone);
  ASSERT_EQ(status_.Sensors.Count(), 1U);
  const auto* const third = dynamic_cast<QtSts::CCANTempSensor*>(status_.Sensors[0]);
  ASSERT_NE(third, nullptr);
  EXPECT_EQ(third->Address, 18U);
  EXPECT_EQ(third->Celsius, 21.5F);
}

TEST_F(CyclesTest, RebuildListsButKeepScalarsOfTheRoot) {
  SetRows({{"CalculatedSunrise", "06:00"},
           {"DCIO_00_Type", "DoorSwitch"},
           {"DimmingLevel", "37.5"},
           {"ErrorFlags", "0x01"},
           {"GUID", "abc"},
           {"ProductFamily", "qtm3300"},
           {"Sensor_01_Type", "CANTemp"},
           {"TtableTitle", "title"}});
  Open();
  EXPECT_EQ(Cycle(), kDone);
  EXPECT_EQ(status_.DCIO.Devices.Count(), 1U);
  EXPECT_EQ(status_.Sensors.Count(), 1U);

  SetRows({{"FansEnabled", "true"}});
  EXPECT_EQ(Cycle(), kDone);
  EXPECT_EQ(status_.SolarInfo.CalculatedSunrise, "06:00");
  EXPECT_EQ(status_.ErrorFlags, "0x01");
  EXPECT_EQ(status_.GUID, "abc");
  EXPECT_EQ(status_.ProductFamily, 4);
  EXPECT_EQ(status_.DCIO.Devices.Count(), 0U);
  EXPECT_EQ(status_.Sensors.Count(), 0U);
  ASSERT_EQ(status_.Outputs.Count(), 1U);
  EXPECT_EQ(status_.Outputs[0]->Dimming.DimmingLevel, 1) << "output 0 starts anew";
  EXPECT_EQ(status_.Outputs[0]->Title, "") << "output 0 starts anew";
  EXPECT_TRUE(status_.Outputs[0]->Fans.Enabled);

  SetRows({});
  EXPECT_EQ(Cycle(), kDone);
  EXPECT_EQ(status_.Outputs.Count(), 0U);
}

TEST_F(CyclesTest, KeepNameServersWithoutAResolverFileButNoneOfTheSixLists) {
  sandbox::WriteFile("/etc/resolv.conf", "nameserver 10.0.0.1\n");
  Open();
  EXPECT_EQ(Cycle(), kDone);
  ASSERT_EQ(status_.Network.DNS.Addresses.Count(), 1U);

  sandbox::RemoveFile("/etc/resolv.conf");
  status_.Sensors.Add(new QtSts::CSensor);
  status_.Network.Devices.Add(new QtSts::CNetworkDevice);
  status_.DCIO.Devices.Add(new QtSts::CRunLED);
  status_.Compositors.Add(new QtSts::CCompositor);
  status_.Inputs.Add(new QtSts::CAnalogInput);
  status_.Outputs.Add(new QtSts::CTravex6Output);
  status_.Network.Devices[0]->Name = "old";
  EXPECT_EQ(Cycle(), kDone);
  EXPECT_EQ(status_.Network.DNS.Addresses.Count(), 1U);
  EXPECT_EQ(status_.Sensors.Count(), 0U);
  EXPECT_EQ(status_.DCIO.Devices.Count(), 0U);
  EXPECT_EQ(status_.Compositors.Count(), 0U);
  EXPECT_EQ(status_.Inputs.Count(), 0U);
  EXPECT_EQ(status_.Outputs.Count(), 0U);
  for (unsigned int i = 0; i < status_.Network.Devices.Count(); ++i) {
    EXPECT_NE(status_.Network.Devices[i]->Name, "old");
  }
}

TEST_F(CyclesTest, ProbeAndStampTheDocumentAlsoWhenTheDatabaseFails) {
  constexpr const char* kUuid = "/home/Zet/.settings/uuid";
  sandbox::WriteFile(kUuid, "first");
  sandbox::RunSql("DROP TABLE status;");
  Open();
  EXPECT_EQ(Cycle().Result, 1);
  EXPECT_EQ(status_.GUID, "first");
  EXPECT_NE(status_.LocalTime, "");
  EXPECT_NE(collector_.m_UTCTime, "");

  sandbox::WriteFile(kUuid, "second");
  status_.LocalTime = "";
  collector_.m_UTCTime = "";
  status_.Outputs.Add(new QtSts::CTravex6Output);
  EXPECT_EQ(Cycle().Result, 1);
  EXPECT_EQ(status_.GUID, "second");
  EXPECT_NE(status_.LocalTime, "");
  EXPECT_NE(collector_.m_UTCTime, "");
  EXPECT_EQ(status_.Outputs.Count(), 0U);
}

TEST_F(CyclesTest, LetTheGuidRowOverwriteTheUuidFile) {
  sandbox::WriteFile("/home/Zet/.settings/uuid", "file");
  SetRow("GUID", "row");
  Open();
  EXPECT_EQ(Cycle(), kDone);
  EXPECT_EQ(status_.GUID, "row");
  RemoveRow("GUID");
  EXPECT_EQ(Cycle(), kDone);
  EXPECT_EQ(status_.GUID, "file");
}

TEST_F(CyclesTest, OfAWholeControllerWriteToStandardOutputAtMost) {
  sandbox::Scenario::Load(sandbox::SourcePath("scenarios/demo")).Apply();
  Open();
  const std::string output = OutputOf([&] { EXPECT_EQ(Cycle(), kDone); });
  EXPECT_THAT(output, testing::HasSubstr("Dev Name"));
  EXPECT_GT(status_.Network.Devices.Count(), 0U);
  EXPECT_GT(status_.DCIO.Devices.Count(), 0U);
}

TEST_F(CyclesTest, ShareTheStateOfTheProcessWhicheverInterfaceRunsThem) {
  SetRow("DCIO_05_Address", "77");
  Open();
  EXPECT_EQ(Cycle(), kDone);
  SetRows({{"DCIO_00_Type", "RunLED"}});
  CStatusInterface other;
  other.InitDatabase(false);
  EXPECT_EQ(other.QueryDatabase(), 0);
  ASSERT_EQ(other.m_Status.DCIO.Devices.Count(), 1U);
  EXPECT_EQ(*other.m_Status.DCIO.Devices[0]->Address, 77U);
}

}  // namespace
