// What it costs to explain rows, in instructions beside plain cycles of the same rows: their counts
// are the same however busy the machine is.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <ostream>
#include <regex>
#include <stdexcept>
#include <string>
#include <utility>

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

// Of two cycles over the rows that are there, within `function`.
double Instructions(const char* how, const char* function) {
  const auto ran = test_support::RunProgram(
      {"valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", "--collect-atstart=no",
       std::string("--toggle-collect=") + function, RUN_CYCLES, how, "2"});
  static const std::regex kCollected(R"(Collected : (\d+))");
  std::smatch collected;
  if (ran.ExitCode != 0 || !std::regex_search(ran.Errors, collected, kCollected)) {
    throw std::runtime_error("valgrind: " + ran.Errors);
  }
  return std::stod(collected[1]);
}

double Plain() { return Instructions("plain", "CStatusInterface::QueryDatabase*"); }
double Explained() { return Instructions("explained", "insight::Recorder::RunCycle*"); }

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

INSTANTIATE_TEST_SUITE_P(Mixes, RowsOf,
                         testing::Values(Mix{"Sensors", &AddSensor}, Mix{"Types", &AddType},
                                         Mix{"TypesBehindRouter", &AddTypeBehindRouter},
                                         Mix{"UnpaddedTypes", &AddUnpaddedType},
                                         Mix{"Boards", &AddBoard},
                                         Mix{"WaitingVoltages", &AddVoltage},
                                         Mix{"Mistakes", &AddMistakes}),
                         [](const auto& mix) { return std::string(mix.param.Name); });

}  // namespace
