// `check` on controllers in a box, as monitoring clients run it.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "sandbox/enter.h"
#include "sandbox/scenario.h"
#include "sandbox/testing.h"
#include "tests/support/held_lease.h"
#include "tests/support/paths.h"
#include "tests/support/run_program.h"

namespace {

using sandbox::Scenario;
using test_support::HostProgram;
using test_support::ProgramResult;
using test_support::RunProgram;
using testing::AllOf;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

constexpr int kOk = 0;
constexpr int kWarning = 1;
constexpr int kCritical = 2;
constexpr int kUnknown = 3;

ProgramResult Check(const std::vector<std::string>& arguments = {}) {
  std::vector<std::string> command = {HostProgram(), "check"};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return RunProgram(command);
}

Scenario Demo() { return Scenario::Load(sandbox::SourcePath("scenarios/demo")); }

std::string FirstLine(const ProgramResult& result) {
  return result.Output.substr(0, result.Output.find('\n'));
}

class CheckTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!sandbox::DevicesAvailable()) {
      GTEST_SKIP() << "no device nodes: " << sandbox::DevicesRefusal();
    }
  }
};

TEST_F(CheckTest, IsOkForAHealthyDisplay) {
  Demo().Apply();
  const ProgramResult result = Check();
  EXPECT_EQ(result.ExitCode, kOk) << result.Output;
  EXPECT_THAT(result.Output, MatchesRegex("OK - 430 rows[^|\n]* \\| [^|\n]*\n"));
  EXPECT_THAT(
      result.Output,
      AllOf(HasSubstr(" temperature=41.5C;-30:65;-40:80;-60;150 "),
            HasSubstr(" temperature-lowest=28.75C;-30:65;-40:80;-60;150 "),
            HasSubstr(" memory-free=76.435%;10:;5:;0 "), HasSubstr(" link-errors=3c;0:1000;;0 "),
            HasSubstr(" rows=430;;;0 "), HasSubstr(" findings=0;;;0 "), HasSubstr(" duration=")));
}

TEST_F(CheckTest, IsCriticalForADisplayInTrouble) {
  Scenario::Load(sandbox::SourcePath("scenarios/faults")).Apply();
  const ProgramResult result = Check();
  EXPECT_EQ(result.ExitCode, kCritical) << result.Output;
  EXPECT_THAT(result.Output,
              MatchesRegex("CRITICAL - [0-9]+ critical, [^|\n]*[0-9]+ warnings: [^|]* \\| [^|]*"));
  EXPECT_THAT(result.Output,
              AllOf(HasSubstr("\ncritical: display power is off; see "),
                    HasSubstr("\nwarning: fan stands still: fan sensor 6 at address 39 on face 1 "
                              "behind the router at address 1; see ")));
}

TEST_F(CheckTest, WarnsOfOneSensor) {
  Demo().Row("Sensor_07_Connected", "false").Apply();
  const ProgramResult result = Check();
  EXPECT_EQ(result.ExitCode, kWarning) << result.Output;
  EXPECT_THAT(FirstLine(result), StartsWith("WARNING - 1 warning: sensor is not connected: "));
}

TEST_F(CheckTest, IsUnknownWithoutRows) {
  Scenario scenario = Demo();
  scenario.NoDatabase().Database().Apply();
  const ProgramResult result = Check();
  EXPECT_EQ(result.ExitCode, kUnknown) << result.Output;
  EXPECT_THAT(FirstLine(result), StartsWith("UNKNOWN - "));
  EXPECT_THAT(result.Output, HasSubstr("the database has no rows"));
}

TEST_F(CheckTest, IsUnknownWithoutADatabaseAndSaysWhatToDo) {
  Demo().NoDatabase().Apply();
  const ProgramResult result = Check();
  EXPECT_EQ(result.ExitCode, kUnknown) << result.Output;
  EXPECT_THAT(FirstLine(result), StartsWith("UNKNOWN - "));
  EXPECT_THAT(result.Output,
              HasSubstr("\n/dev/shm/status.db does not exist; a host or `statuscollector init` "
                        "creates it\n"));
}

TEST_F(CheckTest, IsCriticalBeforeUnknownAndUnknownBeforeWarning) {
  Scenario scenario = Demo();
  scenario.Row("Sensor_07_Celsius", "900").Row("Sensor_08_Connected", "false").Apply();
  EXPECT_EQ(Check().ExitCode, kUnknown);
  EXPECT_EQ(Check({"--critical", "memory-free=99:"}).ExitCode, kCritical);
}

struct LimitCase {
  const char* Name;
  std::vector<std::string> Arguments;
  int Status;
};

std::ostream& operator<<(std::ostream& out, const LimitCase& row) { return out << row.Name; }

class CheckLimits : public testing::TestWithParam<LimitCase> {};

// The demo's temperatures are 28.75 to 41.5, its free memory 76.4 %.
TEST_P(CheckLimits, DecideOnTheStatus) {
  SANDBOX_NEEDS_DEVICES();
  Demo().Apply();
  const ProgramResult result = Check(GetParam().Arguments);
  EXPECT_EQ(result.ExitCode, GetParam().Status) << result.Output;
}

INSTANTIATE_TEST_SUITE_P(
    Ranges, CheckLimits,
    testing::Values(
        LimitCase{"AtItsEnd", {"--warning", "temperature=41.5"}, kOk},
        LimitCase{"Above", {"--warning", "temperature=41.4"}, kWarning},
        LimitCase{"AboveCritical", {"--critical=temperature=41.4"}, kCritical},
        LimitCase{"Below", {"-w", "temperature=29:"}, kWarning},
        LimitCase{"Between", {"-c", "temperature=28.75:41.5"}, kOk},
        LimitCase{"NotBetween", {"-c", "temperature=@40:41.5"}, kCritical},
        LimitCase{"Negative", {"-w", "temperature=-40:-10"}, kWarning},
        LimitCase{"NoLowerEnd", {"-w", "temperature=~:50"}, kOk},
        LimitCase{"Percent", {"-w", "memory-free=80:", "-c", "memory-free=77:"}, kCritical},
        LimitCase{"SeveralNames", {"-w", "memory-free=80:", "-w", "temperature=99"}, kWarning},
        LimitCase{"TheLastOfOneName", {"-w", "memory-free=80:", "-w", "memory-free=70:"}, kOk},
        LimitCase{"None", {"-w", "temperature=~:", "-c", "temperature=~:"}, kOk}),
    [](const auto& tested) { return std::string(tested.param.Name); });

TEST_F(CheckTest, GivesTheLimitsInForceWithTheReadings) {
  Demo().Apply();
  EXPECT_THAT(Check({"-w", "temperature=@10:20", "-c", "temperature=~:99"}).Output,
              HasSubstr(" temperature=41.5C;@10:20;~:99;-60;150 "));
}

TEST_F(CheckTest, RefusesBadLimitsWithTheReason) {
  for (const auto& [limit, reason] :
       {std::pair("temperatur=3", "there is no limit temperatur; there are database-age, "),
        std::pair("temperature", "temperature is not NAME=RANGE; ranges are 10, "),
        std::pair("temperature=", "temperature= is not NAME=RANGE; "),
        std::pair("temperature=20:10", "temperature=20:10 is not NAME=RANGE; "),
        std::pair("temperature=37,5", "temperature=37,5 is not NAME=RANGE; "),
        std::pair("=3", "there is no limit ; there are ")}) {
    for (const char* option : {"--warning", "--critical"}) {
      const ProgramResult result = Check({option, limit});
      EXPECT_EQ(result.ExitCode, kUnknown) << limit;
      EXPECT_THAT(result.Output, StartsWith(std::string("UNKNOWN - ") + reason)) << limit;
      EXPECT_THAT(result.Errors, HasSubstr(std::string("statuscollector: ") + reason)) << limit;
    }
  }
}

TEST_F(CheckTest, EndsWithThreeForWrongUsageAsPluginsDo) {
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{"--bogus"},
                                                    {"word"},
                                                    {"--timeout", "0"},
                                                    {"--timeout", "soon"},
                                                    {"--warning"},
                                                    {"--ignore", ""}}) {
    const ProgramResult result = Check(arguments);
    EXPECT_EQ(result.ExitCode, kUnknown) << arguments.front();
    EXPECT_THAT(result.Output, MatchesRegex("UNKNOWN - [^\n]+\n")) << arguments.front();
    EXPECT_THAT(result.Errors, HasSubstr("statuscollector: ")) << arguments.front();
  }
}

TEST_F(CheckTest, LeavesOutWhatIsToBeIgnored) {
  const std::string behind_router = "sensor-disconnected:Outputs[0]/DisplayInterfaces[0]/Sensors";
  Demo().Row("Sensor_07_Connected", "false").Row("Sensor_08_Connected", "false").Apply();
  EXPECT_EQ(Check().ExitCode, kWarning);
  const ProgramResult all = Check({"--ignore", "sensor-disconnected"});
  EXPECT_EQ(all.ExitCode, kOk);
  EXPECT_THAT(all.Output, HasSubstr("\n2 findings ignored\n"));
  EXPECT_EQ(Check({"-i", behind_router + "[0]/Connected"}).ExitCode, kWarning);
  EXPECT_EQ(Check({"-i", behind_router + "[0]/Connected", "-i", behind_router + "[1]/Connected"})
                .ExitCode,
            kOk);
  EXPECT_EQ(Check({"-i", "door-open"}).ExitCode, kWarning);
}

// A source that nobody has named would be left out by mistake.
TEST_F(CheckTest, IgnoresNoSourceWithoutItsName) {
  Demo().Apply();
  for (const char* id : {"source-missing", "source-missing:", "nothing", "sensor_disconnected"}) {
    const ProgramResult result = Check({"--ignore", id});
    EXPECT_EQ(result.ExitCode, kUnknown) << id;
    EXPECT_THAT(result.Output, MatchesRegex("UNKNOWN - [^\n]+\n")) << id;
  }
}

// What a row says may not add lines, performance data or escape sequences.
TEST_F(CheckTest, KeepsTheFormatWhateverRowsSay) {
  Demo()
      .Row("ErrorFlags", "0x1 | rows=1\nOK - all is well | rows=2\r\x1b[2J")
      .Row("Sensor_12_Input_00_Label", "a|b\nOK\t\x07")
      .Row("Sensor_12_Input_00_State", "1")
      .Apply();
  const ProgramResult result = Check();
  EXPECT_EQ(result.ExitCode, kWarning) << result.Output;
  EXPECT_EQ(std::ranges::count(result.Output, '|'), 1) << result.Output;
  EXPECT_EQ(std::ranges::count(result.Output, '\n'), 3) << result.Output;
  EXPECT_TRUE(std::ranges::none_of(result.Output, [](char c) {
    return static_cast<unsigned char>(c) < ' ' && c != '\n';
  })) << result.Output;
  EXPECT_THAT(FirstLine(result), StartsWith("WARNING - 2 warnings: error flags 0x1 ¦ rows=1 OK "));
}

TEST_F(CheckTest, NamesThirtyFindingsAndCountsTheRest) {
  Scenario scenario = Demo();
  for (int number = 20; number < 60; ++number) {
    const std::string prefix = "Sensor_" + std::to_string(number) + "_";
    scenario.Row(prefix + "Connected", "false").Row(prefix + "Location", "Local_CAN");
    scenario.Row(prefix + "Type", "CANTemp");
  }
  scenario.Apply();
  const ProgramResult result = Check();
  EXPECT_THAT(FirstLine(result), StartsWith("WARNING - 40 warnings: "));
  EXPECT_EQ(std::ranges::count(result.Output, '\n'), 32);
  EXPECT_THAT(result.Output, testing::EndsWith("\nand 10 more\n"));
}

TEST_F(CheckTest, DoesNotWaitForASourceThatHangsAndNamesIt) {
  Demo().Apply();
  const test_support::HeldLease lease("/proc/meminfo");
  const ProgramResult result = Check({"--timeout", "1"});
  EXPECT_EQ(result.ExitCode, kUnknown);
  EXPECT_EQ(result.Output, "UNKNOWN - no answer within 1 s: still asking /proc/meminfo\n");
}

TEST_F(CheckTest, EndsWithThreeWhenItsOutputCannotBeWritten) {
  Demo().Apply();
  const ProgramResult result =
      RunProgram({"/bin/sh", "-c", "exec " + HostProgram() + " check >&-"});
  EXPECT_EQ(result.ExitCode, kUnknown);
  EXPECT_THAT(result.Errors, HasSubstr("statuscollector: standard output: "));
}

TEST_F(CheckTest, KeepsTheProbesLinesOutOfItsOutput) {
  Demo().Apply();
  const ProgramResult result = Check();
  EXPECT_THAT(result.Output, Not(HasSubstr("Dev Name")));
  EXPECT_THAT(result.Errors, HasSubstr("Dev Name eth0"));
}

TEST_F(CheckTest, SaysWhichGroupAUserLacksForTheDatabase) {
  const std::vector<std::string> somebody = {
      "/usr/bin/setpriv", "--reuid", "1001", "--regid", "1001", "--clear-groups", HostProgram()};
  std::vector<std::string> schema = somebody;
  schema.emplace_back("schema");
  if (RunProgram(schema).ExitCode != 0) {
    GTEST_SKIP() << "no other users";
  }
  Demo()
      .File("/etc/passwd", "root:x:0:0::/:/bin/sh\nmonitor:x:1001:1001::/:/bin/sh\n")
      .File("/etc/group", "root:x:0:\nstatus:x:1044:\n")
      .Apply();
  ASSERT_EQ(chown("/dev/shm/status.db", 0, 1044), 0);
  ASSERT_EQ(chmod("/dev/shm/status.db", 0640), 0);
  std::vector<std::string> check = somebody;
  check.emplace_back("check");
  const ProgramResult result = RunProgram(check);
  EXPECT_EQ(result.ExitCode, kUnknown);
  EXPECT_THAT(result.Output,
              HasSubstr("user monitor may not read /dev/shm/status.db (root:status, mode 0640); "
                        "members of group status may"));
}

// ---- Clients of Debian's packages

// negate runs a plugin and turns its status and first word around.
TEST_F(CheckTest, IsReadByAClientThatTurnsItsStatusAround) {
  const auto negated = [] {
    return RunProgram({"/usr/lib/nagios/plugins/negate", "-s", "-o", "CRITICAL", "-w", "UNKNOWN",
                       "-u", "OK", HostProgram(), "check"});
  };
  Demo().Apply();
  const ProgramResult well = negated();
  EXPECT_EQ(well.ExitCode, kCritical) << well.Output << well.Errors;
  EXPECT_THAT(well.Output, StartsWith("CRITICAL - 430 rows"));
  Demo().Row("Sensor_07_Connected", "false").Apply();
  const ProgramResult warned = negated();
  EXPECT_EQ(warned.ExitCode, kUnknown) << warned.Output << warned.Errors;
  EXPECT_THAT(warned.Output, StartsWith("UNKNOWN - 1 warning: "));
  Demo().NoDatabase().Apply();
  EXPECT_EQ(negated().ExitCode, kOk);
}

// A client's own parser finds every item of the performance data, with its limits.
TEST_F(CheckTest, GivesPerformanceDataThatAClientReads) {
  Demo().Row("ErrorFlags", "0x1").Apply();
  const ProgramResult result = Check();
  const std::string line = FirstLine(result);
  const std::string data = line.substr(line.find('|') + 1);
  const char* const script =
      "use Monitoring::Plugin::Performance use_die => 1;"
      "for my $p (Monitoring::Plugin::Performance->parse_perfstring($ARGV[0])) {"
      "  printf(\"%s %s %s w%d c%d\\n\", $p->label, $p->value, $p->uom // '',"
      "         $p->threshold->get_status(5), $p->threshold->get_status(1000)) }";
  const ProgramResult parsed = RunProgram({"/usr/bin/perl", "-e", script, data});
  ASSERT_EQ(parsed.ExitCode, 0) << parsed.Errors;
  EXPECT_THAT(parsed.Output, HasSubstr("temperature 41.5 C w0 c2\n"
                                       "temperature-lowest 28.75 C w0 c2\n"
                                       "humidity 51.5 % w0 c0\n"
                                       "memory-free 76.435 % w1 c0\n"));
  EXPECT_THAT(parsed.Output, HasSubstr("\nrows 430  w0 c0\nfindings 1  w0 c0\nduration 0"));
  EXPECT_EQ(std::ranges::count(parsed.Output, '\n'), std::ranges::count(data, '='));
}

}  // namespace
