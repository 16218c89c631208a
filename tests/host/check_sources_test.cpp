// `check` on controllers of which a source is missing, denied, silent or old.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ctime>
#include <string>
#include <vector>

#include "sandbox/enter.h"
#include "sandbox/scenario.h"
#include "sandbox/testing.h"
#include "tests/support/paths.h"
#include "tests/support/run_program.h"

namespace {

using sandbox::Scenario;
using test_support::HostProgram;
using test_support::ProgramResult;
using test_support::RunProgram;
using testing::HasSubstr;
using testing::StartsWith;

constexpr int kOk = 0;
constexpr int kUnknown = 3;
constexpr const char* kDatabase = "/dev/shm/status.db";

ProgramResult Check(const std::vector<std::string>& arguments = {}) {
  std::vector<std::string> command = {HostProgram(), "check"};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return RunProgram(command);
}

Scenario Demo() { return Scenario::Load(sandbox::SourcePath("scenarios/demo")); }

class CheckSources : public testing::Test {
 protected:
  void SetUp() override {
    if (!sandbox::DevicesAvailable()) {
      GTEST_SKIP() << "no device nodes: " << sandbox::DevicesRefusal();
    }
  }
};

TEST_F(CheckSources, AreUnknownWithoutANodeUnlessItIsIgnoredByName) {
  for (const std::string node : {"travex", "zetdisplay", "diagnostics"}) {
    SCOPED_TRACE(node);
    Demo().NoDevice(node).Apply();
    const ProgramResult result = Check();
    EXPECT_EQ(result.ExitCode, kUnknown) << result.Output;
    EXPECT_THAT(result.Output, StartsWith("UNKNOWN - 1 unknown: /dev/" + node + " is missing"));
    EXPECT_THAT(result.Output, HasSubstr("(source-missing:" + node + ")"));
    EXPECT_EQ(Check({"--ignore", "source-missing:" + node}).ExitCode, kOk);
    EXPECT_EQ(Check({"--ignore", "source-denied:" + node}).ExitCode, kUnknown);
    EXPECT_EQ(Check({"--ignore", "source-missing:meminfo"}).ExitCode, kUnknown);
  }
}

TEST_F(CheckSources, AreUnknownWithoutAllNodes) {
  Demo().NoDevice("travex").NoDevice("zetdisplay").NoDevice("diagnostics").Apply();
  const ProgramResult result = Check();
  EXPECT_EQ(result.ExitCode, kUnknown);
  EXPECT_THAT(result.Output, StartsWith("UNKNOWN - 2 unknown: /dev/zetdisplay is missing"));
  EXPECT_THAT(result.Output,
              HasSubstr("/dev/travex is missing; therefore not asked: /dev/diagnostics"));
}

// Its answers set all flags, of which the display would seem to be without power.
TEST_F(CheckSources, AreUnknownWhenANodeDoesNotAnswer) {
  Demo().NoDevice("zetdisplay").Device("zetdisplay").Apply();
  const ProgramResult result = Check();
  EXPECT_EQ(result.ExitCode, kUnknown) << result.Output;
  EXPECT_THAT(result.Output, HasSubstr("/dev/zetdisplay does not answer 8 of 8 requests"));
}

TEST_F(CheckSources, AreUnknownWhenRowsAreThreeDaysOld) {
  Demo().Apply();
  EXPECT_EQ(Check().ExitCode, kOk);
  const std::timespec then = {std::time(nullptr) - 3 * 86400 - 60, 0};
  const std::timespec times[] = {then, then};
  for (const char* suffix : {"", "-wal"}) {
    utimensat(AT_FDCWD, (std::string(kDatabase) + suffix).c_str(), times, 0);
  }
  const ProgramResult result = Check();
  EXPECT_EQ(result.ExitCode, kUnknown) << result.Output;
  EXPECT_THAT(result.Output,
              StartsWith("UNKNOWN - 1 unknown: the database has not changed for 3 d"));
  EXPECT_THAT(result.Output, HasSubstr(" database-age=2592"));
  EXPECT_EQ(Check({"--warning", "database-age=604800"}).ExitCode, kOk);
}

TEST_F(CheckSources, AreWarnedOfWhenEveryoneMayWriteTheDatabase) {
  Demo().Apply();
  ASSERT_EQ(chmod(kDatabase, 0666), 0);
  const ProgramResult result = Check();
  chmod(kDatabase, 0644);
  EXPECT_THAT(result.Output, StartsWith("WARNING - 1 warning: every user may write the database"));
}

TEST_F(CheckSources, SayWhichGroupAUserLacks) {
  const std::vector<std::string> somebody = {
      "/usr/bin/setpriv", "--reuid", "1001", "--regid", "1001", "--clear-groups", HostProgram()};
  std::vector<std::string> command = somebody;
  command.emplace_back("schema");
  if (RunProgram(command).ExitCode != 0) {
    GTEST_SKIP() << "no other users";
  }
  Demo()
      .File("/etc/passwd", "root:x:0:0::/:/bin/sh\nmonitor:x:1001:1001::/:/bin/sh\n")
      .File("/etc/group", "root:x:0:\nvideo:x:44:\n")
      .Apply();
  ASSERT_EQ(chown("/proc/meminfo", 0, 44), 0);
  ASSERT_EQ(chmod("/proc/meminfo", 0640), 0);
  const char* const registers = "/proc/driver/frame_control/registers";
  ASSERT_EQ(chown(registers, 0, 44), 0);
  ASSERT_EQ(chmod(registers, 0664), 0);
  command.back() = "check";
  const ProgramResult result = RunProgram(command);
  EXPECT_EQ(result.ExitCode, kUnknown);
  EXPECT_THAT(
      result.Output,
      HasSubstr("; user monitor may not read and write /proc/driver/frame_control/registers "
                "(root:video, mode 0664); members of group video may; see "));
  EXPECT_THAT(result.Output,
              HasSubstr("unknown: /proc/meminfo may not be read by this user: Permission denied; "
                        "user monitor may not read /proc/meminfo (root:video, mode 0640); members "
                        "of group video may; see "));
}

// A row with an error among 430: a warning that names the command that explains it.
TEST_F(CheckSources, AreWarnedOfRowsWithErrors) {
  Demo().Row("sensor_01_Celsius", "20").Row("DimmingMode", "Manual").Apply();
  const ProgramResult result = Check();
  EXPECT_EQ(result.ExitCode, 1) << result.Output;
  EXPECT_THAT(result.Output, StartsWith("WARNING - 1 warning: 2 rows have errors"));
  EXPECT_THAT(result.Output, HasSubstr("statuscollector explain --problems"));
}

}  // namespace
