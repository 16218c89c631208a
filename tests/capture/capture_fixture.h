// `statuscollector capture` on a controller in a box.
#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "sandbox/scenario.h"
#include "tests/capture/unpack.h"
#include "tests/support/run_program.h"

namespace captured {

inline constexpr const char* kFile = "/captures/one.tar.zst";

sandbox::Scenario Load(const std::string& name);

// Runs `statuscollector capture ARGUMENTS`.
test_support::ProgramResult Capture(const std::vector<std::string>& arguments);

// The capture in a file.
Entries Read(const std::string& file = kFile);

// Captures what the box is; the test fails where the program does.
Entries CaptureNow(const std::vector<std::string>& options = {});

nlohmann::json Description(const Entries& capture);

// What `show --format xml` gives.
std::string Show();

// Makes the box the controller that was captured, and nothing else, and gives what Show() gives
// then.
std::string ShowAgain(const Entries& capture);

// A document without the values that a replay does not give.
std::string Comparable(std::string document);

// A box with device nodes, and the folder of kFile.
class CaptureTest : public testing::Test {
 protected:
  void SetUp() override;
};

}  // namespace captured
