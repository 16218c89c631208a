#include <gmock/gmock.h>
#include <unistd.h>

#include <string>
#include <string_view>

#include "tests/sandbox/outside.h"
#include "tests/support/paths.h"

namespace sandbox {
namespace {

using testing::AllOf;
using testing::HasSubstr;

// Runs a command where no further namespaces may be made: in a user namespace with a limit of none.
Outcome RunRefused(const std::string& command) {
  return RunCommand(
      "unshare --user --map-root-user sh -c 'echo 0 > /proc/sys/user/max_mnt_namespaces; " +
      command + "'");
}

std::string OneTest(const std::string& environment) {
  return environment + " " + test_support::SandboxTests() +
         " --gtest_filter=Root.TheProgramKnowsThatItIsInside";
}

// Tests that need user namespaces; some systems keep those from everybody.
class UserNamespaceTest : public OutsideTest {
 protected:
  void SetUp() override {
    OutsideTest::SetUp();
    const Outcome outcome = RunCommand("unshare --user --map-root-user true");
    if (!IsSkipped() && outcome.Status != 0) {
      Refuse("user namespaces are refused: " + outcome.Output);
    }
  }
};

using RefusedTest = UserNamespaceTest;

TEST_F(RefusedTest, ATestProgramIsSkippedWithTheReason) {
  const Outcome outcome = RunRefused(OneTest("CI="));
  EXPECT_EQ(77, outcome.Status);
  EXPECT_THAT(outcome.Output, AllOf(HasSubstr("SKIPPED"), HasSubstr("new namespaces: ")));
}

TEST_F(RefusedTest, OnTheGuardingMachineThatIsAFailure) {
  const Outcome outcome = RunRefused(OneTest("CI=true"));
  EXPECT_EQ(1, outcome.Status);
  EXPECT_THAT(outcome.Output, AllOf(HasSubstr("FAILED"), HasSubstr("new namespaces: ")));
}

TEST_F(RefusedTest, ListingTheTestsNeedsNoSandbox) {
  const Outcome outcome = RunRefused(test_support::SandboxTests() + " --gtest_list_tests");
  EXPECT_EQ(0, outcome.Status);
  EXPECT_THAT(outcome.Output, HasSubstr("TheProgramKnowsThatItIsInside"));
}

TEST_F(RefusedTest, ControllerBoxReportsTheReason) {
  const Outcome outcome = RunRefused(test_support::ControllerBox() + " -- true");
  EXPECT_EQ(125, outcome.Status);
  EXPECT_THAT(outcome.Output, AllOf(HasSubstr("controller-box: new namespaces: "),
                                    HasSubstr("sysctl -w user.max_mnt_namespaces=")));
}

// An ordinary user becomes root of a user namespace. Whether device nodes can be had there is a
// matter of the machine: /dev/fuse must be open to all.
class OrdinaryUser : public UserNamespaceTest {
 protected:
  static Outcome Run(const std::string& command) {
    const std::string drop =
        geteuid() == 0 ? "setpriv --reuid=65534 --regid=65534 --clear-groups " : "";
    return RunCommand(drop + command);
  }
};

TEST_F(OrdinaryUser, EntersASandboxToo) {
  const Outcome outcome = Run(test_support::ControllerBox() + " -- id -u");
  EXPECT_EQ(0, outcome.Status) << outcome.Output;
  EXPECT_EQ("0\n", outcome.Output);
}

// ctest takes a program that prints this mark for skipped, even when it fails.
std::string WithoutSkipMarks(std::string output) {
  constexpr std::string_view kMark = "[  SKIPPED ]";
  for (std::size_t at = 0; (at = output.find(kMark, at)) != std::string::npos;) {
    output.replace(at, kMark.size(), "skipped:");
  }
  return output;
}

TEST_F(OrdinaryUser, PassesTheTestsOfTheInside) {
  const Outcome outcome = Run("env CI= " + test_support::SandboxTests() + " --gtest_brief=1");
  EXPECT_EQ(0, outcome.Status) << WithoutSkipMarks(outcome.Output);
}

}  // namespace
}  // namespace sandbox
