#include "sandbox/scenario.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "sandbox/descriptor.h"
#include "sandbox/testing.h"

namespace sandbox {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr std::uint32_t kRate = 0x8004DA0C;
constexpr const char* kFolder = "/tmp/scenario";

class ScenarioTest : public testing::Test {
 protected:
  void SetUp() override { fs::remove_all(kFolder); }

  static void Write(const std::string& name, const std::string& text, mode_t mode = 0644) {
    WriteFile(std::string(kFolder) + "/" + name, text, mode);
  }

  // What loading complains about.
  static std::string Complaint() {
    try {
      Scenario::Load(kFolder);
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "";
  }
};

TEST_F(ScenarioTest, AFolderBecomesAController) {
  SANDBOX_NEEDS_DEVICES();
  Write("root/home/Zet/.settings/uuid", "abc\n");
  Write("root/opt/tool", "#!/bin/sh\n", 0755);
  MakeLink(std::string(kFolder) + "/root/var/run", "/run");
  Write("devices/travex", "0x8004DA0C 59940\n");
  Write("interfaces", "interface eth0\n  address 10.0.0.5/8\n");
  Write("rows.tsv", "GUID\tabc\n");
  Write("uptime", "93784\n");
  const std::string clocks = ReadFile("/proc/self/timens_offsets");
  Scenario::Load(kFolder).Apply();

  EXPECT_EQ("abc\n", ReadFile("/home/Zet/.settings/uuid"));
  EXPECT_EQ(0, access("/opt/tool", X_OK));
  EXPECT_EQ("/run", fs::read_symlink("/var/run"));
  EXPECT_EQ(59940, ioctl(Descriptor(open("/dev/travex", O_RDWR)).Number(), kRate));
  EXPECT_NE(0U, if_nametoindex("eth0"));
  EXPECT_TRUE(fs::exists(kDatabase));
  EXPECT_NE(clocks, ReadFile("/proc/self/timens_offsets"));
}

TEST_F(ScenarioTest, AnEmptyFolderIsABareMachine) {
  MakeFolder(kFolder);
  Scenario::Load(kFolder).Apply();
  EXPECT_FALSE(fs::exists(kDatabase));
  EXPECT_EQ(0U, if_nametoindex("eth0"));
  EXPECT_TRUE(fs::is_empty("/sys"));
}

TEST_F(ScenarioTest, AnEmptyRowsFileMakesADatabaseWithoutRows) {
  Write("rows.tsv", "");
  Scenario::Load(kFolder).Apply();
  EXPECT_TRUE(fs::exists(kDatabase));
}

TEST_F(ScenarioTest, AFolderMayChangeAnotherOne) {
  SANDBOX_NEEDS_DEVICES();
  const std::string base = "/tmp/base";
  WriteFile(base + "/root/etc/kept", "of the base");
  WriteFile(base + "/root/etc/changed", "of the base");
  WriteFile(base + "/devices/travex", "0x8004DA0C 1\n");
  WriteFile(base + "/interfaces", "interface eth0\n");
  Write("base", "base\n");
  Write("root/etc/changed", "of the folder");
  Write("interfaces", "interface eth1\n");
  Scenario::Load(kFolder).Apply();
  EXPECT_EQ("of the base", ReadFile("/etc/kept"));
  EXPECT_EQ("of the folder", ReadFile("/etc/changed"));
  EXPECT_TRUE(fs::exists("/dev/travex"));
  EXPECT_EQ(0U, if_nametoindex("eth0"));
  EXPECT_NE(0U, if_nametoindex("eth1"));
}

// The base used to be looked for in the folder itself.
TEST_F(ScenarioTest, ASlashAfterItsNameChangesNothing) {
  WriteFile("/tmp/base/root/etc/kept", "of the base");
  Write("base", "base\n");
  Scenario::Load(std::string(kFolder) + "/").Apply();
  EXPECT_EQ("of the base", ReadFile("/etc/kept"));
}

// A folder that named itself used to be loaded without end.
TEST_F(ScenarioTest, ABaseHasNoBaseItself) {
  Write("base", "scenario\n");
  EXPECT_EQ("/tmp/scenario/base: the base has a base itself", Complaint());
  Write("base", "missing\n");
  EXPECT_EQ("/tmp/missing: not a scenario folder", Complaint());
}

TEST_F(ScenarioTest, TheNextScenarioFindsNothingOfTheFormer) {
  SANDBOX_NEEDS_DEVICES();
  Scenario()
      .File("/proc/meminfo", "x")
      .Answer("travex", kRate, 1)
      .Interface({.Name = "eth0"})
      .Row("GUID", "abc")
      .Apply();
  EXPECT_TRUE(fs::exists("/dev/travex"));
  Scenario().Apply();
  EXPECT_FALSE(fs::exists("/proc/meminfo"));
  EXPECT_FALSE(fs::exists("/dev/travex"));
  EXPECT_EQ(0U, if_nametoindex("eth0"));
  EXPECT_FALSE(fs::exists(kDatabase));
}

TEST_F(ScenarioTest, CodeCanAddToAFolderAndTakeFromIt) {
  SANDBOX_NEEDS_DEVICES();
  Write("root/proc/meminfo", "of the folder");
  Write("root/etc/resolv.conf", "of the folder");
  Write("devices/travex", "0x8004DA0C 1\n");
  Write("devices/diagnostics", "0x8004DB17 1\n");
  Scenario::Load(kFolder)
      .File("/proc/meminfo", "of the test")
      .NoFile("/etc/resolv.conf")
      .Answer("travex", kRate, 2)
      .NoDevice("diagnostics")
      .Apply();
  EXPECT_EQ("of the test", ReadFile("/proc/meminfo"));
  EXPECT_FALSE(fs::exists("/etc/resolv.conf"));
  EXPECT_EQ(2, ioctl(Descriptor(open("/dev/travex", O_RDWR)).Number(), kRate));
  EXPECT_FALSE(fs::exists("/dev/diagnostics"));
}

TEST_F(ScenarioTest, FilesOfEveryKindCanBeSetInCode) {
  Scenario()
      .File("/etc/program", "x", 0700)
      .Folder("/var/run/wd_event")
      .Link("/etc/link", "program")
      .Unopenable("/etc/shut")
      .Apply();
  EXPECT_EQ(0, access("/etc/program", X_OK));
  EXPECT_TRUE(fs::is_directory("/var/run/wd_event"));
  EXPECT_EQ("x", ReadFile("/etc/link"));
  EXPECT_EQ(-1, open("/etc/shut", O_RDONLY));
}

TEST_F(ScenarioTest, ANodeMayAnswerNothing) {
  SANDBOX_NEEDS_DEVICES();
  Scenario().Device("travex").Apply();
  const Descriptor device(open("/dev/travex", O_RDWR));
  EXPECT_TRUE(device);
  EXPECT_EQ(-1, ioctl(device.Number(), kRate));
}

TEST_F(ScenarioTest, TheDeviceLogStartsEmpty) {
  SANDBOX_NEEDS_DEVICES();
  Scenario().Answer("travex", kRate, 1).Apply();
  EXPECT_THAT(DeviceLog(), IsEmpty());
}

TEST_F(ScenarioTest, AMistakeIsReportedWithItsFileAndLine) {
  struct Row {
    const char* File;
    const char* Text;
  };
  constexpr Row kRows[] = {
      {"devices/travex", "# answers\n0x8004DA0C\n"},
      {"devices/travex", "\nrequest 5\n"},
      {"devices/travex", "\n0x8004DA0C 5x\n"},
      {"devices/travex", "\n0x18004DA0C 5\n"},
      {"interfaces", "\nmac 00:00:00:00:00:00\n"},
      {"interfaces", "interface eth0\nlink sideways\n"},
      {"interfaces", "interface eth0\naddress 10.0.0.5/8 label\n"},
      {"interfaces", "interface eth0\nadress 10.0.0.5/8\n"},
      {"rows.tsv", "A\t1\nno tab\n"},
      {"rows.tsv", "A\t1\nA\t2\n"},
      {"rows.tsv", "\nA\t\\q\n"},
      {"rows.tsv", "\nA\t\\x1\n"},
      {"rows.tsv", "\n\\x1\tA\n"},
      {"rows.tsv", "\nA\tends in \\\n"},
      {"uptime", "\nlong\n"},
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(std::string(row.File) + ": " + row.Text);
    fs::remove_all(kFolder);
    Write(row.File, row.Text);
    const std::string complaint = Complaint();
    EXPECT_THAT(complaint, StartsWith(std::string(kFolder) + "/" + row.File));
    EXPECT_THAT(complaint, HasSubstr("line 2: "));
  }
}

TEST_F(ScenarioTest, AMissingFolderIsReported) {
  EXPECT_EQ("/tmp/scenario: not a scenario folder", Complaint());
}

}  // namespace
}  // namespace sandbox
