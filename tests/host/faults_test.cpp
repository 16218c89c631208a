// Controllers with one fault each: who reads the first 40 lines of `show` can name it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <ostream>
#include <sstream>
#include <string>

#include "sandbox/enter.h"
#include "sandbox/scenario.h"
#include "sandbox/testing.h"
#include "tests/host/fault_cases.h"
#include "tests/support/paths.h"
#include "tests/support/run_program.h"

void PrintTo(const Fault& fault, std::ostream* stream) { *stream << fault.Name; }

namespace {

using sandbox::Scenario;
using testing::HasSubstr;
using testing::StartsWith;

class OneFault : public testing::TestWithParam<Fault> {
 protected:
  // A later scenario would keep a file that is no database, and its mode.
  void TearDown() override { std::filesystem::remove(kDatabase); }
};

TEST_P(OneFault, IsNamedInTheFirstFortyLines) {
  SANDBOX_NEEDS_DEVICES();
  Scenario demo = Scenario::Load(sandbox::SourcePath("scenarios/demo"));
  GetParam().Change(demo);
  demo.Apply();
  if (GetParam().Afterwards != nullptr) {
    GetParam().Afterwards();
  }
  const std::string output = test_support::RunProgram({test_support::HostProgram(), "show"}).Output;
  std::istringstream lines(output);
  std::string first_lines;
  std::string line;
  for (int count = 0; count < 40 && std::getline(lines, line); ++count) {
    first_lines += line + "\n";
  }
  EXPECT_THAT(first_lines, StartsWith(GetParam().Beginning));
  // A text that is wrapped stands on several lines.
  std::string words = first_lines;
  for (const std::string indent : {"\n            ", "\n     "}) {
    for (std::size_t at = words.find(indent); at != std::string::npos; at = words.find(indent)) {
      words.replace(at, indent.size(), " ");
    }
  }
  for (const std::string& wanted : GetParam().Words) {
    EXPECT_THAT(words, HasSubstr(wanted));
  }
}

std::string TestName(const testing::TestParamInfo<Fault>& info) {
  std::string name = info.param.Name;
  for (char& c : name) {
    c = c == ' ' ? '_' : c;
  }
  return name;
}

INSTANTIATE_TEST_SUITE_P(Controllers, OneFault, testing::ValuesIn(FaultsOfController()), TestName);
INSTANTIATE_TEST_SUITE_P(Rows, OneFault, testing::ValuesIn(FaultsOfRows()), TestName);

// The demo itself has none.
TEST(Demo, HasNoFinding) {
  SANDBOX_NEEDS_DEVICES();
  Scenario::Load(sandbox::SourcePath("scenarios/demo")).Apply();
  EXPECT_THAT(test_support::RunProgram({test_support::HostProgram(), "show"}).Output,
              StartsWith("all well: no findings in "));
}

}  // namespace
