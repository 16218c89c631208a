// explain: what became of the sources and rows of controllers in a box.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "host/explain_text.h"
#include "host/printable.h"
#include "insight/outcomes.h"
#include "sandbox/enter.h"
#include "sandbox/rows.h"
#include "sandbox/scenario.h"
#include "sandbox/testing.h"
#include "tests/support/paths.h"
#include "tests/support/run_program.h"

namespace {

using insight::Remark;
using insight::RowPart;
using sandbox::Scenario;
using test_support::ProgramResult;
using testing::AllOf;
using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr int kNoErrors = 0;
constexpr int kErrors = 1;
constexpr int kTrouble = 2;

ProgramResult Explain(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), {test_support::HostProgram(), "explain"});
  return test_support::RunProgram(arguments);
}

void Load(const char* name) { Scenario::Load(sandbox::SourcePath("scenarios") / name).Apply(); }

TEST(Explain, FindsNoErrorInTheDemo) {
  Load("demo");
  const ProgramResult result = Explain({"--problems"});
  EXPECT_EQ(result.ExitCode, kNoErrors) << result.Output;
  EXPECT_THAT(result.Output, AllOf(StartsWith("Summary\n"), HasSubstr(" 0 errors.")));
}

TEST(Explain, NamesSourcesThenRowsThenProblemsThenTheSummary) {
  Load("mistakes");
  const ProgramResult result = Explain({});
  EXPECT_EQ(result.ExitCode, kErrors);
  const std::size_t sources = result.Output.find("Sources\n");
  const std::size_t rows = result.Output.find("\nRows of DCIO_00: DCIO/Devices[0]\n");
  const std::size_t problems = result.Output.find("\nProblems\n");
  const std::size_t summary = result.Output.find("\nSummary\n");
  EXPECT_EQ(sources, 0U);
  EXPECT_LT(sources, rows);
  EXPECT_LT(rows, problems);
  EXPECT_LT(problems, summary);
  EXPECT_LT(summary, result.Output.size());
}

// The path of the element used to stand in each of its lines, broken where the page ended.
TEST(Explain, NamesThePathOfAnElementOnce) {
  Load("demo");
  EXPECT_THAT(Explain({"Sensor_07"}).Output,
              AllOf(StartsWith("Rows of Sensor_07: Outputs[0]/DisplayInterfaces[0]/Sensors[0]\n"),
                    HasSubstr("\n  Celsius               28.75    …/Celsius\n"),
                    HasSubstr("TXR_CAN  kept for Sensor_07_Type\n"),
                    HasSubstr("1        Outputs[0]/DisplayInterfaces[0]/Address\n")));
}

TEST(Explain, MarksTheBytesOfAProblemAndGivesItsCure) {
  Scenario().Database().Row("Sensor_03_Zone", "front").Row("Sensor_03_Type", "CANDoor").Apply();
  const ProgramResult result = Explain({"--problems"});
  EXPECT_EQ(result.ExitCode, kErrors);
  EXPECT_THAT(result.Output, HasSubstr("Problems\n"
                                       "Sensor_03_Zone = front\n"
                                       "          ^^^^\n"));
  EXPECT_THAT(result.Output, HasSubstr("[unknown-attribute]"));
  EXPECT_THAT(result.Output,
              HasSubstr("Cure: Write one of the attributes of statuscollector-rows(5)."));
}

// The errors alone say nothing about the rest.
TEST(Explain, CountsAllRowsAlsoWhereItShowsProblemsAlone) {
  Scenario().Database().Row("DimmingLevel", "62,5").Row("DimmingMode", "auto").Apply();
  EXPECT_THAT(Explain({"--problems"}).Output,
              HasSubstr("2 of 2 rows: 1 fine; 0 notices, 1 error."));
}

// Only the first remark of a row used to be seen, and the row to count as one notice.
TEST(Explain, ShowsAndCountsAllNoticesOfARow) {
  Scenario()
      .Database()
      .Row("Sensor_00_Celsius", "21")
      .Row("Sensor_00_Rev", "1")
      .Row("Sensor_00_Type", "CANTemp")
      .Row("Sensor_05_Rev", "1")
      .Row("Sensor_05_Type", "CANTemp")
      .Apply();
  const std::string output = Explain({"Sensor_05_Type"}).Output;
  EXPECT_THAT(output, HasSubstr("number 5 becomes position 1; inherits"));
  EXPECT_THAT(output, HasSubstr("Celsius from"));
  EXPECT_THAT(output, HasSubstr("1 of 5 rows: 0 fine; 2 notices, 0 errors."));
}

// Their number used to be the only notice that was seen, though it cannot be their position.
TEST(Explain, NamesWhatASensorBehindAnInterfaceInherits) {
  Load("demo");
  EXPECT_THAT(Explain({"Sensor_08"}).Output, HasSubstr("; 0 notices, 0 errors."));
  sandbox::RemoveRow("Sensor_08_Celsius");
  const std::string output = Explain({"Sensor_08"}).Output;
  EXPECT_THAT(output, HasSubstr("inherits Celsius from Sensor_07_Celsius"));
  EXPECT_THAT(output, HasSubstr("; 1 notice, 0 errors."));
}

// A host that stays carries values over; a program that has just started does not.
TEST(Explain, ReportsTheSecondCycleAndMarksWhatDiffersFromTheFirst) {
  Scenario()
      .Database()
      .Row("Sensor_00_Address", "7")
      .Row("Sensor_00_Type", "CANDoor")
      .Row("Sensor_01_Connected", "true")
      .Row("Sensor_01_Type", "CANDoor")
      .Apply();
  const ProgramResult result = Explain({});
  EXPECT_THAT(result.Output, HasSubstr("inherits"));
  EXPECT_THAT(result.Output, HasSubstr("something else than in the first: 1, marked"));
}

TEST(Explain, ShowsOnlyTheRowsThatBeginWithAPrefix) {
  Load("mistakes");
  const ProgramResult result = Explain({"Sensor_28"});
  EXPECT_EQ(result.ExitCode, kErrors);
  EXPECT_THAT(result.Output, StartsWith("Rows of Sensor_28"));
  EXPECT_THAT(result.Output, Not(HasSubstr("DCIO_")));
  EXPECT_EQ(Explain({"DimmingMode"}).ExitCode, kNoErrors);
  EXPECT_THAT(Explain({"Nothing"}).Output, StartsWith("Rows\n  No row has"));
}

TEST(Explain, WritesAsJsonWhatItWritesAsText) {
  Load("mistakes");
  const ProgramResult result = Explain({"--format", "json", "--problems"});
  EXPECT_EQ(result.ExitCode, kErrors);
  const nlohmann::json document = nlohmann::json::parse(result.Output);
  EXPECT_FALSE(document["Insight"]["Sources"].empty());
  EXPECT_FALSE(document["Insight"]["Rows"].empty());
  for (const nlohmann::json& row : document["Insight"]["Rows"]) {
    EXPECT_EQ(row["Remarks"][0]["Class"], "error") << row;
    EXPECT_NE(row["Remarks"][0]["Cure"], "") << row;
  }
  EXPECT_TRUE(document["Differing"].is_array());
}

TEST(Explain, EndsWithTroubleWhenTheRowsCannotBeRead) {
  Scenario().Apply();
  const ProgramResult missing = Explain({});
  EXPECT_EQ(missing.ExitCode, kTrouble);
  EXPECT_THAT(missing.Output, StartsWith("Sources\n"));
  EXPECT_THAT(missing.Errors, HasSubstr("/dev/shm/status.db does not exist"));
}

// Of a display that is healthy but for its rows, which a sound row leaves so.
void ExpectWarningOf(const std::vector<std::pair<const char*, const char*>>& mistake) {
  Load("demo");
  sandbox::SetRows({{"DimmingLevel", "62.5"}});
  // A display has more rows than these.
  const std::vector<std::string> command = {test_support::HostProgram(),
                                            "check",
                                            "--ignore",
                                            "no-sensors",
                                            "--ignore",
                                            "no-brightness",
                                            "--ignore",
                                            "ttable-missing"};
  const ProgramResult sound = test_support::RunProgram(command);
  EXPECT_EQ(sound.ExitCode, 0) << sound.Output;
  sandbox::Rows rows;
  for (const auto& [key, value] : mistake) {
    rows[key] = value;
  }
  sandbox::SetRows(rows);
  const ProgramResult check = test_support::RunProgram(command);
  EXPECT_NE(check.ExitCode, 0);
  EXPECT_THAT(check.Output, AnyOf(HasSubstr("a row has an error"), HasSubstr(" is wrong: "),
                                  HasSubstr("rows have errors")));
}

// Each of them was met by users who write rows.
TEST(Explain, NamesTheRowAndTheCureOfEachCommonMistake) {
  struct Mistake {
    std::vector<std::pair<const char*, const char*>> Rows;
    const char* Key;  // of the row in error
    const char* Id;
  };
  static const Mistake kMistakes[] = {
      {{{"sensor_01_Celsius", "20"}}, "sensor_01_Celsius", "unknown-key"},
      {{{"Sensor_90_celsius", "20"}, {"Sensor_90_Type", "CANTemp"}},
       "Sensor_90_celsius",
       "unknown-attribute"},
      {{{"Sensor_00_Connected", "True"}, {"Sensor_00_Type", "CANDoor"}},
       "Sensor_00_Connected",
       "looks-true"},
      {{{"Sensor_00_Connected", "true\n"}, {"Sensor_00_Type", "CANDoor"}},
       "Sensor_00_Connected",
       "looks-true"},
      {{{"Sensor_00_Zone", "1"}, {"Sensor_00_Type", "CANDoor"}},
       "Sensor_00_Zone",
       "unknown-attribute"},
      {{{"Sensor_00_Type", "CANTempSensor"}}, "Sensor_00_Type", "unknown-word"},
      {{{"Sensor_0_Type", "CANDoor"},
        {"Sensor_1_Type", "CANDoor"},
        {"Sensor_2_Type", "CANDoor"},
        {"Sensor_10_Type", "CANDoor"},
        {"Sensor_11_Type", "CANDoor"}},
       "Sensor_1_Type",
       "position-taken"},
      {{{"Sensor_000_Type", "CANDoor"}, {"Sensor_00_Type", "CANDoor"}},
       "Sensor_00_Type",
       "position-taken"},
      {{{"DimmingMode", "Manual"}}, "DimmingMode", "unknown-word"},
      {{{"DimmingLevel", "62,5"}}, "DimmingLevel", "text-after-number"},
      {{{"FansEnabled", "1"}}, "FansEnabled", "looks-true"},
      {{{"Sensor_00_Address", "0x12"}, {"Sensor_00_Type", "CANDoor"}},
       "Sensor_00_Address",
       "text-after-number"},
      {{{"Sensor_00_Location", "Local"}, {"Sensor_00_Type", "CANDoor"}},
       "Sensor_00_Location",
       "unknown-word"},
      {{{"Sensor_00_Celsius", "20"}}, "Sensor_00_Celsius", "no-type"},
      {{{"Sensor_00_Location", "TXR_CAN"}, {"Sensor_00_Type", "OnboardTemp"}},
       "Sensor_00_Type",
       "refused-kind"},
      {{{"Sensor_00_Input_00_Index", "0"},
        {"Sensor_00_Input_00_Type", "3"},
        {"Sensor_00_Type", "CANDcio2in1out"}},
       "Sensor_00_Input_00_Index",
       "point-index"},
      {{{"Sensor_00_Input_00_Index", "3"},
        {"Sensor_00_Input_00_Type", "3"},
        {"Sensor_00_Type", "CANDcio2in1out"}},
       "Sensor_00_Input_00_Index",
       "point-index"},
      {{{"Sensor_00_Input_00_Index", "1"},
        {"Sensor_00_Input_00_Type", "Door"},
        {"Sensor_00_Type", "CANDcio2in1out"}},
       "Sensor_00_Input_00_Type",
       "no-number"},
      {{{"DCIO_00_Type", "Door"}}, "DCIO_00_Type", "unknown-word"},
      {{{"Sensor_-1_Type", "CANDoor"}}, "Sensor_-1_Type", "bad-number"},
      {{{"Sensor_A_Type", "CANDoor"}}, "Sensor_A_Type", "bad-number"},
  };
  for (const Mistake& mistake : kMistakes) {
    SCOPED_TRACE(std::string(mistake.Key) + " " + mistake.Id);
    Scenario scenario;
    scenario.Database();
    for (const auto& [key, value] : mistake.Rows) {
      scenario.Row(key, value);
    }
    scenario.Apply();
    const ProgramResult result = Explain({"--problems", "--format", "json"});
    EXPECT_EQ(result.ExitCode, kErrors);
    bool named = false;
    const nlohmann::json document = nlohmann::json::parse(result.Output);
    for (const nlohmann::json& row : document["Insight"]["Rows"]) {
      for (const nlohmann::json& remark : row["Remarks"]) {
        named = named || (row["Key"] == mistake.Key && remark["Outcome"] == mistake.Id &&
                          remark.contains("Cure"));
      }
    }
    EXPECT_TRUE(named) << document["Insight"]["Rows"];
    if (sandbox::DevicesAvailable()) {
      ExpectWarningOf(mistake.Rows);
    }
  }
}

// Each row of a sensor without a Type used to be a problem of its own, with the same cure.
TEST(Explain, SaysAProblemThatRowsOfASensorShareOnce) {
  Scenario demo = Scenario::Load(sandbox::SourcePath("scenarios/demo"));
  demo.Apply();
  sandbox::RemoveRow("Sensor_10_Type");
  const ProgramResult result = Explain({"--problems"});
  EXPECT_EQ(result.ExitCode, kErrors);
  EXPECT_THAT(
      result.Output,
      StartsWith("Problems\n"
                 "Sensor_10_Address = 36\n"
                 "^^^^^^^^^^^^^^^^^\n"
                 "  No row Sensor_10_Type completes its element. [no-type]\n"
                 "  Likewise 12 more rows of Sensor_10: Bus, Connected, DispInterfaceAddress,\n"
                 "  DispInterfaceNumber, Face, IsoTemperature, IsoVin, IsoVout, Location,\n"
                 "  NumAttribute, Rev, SyncLossCounter.\n"
                 "  Cure: Write a Type row for each element.\n"
                 "\n"
                 "Summary\n"));
  sandbox::RemoveRow("Sensor_12_Type");
  EXPECT_THAT(
      Explain({"Sensor_12", "--problems"}).Output,
      AllOf(HasSubstr("Likewise 58 more rows of Sensor_12: Bus, "), HasSubstr(" and 46 more.\n")));
}

// "none" used to be all that was said.
TEST(Explain, NamesTheNearestBeginningOfKeysWhereNoRowHasTheOneThatIsAskedFor) {
  Load("demo");
  for (const auto& [prefix, nearest] :
       {std::pair("sensor_", "; the nearest is \"Sensor_\""),
        std::pair("SENSOR_12_i", "; the nearest is \"Sensor_12_I\""),
        std::pair("Sensr_12", "; the nearest is \"Sensor_\""),
        std::pair("dimmingmode", "; the nearest is \"DimmingMode\""), std::pair("xyzzy", "")}) {
    for (const char* const problems : {"", "--problems"}) {
      std::vector<std::string> arguments = {prefix};
      if (*problems != '\0') {
        arguments.emplace_back(problems);
      }
      const ProgramResult result = Explain(arguments);
      EXPECT_EQ(result.ExitCode, kNoErrors);
      EXPECT_THAT(result.Output,
                  StartsWith("Rows\n  No row has a key that begins with \"" + std::string(prefix) +
                             "\"" + nearest + ".\n\nSummary\n"));
    }
  }
}

insight::Row RowOf(const std::string& key, const std::string& value) {
  insight::Row row;
  row.Key = key;
  row.Value = value;
  return row;
}

Remark RemarkOn(RowPart part, std::size_t begin, std::size_t end) {
  Remark remark;
  remark.Part = part;
  remark.Begin = begin;
  remark.End = end;
  return remark;
}

// The kind of the board used to be cut.
TEST(Explain, CutsNoWordThatARowMayHold) {
  Load("demo");
  EXPECT_THAT(
      test_support::RunProgram({test_support::HostProgram(), "explain", "Sensor_06"}).Output,
      HasSubstr("CANPowerSupplyRedundancyBoard  Sensors[6]\n"));
}

// The page shows what the program prints of this scenario.
TEST(Explain, PrintsTheExampleOfItsPage) {
  Load("mistakes");
  std::ifstream page(sandbox::SourcePath("docs/host.md"));
  std::string line;
  while (std::getline(page, line) && line != "    $ statuscollector explain --problems") {
  }
  const std::string output = Explain({"--problems"}).Output;
  int compared = 0;
  while (std::getline(page, line) && line.starts_with("    ")) {
    if (!line.ends_with("...")) {
      EXPECT_THAT(output, HasSubstr(line.substr(4) + "\n"));
      ++compared;
    }
  }
  EXPECT_GT(compared, 5);
}

TEST(Quote, PutsCaretsBelowTheBytesOfAKeyOrValue) {
  const insight::Row row = RowOf("Sensor_0", "12 C");
  EXPECT_EQ(host::Quote(row, RemarkOn(RowPart::kKey, 7, 8)).Carets, "       ^");
  EXPECT_EQ(host::Quote(row, RemarkOn(RowPart::kValue, 2, 4)).Carets, "             ^^");
  EXPECT_EQ(host::Quote(row, RemarkOn(RowPart::kNone, 0, 0)).Carets, "");
}

TEST(Quote, CountsColumnsNotBytes) {
  EXPECT_EQ(host::Quote(RowOf("a", "é€x"), RemarkOn(RowPart::kValue, 5, 6)).Carets, "      ^");
}

TEST(Quote, HasACaretWhereNothingIsLeftToShow) {
  const host::Quoted quoted = host::Quote(RowOf("a", ""), RemarkOn(RowPart::kValue, 0, 0));
  EXPECT_EQ(quoted.Text, "a = ");
  EXPECT_EQ(quoted.Carets, "    ^");
}

TEST(Quote, SteersNoTerminal) {
  const host::Quoted quoted = host::Quote(RowOf("a\x1b[2J", "\x07"), RemarkOn(RowPart::kKey, 1, 5));
  EXPECT_EQ(quoted.Text.find('\x1b'), std::string::npos);
  EXPECT_EQ(quoted.Text.find('\x07'), std::string::npos);
}

// A remark of a snapshot made by hand, or of a later version.
TEST(Quote, StaysWithinTheTextWhateverTheRemarkSays) {
  EXPECT_EQ(host::Quote(RowOf("ab", "c"), RemarkOn(RowPart::kKey, 5, 9)).Carets, "  ^");
  EXPECT_EQ(host::Quote(RowOf("ab", "c"), RemarkOn(RowPart::kKey, 1, 0)).Carets, " ^");
}

}  // namespace
