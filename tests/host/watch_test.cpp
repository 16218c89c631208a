// watch: in a pipe, and on a pseudo-terminal.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <string>
#include <vector>

#include "sandbox/enter.h"
#include "tests/host/pseudo_terminal.h"
#include "tests/support/paths.h"
#include "tests/support/run_program.h"

namespace {

using test_support::ProgramResult;
using test_support::PseudoTerminal;
using testing::AllOf;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

constexpr std::string_view kEnter = "\x1b[?1049h";
constexpr std::string_view kLeave = "\x1b[?1049l";
constexpr std::string_view kShowCursor = "\x1b[?25h";

// A shell in the box of the demo, in which $COLLECTOR is the program.
std::vector<std::string> InBox(const std::string& line) {
  return {test_support::ControllerBox(),
          "--scenario",
          sandbox::SourcePath("scenarios/demo"),
          "--",
          "/bin/sh",
          "-c",
          "COLLECTOR=" + test_support::HostProgram() + "; " + line};
}

std::string WatchFor(const std::string& options) { return "exec $COLLECTOR watch -i 1 " + options; }

// What the program writes to a pipe from its first cycle to the second one after `change`, however
// slow the machine is.
ProgramResult WatchAround(const std::string& change, const std::string& before = "") {
  return test_support::RunProgram(
      InBox(before +
            "cycles() { grep -c 'Dev Name eth0' /tmp/errors; }; "
            "$COLLECTOR watch -i 1 > /tmp/lines 2> /tmp/errors & "
            "until [ $(cycles) -ge 1 ]; do sleep 0.1; done; " +
            change +
            "; count=$(cycles); until [ $(cycles) -ge $((count + 2)) ]; do sleep 0.1; done; "
            "kill $!; cat /tmp/lines; cat /tmp/errors >&2"));
}

// A command that runs these statements, in which there is no double quote.
std::string Sql(const std::string& statements) {
  return "python3 -c \"import sqlite3; sqlite3.connect('/dev/shm/status.db').executescript('''" +
         statements + "''')\"";
}

TEST(Watch, WritesALineForEachChangeToAPipe) {
  const ProgramResult result = test_support::RunProgram(
      InBox("$COLLECTOR watch -i 1 -n 3 & sleep 1.5; "
            "printf 'MemTotal: 9000 kB\\nMemFree: 500 kB\\n' > /proc/meminfo; wait $!"));
  EXPECT_EQ(result.ExitCode, 0) << result.Errors;
  EXPECT_THAT(
      result.Output,
      testing::ContainsRegex("[0-9-]{10}T[0-9:]{8}[+-][0-9]{4}\tMemoryTotal\t[0-9]+\t9000\t\n"));
  // They are other ones in each cycle.
  EXPECT_THAT(result.Output, AllOf(Not(HasSubstr("\tLocalTime\t")), Not(HasSubstr("\tUptime\t"))));
}

TEST(Watch, NamesTheRowThatAChangeComesFrom) {
  const ProgramResult result = test_support::RunProgram(
      InBox("$COLLECTOR watch -i 1 -n 3 & sleep 1.5; python3 -c \"import sqlite3; "
            "d = sqlite3.connect('/dev/shm/status.db'); "
            "d.execute('UPDATE status SET value = 12 WHERE address = \\'Sensor_00_Celsius\\''); "
            "d.commit()\"; wait $!"));
  EXPECT_EQ(result.ExitCode, 0) << result.Errors;
  EXPECT_THAT(result.Output, HasSubstr("\tSensors[0]/Celsius\t41.5\t12\tSensor_00_Celsius\n"));
}

// The first of the rows that fill the field used to be named.
TEST(Watch, NamesTheRowOfTheVoltageThatChanged) {
  const ProgramResult result = test_support::RunProgram(
      InBox("$COLLECTOR watch -i 1 -n 3 & sleep 1.5; python3 -c \"import sqlite3; "
            "d = sqlite3.connect('/dev/shm/status.db'); "
            "d.execute('UPDATE status SET value = 12 WHERE address = "
            "\\'Sensor_06_PsrbVout_01_Volts\\''); d.commit()\"; wait $!"));
  EXPECT_EQ(result.ExitCode, 0) << result.Errors;
  EXPECT_THAT(result.Output, HasSubstr("\tSensors[6]/OutputVoltages\t24.05 24.1 23.98\t"
                                       "24.05 12 23.98\tSensor_06_PsrbVout_01_Volts\n"));
}

// It used to say nothing but the library's codes.
TEST(Watch, SaysOnceWhatIsWrongWithTheDatabase) {
  const ProgramResult result =
      test_support::RunProgram(InBox("rm /dev/shm/status.db*; " + WatchFor("-n 3")));
  EXPECT_EQ(result.ExitCode, 1);
  const std::string words = "statuscollector: /dev/shm/status.db does not exist; ";
  const std::size_t first = result.Errors.find(words);
  ASSERT_NE(first, std::string::npos) << result.Errors;
  EXPECT_EQ(result.Errors.find(words, first + 1), std::string::npos) << result.Errors;
}

// Nothing of the new file used to be seen until the program was started again.
TEST(Watch, OpensADatabaseThatIsMadeAfterItBegan) {
  const ProgramResult result =
      WatchAround("cp /tmp/kept /dev/shm/made; mv /dev/shm/made /dev/shm/status.db",
                  "cp /dev/shm/status.db /tmp/kept; rm /dev/shm/status.db*; ");
  EXPECT_THAT(result.Output, HasSubstr("\tOutputs[0]/Title\tnot reported\t\"North "
                                       "scoreboard\"\tTtableTitle\n"))
      << result.Errors;
}

TEST(Watch, OpensADatabaseThatTakesThePlaceOfTheOneItReads) {
  const ProgramResult result = WatchAround(
      "rm /dev/shm/status.db*; " + Sql("CREATE TABLE status(address TEXT PRIMARY KEY, value TEXT); "
                                       "INSERT INTO status VALUES('TtableTitle', 'Another one');"));
  EXPECT_THAT(result.Output, HasSubstr("\"Another one\"\tTtableTitle\n")) << result.Errors;
}

// It used to go on with the deleted file, or to say "see the system log".
TEST(Watch, SaysOnceWhatToDoWhenTheDatabaseIsDeleted) {
  const ProgramResult result = WatchAround("rm /dev/shm/status.db*");
  const std::string words =
      "statuscollector: /dev/shm/status.db does not exist; a host or `statuscollector init` "
      "creates it\n";
  const std::size_t first = result.Errors.find("statuscollector: ");
  ASSERT_NE(first, std::string::npos) << result.Errors;
  EXPECT_EQ(result.Errors.substr(first, words.size()), words);
  EXPECT_EQ(result.Errors.find("statuscollector: ", first + 1), std::string::npos);
}

// What stands in a field that is not reported used to be a change, its initial value or a zero.
TEST(Watch, WritesOneLineForAFieldThatIsNoLongerReported) {
  const ProgramResult result =
      WatchAround(Sql("DELETE FROM status WHERE address IN ('TtableTitle', 'ErrorFlags');"));
  EXPECT_THAT(result.Output,
              HasSubstr("\tOutputs[0]/Title\t\"North scoreboard\"\tnot reported\t\n"))
      << result.Errors;
  // Its text stays in the document.
  EXPECT_THAT(result.Output, HasSubstr("\tErrorFlags\t\"0x0000000000000000\"\tnot reported\t\n"));
  EXPECT_EQ(std::count(result.Output.begin(), result.Output.end(), '\n'), 2) << result.Output;
}

TEST(Watch, WritesOneLineForAListThatIsNoLongerReported) {
  const ProgramResult result = WatchAround("rm /dev/shm/status.db*");
  EXPECT_THAT(result.Output, HasSubstr("\tSensors\treported\tnot reported\t\n"));
  EXPECT_THAT(result.Output, Not(HasSubstr("\tSensors[")));
}

// It used to notice at the next change only, perhaps never.
TEST(Watch, EndsAtOnceWhenItsReaderIsGone) {
  const ProgramResult result = test_support::RunProgram(
      InBox("{ timeout 50 $COLLECTOR watch -i 1000; echo \"status $?\" >&2; } | true"));
  EXPECT_THAT(result.Errors,
              HasSubstr("statuscollector: standard output: Broken pipe; let its reader read to "
                        "the end\nstatus 2\n"));
}

TEST(Watch, BeginsItsCyclesAnIntervalApart) {
  const auto before = std::chrono::steady_clock::now();
  const ProgramResult result = test_support::RunProgram(InBox(WatchFor("-n 3")));
  EXPECT_EQ(result.ExitCode, 0) << result.Errors;
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::seconds(2));
}

TEST(Watch, EndsWithOneWhenTheLastCycleFailed) {
  const ProgramResult result =
      test_support::RunProgram(InBox("rm /dev/shm/status.db*; " + WatchFor("-n 1")));
  EXPECT_EQ(result.ExitCode, 1);
  EXPECT_EQ(result.Output, "");
}

TEST(Watch, IsRedrawnInPlaceOnATerminal) {
  PseudoTerminal terminal(InBox(WatchFor("-n 2")));
  EXPECT_EQ(terminal.WaitForEnd(), 0) << terminal.Output();
  const std::string& output = terminal.Output();
  EXPECT_NE(output.find(kEnter), std::string::npos);
  EXPECT_THAT(output, HasSubstr("Every 1 s; Ctrl-C ends."));
  EXPECT_THAT(output, HasSubstr("all well"));
  EXPECT_THAT(output, Not(HasSubstr("Dev Name")));
  EXPECT_TRUE(output.ends_with(kLeave)) << output;
}

TEST(Watch, FillsTheWindowAndNoMore) {
  PseudoTerminal terminal(InBox(WatchFor("-n 1")), {}, {.Columns = 80, .Lines = 12});
  EXPECT_EQ(terminal.WaitForEnd(), 0);
  EXPECT_THAT(terminal.Output(), HasSubstr(" more lines)"));
  const std::size_t begin = terminal.Output().find("Every");
  const std::string screen = terminal.Output().substr(begin);
  EXPECT_EQ(std::count(screen.begin(), screen.end(), '\n'), 11);
}

TEST(Watch, HighlightsTheLinesThatChanged) {
  PseudoTerminal terminal(
      InBox("(sleep 1.5; printf 'MemTotal: 9000 kB\\nMemFree: 500 kB\\n' > /proc/meminfo) & " +
            WatchFor("-n 4")),
      {}, {.Columns = 100, .Lines = 400});
  EXPECT_EQ(terminal.WaitForEnd(), 0);
  EXPECT_THAT(terminal.Output(), testing::ContainsRegex("\x1b\\[7m[^\x1b]*9000"));
}

// The local time and the age of the database are other ones in each cycle.
TEST(Watch, HighlightsNoTimes) {
  PseudoTerminal terminal(InBox(WatchFor("-n 3")), {}, {.Columns = 100, .Lines = 400});
  EXPECT_EQ(terminal.WaitForEnd(), 0);
  EXPECT_THAT(terminal.Output(), HasSubstr("  Local time  "));
  EXPECT_THAT(terminal.Output(), Not(HasSubstr("\x1b[7m"))) << terminal.Output();
}

// Lines that are wrapped otherwise used to be highlighted.
TEST(Watch, HighlightsNoLinesBecauseTheWindowChanges) {
  PseudoTerminal terminal(InBox("exec $COLLECTOR watch -i 1000"), {}, {.Columns = 80, .Lines = 40});
  ASSERT_TRUE(terminal.WaitFor("more lines)"));
  terminal.Resize({.Columns = 60, .Lines = 30});
  EXPECT_TRUE(terminal.WaitFor("\x1b[J\x1b[HEvery 1000 s"));
  terminal.Type("\x03");
  terminal.WaitForEnd();
  EXPECT_THAT(terminal.Output(), Not(HasSubstr("\x1b[7m")));
}

TEST(Watch, IsDrawnAnewWhenTheWindowChanges) {
  PseudoTerminal terminal(InBox("exec $COLLECTOR watch -i 1000"), {}, {.Columns = 80, .Lines = 12});
  ASSERT_TRUE(terminal.WaitFor("more lines)"));
  terminal.Resize({.Columns = 120, .Lines = 40});
  // The title of the second picture.
  const bool redrawn = terminal.WaitFor("\x1b[J\x1b[HEvery 1000 s");
  EXPECT_TRUE(redrawn) << terminal.Output();
  terminal.Type("\x03");
  terminal.WaitForEnd();
}

TEST(Watch, LeavesTheTerminalAsItWasOnCtrlC) {
  PseudoTerminal terminal(InBox("exec $COLLECTOR watch -i 1000"));
  const termios before = terminal.Modes();
  ASSERT_TRUE(terminal.WaitFor("Every 1000 s"));
  terminal.Type("\x03");
  terminal.WaitForEnd();
  const std::string& output = terminal.Output();
  const std::size_t leave = output.rfind(kLeave);
  ASSERT_NE(leave, std::string::npos) << output;
  EXPECT_EQ(output.find(kEnter, leave), std::string::npos);
  EXPECT_NE(output.rfind(kShowCursor), std::string::npos);
  const termios after = terminal.Modes();
  EXPECT_EQ(before.c_lflag, after.c_lflag);
  EXPECT_EQ(before.c_iflag, after.c_iflag);
  EXPECT_EQ(before.c_oflag, after.c_oflag);
}

// The signal had its own handler no more, and the alternate screen was still there.
TEST(Watch, LeavesTheTerminalAsItWasOnCtrlCAtItsVeryEnd) {
  PseudoTerminal terminal({test_support::TerminalChild(), "screen"});
  terminal.WaitForEnd();
  const std::string& output = terminal.Output();
  ASSERT_THAT(output, HasSubstr(kEnter));
  EXPECT_THAT(output, HasSubstr("<title>"));
  EXPECT_TRUE(output.ends_with(kLeave)) << output;
}

// The title used to be cut in the middle of its time.
TEST(Watch, HasATitleThatFitsTheWindow) {
  for (const auto& [columns, title] :
       {std::pair(80,
                  "Every 1000 s; Ctrl-C ends. Last cycle: [0-9-]{10}T[0-9:]{8}[+-][0-9]{4}\x1b"),
        std::pair(60, "Every 1000 s; Ctrl-C ends. Last cycle: [0-9:]{8}\x1b"),
        std::pair(40, "Every 1000 s; Ctrl-C ends.\x1b")}) {
    PseudoTerminal terminal(InBox("exec $COLLECTOR watch -i 1000"), {},
                            {.Columns = static_cast<unsigned short>(columns), .Lines = 20});
    ASSERT_TRUE(terminal.WaitFor("more lines)"));
    EXPECT_THAT(terminal.Output(), testing::ContainsRegex(title));
  }
}

TEST(Watch, WritesLinesToATerminalWhenAsked) {
  PseudoTerminal terminal(InBox(WatchFor("-n 1 --changes")));
  EXPECT_EQ(terminal.WaitForEnd(), 0);
  EXPECT_EQ(terminal.Output().find(kEnter), std::string::npos);
}

}  // namespace
