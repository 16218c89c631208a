// Whole documents of whole controllers, as the command-line host writes them.
#include "tests/support/golden.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <string>

#include "model/xml.h"
#include "sandbox/enter.h"
#include "sandbox/scenario.h"
#include "sandbox/testing.h"
#include "tests/support/comma_locale.h"
#include "tests/support/paths.h"
#include "tests/support/run_program.h"
#include "tests/support/tree_of_xml.h"
#include "tests/support/validate.h"

namespace {

// What differs from run to run: the clock, and what the sandbox itself keeps on its root file
// system.
std::string Steady(const std::string& document) {
  static const std::regex kVolatile("(LocalTime|Uptime|StorageFree)=\"[^\"]*\"");
  return std::regex_replace(document, kVolatile, "$1=\"*\"");
}

struct Case {
  const char* Scenario;
  int Cycles;
};

class Scenarios : public testing::TestWithParam<Case> {};

TEST_P(Scenarios, GiveTheGoldenDocument) {
  SANDBOX_NEEDS_DEVICES();
  const auto& [name, cycles] = GetParam();
  sandbox::Scenario::Load(sandbox::SourcePath("scenarios") / name).Apply();
  const auto run = test_support::RunProgram(
      {test_support::HostProgram(), "show", "--format", "xml", "--cycles", std::to_string(cycles)});
  EXPECT_EQ(run.ExitCode, 0) << run.Errors;
  EXPECT_TRUE(test_support::IsValidDocument(run.Output));
  EXPECT_TRUE(test_support::MatchesGolden(
      Steady(run.Output),
      "tests/golden/" + std::string(name) + "-" + std::to_string(cycles) + ".xml"));
  QtSts::XmlError error;
  const auto read = QtSts::ReadDocument(run.Output, &error);
  ASSERT_NE(read, nullptr) << error.Text();
  EXPECT_EQ(test_support::TreeDiffersFromXml(*read, run.Output), "");
}

// The second and third cycle show what the scratch state carries over.
INSTANTIATE_TEST_SUITE_P(Every, Scenarios,
                         testing::Values(Case{"bare", 1}, Case{"bare", 3}, Case{"demo", 1},
                                         Case{"demo", 3}, Case{"faults", 1}, Case{"faults", 3},
                                         Case{"minimal", 1}, Case{"minimal", 3},
                                         Case{"mistakes", 1}, Case{"mistakes", 3}),
                         [](const auto& param) {
                           return std::string(param.param.Scenario) + "After" +
                                  std::to_string(param.param.Cycles);
                         });

TEST(ScenarioDocuments, AreTheSameUnderALocaleWithDecimalComma) {
  SANDBOX_NEEDS_DEVICES();
  using test_support::CommaLocale;
  sandbox::Scenario::Load(sandbox::SourcePath("scenarios/demo")).Apply();
  const auto run = test_support::RunProgram(
      {test_support::HostProgram(), "show", "--format", "xml"},
      {"LOCPATH=" + CommaLocale::Path(), std::string("LC_ALL=") + CommaLocale::kName});
  EXPECT_EQ(run.ExitCode, 0) << run.Errors;
  EXPECT_TRUE(test_support::MatchesGolden(Steady(run.Output), "tests/golden/demo-1.xml"));
}

TEST(ScenarioDocuments, AreGoldenForEveryFolder) {
  std::size_t folders = 0;
  for (const auto& entry : std::filesystem::directory_iterator(sandbox::SourcePath("scenarios"))) {
    folders += entry.is_directory() ? 1 : 0;
  }
  EXPECT_EQ(folders, 5U) << "a scenario without a golden document";
}

TEST(ScenarioDocuments, OfAControllerWithoutADatabaseComeWithAReport) {
  sandbox::Scenario::Load(sandbox::SourcePath("scenarios/bare")).NoDatabase().Apply();
  const auto run =
      test_support::RunProgram({test_support::HostProgram(), "show", "--format", "xml"});
  EXPECT_EQ(run.ExitCode, 1);
  EXPECT_EQ(run.Errors,
            "statuscollector: /dev/shm/status.db does not exist; a host or `statuscollector init` "
            "creates it\n");
  EXPECT_TRUE(test_support::IsValidDocument(run.Output));
}

}  // namespace
