// Width, colour and pager, on a pseudo-terminal. `show` runs on this machine, whatever it is: what
// it finds does not matter here.
#include "host/terminal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "host/printable.h"
#include "model/document.h"
#include "model/xml.h"
#include "sandbox/enter.h"
#include "tests/host/pseudo_terminal.h"
#include "tests/support/paths.h"
#include "tests/support/temporary_folder.h"

namespace {

using test_support::PseudoTerminal;
using test_support::WindowSize;
using testing::HasSubstr;
using testing::Not;

constexpr WindowSize kSmall = {.Columns = 80, .Lines = 24};

// What the program writes to a terminal that is longer than the text.
std::string OnTerminal(const std::vector<std::string>& environment) {
  PseudoTerminal terminal({test_support::HostProgram(), "show"}, environment,
                          {.Columns = 80, .Lines = 2000});
  EXPECT_NE(terminal.WaitForEnd(), -1);
  return terminal.Output();
}

// The longest of the lines that findings take.
std::size_t LongestFinding(const std::string& output) {
  std::istringstream lines(test_support::WithoutEscapes(output));
  std::size_t longest = 0;
  for (std::string line; std::getline(lines, line);) {
    longest = std::max(longest, line.starts_with("! ") ? host::Width(line) : 0);
  }
  return longest;
}

// It used to write nothing, which looks as if it had not run.
TEST(Terminal, ShowsThatDocumentsAreEqual) {
  const test_support::TemporaryFolder folder;
  const std::string path = folder.Path() + "/document.xml";
  QtSts::CStatus status;
  std::ofstream(path) << QtSts::WriteDocument(status);
  PseudoTerminal terminal({test_support::HostProgram(), "diff", path, path}, {}, kSmall);
  EXPECT_EQ(terminal.WaitForEnd(), 0);
  EXPECT_EQ(terminal.Output(), "no differences\r\n");
}

// "Dev Name eth0" used to stand above the first line.
TEST(Terminal, BeginsWithTheStateAndLeavesOutTheNamesOfDevices) {
  PseudoTerminal terminal(
      {test_support::ControllerBox(), "--scenario", sandbox::SourcePath("scenarios/demo"), "--",
       test_support::HostProgram(), "show", "--color", "never"},
      {}, {.Columns = 80, .Lines = 2000});
  EXPECT_EQ(terminal.WaitForEnd(), 0);
  EXPECT_THAT(terminal.Output(), testing::StartsWith("all well: "));
  EXPECT_THAT(terminal.Output(), Not(HasSubstr("Dev Name")));
}

// It used to stand above the page, where the pager hides it.
TEST(Terminal, ShowsWhatIsWrongWithTheDatabaseAfterThePage) {
  PseudoTerminal terminal(
      {test_support::ControllerBox(), "--scenario", sandbox::SourcePath("scenarios/demo"), "--",
       "/bin/sh", "-c", "rm /dev/shm/status.db*; exec " + test_support::HostProgram() + " show"},
      {}, {.Columns = 80, .Lines = 2000});
  EXPECT_EQ(terminal.WaitForEnd(), 1);
  EXPECT_TRUE(
      terminal.Output().ends_with("status.db does not exist; a host or `statuscollector "
                                  "init` creates it\r\n"))
      << terminal.Output();
}

// A controller in a box, since a machine without displays has few findings.
TEST(Terminal, ShowsLinesAsWideAsItsWindow) {
  struct Case {
    WindowSize Size;
    std::size_t Least;
  };
  for (const auto& [size, least] : {Case{{.Columns = 60}, 50}, {{}, 70}, {{.Columns = 180}, 150}}) {
    PseudoTerminal terminal(
        {test_support::ControllerBox(), "--scenario", sandbox::SourcePath("scenarios/faults"), "--",
         test_support::HostProgram(), "show", "--no-pager"},
        {}, size);
    EXPECT_EQ(terminal.WaitForEnd(), 0) << terminal.Output();
    EXPECT_LE(LongestFinding(terminal.Output()), size.Columns);
    EXPECT_GE(LongestFinding(terminal.Output()), least);
  }
}

TEST(Terminal, ShowsTheTextInThePagerUnlessAskedNotTo) {
  const std::vector<std::string> pager = {"PAGER=cat >/dev/null; echo paged"};
  PseudoTerminal paged({test_support::HostProgram(), "show"}, pager, kSmall);
  EXPECT_NE(paged.WaitForEnd(), -1);
  EXPECT_THAT(paged.Output(), HasSubstr("paged\r\n"));
  EXPECT_THAT(paged.Output(), Not(HasSubstr("Identity")));
  for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
           {test_support::HostProgram(), "show", "--no-pager"},
           {test_support::HostProgram(), "show", "--format", "json"},
           {test_support::HostProgram(), "schema"}}) {
    PseudoTerminal direct(arguments, pager, kSmall);
    EXPECT_NE(direct.WaitForEnd(), -1);
    EXPECT_THAT(direct.Output(), Not(HasSubstr("paged")));
  }
}

TEST(Terminal, ShowsNoColourWhenAskedNotTo) {
  PseudoTerminal terminal({test_support::HostProgram(), "show", "--color=never"}, {},
                          {.Columns = 80, .Lines = 2000});
  EXPECT_NE(terminal.WaitForEnd(), -1);
  EXPECT_THAT(terminal.Output(), Not(HasSubstr("\x1b")));
}

TEST(Terminal, ShowsTitlesInColour) {
  EXPECT_THAT(OnTerminal({}), HasSubstr("\x1b[1mIdentity\x1b[0m\r\n"));
}

TEST(Terminal, ShowsNoColourWhenNoColorIsSet) {
  const std::string output = OnTerminal({"NO_COLOR=1"});
  EXPECT_THAT(output, HasSubstr("\r\nIdentity\r\n"));
  EXPECT_THAT(output, Not(HasSubstr("\x1b")));
}

TEST(Terminal, ShowsColourWhenNoColorIsEmpty) {
  EXPECT_THAT(OnTerminal({"NO_COLOR="}), HasSubstr("\x1b[1mIdentity\x1b[0m"));
}

TEST(Terminal, ShowsNoColourOnADumbTerminal) {
  EXPECT_THAT(OnTerminal({"TERM=dumb"}), Not(HasSubstr("\x1b")));
}

// What terminal_child.cpp answers on a terminal.
std::string Answer(const std::string& question, const std::vector<std::string>& environment,
                   WindowSize size) {
  PseudoTerminal terminal({test_support::TerminalChild(), question}, environment, size);
  EXPECT_EQ(terminal.WaitForEnd(), 0);
  const std::string output = test_support::WithoutEscapes(terminal.Output());
  const std::size_t begin = output.find('<') + 1;
  return output.substr(begin, output.find('>') - begin);
}

TEST(Window, HasTheSizeOfTheTerminal) {
  EXPECT_EQ(Answer("size", {}, {.Columns = 132, .Lines = 43}), "132 x 43");
  EXPECT_EQ(Answer("size", {"COLUMNS=70"}, {.Columns = 132, .Lines = 43}), "132 x 43");
}

TEST(Window, HasColumnsWhereTheTerminalKnowsNoSize) {
  constexpr WindowSize kUnknown = {.Columns = 0, .Lines = 0};
  EXPECT_EQ(Answer("size", {"COLUMNS=100"}, kUnknown), "100 x 0");
  for (const char* const wrong : {"COLUMNS=", "COLUMNS=x", "COLUMNS=-5", "COLUMNS=0"}) {
    EXPECT_EQ(Answer("size", {wrong}, kUnknown), "80 x 0") << wrong;
  }
}

TEST(Window, HasAtLeastFortyColumns) {
  EXPECT_EQ(Answer("size", {}, {.Columns = 40, .Lines = 10}), "40 x 10");
  EXPECT_EQ(Answer("size", {}, {.Columns = 39, .Lines = 10}), "40 x 10");
  EXPECT_EQ(Answer("size", {}, {.Columns = 1, .Lines = 1}), "40 x 1");
}

TEST(Window, HasItsNewSizeAfterAChange) {
  PseudoTerminal terminal({test_support::TerminalChild(), "resized"}, {}, kSmall);
  ASSERT_TRUE(terminal.WaitFor("<80 x 24>")) << terminal.Output();
  terminal.Resize({.Columns = 123, .Lines = 45});
  terminal.Type("\n");
  EXPECT_TRUE(terminal.WaitFor("<123 x 45>")) << terminal.Output();
  EXPECT_EQ(terminal.WaitForEnd(), 0);
}

TEST(Pipe, HasEightyColumnsNoColourAndNoPager) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  setenv("COLUMNS", "100", 1);
  setenv("TERM", "xterm", 1);
  EXPECT_EQ(host::WindowOf(ends[1]).Columns, 80U);
  EXPECT_EQ(host::WindowOf(ends[1]).Lines, 0U);
  EXPECT_FALSE(host::WantsColour(ends[1], host::Colour::kAuto));
  EXPECT_TRUE(host::WantsColour(ends[1], host::Colour::kAlways));
  EXPECT_FALSE(host::ShowInPager(ends[1], std::string(1000, '\n')));
  close(ends[0]);
  close(ends[1]);
}

TEST(Pager, IsForTextsThatAreLongerThanTheWindow) {
  const std::vector<std::string> pager = {"PAGER=cat >/dev/null"};
  EXPECT_EQ(Answer("page", pager, {.Columns = 80, .Lines = 100}), "pager");
  EXPECT_EQ(Answer("page", pager, {.Columns = 80, .Lines = 101}), "no pager");
  EXPECT_EQ(Answer("page", pager, {.Columns = 80, .Lines = 0}), "pager") << "unknown";
}

TEST(Pager, IsLeftOutWhenItsVariableSaysSo) {
  EXPECT_EQ(Answer("page", {"PAGER="}, kSmall), "no pager");
  EXPECT_EQ(Answer("page", {"PAGER=cat"}, kSmall), "no pager");
}

TEST(Pager, IsLeftOutOnADumbTerminal) {
  EXPECT_EQ(Answer("page", {"PAGER=cat >/dev/null", "TERM=dumb"}, kSmall), "no pager");
}

TEST(Pager, IsLeftOutWhereThereIsNoSuchProgram) {
  EXPECT_EQ(Answer("page", {"PAGER=/nowhere/pager"}, kSmall), "no pager");
  EXPECT_EQ(Answer("page", {"PATH=/nowhere"}, kSmall), "no pager");
}

TEST(Pager, MayEndBeforeItHasReadAll) {
  EXPECT_EQ(Answer("page", {"PAGER=true"}, kSmall), "pager");
  EXPECT_EQ(Answer("page", {"PAGER=false"}, kSmall), "pager");
}

TEST(Pager, HasItsVariablesUnlessTheyAreSet) {
  const std::string pager = "PAGER=echo \"<$LESS $LESSCHARSET>\"";
  EXPECT_EQ(Answer("page", {pager}, kSmall), "FRX utf-8");
  EXPECT_EQ(Answer("page", {pager, "LESS=M", "LESSCHARSET=dos"}, kSmall), "M dos");
}

TEST(Pager, ShowsAPageGoesOnByKeysAndLeavesTheTerminalAsItWas) {
  PseudoTerminal terminal({test_support::TerminalChild(), "page"}, {}, kSmall);
  ASSERT_TRUE(terminal.WaitFor("line 23 ")) << terminal.Output();
  EXPECT_THAT(terminal.Output(), HasSubstr("line 23 \xE2\x82\xAC"));
  EXPECT_THAT(terminal.Output(), Not(HasSubstr("line 24 ")));
  terminal.Type(" ");
  ASSERT_TRUE(terminal.WaitFor("line 46 ")) << terminal.Output();
  // Ctrl-C is the pager's: the program waits for it.
  terminal.Type("\x03");
  EXPECT_EQ(terminal.WaitForEnd("q"), 0);
  EXPECT_THAT(terminal.Output(), HasSubstr("<pager>"));
  const termios modes = terminal.Modes();
  EXPECT_NE(modes.c_lflag & ICANON, 0U);
  EXPECT_NE(modes.c_lflag & ECHO, 0U);
}

}  // namespace
