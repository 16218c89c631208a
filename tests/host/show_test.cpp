// The program itself, on controllers in a box.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "host/printable.h"
#include "host/terminal.h"
#include "model/compare.h"
#include "model/xml.h"
#include "sandbox/enter.h"
#include "sandbox/scenario.h"
#include "sandbox/system_log.h"
#include "sandbox/testing.h"
#include "tests/support/comma_locale.h"
#include "tests/support/paths.h"
#include "tests/support/run_program.h"
#include "tests/support/validate.h"

namespace {

namespace fs = std::filesystem;
using test_support::HostProgram;
using test_support::ProgramResult;
using test_support::RunProgram;
using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr int kAllWell = 0;
constexpr int kFailed = 1;
constexpr int kTrouble = 2;

constexpr uid_t kSomebody = 1001;  // who is not the user of the tests

ProgramResult Collector(const std::vector<std::string>& arguments,
                        const std::vector<std::string>& environment = {}) {
  std::vector<std::string> command = {HostProgram()};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return RunProgram(command, environment);
}

// The same behind a shell that changes streams or limits first.
ProgramResult Shell(const std::string& line) {
  return RunProgram({"/bin/sh", "-c", line}, {"COLLECTOR=" + HostProgram()});
}

std::string Read(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

void Write(const std::string& path, const std::string& text) { std::ofstream(path) << text; }

// The first line of the text; which word it is, the findings say.
testing::Matcher<const std::string&> StartsAsText() {
  return AnyOf(StartsWith("critical: "), StartsWith("unknown: "), StartsWith("warning: "),
               StartsWith("all well: "));
}

class ShowTest : public testing::Test {
 protected:
  void SetUp() override {
    scenario_.Row("DimmingLevel", "37.5")
        .Row("DimmingMode", "manual")
        .Row("GUID", "6f1c0d52")
        .Row("Sensor_00_Celsius", "21.6")
        .Row("Sensor_00_Connected", "false")
        .Row("Sensor_00_Location", "Local_CAN")
        .Row("Sensor_00_Type", "CANTemp")
        .Interface({.Name = "eth0"});
    scenario_.Uptime(std::chrono::seconds(93784));
    scenario_.Apply();
  }

  sandbox::Scenario scenario_;
};

TEST_F(ShowTest, ShowsTextUnlessAskedOtherwise) {
  const ProgramResult result = Collector({"show"});
  EXPECT_EQ(result.ExitCode, kAllWell) << result.Errors;
  EXPECT_THAT(result.Output, StartsAsText());
  EXPECT_THAT(result.Output, HasSubstr("  sensor is not connected, temperature sensor 0"));
  EXPECT_THAT(result.Output, HasSubstr("\n  Level asked for  37.5 %\n"));
  EXPECT_EQ(Collector({"show", "--format", "text"}).ExitCode, kAllWell);
}

TEST_F(ShowTest, ShowsXmlThatIsValid) {
  const ProgramResult result = Collector({"show", "--format", "xml"});
  EXPECT_EQ(result.ExitCode, kAllWell) << result.Errors;
  EXPECT_TRUE(test_support::IsValidDocument(result.Output));
  EXPECT_THAT(result.Output, HasSubstr(" Celsius=\"21.6\""));
}

TEST_F(ShowTest, ShowsJson) {
  const ProgramResult result = Collector({"show", "--format", "json"});
  EXPECT_EQ(result.ExitCode, kAllWell) << result.Errors;
  const nlohmann::json document = nlohmann::json::parse(result.Output);
  EXPECT_EQ(document["GUID"], "6f1c0d52");
  EXPECT_EQ(document["Sensors"][0]["Class"], "CANTempSensor");
  EXPECT_THAT(result.Output, HasSubstr("\"Celsius\": 21.6\n"));
}

// The probe prints these lines to standard output, where they would spoil the document.
TEST_F(ShowTest, KeepsTheProbesOwnLinesOutOfTheDocument) {
  for (const char* format : {"text", "xml", "json"}) {
    SCOPED_TRACE(format);
    const ProgramResult result = Collector({"show", "--format", format, "--cycles", "2"});
    EXPECT_THAT(result.Output, Not(HasSubstr("Dev Name")));
    EXPECT_THAT(result.Output, AnyOf(StartsAsText(), StartsWith("<?xml"), StartsWith("{")));
    EXPECT_THAT(result.Errors, HasSubstr("Dev Name eth0"));
  }
}

TEST_F(ShowTest, ShowsTheDocumentOfAFailedCycleAndEndsWithOne) {
  scenario_.NoDatabase().Apply();
  const ProgramResult result = Collector({"show", "--format", "xml"});
  EXPECT_EQ(result.ExitCode, kFailed);
  EXPECT_TRUE(test_support::IsValidDocument(result.Output));
  EXPECT_THAT(result.Output, HasSubstr("<NetworkDevice "));
  EXPECT_THAT(result.Errors, HasSubstr("statuscollector: /dev/shm/status.db does not exist; "));
  EXPECT_THAT(Collector({"show"}).Output, StartsAsText());
}

TEST_F(ShowTest, RunsAsManyCyclesAsAskedFor) {
  const ProgramResult result = Collector({"show", "--cycles", "3"});
  EXPECT_EQ(result.ExitCode, kAllWell);
  std::smatch match;
  const std::regex device("Dev Name eth0");
  EXPECT_EQ(std::distance(std::sregex_iterator(result.Errors.begin(), result.Errors.end(), device),
                          std::sregex_iterator()),
            3);
}

TEST_F(ShowTest, SaysTheSameInALocaleWithDecimalComma) {
  const std::vector<std::string> comma = {
      "LOCPATH=" + test_support::CommaLocale::Path(),
      std::string("LC_ALL=") + test_support::CommaLocale::kName};
  // The clock goes on between two runs.
  const std::regex time("20[0-9-]{8}T[0-9:]{8}|P1DT[0-9HMS]+|[0-9]+ min [0-9]+ s");
  for (const char* format : {"text", "xml", "json"}) {
    SCOPED_TRACE(format);
    const ProgramResult plain = Collector({"show", "--format", format});
    const ProgramResult german = Collector({"show", "--format", format}, comma);
    EXPECT_EQ(std::regex_replace(plain.Output, time, "T"),
              std::regex_replace(german.Output, time, "T"));
    EXPECT_THAT(german.Output, HasSubstr("21.6"));
  }
  // Proof that there is such a locale, which the program does not enter.
  const ProgramResult check = RunProgram({"/usr/bin/locale", "decimal_point"}, comma);
  EXPECT_EQ(check.Output, ",\n");
}

TEST_F(ShowTest, UsesNoColourInAPipeUnlessAsked) {
  EXPECT_THAT(Collector({"show"}).Output, Not(HasSubstr("\x1b")));
  EXPECT_THAT(Collector({"show", "--color", "auto"}).Output, Not(HasSubstr("\x1b")));
  EXPECT_THAT(Collector({"show", "--color=always"}).Output, HasSubstr("\x1b[1mIdentity\x1b[0m"));
  EXPECT_THAT(Collector({"show", "--color=always"}, {"NO_COLOR=1"}).Output, HasSubstr("\x1b[1m"));
}

TEST_F(ShowTest, ShowsTheSectionsThatAreAskedFor) {
  const ProgramResult result = Collector({"show", "--section", "dimming,identity"});
  EXPECT_EQ(result.ExitCode, kAllWell) << result.Errors;
  EXPECT_THAT(result.Output, StartsAsText());
  EXPECT_THAT(result.Output, HasSubstr("\n\nIdentity\n  GUID                  6f1c0d52\n"));
  EXPECT_THAT(result.Output, Not(HasSubstr("\nNetwork\n")));
  const ProgramResult wrong = Collector({"show", "--section", "identity,Fans"});
  EXPECT_EQ(wrong.ExitCode, kTrouble);
  EXPECT_THAT(wrong.Errors,
              StartsWith("statuscollector: --section: no section \"Fans\"; there are: "
                         "findings, display, identity, "));
  EXPECT_EQ(wrong.Output, "");
}

TEST_F(ShowTest, ShowsALineForEachFindingInBrief) {
  const ProgramResult result = Collector({"show", "--brief"});
  EXPECT_EQ(result.ExitCode, kAllWell) << result.Errors;
  EXPECT_THAT(result.Output, HasSubstr("  sensor is not connected, temperature"));
  EXPECT_THAT(result.Output, Not(HasSubstr("look at")));
  EXPECT_THAT(result.Output, Not(HasSubstr("\nIdentity\n")));
}

// The end of a long cause used to be cut.
TEST_F(ShowTest, CutsNoCauseInBriefInAPipeOrFile) {
  const std::string whole =
      "TtableColumns, TtableRows, TtableModWidth, TtableModHeight, TtableFaceCnt missing, "
      "/dev/shm/status.db\n";
  EXPECT_THAT(Collector({"show", "--brief"}).Output, HasSubstr(whole));
  Collector({"show", "--brief", "--output", "/tmp/brief"});
  EXPECT_THAT(Read("/tmp/brief"), HasSubstr(whole));
}

// 80 columns, whatever terminal the rest of the pipe may have.
TEST_F(ShowTest, KeepsToEightyColumnsInAPipe) {
  const ProgramResult result = Collector({"show"}, {"COLUMNS=200"});
  std::istringstream lines(result.Output);
  for (std::string line; std::getline(lines, line);) {
    EXPECT_LE(host::Width(line), host::kPipeColumns) << line;
  }
}

TEST_F(ShowTest, AddsInsightToJsonAndToNothingElse) {
  const ProgramResult result = Collector({"show", "--format", "json", "--with", "insight"});
  EXPECT_EQ(result.ExitCode, kAllWell) << result.Errors;
  const nlohmann::json insight = nlohmann::json::parse(result.Output)["Insight"];
  EXPECT_TRUE(insight["Sources"].is_array());
  EXPECT_TRUE(insight["Rows"].is_array());
  EXPECT_FALSE(insight["Findings"].empty());
  EXPECT_THAT(Collector({"show", "--format", "json"}).Output, Not(HasSubstr("Insight")));
}

// "--brief is for --format text only; add --format text" used to be the answer to --format json.
TEST_F(ShowTest, SaysWhichFormatAnOptionIsFor) {
  using Words = std::vector<std::string>;
  for (const auto& [options, cure] : std::vector<std::pair<Words, std::string>>{
           {{"--with", "insight"}, "--with is for --format json; add --format json"},
           {{"--with", "insight", "--format", "xml"},
            "--with is for --format json, not for xml; leave out one of the two"},
           {{"--brief", "--format", "json"},
            "--brief is for --format text, not for json; leave out one of the two"}}) {
    Words words = {"show"};
    words.insert(words.end(), options.begin(), options.end());
    const ProgramResult wrong = Collector(words);
    EXPECT_EQ(wrong.ExitCode, kTrouble);
    EXPECT_EQ(wrong.Errors, "statuscollector: " + cure + "\n");
  }
}

// Each process used to report, since each starts the hour of the limiter anew; with a full log it
// waited for ever.
TEST_F(ShowTest, LeavesReportsAboutABlankedOutputToHostsThatGoOn) {
  SANDBOX_NEEDS_DEVICES();
  sandbox::Scenario::Load(sandbox::SourcePath("scenarios/faults")).Apply();
  sandbox::SystemLog log;
  const ProgramResult result = Collector({"show"});
  EXPECT_THAT(result.Output, HasSubstr("\n! critical  output blanked by the pixel tracker"));
  EXPECT_THAT(log.Read(), testing::IsEmpty());
}

mode_t Mode(const std::string& path) {
  struct stat status = {};
  stat(path.c_str(), &status);
  return status.st_mode & 07777;
}

class OutputTest : public ShowTest {
 protected:
  void SetUp() override {
    ShowTest::SetUp();
    fs::remove_all(folder_);
    fs::create_directories(folder_);
  }

  std::vector<std::string> Files() const {
    std::vector<std::string> files;
    for (const auto& entry : fs::directory_iterator(folder_)) {
      files.push_back(entry.path().filename());
    }
    std::sort(files.begin(), files.end());
    return files;
  }

  const std::string folder_ = "/tmp/output_test";
  const std::string file_ = folder_ + "/status.xml";
};

TEST_F(OutputTest, WritesTheDocumentToAFile) {
  const ProgramResult result = Collector({"show", "--format", "xml", "--output", file_});
  EXPECT_EQ(result.ExitCode, kAllWell) << result.Errors;
  EXPECT_EQ(result.Output, "");
  EXPECT_TRUE(test_support::IsValidDocument(Read(file_)));
  EXPECT_THAT(Files(), testing::ElementsAre("status.xml"));
  EXPECT_EQ(Mode(file_), 0644U);
}

TEST_F(OutputTest, WritesTheDocumentOfAFailedCycle) {
  scenario_.NoDatabase().Apply();
  EXPECT_EQ(Collector({"show", "--format", "xml", "-o", file_}).ExitCode, kFailed);
  EXPECT_TRUE(test_support::IsValidDocument(Read(file_)));
}

TEST_F(OutputTest, ReplacesAFileAndKeepsItsPermissions) {
  Write(file_, "old");
  chmod(file_.c_str(), 0600);
  EXPECT_EQ(Collector({"show", "--output", file_}).ExitCode, kAllWell);
  EXPECT_THAT(Read(file_), StartsAsText());
  EXPECT_EQ(Mode(file_), 0600U);
}

// A user could lay a file ready that became one of root's, run with root's rights, and writable.
TEST_F(OutputTest, KeepsNoPermissionThatAnotherUserHasChosenForHimself) {
  Write(file_, "old");
  chmod(file_.c_str(), 06777);
  EXPECT_EQ(Collector({"show", "--output", file_}).ExitCode, kAllWell);
  EXPECT_EQ(Mode(file_), 0777U) << "one's own";
  if (lchown(file_.c_str(), kSomebody, kSomebody) != 0) {
    GTEST_SKIP() << "no other users: " << std::strerror(errno);
  }
  chmod(file_.c_str(), 06777);
  EXPECT_EQ(Collector({"show", "--output", file_}).ExitCode, kAllWell);
  EXPECT_EQ(Mode(file_), 0755U) << "somebody else's";
}

TEST_F(OutputTest, FollowsASymbolicLink) {
  Write(folder_ + "/real", "old");
  fs::create_symlink("real", file_);
  EXPECT_EQ(Collector({"show", "--output", file_}).ExitCode, kAllWell);
  EXPECT_TRUE(fs::is_symlink(file_));
  EXPECT_THAT(Read(folder_ + "/real"), StartsAsText());
}

// The link used to be replaced by the file.
TEST_F(OutputTest, FollowsASymbolicLinkToAFileThatIsNotThereYet) {
  fs::create_directories(folder_ + "/kept");
  fs::create_symlink("kept/real", folder_ + "/second");
  fs::create_symlink(folder_ + "/second", file_);
  EXPECT_EQ(Collector({"show", "--output", file_}).ExitCode, kAllWell);
  EXPECT_THAT(Files(), testing::ElementsAre("kept", "second", "status.xml"));
  EXPECT_TRUE(fs::is_symlink(file_));
  EXPECT_THAT(Read(folder_ + "/kept/real"), StartsAsText());
}

// Where fs.protected_symlinks is set, the kernel would follow none of these, but was only asked
// about the name before the link came.
TEST_F(OutputTest, FollowsNoLinkOfAnotherUserInAFolderOfEverybody) {
  const std::string secret = folder_ + "-secret";
  Write(secret, "old");
  fs::create_symlink(secret, file_);
  chmod(folder_.c_str(), 01777);
  if (lchown(file_.c_str(), kSomebody, kSomebody) != 0) {
    GTEST_SKIP() << "no other users: " << std::strerror(errno);
  }
  const ProgramResult result = Collector({"show", "--output", file_});
  EXPECT_EQ(result.ExitCode, kTrouble);
  EXPECT_THAT(result.Errors,
              testing::EndsWith("statuscollector: " + file_ +
                                ": Permission denied; see who may write there, and who may enter "
                                "its folders\n"));
  EXPECT_EQ(Read(secret), "old");
  chmod(folder_.c_str(), 0755);
  EXPECT_EQ(Collector({"show", "--output", file_}).ExitCode, kAllWell) << "root's folder";
  EXPECT_THAT(Read(secret), StartsAsText());
  ASSERT_EQ(lchown(folder_.c_str(), kSomebody, kSomebody), 0);
  chmod(folder_.c_str(), 01777);
  EXPECT_EQ(Collector({"show", "--output", file_}).ExitCode, kAllWell) << "of the link's owner";
}

// It used to be replaced, too.
TEST_F(OutputTest, RefusesASymbolicLinkWithoutAnEnd) {
  fs::create_symlink("status.xml", file_);
  const ProgramResult result = Collector({"show", "--output", file_});
  EXPECT_EQ(result.ExitCode, kTrouble);
  EXPECT_THAT(result.Errors, HasSubstr("statuscollector: " + file_ + ": "));
  EXPECT_TRUE(fs::is_symlink(file_));
}

TEST_F(OutputTest, WritesRelativeToTheWorkingFolder) {
  const ProgramResult result = Shell("cd " + folder_ + " && exec $COLLECTOR show -o status.xml");
  EXPECT_EQ(result.ExitCode, kAllWell) << result.Errors;
  EXPECT_THAT(Read(file_), StartsAsText());
}

// A file size limit stands for a full disk.
TEST_F(OutputTest, LeavesTheOldFileAloneWhenItCannotWriteTheWholeNewOne) {
  Write(file_, "old");
  const ProgramResult result =
      Shell("trap '' XFSZ; ulimit -f 1; exec $COLLECTOR show --format xml --output " + file_);
  EXPECT_EQ(result.ExitCode, kTrouble);
  EXPECT_THAT(result.Errors, HasSubstr("statuscollector: " + file_ + ": "));
  EXPECT_EQ(Read(file_), "old");
  EXPECT_THAT(Files(), testing::ElementsAre("status.xml")) << "a temporary file is left";
}

TEST_F(OutputTest, RefusesWhatIsNoRegularFile) {
  scenario_.Folder(folder_ + "/folder");
  fs::create_directories(folder_ + "/folder");
  mkfifo((folder_ + "/pipe").c_str(), 0600);
  for (const char* name : {"folder", "pipe"}) {
    const ProgramResult result = Collector({"show", "--output", folder_ + "/" + name});
    EXPECT_EQ(result.ExitCode, kTrouble);
    EXPECT_THAT(result.Errors, testing::EndsWith(std::string(name) +
                                                 " is not a regular file; give another name\n"));
  }
  EXPECT_THAT(Files(), testing::ElementsAre("folder", "pipe"));
}

// From 249 bytes on, the name of the temporary file beside it used to be too long.
TEST_F(OutputTest, WritesFilesWithTheLongestNames) {
  for (const std::size_t length : {249, 252, 255}) {
    SCOPED_TRACE(length);
    const std::string file = folder_ + "/" + std::string(length, 'n');
    const ProgramResult result = Collector({"show", "--output", file});
    EXPECT_EQ(result.ExitCode, kAllWell) << result.Errors;
    EXPECT_THAT(Read(file), StartsAsText());
  }
  EXPECT_THAT(Files(), testing::SizeIs(3)) << "a temporary file is left";
}

// It used to write a file of this name.
TEST_F(OutputTest, ADashIsStandardOutput) {
  const ProgramResult result = Shell("cd " + folder_ + " && exec $COLLECTOR show -f xml -o -");
  EXPECT_EQ(result.ExitCode, kAllWell) << result.Errors;
  EXPECT_TRUE(test_support::IsValidDocument(result.Output));
  EXPECT_THAT(Files(), testing::IsEmpty());
}

TEST_F(OutputTest, SaysWhenTheFolderIsNotThere) {
  const ProgramResult result = Collector({"show", "--output", "/nowhere/status.xml"});
  EXPECT_EQ(result.ExitCode, kTrouble);
  EXPECT_THAT(result.Errors, HasSubstr("statuscollector: /nowhere/status.xml: "));
}

TEST_F(OutputTest, EndsWithTwoWhenStandardOutputCannotBeWritten) {
  const ProgramResult closed = Shell("exec $COLLECTOR show >&-");
  EXPECT_EQ(closed.ExitCode, kTrouble);
  EXPECT_THAT(closed.Errors, HasSubstr("statuscollector: standard output: "));
  const ProgramResult full =
      Shell("trap '' XFSZ; ulimit -f 1; exec $COLLECTOR schema >" + folder_ + "/schema");
  EXPECT_EQ(full.ExitCode, kTrouble);
  EXPECT_THAT(full.Errors, HasSubstr("statuscollector: standard output: "));
}

// These used to end with 0.
TEST_F(OutputTest, EndsWithTwoWhenNobodyCanReadWhatIsShort) {
  for (const char* arguments : {"init", "--help", "show --help", "--version", "schema"}) {
    SCOPED_TRACE(arguments);
    const ProgramResult closed = Shell(std::string("exec $COLLECTOR ") + arguments + " >&-");
    EXPECT_EQ(closed.ExitCode, kTrouble);
    EXPECT_THAT(closed.Errors, HasSubstr("statuscollector: standard output: "));
  }
}

// Descriptor 4 leads into a pipe without a reader.
ProgramResult WithBrokenPipe(const std::string& line) {
  return Shell(
      "rm -f /tmp/pipe; mkfifo /tmp/pipe; exec 3<>/tmp/pipe 4>/tmp/pipe 3>&-; exec $COLLECTOR " +
      line);
}

// The signal of the broken pipe used to end it without a word.
TEST_F(OutputTest, EndsWithTwoWhenTheReaderIsGone) {
  for (const char* arguments : {"show", "show --format xml", "init", "--help", "schema"}) {
    SCOPED_TRACE(arguments);
    const ProgramResult result = WithBrokenPipe(std::string(arguments) + " >&4");
    EXPECT_EQ(result.ExitCode, kTrouble);
    EXPECT_THAT(result.Errors,
                testing::EndsWith("statuscollector: standard output: Broken pipe; let its reader "
                                  "read to the end\n"));
  }
}

// The same signal used to end the cycle at the probe's first line.
TEST_F(OutputTest, ShowsTheDocumentWhenNobodyReadsTheProbesLines) {
  const ProgramResult result = WithBrokenPipe("show --format xml 2>&4");
  EXPECT_EQ(result.ExitCode, kAllWell);
  EXPECT_TRUE(test_support::IsValidDocument(result.Output));
  EXPECT_THAT(result.Output, Not(HasSubstr("Dev Name")));
}

class InitTest : public testing::Test {
 protected:
  void SetUp() override { sandbox::Scenario().Apply(); }
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
