#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "sandbox/descriptor.h"
#include "sandbox/scenario.h"
#include "sandbox/testing.h"
#include "tests/hardware/probe_fixture.h"

namespace {

using sandbox::Scenario;
using sandbox::SetAnswer;
using sandbox::WriteFile;
using testing::ElementsAre;

class Guid : public ProbeTest {};

TEST_F(Guid, IsTheFileWithItsLineFeed) {
  Scenario().File(kUuid, "abc\n").Apply();
  EXPECT_EQ(probe_.GUID(), 0);
  EXPECT_EQ(status_.GUID, "abc\n");
  WriteFile(kUuid, "abc");
  EXPECT_EQ(probe_.GUID(), 0);
  EXPECT_EQ(status_.GUID, "abc");
}

TEST_F(Guid, IsCutAt128Bytes) {
  for (const std::size_t size : {127, 128, 129, 1000}) {
    SCOPED_TRACE(size);
    Scenario().File(kUuid, std::string(size, 'u')).Apply();
    EXPECT_EQ(probe_.GUID(), 0);
    EXPECT_EQ(status_.GUID, std::string(std::min<std::size_t>(size, 128), 'u'));
  }
}

TEST_F(Guid, EndsAtAZeroByte) {
  Scenario().File(kUuid, std::string("abc\0def", 7)).Apply();
  EXPECT_EQ(probe_.GUID(), 0);
  EXPECT_EQ(status_.GUID, "abc");
}

TEST_F(Guid, OfAnEmptyOrUnreadableFileIsEmpty) {
  status_.GUID = "former";
  Scenario().File(kUuid, "").Apply();
  EXPECT_EQ(probe_.GUID(), 0);
  EXPECT_EQ(status_.GUID, "");
  status_.GUID = "former";
  Scenario().Folder(kUuid).Apply();
  EXPECT_EQ(probe_.GUID(), 0);
  EXPECT_EQ(status_.GUID, "");
}

TEST_F(Guid, OfAFileThatVanishedStays) {
  status_.GUID = "former";
  EXPECT_EQ(probe_.GUID(), 1);
  EXPECT_EQ(status_.GUID, "former");
}

// A host may have closed its standard input; the next file that is opened then takes its number.
TEST_F(Guid, IsReadAlsoAsDescriptorZero) {
  Scenario().File(kUuid, "abc").Apply();
  const sandbox::Descriptor input(dup(STDIN_FILENO));
  close(STDIN_FILENO);
  EXPECT_EQ(probe_.GUID(), 0);
  dup2(input.Number(), STDIN_FILENO);
  EXPECT_EQ(status_.GUID, "abc");
}

// A pipe without a writer used to be able to hold up every cycle in open().
TEST_F(Guid, IsNotWaitedForWhenTheFileIsAPipe) {
  Scenario().Folder("/home/Zet/.settings").Apply();
  ASSERT_EQ(mkfifo(kUuid, 0600), 0);
  EXPECT_EQ(probe_.GUID(), 0);
  EXPECT_EQ(status_.GUID, "");
}

// Whatever somebody wrote into a pipe used to become the identity.
TEST_F(Guid, IsNotTakenFromAPipe) {
  Scenario().Folder("/home/Zet/.settings").Apply();
  ASSERT_EQ(mkfifo(kUuid, 0600), 0);
  const sandbox::Descriptor pipe(open(kUuid, O_RDWR | O_CLOEXEC));
  ASSERT_EQ(write(pipe.Number(), "abc", 3), 3);
  status_.GUID = "former";
  EXPECT_EQ(probe_.GUID(), 0);
  EXPECT_EQ(status_.GUID, "");
}

// A terminal, "/pts/0"; a sandbox has none.
class Terminal {
 public:
  Terminal() {
    mkdir("/pts", 0755);
    mount("devpts", "/pts", "devpts", MS_NOSUID | MS_NOEXEC, "newinstance,ptmxmode=0666");
    master_ = open("/pts/ptmx", O_RDWR | O_NOCTTY | O_CLOEXEC);
    unlockpt(master_);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;
  ~Terminal() {
    close(master_);
    umount2("/pts", MNT_DETACH);
  }

  bool IsThere() const { return access("/pts/0", F_OK) == 0; }

 private:
  int master_;
};

// Number of the process's controlling terminal, 0 when it has none.
int ControllingTerminal() {
  const std::string process = sandbox::ReadFile("/proc/self/stat");
  int terminal = -1;
  std::sscanf(process.c_str() + process.rfind(')'), ") %*c %*d %*d %*d %d", &terminal);
  return terminal;
}

// A host that leads its session used to get the terminal that such a link leads to as its
// controlling terminal, and to end when that was hung up.
TEST_F(Guid, GivesTheHostNoControllingTerminal) {
  const Terminal terminal;
  ASSERT_TRUE(terminal.IsThere());
  Scenario().Link(kUuid, "/pts/0").Apply();
  const pid_t host = fork();
  if (host == 0) {
    setsid();
    probe_.GUID();
    _exit(ControllingTerminal() == 0 ? 0 : 1);
  }
  int status = -1;
  EXPECT_EQ(waitpid(host, &status, 0), host);
  EXPECT_EQ(status, 0);
}

constexpr std::uint32_t kHardwareIds[] = {0x8004DA5C, 0x8004DA5E, 0x8004DA5D};

Scenario Identified() {
  return Scenario()
      .Answer("zetdisplay", kHardwareIds[0], 35)
      .Answer("zetdisplay", kHardwareIds[1], 2)
      .Answer("zetdisplay", kHardwareIds[2], 3)
      .File(kSerial, "0x00012AF0\n");
}

class Ids : public ProbeTest {};

TEST_F(Ids, AreTheDriversAnswersTwoOfThemCrossed) {
  SANDBOX_NEEDS_DEVICES();
  Identified().Apply();
  sandbox::ClearDeviceLog();
  EXPECT_EQ(probe_.IDs(), 0);
  EXPECT_EQ(status_.HardwareID1, 35);
  EXPECT_EQ(status_.HardwareID2, 2);
  EXPECT_EQ(status_.HardwareID3, 3);
  EXPECT_EQ(status_.ProductFamily, 4);
  EXPECT_EQ(status_.SerialNumber, 0x12AF0U);
  EXPECT_THAT(sandbox::DeviceLog(), ElementsAre("zetdisplay open", "zetdisplay ioctl 0x8004DA5C",
                                                "zetdisplay ioctl 0x8004DA5E",
                                                "zetdisplay ioctl 0x8004DA5D", "zetdisplay close"));
}

TEST_F(Ids, FirstOneDeterminesTheProductFamily) {
  SANDBOX_NEEDS_DEVICES();
  struct {
    int Id;
    int Family;
  } const kRows[] = {{39, 3}, {35, 4}, {19, 5}, {33, 0}, {0, 1}, {1, 1}, {34, 1}, {-1, 1}};
  Identified().Apply();
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.Id);
    SetAnswer("zetdisplay", kHardwareIds[0], row.Id);
    probe_.IDs();
    EXPECT_EQ(status_.HardwareID1, row.Id);
    EXPECT_EQ(status_.ProductFamily, row.Family);
  }
}

TEST_F(Ids, WithoutAnswerAreMinusOne) {
  SANDBOX_NEEDS_DEVICES();
  Scenario().Device("zetdisplay").Apply();
  probe_.IDs();
  EXPECT_EQ(status_.HardwareID1, -1);
  EXPECT_EQ(status_.HardwareID2, -1);
  EXPECT_EQ(status_.HardwareID3, -1);
  EXPECT_EQ(status_.ProductFamily, 1);
}

TEST_F(Ids, WithoutDisplayDriverStayWithSerialAndFamily) {
  status_.HardwareID1 = 7;
  status_.ProductFamily = 8;
  status_.SerialNumber = 9;
  Scenario().File(kSerial, "0x1").Apply();
  EXPECT_EQ(probe_.IDs(), 1);
  EXPECT_EQ(status_.HardwareID1, 7);
  EXPECT_EQ(status_.ProductFamily, 8);
  EXPECT_EQ(status_.SerialNumber, 9U);
}

TEST_F(Ids, AreKeptWhenTheSerialIsMissing) {
  SANDBOX_NEEDS_DEVICES();
  status_.SerialNumber = 9;
  Identified().NoFile(kSerial).Apply();
  EXPECT_EQ(probe_.IDs(), 1);
  EXPECT_EQ(status_.HardwareID1, 35);
  EXPECT_EQ(status_.ProductFamily, 4);
  EXPECT_EQ(status_.SerialNumber, 9U);
}

TEST_F(Ids, SerialIsHexadecimalText) {
  SANDBOX_NEEDS_DEVICES();
  struct {
    const char* Text;
    std::uint32_t Serial;
  } const kRows[] = {
      {"0x00012AF0", 0x12AF0},          {"12AF0", 0x12AF0},         {"12af0\n", 0x12AF0}, {"", 0},
      {"123456789ABCDEF0", 0x9ABCDEF0},  // the low 32 bits
      {"0x000000000000123", 0x12},       // what follows 16 characters is not read
      {"00000000000000123", 0x12},      {"00000000000000000x1", 0}, {"1g", 119},
  };
  Identified().Apply();
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.Text);
    WriteFile(kSerial, row.Text);
    EXPECT_EQ(probe_.IDs(), 0);
    EXPECT_EQ(status_.SerialNumber, row.Serial);
  }
  status_.SerialNumber = 9;
  sandbox::MakeFolder(kSerial);
  EXPECT_EQ(probe_.IDs(), 0);
  EXPECT_EQ(status_.SerialNumber, 0U) << "opens but cannot be read";
}

}  // namespace
