// Help, mistakes in a command line, and the commands beside those that show a document.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "host/printable.h"
#include "host/terminal.h"
#include "model/xml.h"
#include "tests/host/program_fixture.h"
#include "tests/support/validate.h"

namespace {

namespace fs = std::filesystem;
using test_support::ProgramResult;
using testing::HasSubstr;
using testing::StartsWith;

class InitTest : public testing::Test {
 protected:
  void SetUp() override { sandbox::Scenario().Apply(); }
  // Tests after these take a database that is there for one.
  void TearDown() override { sandbox::Scenario().NoDatabase().Apply(); }
  static constexpr const char* kDatabase = "/dev/shm/status.db";
};

TEST_F(InitTest, MakesTheDatabaseReadyForWritersAndReaders) {
  const ProgramResult result = Collector({"init"});
  EXPECT_EQ(result.ExitCode, kAllWell) << result.Errors;
  EXPECT_EQ(result.Output, "The status database is ready.\n");
  EXPECT_EQ(Collector({"show"}).ExitCode, kAllWell);
}

TEST_F(InitTest, KeepsADatabaseThatIsReady) {
  sandbox::Scenario().Row("GUID", "kept").Apply();
  EXPECT_EQ(Collector({"init"}).ExitCode, kAllWell);
  EXPECT_EQ(Collector({"init"}).ExitCode, kAllWell);
  EXPECT_THAT(Collector({"show"}).Output, HasSubstr("GUID                  kept\n"));
}

TEST_F(InitTest, EndsWithOneWhenThereIsNoDatabaseAfterwards) {
  fs::create_directories(kDatabase);
  const ProgramResult folder = Collector({"init"});
  EXPECT_EQ(folder.ExitCode, kFailed);
  EXPECT_EQ(folder.Output, "");
  EXPECT_THAT(folder.Errors, HasSubstr("statuscollector: the status database is not ready: "));
  fs::remove(kDatabase);
  Write(kDatabase, "this is no database, but a text that is long enough to be taken for one");
  EXPECT_EQ(Collector({"init"}).ExitCode, kFailed);
}

TEST(SchemaCommand, PrintsTheSchema) {
  const ProgramResult result = Collector({"schema"});
  EXPECT_EQ(result.ExitCode, kAllWell);
  QtSts::CStatus status;
  EXPECT_TRUE(test_support::IsValid(QtSts::WriteDocument(status), result.Output));
}

TEST(Usage, IsPrintedOnStandardOutputWithinEightyColumns) {
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"--help"},
                                             {"-h"},
                                             {"show", "--help"},
                                             {"check", "--help"},
                                             {"explain", "--help"},
                                             {"watch", "--help"},
                                             {"init", "--help"},
                                             {"diff", "--help"},
                                             {"help", "--help"},
                                             {"schema", "--help"}}) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const ProgramResult result = Collector(arguments);
    EXPECT_EQ(result.ExitCode, kAllWell);
    EXPECT_EQ(result.Errors, "");
    EXPECT_THAT(result.Output, HasSubstr("Usage: statuscollector"));
    std::istringstream lines(result.Output);
    for (std::string line; std::getline(lines, line);) {
      EXPECT_LE(host::Width(line), host::kPipeColumns) << line;
    }
  }
}

TEST(Usage, PrintsTheVersion) {
  const ProgramResult result = Collector({"--version"});
  EXPECT_EQ(result.ExitCode, kAllWell);
  EXPECT_TRUE(std::regex_match(result.Output, std::regex("statuscollector \\d+\\.\\d+\\.\\d+\n")))
      << result.Output;
}

TEST(Usage, EndsWithTwoAndAMessageOnStandardErrorWhenItIsWrong) {
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{},
                                             {"shwo"},
                                             {"show", "--format", "yaml"},
                                             {"show", "--cycles", "0"},
                                             {"show", "--cycles", "many"},
                                             {"show", "--nothing"},
                                             {"show", "extra"},
                                             {"show", "--output"},
                                             {"show", "--output", ""},
                                             {"show", "--output="},
                                             {"show", "--color", "blue"},
                                             {"show", "--section", ""},
                                             {"show", "--section", "nothing"},
                                             {"show", "--format", "xml", "--brief"},
                                             {"show", "--format", "xml", "--section", "time"},
                                             {"show", "--with", "everything"},
                                             {"show", "-o", ""},
                                             {"diff", "", "two"},
                                             {"diff"},
                                             {"diff", "one"},
                                             {"init", "extra"}}) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const ProgramResult result = Collector(arguments);
    EXPECT_EQ(result.ExitCode, kTrouble);
    EXPECT_EQ(result.Output, "");
    EXPECT_THAT(result.Errors, StartsWith("statuscollector: "));
  }
}

// The option used to be passed over and the document went to standard output.
TEST(Usage, SaysThatAnEmptyFileNameIsNone) {
  EXPECT_EQ(
      Collector({"show", "-o", ""}).Errors,
      "statuscollector: show: --output: must not be empty; see statuscollector show --help\n");
}

// They used to reach the terminal as they are.
TEST(Usage, MakesArgumentsPrintableInMessages) {
  const std::string steering = "/\x1b[2J\xC2\x9B/\xE2\x80\xAE";
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{steering},
                                             {"show", steering},
                                             {"show", "--format", steering},
                                             {"show", "--cycles", steering},
                                             {"show", "--output", steering},
                                             {"show", "--" + steering},
                                             {"diff", steering, steering}}) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const ProgramResult result = Collector(arguments);
    EXPECT_EQ(result.ExitCode, kTrouble);
    EXPECT_THAT(result.Errors, HasSubstr("/\xEF\xBF\xBD[2J\xEF\xBF\xBD/\xEF\xBF\xBD"));
    std::string lines = result.Errors;
    lines.erase(
        std::remove_if(lines.begin(), lines.end(), [](char c) { return c == '\n' || c == '\r'; }),
        lines.end());
    EXPECT_EQ(lines, host::Printable(lines));
  }
}

// What was named used to be passed over: "A subcommand is required"; and then there was no word of
// what there is, and of where to read it.
TEST(Usage, NamesTheMistakeTheNearestThatThereIsAndWhereToReadMore) {
  const struct {
    std::vector<std::string> Arguments;
    const char* Message;
  } kMistakes[] = {
      {{}, "a command is missing; see statuscollector --help"},
      {{"shwo"}, "no such command: shwo; the nearest is show; see statuscollector --help"},
      {{"shwo", "--formt"},
       "no such command: shwo; the nearest is show; see statuscollector --help"},
      {{"zzz"}, "no such command: zzz; see statuscollector --help"},
      {{"hlep"}, "no such command: hlep; the nearest is help; see statuscollector --help"},
      {{"--verson"},
       "no such option: --verson; the nearest is --version; see statuscollector --help"},
      {{"--format", "xml"}, "no such option: --format; see statuscollector --help"},
      {{"show", "extra"}, "show: not expected: extra; see statuscollector show --help"},
      {{"show", "--formt", "json"},
       "show: no such option: --formt; the nearest is --format; see statuscollector show --help"},
      {{"show", "extra", "--ouptut=x"},
       "show: no such option: --ouptut; the nearest is --output; see statuscollector show --help"},
      {{"show", "-x"},
       "show: no such option: -x; there are -h, -f, -c and -o; see statuscollector show --help"},
      {{"-x"}, "no such option: -x; there is -h; see statuscollector --help"},
      {{"show", "--format", "yaml"},
       "show: --format: yaml not in {text,xml,json}; see statuscollector show --help"},
      {{"watch", "--intervall", "1"},
       "watch: no such option: --intervall; the nearest is --interval; see statuscollector watch "
       "--help"},
      {{"help", "shwo"}, "no such command: shwo; the nearest is show; see statuscollector --help"},
  };
  for (const auto& mistake : kMistakes) {
    SCOPED_TRACE(testing::PrintToString(mistake.Arguments));
    const ProgramResult result = Collector(mistake.Arguments);
    EXPECT_EQ(result.ExitCode, kTrouble);
    EXPECT_EQ(result.Errors, std::string("statuscollector: ") + mistake.Message + "\n");
  }
}

TEST(Usage, AMonitoringClientReadsTheNearestOption) {
  EXPECT_EQ(Collector({"check", "--warnning", "x"}).Output,
            "UNKNOWN - check: no such option: --warnning; the nearest is --warning; see "
            "statuscollector check --help\n");
}

TEST(Usage, HelpWithACommandIsTheHelpOfTheCommand) {
  const std::string program = Collector({"--help"}).Output;
  EXPECT_EQ(Collector({"help"}).Output, program);
  for (const char* command :
       {"show", "check", "explain", "watch", "init", "diff", "schema", "help"}) {
    SCOPED_TRACE(command);
    EXPECT_THAT(program, HasSubstr(std::string("\n  ") + command + " "));
    const ProgramResult result = Collector({"help", command});
    EXPECT_EQ(result.ExitCode, kAllWell);
    EXPECT_EQ(result.Output, Collector({command, "--help"}).Output);
    EXPECT_THAT(result.Output, HasSubstr(std::string("\nUsage: statuscollector ") + command));
  }
  EXPECT_THAT(Collector({"help", "show"}).Output, HasSubstr("-o,--output FILE"));
}

}  // namespace
