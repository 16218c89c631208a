#include <fcntl.h>
#include <gmock/gmock.h>

#include <type_traits>

#include "sandbox/scenario.h"
#include "sandbox/testing.h"
#include "tests/hardware/probe_fixture.h"
#include "tests/support/interposed/system_calls.h"

namespace {

using interposed::Opens;
using sandbox::Scenario;
using testing::ElementsAre;
using testing::IsEmpty;

class UpdateStatus : public ProbeTest {
 protected:
  int Update() {
    int result = -1;
    OutputOf([&] { result = probe_.UpdateStatus(&status_); });
    return result;
  }
};

TEST(Probe, BeginsWithoutDocumentAndReportsTheTracker) {
  const CTolmarHardware probe;
  EXPECT_EQ(probe.m_pStatus, nullptr);
  EXPECT_TRUE(probe.m_bLogTrackerPixel);
}

TEST(Probe, IsDestroyedThroughAPointerAndHoldsTheDocumentFirst) {
  EXPECT_TRUE(std::has_virtual_destructor_v<CTolmarHardware>);
  const CTolmarHardware probe;
  const void* const document = &probe.m_pStatus;
  const void* const flag = &probe.m_bLogTrackerPixel;
  EXPECT_LT(document, flag);
}

TEST(Probe, WithoutDocumentDoesNothing) {
  using Member = int (CTolmarHardware::*)();
  constexpr Member kProbes[] = {&CTolmarHardware::Compositor,
                                &CTolmarHardware::InputGraphic,
                                &CTolmarHardware::InputDVI,
                                &CTolmarHardware::IDs,
                                &CTolmarHardware::GUID,
                                &CTolmarHardware::SystemMemoryKB,
                                &CTolmarHardware::SystemStorageKB,
                                &CTolmarHardware::Network,
                                &CTolmarHardware::DNS,
                                &CTolmarHardware::FirmwareVersion,
                                &CTolmarHardware::DisplayFirmwareVersion};
  CTolmarHardware probe;
  const Opens opens;
  for (const Member member : kProbes) {
    SCOPED_TRACE(&member - kProbes);
    EXPECT_EQ((probe.*member)(), 1);
  }
  EXPECT_EQ(probe.OutputPort(0), 1);
  EXPECT_EQ(probe.ContentLimit(0), 1);
  EXPECT_EQ(probe.UpdateStatus(nullptr), 0);
  EXPECT_EQ(probe.m_pStatus, nullptr);
  EXPECT_THAT(opens.Paths(), IsEmpty());
}

TEST_F(UpdateStatus, KeepsTheDocumentItWasGiven) {
  QtSts::CStatus other;
  EXPECT_EQ(probe_.UpdateStatus(&other), 0);
  EXPECT_EQ(probe_.m_pStatus, &other);
  EXPECT_EQ(probe_.UpdateStatus(nullptr), 0);
  EXPECT_EQ(probe_.m_pStatus, nullptr);
}

TEST_F(UpdateStatus, SucceedsOnABareMachine) {
  Scenario().Folder("/home/Zet/.settings").Apply();
  const Opens opens;
  EXPECT_EQ(Update(), 0);
  EXPECT_EQ(status_.Compositors.Count(), 0U);
  EXPECT_EQ(status_.Outputs.Count(), 0U);
  EXPECT_EQ(status_.Inputs.Count(), 0U);
  EXPECT_EQ(status_.Network.Devices.Count(), 0U);
  EXPECT_EQ(status_.DCIO.Devices.Count(), 0U);
  EXPECT_EQ(status_.Sensors.Count(), 0U);
  EXPECT_EQ(status_.GUID, "");
  EXPECT_EQ(status_.MemoryTotal, 100000);
  EXPECT_THAT(opens.Paths(),
              ElementsAre("/dev/zetdisplay",                  // compositor
                          "/dev/travex", "/dev/travex",       // output port, its limits
                          kFrameControl, kFrameControl,       // player, DVI
                          "/dev/zetdisplay", kUuid, kMemory,  // identity, memory
                          kResolver, kPackages, kPackages));  // names, versions
}

// A controller on which every source is there.
Scenario Complete() {
  return Scenario()
      .Answer("travex", 0x8004DA0C, 60000)
      .Answer("zetdisplay", 0x8004DA5F, 2)
      .Answer("zetdisplay", 0x8004DA1E, 1)
      .Answer("zetdisplay", 0x8004DA5C, 35)
      .Device("diagnostics")
      .File(kFrameControl, "dss_detected_rows: 0x438\n")
      .File(kVideoMux, "video mux status register: 0x4\n")
      .File(kUuid, "uuid\n")
      .File(kSerial, "12AF0\n")
      .File(kPackages, "Package: qtm-distro\nVersion: 1.0\n\nPackage: dispfw\nVersion: 2.0\n")
      .File(kMemory, "MemTotal: 7 kB\n")
      .File(kRoutes, "eth0 00000000 0101A8C0\n")
      .File(kLinkCounters, "eth0: 0 0 1 0 0 0 0 0 0 0 2\n")
      .File("/dev/shm/netlink-eth0", "3\n")
      .File("/sys/class/net/eth0/carrier", "1\n")
      .File(kResolver, "nameserver 8.8.8.8\n")
      .Interface({"eth0", "", sandbox::LinkState::kUp, {{"192.168.1.20/24", "", ""}}});
}

TEST_F(UpdateStatus, RunsTheProbesInTheirOrder) {
  SANDBOX_NEEDS_DEVICES();
  Complete().Apply();
  const Opens opens;
  EXPECT_EQ(Update(), 0);
  EXPECT_THAT(opens.Paths(),
              ElementsAre("/dev/zetdisplay",                                                    //
                          "/dev/travex", kFrameControl, "/dev/zetdisplay", "/dev/diagnostics",  //
                          "/dev/travex",                                                        //
                          kFrameControl, kVideoMux,                                             //
                          kFrameControl, "/dev/zetdisplay", kVideoMux,                          //
                          "/dev/zetdisplay", kSerial,                                           //
                          kUuid, kMemory,                                                       //
                          "/sys/class/net/eth0/carrier", "/dev/shm/netlink-eth0", kLinkCounters,
                          "/sys/class/net/eth0/carrier", kRoutes,  //
                          kResolver, kPackages));
  EXPECT_EQ(status_.Compositors[0]->State, 2);
  EXPECT_EQ(status_.Outputs[0]->Frequency.Vertical, 60.0F);
  EXPECT_EQ(status_.Inputs.Count(), 2U);
  EXPECT_EQ(status_.Inputs[0]->GetType(), QtSts::kPlayerInput);
  EXPECT_EQ(status_.Inputs[1]->GetType(), QtSts::kDigitalInput);
  EXPECT_EQ(status_.SerialNumber, 0x12AF0U);
  EXPECT_EQ(status_.GUID, "uuid\n");
  EXPECT_EQ(status_.MemoryTotal, 7);
  EXPECT_EQ(status_.StorageTotal, 65536U);
  EXPECT_EQ(status_.Network.Devices[0]->Gateway, "192.168.1.1");
  EXPECT_EQ(status_.Network.DNS.Addresses.Count(), 1U);
  EXPECT_EQ(status_.FirmwareVersion, "1.0");
  EXPECT_EQ(status_.DisplayFirmwareVersion, "2.0");
}

TEST_F(UpdateStatus, ReadsThePackageDatabaseAgainWhenItCouldNotBeOpened) {
  Complete().Apply();
  Opens opens;
  opens.Refuse(kPackages, 1);
  EXPECT_EQ(Update(), 0);
  EXPECT_THAT(opens.Paths(), testing::Contains(kPackages).Times(2));
  EXPECT_EQ(status_.FirmwareVersion, "");
  EXPECT_EQ(status_.DisplayFirmwareVersion, "");
}

TEST_F(UpdateStatus, OpensDriversForWritingAllElseForReadingAndCreatesNothing) {
  SANDBOX_NEEDS_DEVICES();
  Complete().Apply();
  const Opens opens;
  Update();
  ASSERT_FALSE(opens.Files().empty());
  for (const Opens::File& file : opens.Files()) {
    SCOPED_TRACE(file.Path);
    const bool driver = (file.Path.starts_with("/dev/") && !file.Path.starts_with("/dev/shm/")) ||
                        file.Path.starts_with("/proc/driver/");
    EXPECT_EQ(file.Flags & O_ACCMODE, driver ? O_RDWR : O_RDONLY);
    EXPECT_NE(file.Flags & O_CLOEXEC, 0);
    EXPECT_NE(file.Flags & O_NOCTTY, 0);
    EXPECT_EQ(file.Flags & (O_CREAT | O_TRUNC | O_APPEND), 0);
    EXPECT_EQ(file.Flags & O_NONBLOCK, driver ? 0 : O_NONBLOCK);
  }
}

TEST_F(UpdateStatus, RebuildsTheListsAndKeepsTheRest) {
  SANDBOX_NEEDS_DEVICES();
  Complete().Apply();
  Update();
  status_.DCIO.Devices.Add(new QtSts::CDoorSwitch);
  status_.Sensors.Add(new QtSts::CCANSensor);
  status_.Outputs[0]->Title = "of the last cycle";
  for (int cycle = 0; cycle < 2; ++cycle) {
    EXPECT_EQ(Update(), 0);
    EXPECT_EQ(status_.Compositors.Count(), 1U);
    EXPECT_EQ(status_.Outputs.Count(), 1U);
    EXPECT_EQ(status_.Outputs[0]->Title, "");
    EXPECT_EQ(status_.Inputs.Count(), 2U);
    EXPECT_EQ(status_.Network.Devices.Count(), 1U);
    EXPECT_EQ(status_.DCIO.Devices.Count(), 0U);
    EXPECT_EQ(status_.Sensors.Count(), 0U);
  }
  Scenario().Apply();
  EXPECT_EQ(Update(), 0);
  EXPECT_EQ(status_.Compositors.Count(), 0U);
  EXPECT_EQ(status_.Outputs.Count(), 0U);
  EXPECT_EQ(status_.Inputs.Count(), 0U);
  EXPECT_EQ(status_.Network.Devices.Count(), 0U);
  EXPECT_EQ(status_.HardwareID1, 35) << "what has no source any more keeps its value";
  EXPECT_EQ(status_.GUID, "uuid\n");
  EXPECT_EQ(status_.FirmwareVersion, "1.0");
  EXPECT_EQ(status_.Network.DNS.Addresses.Count(), 1U);
}

}  // namespace
