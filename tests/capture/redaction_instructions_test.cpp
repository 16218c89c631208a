// What it costs to replace much, in instructions: their counts are the same however busy the
// machine is.
#include <gtest/gtest.h>

#include <regex>
#include <stdexcept>
#include <string>

#include "tests/support/run_program.h"

namespace {

double Counted(const std::string& what, int count) {
  const auto ran = test_support::RunProgram(
      {"valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", "--collect-atstart=no",
       "--toggle-collect=main", REDACT_MUCH, what, std::to_string(count)});
  static const std::regex kCollected(R"(Collected : (\d+))");
  std::smatch collected;
  if (ran.ExitCode != 0 || !std::regex_search(ran.Errors, collected, kCollected)) {
    throw std::runtime_error("valgrind: " + ran.Errors);
  }
  return std::stod(collected[1]);
}

// Three times as much for twice as many would be half of the way to its square.
void ExpectTwiceAsMuchForTwiceAsMany(const std::string& what, int count) {
  const double times = Counted(what, 2 * count) / Counted(what, count);
  testing::Test::RecordProperty("times", std::to_string(times));
  EXPECT_LT(times, 2.5);
}

TEST(Redaction, CostsTwiceAsMuchForTwiceAsManyAddresses) {
  ExpectTwiceAsMuchForTwiceAsMany("addresses", 200);
}

TEST(Redaction, CostsTwiceAsMuchForTwiceAsManyDigitsAfterPairs) {
  ExpectTwiceAsMuchForTwiceAsMany("pairs", 2000);
}

}  // namespace
