// What it costs to explain rows, in instructions beside plain cycles of the same rows: their counts
// are the same however busy the machine is.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <iterator>
#include <numeric>
#include <ostream>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "sandbox/rows.h"
#include "sandbox/scenario.h"
#include "tests/support/run_program.h"

namespace {

constexpr int kFew = 100;
constexpr int kMany = 1000;

std::string Key(const char* form, int number) {
  char key[64];
  std::snprintf(key, sizeof key, form, number);
  return key;
}

// Each adds the rows of one element.
void AddSensor(int number, sandbox::Rows* rows) {
  for (const auto& [attribute, value] :
       {std::pair("Address", "17"), std::pair("Bus", "0"), std::pair("Celsius", "31.5"),
        std::pair("Connected", "true"), std::pair("Location", "Local_CAN"),
        std::pair("NumAttribute", "9"), std::pair("Rev", "2"), std::pair("SyncLossCounter", "0"),
        std::pair("Type", "CANTemp")}) {
    (*rows)[Key("Sensor_%04d_", number) + attribute] = value;
  }
}

void AddType(int number, sandbox::Rows* rows) {
  (*rows)[Key("Sensor_%04d_Type", number)] = "CANTemp";
}

void AddTypeBehindRouter(int number, sandbox::Rows* rows) {
  (*rows)["Sensor_0000_Location"] = "TXR_CAN";
  AddType(number, rows);
}

void AddUnpaddedType(int number, sandbox::Rows* rows) {
  (*rows)[Key("Sensor_%d_Type", number)] = "CANTemp";
}

void AddBoard(int number, sandbox::Rows* rows) {
  for (const char* const point : {"Input_00_", "Input_01_"}) {
    const std::string key = Key("Sensor_%04d_", number) + point;
    (*rows)[key + "Index"] = "1";
    (*rows)[key + "Label"] = "door";
    (*rows)[key + "State"] = "1";
    (*rows)[key + "Type"] = "3";
  }
  (*rows)[Key("Sensor_%04d_Type", number)] = "CANDcio2in1out";
}

void AddVoltage(int number, sandbox::Rows* rows) {
  (*rows)[Key("Sensor_0000_PsrbVin_%04d_Volts", number)] = "230";
}

void AddMistakes(int number, sandbox::Rows* rows) {
  (*rows)[Key("Sensor_%04d_Celsius", number)] = "20 C";
  (*rows)[Key("Sensor_%04d_Humiditty", number)] = "40";
  (*rows)[Key("Sensor_%04d_Type", number)] = "CANTempSensor";
  (*rows)[Key("Unknown%04d", number)] = "1";
}

struct Mix {
  const char* Name;
  void (*Add)(int number, sandbox::Rows* rows);
  int RowsOfElement = 1;
};
void PrintTo(const Mix& mix, std::ostream* out) { *out << mix.Name; }

void SetRows(const Mix& mix, int elements) {
  sandbox::Rows rows;
  for (int number = 0; number < elements; ++number) {
    mix.Add(number, &rows);
  }
  sandbox::Scenario().Database().Apply();
  sandbox::SetRows(rows);
}

// Of two cycles over the rows that are there, within `function`: each number that valgrind counts.
std::vector<double> Counted(const char* how, const char* function,
                            const std::vector<std::string>& options = {}) {
  std::vector<std::string> command = {"valgrind", "--tool=callgrind",
                                      "--callgrind-out-file=/dev/null", "--collect-atstart=no",
                                      std::string("--toggle-collect=") + function};
  command.insert(command.end(), options.begin(), options.end());
  command.insert(command.end(), {RUN_CYCLES, how, "2"});
  const auto ran = test_support::RunProgram(command);
  static const std::regex kCollected(R"(Collected : ([\d ]+))");
  std::smatch collected;
  if (ran.ExitCode != 0 || !std::regex_search(ran.Errors, collected, kCollected)) {
    throw std::runtime_error("valgrind: " + ran.Errors);
  }
  std::istringstream numbers(collected[1]);
  return {std::istream_iterator<double>(numbers), {}};
}

constexpr const char* kPlain = "CStatusInterface::QueryDatabase*";
constexpr const char* kExplained = "insight::Recorder::RunCycle*";

double Plain() { return Counted("plain", kPlain).front(); }
double Explained() { return Counted("explained", kExplained).front(); }

// The same with what waiting for memory costs: ten instructions for what is not in the first cache,
// a hundred for what is not in the last one either.
double WithMemory(const char* how, const char* function, const std::string& last_cache) {
  const std::vector<double> counted =
      Counted(how, function,
              {"--cache-sim=yes", "--I1=32768,8,64", "--D1=32768,8,64", "--LL=" + last_cache});
  const auto sum = [&counted](std::size_t from) {  // of instructions, reads and writes
    return std::accumulate(&counted.at(from), &counted.at(from + 2) + 1, 0.0);
  };
  return counted.front() + 10 * sum(3) + 100 * sum(6);
}

class RowsOf : public testing::TestWithParam<Mix> {};

TEST_P(RowsOf, AreExplainedInTwentyTimesTheirCycle) {
  SetRows(GetParam(), kMany / 2);
  const double times = Explained() / Plain();
  RecordProperty("times", std::to_string(times));
  EXPECT_LE(times, 20);
}

TEST_P(RowsOf, CostNoMoreEachTheMoreThereAre) {
  SetRows(GetParam(), kFew);
  const double few = Explained();
  SetRows(GetParam(), kMany);
  EXPECT_LE(Explained() / kMany, few / kFew);
}

// 100,000 rows fill memory that no cache holds: 5,000 do so beside a cache of 128 KiB.
class MoreRowsThanACacheHoldsOf : public RowsOf {};

TEST_P(MoreRowsThanACacheHoldsOf, AreExplainedInTwentyTimesTheirCycle) {
  constexpr int kRows = 5000;
  SetRows(GetParam(), kRows / GetParam().RowsOfElement);
  const std::string cache = "131072,16,64";
  const double times =
      WithMemory("explained", kExplained, cache) / WithMemory("plain", kPlain, cache);
  RecordProperty("times", std::to_string(times));
  EXPECT_LE(times, 20);
}

std::string NameOf(const testing::TestParamInfo<Mix>& mix) { return mix.param.Name; }

constexpr Mix kUnpaddedTypes = {"UnpaddedTypes", &AddUnpaddedType};
constexpr Mix kBoards = {"Boards", &AddBoard, 9};

INSTANTIATE_TEST_SUITE_P(Mixes, RowsOf,
                         testing::Values(Mix{"Sensors", &AddSensor}, Mix{"Types", &AddType},
                                         Mix{"TypesBehindRouter", &AddTypeBehindRouter},
                                         kUnpaddedTypes, kBoards,
                                         Mix{"WaitingVoltages", &AddVoltage},
                                         Mix{"Mistakes", &AddMistakes}),
                         &NameOf);
INSTANTIATE_TEST_SUITE_P(Mixes, MoreRowsThanACacheHoldsOf, testing::Values(kUnpaddedTypes, kBoards),
                         &NameOf);

}  // namespace
