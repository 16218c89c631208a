#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "tests/sandbox/outside.h"
#include "tests/support/paths.h"

namespace sandbox {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;

Outcome Box(const std::string& arguments) {
  return RunCommand(test_support::ControllerBox() + " " + arguments);
}

class ControllerBox : public OutsideTest {
 protected:
  void SetUp() override {
    OutsideTest::SetUp();
    std::string pattern = fs::temp_directory_path() / "sandbox-XXXXXX";
    folder_ = mkdtemp(pattern.data());
  }
  void TearDown() override {
    if (!folder_.empty()) {
      fs::remove_all(folder_);
    }
  }

  void Write(const std::string& name, const std::string& text) const {
    fs::create_directories((folder_ / name).parent_path());
    std::ofstream(folder_ / name) << text;
  }

  fs::path folder_;
};

TEST_F(ControllerBox, GivesTheExitStatusOfTheCommand) {
  EXPECT_EQ(0, Box("true").Status);
  EXPECT_EQ(7, Box("-- sh -c 'exit 7'").Status);
  EXPECT_EQ(128 + 11, Box("-- sh -c 'kill -SEGV $$'").Status);
}

TEST_F(ControllerBox, ReportsACommandThatCannotBeRun) {
  const Outcome missing = Box("-- no-such-program");
  EXPECT_EQ(127, missing.Status);
  EXPECT_THAT(missing.Output, HasSubstr("no-such-program"));
  EXPECT_EQ(126, Box("-- /usr").Status);
}

TEST_F(ControllerBox, RunsTheCommandOnTheScenario) {
  Write("root/etc/motto", "of the scenario");
  Write("rows.tsv", "GUID\tabc\n");
  const Outcome outcome =
      Box("--scenario " + folder_.string() + " -- sh -c 'cat /etc/motto; ls /dev/shm'");
  EXPECT_EQ("of the scenariostatus.db\n", outcome.Output);
}

TEST_F(ControllerBox, ReportsAMistakeOfTheScenario) {
  Write("rows.tsv", "no tab\n");
  const Outcome outcome = Box("--scenario " + folder_.string() + " -- true");
  EXPECT_EQ(126, outcome.Status);
  EXPECT_THAT(outcome.Output, AllOf(HasSubstr("rows.tsv"), HasSubstr("line 1")));
}

TEST_F(ControllerBox, ReportsAScenarioThatTheKernelRefuses) {
  Write("interfaces", "interface a-name-that-is-too-long\n");
  const Outcome outcome = Box("--scenario " + folder_.string() + " -- echo started");
  EXPECT_EQ(126, outcome.Status);
  EXPECT_THAT(outcome.Output, HasSubstr("a-name-that-is-too-long"));
  EXPECT_THAT(outcome.Output, testing::Not(HasSubstr("started")));
}

TEST_F(ControllerBox, ABoundFolderTakesResultsOut) {
  EXPECT_EQ(
      0, Box("--bind " + folder_.string() + " -- touch " + (folder_ / "result").string()).Status);
  EXPECT_TRUE(fs::exists(folder_ / "result"));
}

// A scenario used to be able to write into a folder that is bound.
TEST_F(ControllerBox, OnlyTheCommandWritesIntoABoundFolder) {
  const fs::path bound = folder_ / "bound";
  fs::create_directories(bound / "folder");
  std::ofstream(bound / "file") << "of the outside";
  const std::string box =
      "--bind " + bound.string() + " --scenario " + folder_.string() + "/scenario -- echo started";
  for (const std::string name : {"new", "file", "folder/new"}) {
    fs::remove_all(folder_ / "scenario");
    Write("scenario/root" + (bound / name).string(), "of the scenario");
    const Outcome outcome = Box(box);
    EXPECT_EQ(126, outcome.Status) << outcome.Output;
    EXPECT_THAT(outcome.Output, HasSubstr("not a place for a file of a scenario"));
  }
  EXPECT_FALSE(fs::exists(bound / "new"));
  EXPECT_TRUE(fs::is_empty(bound / "folder"));
  std::stringstream text;
  text << std::ifstream(bound / "file").rdbuf();
  EXPECT_EQ("of the outside", text.str());
}

TEST_F(ControllerBox, StandardInputReachesTheCommand) {
  EXPECT_EQ("hello\n",
            RunCommand("echo hello | " + test_support::ControllerBox() + " -- cat").Output);
}

TEST_F(ControllerBox, HelpNamesEveryOption) {
  const Outcome help = Box("--help");
  EXPECT_EQ(0, help.Status);
  EXPECT_THAT(help.Output, AllOf(HasSubstr("--bind"), HasSubstr("--scenario"),
                                 HasSubstr("--root-size"), HasSubstr("COMMAND")));
  std::istringstream lines(help.Output);
  for (std::string line; std::getline(lines, line);) {
    EXPECT_GE(80U, line.size()) << line;
  }
}

TEST_F(ControllerBox, AnUnknownOptionIsAnError) {
  EXPECT_NE(0, Box("--no-such-option -- true").Status);
  EXPECT_NE(0, Box("").Status);
}

TEST_F(ControllerBox, ATestProgramRunsInTheGivenBox) {
  Write("root/etc/of-the-scenario", "");
  const Outcome outcome =
      Box("--scenario " + folder_.string() + " -- " + test_support::SandboxTests() +
          " --gtest_filter=Root.TheProgramKnowsThatItIsInside");
  EXPECT_EQ(0, outcome.Status) << outcome.Output;
}

TEST_F(ControllerBox, ValgrindRunsInside) {
  if (RunCommand("valgrind --version").Status != 0) {
    GTEST_SKIP() << "there is no valgrind";
  }
  const Outcome outcome = Box("-- valgrind -q --error-exitcode=9 --leak-check=full /bin/true");
  EXPECT_EQ(0, outcome.Status) << outcome.Output;
  EXPECT_EQ("", outcome.Output);
}

}  // namespace
}  // namespace sandbox
