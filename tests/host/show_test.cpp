// What `show` writes, and to where the probes write.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
#include "sandbox/system_log.h"
#include "sandbox/testing.h"
#include "tests/host/program_fixture.h"
#include "tests/support/comma_locale.h"
#include "tests/support/validate.h"

namespace {

using test_support::ProgramResult;
using test_support::RunProgram;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

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

}  // namespace
