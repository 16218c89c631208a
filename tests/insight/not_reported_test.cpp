// Fields whose source did not answer and that no row wrote.
#include "sandbox/devices.h"
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

}  // namespace
