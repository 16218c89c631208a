// Fields whose source did not answer and that no row wrote.
#include <string>
#include <vector>

#include "sandbox/devices.h"
#include "sandbox/enter.h"
#include "sandbox/files.h"
#include "sandbox/testing.h"
#include "tests/insight/source_fixture.h"

namespace {

using insight::Snapshot;

TEST(NotReported, IsNotWhatARowGivesInPlaceOfAProbe) {
  SANDBOX_NEEDS_DEVICES();
  Apply(Talkative());
  sandbox::RemoveFile("/home/Zet/.settings/uuid");
  sandbox::RemoveDevice("zetdisplay");
  Snapshot snapshot = Cycle();
  EXPECT_FALSE(snapshot.IsReported("GUID"));
  EXPECT_FALSE(snapshot.IsReported("ProductFamily"));
  sandbox::SetRow("GUID", "abc");
  sandbox::SetRow("ProductFamily", "qtm3300 outdoor");
  snapshot = Cycle();
  EXPECT_TRUE(snapshot.IsReported("GUID"));
  EXPECT_TRUE(snapshot.IsReported("ProductFamily"));
  EXPECT_FALSE(snapshot.IsReported("HardwareID1"));
}

// A mark adds its bit to flags of which nothing else is known.
TEST(NotReported, IsWhatRowsOnlyAddBitsTo) {
  SANDBOX_NEEDS_DEVICES();
  Apply(Talkative());
  EXPECT_TRUE(Cycle().IsReported("Outputs[0]/StatusFlags"));
  sandbox::RemoveDevice("diagnostics");
  EXPECT_FALSE(Cycle().IsReported("Outputs[0]/StatusFlags"));
}

// Power and the like are known all the same.
TEST(NotReported, AreNotTheFlagsForWantOfRows) {
  SANDBOX_NEEDS_DEVICES();
  Apply(Talkative());
  sandbox::RemoveDatabase();
  const Snapshot snapshot = Cycle();
  EXPECT_TRUE(snapshot.IsReported("Outputs[0]/StatusFlags"));
  EXPECT_FALSE(snapshot.IsReported("Outputs[0]/Dimming/DimmingLevel"));
  EXPECT_FALSE(snapshot.IsReported("Sensors"));
}

TEST(NotReported, IsTheVersionWhosePackageIsMissing) {
  Apply(Talkative());
  sandbox::WriteFile("/var/lib/dpkg/status", "Package: qtm-distro\nVersion: 7.2\n");
  const Snapshot snapshot = Cycle();
  EXPECT_TRUE(snapshot.IsReported("FirmwareVersion"));
  EXPECT_FALSE(snapshot.IsReported("DisplayFirmwareVersion"));
}

// A fresh host has them from nowhere, one that stays from an earlier cycle.
TEST(NotReported, AreNameServersOfAnEarlierCycle) {
  Apply(Talkative());
  CStatusInterface collector;
  collector.InitDatabase(false);
  insight::Recorder recorder(collector);
  EXPECT_TRUE(recorder.RunCycle().IsReported("Network/DNS/Addresses[0]/Address"));
  sandbox::RemoveFile("/etc/resolv.conf");
  const Snapshot snapshot = recorder.RunCycle();
  ASSERT_NE(snapshot.Document.Root().FindValue("Network/DNS/Addresses[0]/Address"), nullptr);
  EXPECT_FALSE(snapshot.IsReported("Network/DNS/Addresses[0]/Address"));
  EXPECT_FALSE(snapshot.IsReported("Network/DNS/Addresses"));
  EXPECT_TRUE(snapshot.IsReported("Network/Devices[0]/Name"));
}

TEST(NotReported, IsAFieldWithoutItsRow) {
  Apply(Talkative());
  EXPECT_TRUE(Cycle().IsReported("Outputs[0]/Title"));
  sandbox::RemoveRow("TtableTitle");
  EXPECT_FALSE(Cycle().IsReported("Outputs[0]/Title"));
}

// The value of a word that is not known stays what it was.
TEST(NotReported, IsAFieldWhoseRowIsRefused) {
  Apply(Talkative());
  EXPECT_TRUE(Cycle().IsReported("Outputs[0]/Dimming/DimmingMode"));
  sandbox::SetRow("DimmingMode", "Manual");
  EXPECT_FALSE(Cycle().IsReported("Outputs[0]/Dimming/DimmingMode"));
}

constexpr char kBehindRouter[] = "Outputs[0]/DisplayInterfaces[0]/Sensors";

std::vector<std::string> Messages(const Snapshot& snapshot) {
  std::vector<std::string> messages;
  for (const insight::Finding& finding : snapshot.Findings) {
    messages.push_back(finding.Message + " (" + finding.Key + ")");
  }
  return messages;
}

void ApplyDemo() { sandbox::Scenario::Load(sandbox::SourcePath("scenarios/demo")).Apply(); }

struct MissingRow {
  const char* Row;
  std::string Path;
  const char* Message;
};

// Each of them used to be a measured 0: fans stood still, and outputs had no voltage.
TEST(NotReported, IsAReadingThatNoRowWrote) {
  SANDBOX_NEEDS_DEVICES();
  const std::string behind = kBehindRouter;
  const std::string board = behind + "[5]/Points/Inputs/Points[4]/State";
  const MissingRow rows[] = {
      {"Sensor_10_IsoVout", behind + "[3]/OutputVoltage",
       "no row reports output voltage (Sensor_10_Type)"},
      {"Sensor_13_CurrentRpm", behind + "[6]/CurrentRpm",
       "no row reports fan speed (Sensor_13_Type)"},
      {"Sensor_12_Input_04_State", board, "no row reports its state (Sensor_12_Input_04_Type)"},
      {"Sensor_05_HumidityOneMin", "Sensors[5]/Humidity",
       "no row reports humidity (Sensor_05_Type)"},
  };
  for (const MissingRow& missing : rows) {
    SCOPED_TRACE(missing.Row);
    ApplyDemo();
    sandbox::RemoveRow(missing.Row);
    const Snapshot snapshot = Cycle();
    ASSERT_NE(snapshot.Document.Root().FindValue(missing.Path), nullptr);
    EXPECT_FALSE(snapshot.IsReported(missing.Path));
    ASSERT_THAT(Messages(snapshot), testing::ElementsAre(missing.Message));
    EXPECT_EQ(snapshot.Findings.front().Level, insight::Severity::kWarning);
    EXPECT_EQ(snapshot.Findings.front().Id, "reading-missing");
    EXPECT_EQ(snapshot.Findings.front().Path, missing.Path);
  }
}

TEST(NotReported, AreAllVoltagesThatNoRowWrote) {
  SANDBOX_NEEDS_DEVICES();
  ApplyDemo();
  for (const char* const number : {"00", "01", "02"}) {
    sandbox::RemoveRow(std::string("Sensor_06_PsrbVin_") + number + "_Volts");
    sandbox::RemoveRow(std::string("Sensor_06_PsrbVout_") + number + "_Volts");
  }
  const Snapshot snapshot = Cycle();
  EXPECT_FALSE(snapshot.IsReported("Sensors[6]/InputVoltages"));
  EXPECT_THAT(
      Messages(snapshot),
      testing::ElementsAre("no row reports input voltage, output voltage (Sensor_06_Type)"));
}

TEST(NotReported, AreNamedUpToThreeOfASensor) {
  SANDBOX_NEEDS_DEVICES();
  ApplyDemo();
  for (const char* const row : {"Altitude", "Ambient", "Back", "Compass", "Front"}) {
    sandbox::RemoveRow(std::string("Sensor_04_") + row);
  }
  EXPECT_THAT(Messages(Cycle()), testing::ElementsAre(testing::AllOf(
                                     testing::StartsWith("no row reports ambient light"),
                                     testing::HasSubstr(" and 2 more ("))));
}

// All were well at 0 degrees.
TEST(NotReported, AreTemperaturesWithoutAnyRow) {
  SANDBOX_NEEDS_DEVICES();
  ApplyDemo();
  for (const char* const number : {"00", "07", "08", "18"}) {
    sandbox::RemoveRow(std::string("Sensor_") + number + "_Celsius");
  }
  const Snapshot snapshot = Cycle();
  EXPECT_FALSE(snapshot.IsReported("Sensors[0]/Celsius"));
  EXPECT_FALSE(snapshot.IsReported(std::string(kBehindRouter) + "[1]/Celsius"));
  EXPECT_EQ(snapshot.Findings.size(), 4U);
  EXPECT_THAT(Messages(snapshot), testing::Each(testing::HasSubstr("no row reports temperature")));
}

// Another sensor's row, or an earlier cycle's, wrote it.
TEST(NotReported, IsNoReadingThatIsInherited) {
  SANDBOX_NEEDS_DEVICES();
  ApplyDemo();
  CStatusInterface collector;
  collector.InitDatabase(false);
  insight::Recorder recorder(collector);
  recorder.RunCycle();
  sandbox::RemoveRow("Sensor_00_Celsius");
  sandbox::RemoveRow("Sensor_08_Celsius");
  const Snapshot snapshot = recorder.RunCycle();
  EXPECT_TRUE(snapshot.IsReported("Sensors[0]/Celsius"));
  EXPECT_TRUE(snapshot.IsReported(std::string(kBehindRouter) + "[1]/Celsius"));
  EXPECT_THAT(Messages(snapshot), testing::IsEmpty());
}

// One finding says it all.
TEST(NotReported, IsNoFindingForASensorThatIsNotConnected) {
  SANDBOX_NEEDS_DEVICES();
  ApplyDemo();
  sandbox::SetRow("Sensor_10_Connected", "false");
  sandbox::RemoveRow("Sensor_10_IsoVout");
  EXPECT_THAT(Messages(Cycle()),
              testing::ElementsAre("sensor is not connected (Sensor_10_Connected)"));
}

TEST(NotReported, IsThatASensorIsConnected) {
  SANDBOX_NEEDS_DEVICES();
  Apply(Talkative());
  sandbox::SetRows({{"Sensor_00_Celsius", "21"},
                    {"Sensor_00_Location", "Local_CAN"},
                    {"Sensor_00_Type", "CANTemp"}});
  const Snapshot snapshot = Cycle();
  EXPECT_FALSE(snapshot.IsReported("Sensors[0]/Connected"));
  EXPECT_TRUE(snapshot.IsReported("Sensors[0]/Celsius"));
}

}  // namespace
