// The program itself, on controllers in a box.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "sandbox/scenario.h"
#include "tests/support/paths.h"
#include "tests/support/run_program.h"

inline constexpr int kAllWell = 0;
inline constexpr int kFailed = 1;
inline constexpr int kTrouble = 2;

inline test_support::ProgramResult Collector(const std::vector<std::string>& arguments,
                                             const std::vector<std::string>& environment = {}) {
  std::vector<std::string> command = {test_support::HostProgram()};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return test_support::RunProgram(command, environment);
}

// The same behind a shell that changes streams or limits first.
inline test_support::ProgramResult Shell(const std::string& line) {
  return test_support::RunProgram({"/bin/sh", "-c", line},
                                  {"COLLECTOR=" + test_support::HostProgram()});
}

inline std::string Read(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

inline void Write(const std::string& path, const std::string& text) { std::ofstream(path) << text; }

// The first line of the text; which word it is, the findings say.
inline testing::Matcher<const std::string&> StartsAsText() {
  return testing::AnyOf(testing::StartsWith("critical: "), testing::StartsWith("unknown: "),
                        testing::StartsWith("warning: "), testing::StartsWith("all well: "));
}

// A controller with some rows.
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
