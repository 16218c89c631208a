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
  EXPECT_EQ(125, outcome.Status);
  EXPECT_THAT(outcome.Output, AllOf(HasSubstr("rows.tsv"), HasSubstr("line 1")));
}

TEST_F(ControllerBox, SaysHowToMakeRoomForAScenarioThatIsTooLarge) {
  Write("root/etc/large", std::string(9 << 20, 'x'));
  const std::string rest = " --scenario " + folder_.string() + " -- true";
  const Outcome outcome = Box("--root-size 8M" + rest);
  EXPECT_EQ(125, outcome.Status);
  EXPECT_EQ(
      "controller-box: write /etc/large: No space left on device; give the box more with "
      "--root-size\n",
      outcome.Output);
  EXPECT_EQ(0, Box("--root-size 16M" + rest).Status);
}

TEST_F(ControllerBox, ReportsAScenarioThatTheKernelRefuses) {
  Write("interfaces", "interface a-name-that-is-too-long\n");
  const Outcome outcome = Box("--scenario " + folder_.string() + " -- echo started");
  EXPECT_EQ(125, outcome.Status);
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
    EXPECT_EQ(125, outcome.Status) << outcome.Output;
    EXPECT_THAT(outcome.Output, HasSubstr("not a place for a file of a scenario"));
  }
  EXPECT_FALSE(fs::exists(bound / "new"));
  EXPECT_TRUE(fs::is_empty(bound / "folder"));
  std::stringstream text;
  text << std::ifstream(bound / "file").rdbuf();
  EXPECT_EQ("of the outside", text.str());
}

// A scenario once wrote to the machine's /tmp, and would have emptied its /dev.
TEST_F(ControllerBox, AScenarioWritesIntoNoFolderOfTheBoxThatIsBound) {
  const fs::path there = "/tmp/of-a-scenario";
  Write("scenario/root" + there.string(), "scenario");
  const std::string scenario = "--scenario " + (folder_ / "scenario").string();
  const Outcome outcome = Box(scenario + " --bind /tmp true");
  EXPECT_EQ(125, outcome.Status);
  EXPECT_THAT(outcome.Output, HasSubstr("/tmp: not a place for a file of a scenario"));
  EXPECT_FALSE(fs::exists(there));
  fs::remove(there);
  EXPECT_EQ(0, Box(scenario + " -- test -s " + there.string()).Status);
  const Outcome nodes = Box("--bind /dev true");
  EXPECT_EQ(125, nodes.Status);
  EXPECT_THAT(nodes.Output, HasSubstr("the root and /dev cannot be shared"));
}

TEST_F(ControllerBox, StandardInputReachesTheCommand) {
  EXPECT_EQ("hello\n",
            RunCommand("echo hello | " + test_support::ControllerBox() + " -- cat").Output);
}

TEST_F(ControllerBox, HelpNamesEveryOption) {
  const Outcome help = Box("--help");
  EXPECT_EQ(0, help.Status);
  EXPECT_THAT(help.Output,
              AllOf(HasSubstr("--bind"), HasSubstr("--scenario"), HasSubstr("--root-size"),
                    HasSubstr("--step"), HasSubstr("--realtime"), HasSubstr("COMMAND")));
  std::istringstream lines(help.Output);
  for (std::string line; std::getline(lines, line);) {
    EXPECT_GE(80U, line.size()) << line;
  }
}

TEST_F(ControllerBox, AnUnknownOptionIsAnError) {
  EXPECT_NE(0, Box("--no-such-option -- true").Status);
  EXPECT_NE(0, Box("").Status);
}

TEST_F(ControllerBox, AMistakeIsReportedWithTheNearestOption) {
  const Outcome outcome = Box("--scenari x -- true");
  EXPECT_EQ(125, outcome.Status);
  EXPECT_EQ(
      "controller-box: no such option: --scenari; the nearest is --scenario; see "
      "controller-box --help\n",
      outcome.Output);
  EXPECT_EQ("controller-box: COMMAND is missing; see controller-box --help\n",
            Box("--root-size 64M").Output);
  EXPECT_EQ("controller-box: --bind /no-such-path: there is no such path; make it first\n",
            Box("--bind /no-such-path true").Output);
}

TEST_F(ControllerBox, ACommandThatIsNotInTheBoxIsReportedWithWhatBringsIt) {
  Write("tool", "#!/bin/sh\necho started\n");
  fs::permissions(folder_ / "tool", fs::perms::owner_all);
  const std::string tool = (folder_ / "tool").string();
  const Outcome outcome = Box("-- " + tool);
  EXPECT_EQ(127, outcome.Status);
  EXPECT_EQ("controller-box: " + tool + " is not in the box; bring its folder with --bind " +
                folder_.string() + "\n",
            outcome.Output);
  EXPECT_EQ("started\n", Box("--bind " + folder_.string() + " -- " + tool).Output);
  EXPECT_EQ("controller-box: no-such-program is not on this machine; give a program that is\n",
            Box("-- no-such-program").Output);
}

TEST_F(ControllerBox, BeginsAfterTheGivenStep) {
  Write("root/etc/motto", "zero");
  Write("steps/01/root/etc/motto", "one");
  Write("steps/02/root/etc/motto", "two");
  const std::string box = "--scenario " + folder_.string();
  EXPECT_EQ("zero", Box(box + " -- cat /etc/motto").Output);
  EXPECT_EQ("one", Box(box + " --step 1 -- cat /etc/motto").Output);
  EXPECT_EQ("two", Box(box + " --step 2 -- cat /etc/motto").Output);
  const Outcome outcome = Box(box + " --step 3 -- cat /etc/motto");
  EXPECT_EQ(125, outcome.Status);
  EXPECT_EQ("controller-box: --step 3: " + folder_.string() + " has no such step; give 0 to 2\n",
            outcome.Output);
}

TEST_F(ControllerBox, MakesStepsAsTimePasses) {
  Write("root/etc/motto", "zero");
  Write("steps/01/root/etc/motto", "one");
  Write("steps/02/root/etc/motto", "two");
  const Outcome outcome =
      Box("--scenario " + folder_.string() +
          " --realtime 1 -- sh -c 'until [ $(cat /etc/motto) = two ]; do cat /etc/motto; echo; "
          "sleep 0.1; done; cat /etc/motto' | uniq");
  EXPECT_THAT(outcome.Output, AllOf(testing::StartsWith("zero\n"), testing::EndsWith("two\n")));
}

TEST_F(ControllerBox, ACaptureIsAScenario) {
  Write("capture/root/etc/motto", "of the capture");
  const std::string capture = (folder_ / "capture.tar.zst").string();
  ASSERT_EQ(
      0,
      RunCommand("cd " + folder_.string() + " && tar --zstd -cf " + capture + " capture").Status);
  EXPECT_EQ("of the capture", Box("--scenario " + capture + " -- cat /etc/motto").Output);
  ASSERT_EQ(0, RunCommand("truncate -s -20 " + capture).Status);
  const Outcome outcome = Box("--scenario " + capture + " -- echo started");
  EXPECT_EQ(125, outcome.Status);
  EXPECT_THAT(outcome.Output,
              testing::StartsWith("controller-box: " + capture + ": not a capture: "));
  EXPECT_EQ(125, Box("--scenario " + folder_.string() + "/missing -- true").Status);
}

TEST_F(ControllerBox, WhatIsMissingForDeviceNodesIsReportedWithWhatToDo) {
  Write("devices/travex", "open 13\n");
  const Outcome outcome = RunCommand("unshare --mount sh -c 'mount -t tmpfs none /dev && " +
                                     test_support::ControllerBox() + " --scenario " +
                                     folder_.string() + " -- echo started'");
  EXPECT_EQ(125, outcome.Status);
  EXPECT_EQ(
      "controller-box: there is no /dev/fuse, which device nodes and files that fail need; load "
      "its driver with modprobe fuse, or start the container with --device /dev/fuse\n",
      outcome.Output);
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
