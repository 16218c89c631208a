// diff, on documents in files and streams.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "model/can_sensors.h"
#include "model/document.h"
#include "model/xml.h"
#include "tests/support/paths.h"
#include "tests/support/run_program.h"

namespace {

using test_support::HostProgram;
using test_support::ProgramResult;
using test_support::RunProgram;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr int kAllWell = 0;
constexpr int kTrouble = 2;

ProgramResult Collector(const std::vector<std::string>& arguments) {
  std::vector<std::string> command = {HostProgram()};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return RunProgram(command);
}

void Write(const std::string& path, const std::string& text) { std::ofstream(path) << text; }

class DiffTest : public testing::Test {
 protected:
  void SetUp() override {
    QtSts::CStatus status;
    Write(before_, QtSts::WriteDocument(status));
    status.MemoryFree = 5;
    status.GUID =
        "\xC2\x9B"
        "31m";
    Write(after_, QtSts::WriteDocument(status));
  }

  const std::string before_ = "/tmp/before.xml";
  const std::string after_ = "/tmp/after.xml";
};

TEST_F(DiffTest, ListsTheDifferencesAndEndsWithOne) {
  const ProgramResult result = Collector({"diff", before_, after_});
  EXPECT_EQ(result.ExitCode, 1);
  EXPECT_EQ(result.Output,
            "GUID: \"\" -> \"\xEF\xBF\xBD"
            "31m\"\nMemoryFree: 100000 -> 5\n");
  EXPECT_EQ(result.Errors, "");
}

TEST_F(DiffTest, SaysNothingAboutEqualDocuments) {
  const ProgramResult result = Collector({"diff", before_, before_});
  EXPECT_EQ(result.ExitCode, kAllWell);
  EXPECT_EQ(result.Output, "");
}

// A document of one output and two sensors, and another one that differs from it.
class DiffOfDisplaysTest : public testing::Test {
 protected:
  void SetUp() override {
    Write(before_, Document(21.5F, 1, "2026-03-02T10:15:00-06:00"));
    Write(after_, Document(22, 6, "2026-03-03T10:15:00-06:00"));
  }

  static std::string Document(float celsius, std::uint32_t mode, const char* time) {
    QtSts::CStatus status;
    for (int i = 0; i < 2; ++i) {
      auto* const sensor = new QtSts::CCANTempSensor;
      status.Sensors.Add(sensor);
      sensor->Celsius = celsius;
      sensor->Connected = celsius > 22 || i == 0;
    }
    status.Outputs.Add(new QtSts::CTravex6Output);
    status.Outputs[0]->Dimming.DimmingMode = mode;
    status.Outputs[0]->Dimming.DimmingLevel = celsius;
    status.LocalTime = time;
    status.Uptime = std::string("P1D") + time;
    return QtSts::WriteDocument(status);
  }

  std::string Ignoring(std::vector<std::string> paths) const {
    std::vector<std::string> arguments = {"diff", before_, after_};
    for (const std::string& path : paths) {
      arguments.insert(arguments.end(), {"--ignore", path});
    }
    const ProgramResult result = Collector(arguments);
    EXPECT_EQ(result.ExitCode, result.Output.empty() ? kAllWell : 1) << result.Errors;
    return result.Output;
  }

  const std::string before_ = "/tmp/before.xml";
  const std::string after_ = "/tmp/after.xml";
  const std::string sensors_ = "Sensors[0]/Celsius: 21.5 -> 22\nSensors[1]/Celsius: 21.5 -> 22\n";
  const std::string level_ = "Outputs[0]/Dimming/DimmingLevel: 21.5 -> 22\n";
  const std::string mode_ = "Outputs[0]/Dimming/DimmingMode: 1 (manual) -> 6 (override)\n";
};

// Codes used to be numbers alone, and the two times stood in each difference of two cycles.
TEST_F(DiffOfDisplaysTest, HasNamesBesideCodesAndLeavesOutWhatEachCycleChanges) {
  const ProgramResult result = Collector({"diff", before_, after_});
  EXPECT_EQ(result.ExitCode, 1);
  EXPECT_EQ(result.Output, sensors_ + level_ + mode_);
}

TEST_F(DiffOfDisplaysTest, ListsTheTimesWhenAllIsAskedFor) {
  const ProgramResult result = Collector({"diff", "--all", before_, after_});
  EXPECT_EQ(result.ExitCode, 1);
  EXPECT_THAT(result.Output, HasSubstr("LocalTime: \"2026-03-02T10:15:00-06:00\" -> "
                                       "\"2026-03-03T10:15:00-06:00\"\nUptime: \"P1D"));
}

TEST_F(DiffOfDisplaysTest, FindsNothingWhereOnlyTheTimesDiffer) {
  Write(after_, Document(21.5F, 1, "2026-03-03T10:15:00-06:00"));
  const ProgramResult result = Collector({"diff", before_, after_});
  EXPECT_EQ(result.ExitCode, kAllWell);
  EXPECT_EQ(result.Output, "");
  EXPECT_EQ(Collector({"diff", "-a", before_, after_}).ExitCode, 1);
}

TEST_F(DiffOfDisplaysTest, LeavesOutWhatIsIgnored) {
  EXPECT_EQ(Ignoring({"Outputs[0]/Dimming/DimmingMode"}), sensors_ + level_);
  EXPECT_EQ(Ignoring({"Outputs[0]/Dimming"}), sensors_);
  EXPECT_EQ(Ignoring({"Outputs"}), sensors_);
  EXPECT_EQ(Ignoring({"Sensors[1]"}), "Sensors[0]/Celsius: 21.5 -> 22\n" + level_ + mode_);
  EXPECT_EQ(Ignoring({"Sensors/Celsius", "Outputs/Dimming/DimmingLevel"}), mode_);
  EXPECT_EQ(Ignoring({"Sensors", "Outputs"}), "");
  // Of these, none stands in the document or above what differs there.
  EXPECT_EQ(Ignoring({"Sensors[10]", "Outputs[0]/Dimming/ActualDimmingLevel", "Outputs[0]/Title"}),
            sensors_ + level_ + mode_);
}

TEST_F(DiffOfDisplaysTest, RefusesToIgnoreAPathThatNoDocumentHas) {
  for (const auto& [path, nearest] : std::vector<std::pair<const char*, std::string>>{
           {"Sensor", "Sensors"},
           {"Sensors/Kelvin", ""},
           {"Sensors[]", "Sensors"},
           {"Sensors[x]", "Sensors"},
           {"Sensors[1", "Sensors"},
           {"Sensors[03]/Celsius", "Sensors"},
           {"Sensors[00]", "Sensors"},
           {"Sensors[0]/Celsus", "Sensors[0]/Celsius"},
           {"/", ""},
           {"Sensors/", ""},
           {"GUID[0]", "GUID"},
           {"GUID/Sensors", ""},
           {"Outputs/Dimming[0]", "Outputs/Dimming"}}) {
    SCOPED_TRACE(path);
    const std::string near = nearest.empty() ? "" : "; the nearest is " + nearest;
    const ProgramResult result = Collector({"diff", before_, after_, "--ignore", path});
    EXPECT_EQ(result.ExitCode, kTrouble);
    EXPECT_EQ(result.Output, "");
    EXPECT_EQ(result.Errors, std::string("statuscollector: no document has the path ") + path +
                                 near + "; write it as diff does\n");
  }
}

TEST_F(DiffOfDisplaysTest, ReadsOneDocumentFromStandardInput) {
  const std::string program = HostProgram() + " diff ";
  const auto shell = [](const std::string& line) { return RunProgram({"/bin/sh", "-c", line}); };
  EXPECT_EQ(shell("cat " + before_ + " | " + program + "- " + after_).Output,
            sensors_ + level_ + mode_);
  EXPECT_EQ(shell(program + after_ + " - <" + after_).ExitCode, kAllWell);
  const ProgramResult both = shell(program + "- - <" + after_);
  EXPECT_EQ(both.ExitCode, kTrouble);
  EXPECT_EQ(both.Errors,
            "statuscollector: only one of two documents can come from standard input; give the "
            "other one as a file\n");
  const ProgramResult none = shell(program + "- " + after_ + " </dev/null");
  EXPECT_EQ(none.ExitCode, kTrouble);
  EXPECT_THAT(none.Errors, StartsWith("statuscollector: standard input: line 1: not a document: "));
  const ProgramResult endless = shell(program + after_ + " - </dev/zero");
  EXPECT_EQ(endless.ExitCode, kTrouble);
  EXPECT_THAT(endless.Errors, HasSubstr("standard input: not a document: larger than"));
  EXPECT_THAT(shell(program + after_ + " - <&-").Errors, HasSubstr("standard input: "));
  EXPECT_THAT(shell(program + after_ + " - </tmp").Errors,
              HasSubstr("standard input: Is a directory; give a file\n"));
}

TEST_F(DiffTest, NamesTheFileThatIsNoDocument) {
  Write("/tmp/wrong.xml", "<Status>\x1b[31m");
  const ProgramResult wrong = Collector({"diff", before_, "/tmp/wrong.xml"});
  EXPECT_EQ(wrong.ExitCode, kTrouble);
  EXPECT_THAT(wrong.Errors, StartsWith("statuscollector: /tmp/wrong.xml: line 1: not a document"));
  EXPECT_THAT(wrong.Errors, Not(HasSubstr("\x1b")));
  const ProgramResult missing = Collector({"diff", "/tmp/missing.xml", after_});
  EXPECT_EQ(missing.ExitCode, kTrouble);
  EXPECT_EQ(
      missing.Errors,
      "statuscollector: /tmp/missing.xml: the file cannot be read: No such file or directory; give "
      "a document that show --format xml wrote\n");
}

}  // namespace
