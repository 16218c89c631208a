// Whom init gives the database and what SQLite keeps beside it.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "collector/status_interface.h"
#include "sandbox/enter.h"
#include "sandbox/scenario.h"
#include "sandbox/testing.h"
#include "tests/support/paths.h"
#include "tests/support/run_program.h"

namespace {

using test_support::HostProgram;
using test_support::ProgramResult;
using test_support::RunProgram;
using testing::HasSubstr;

constexpr const char* kDatabase = "/dev/shm/status.db";

class InitAccess : public testing::Test {
 protected:
  void SetUp() override {
    scenario_.NoDatabase()
        .File("/etc/passwd", "root:x:0:0::/:/bin/sh\nwriter:x:1001:1044::/:/bin/sh\n")
        .File("/etc/group", "root:x:0:\nstatus:x:1044:\n")
        .Apply();
    if (As("1001", "1044", {"schema"}).ExitCode != 0) {
      GTEST_SKIP() << "no other users";
    }
  }
  void TearDown() override { scenario_.NoDatabase().Apply(); }

  static ProgramResult Init(const std::vector<std::string>& options = {}) {
    std::vector<std::string> command = {HostProgram(), "init"};
    command.insert(command.end(), options.begin(), options.end());
    return RunProgram(command);
  }

  static ProgramResult As(const std::string& user, const std::string& group,
                          const std::vector<std::string>& arguments) {
    std::vector<std::string> command = {"/usr/bin/setpriv", "--reuid",    user, "--regid", group,
                                        "--clear-groups",   HostProgram()};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return RunProgram(command);
  }

  sandbox::Scenario scenario_;
};

// "owner:group mode", or "missing".
std::string Owner(const std::string& suffix) {
  struct stat found = {};
  if (lstat((kDatabase + suffix).c_str(), &found) != 0) {
    return "missing";
  }
  char text[64];
  std::snprintf(text, sizeof text, "%u:%u %o", found.st_uid, found.st_gid, found.st_mode & 07777);
  return text;
}

std::vector<std::string> Owners() {
  return {Owner(""), Owner("-wal"), Owner("-shm"), Owner("-journal")};
}

// Only 0644 used to be had, so that a writer of another user was refused.
TEST_F(InitAccess, AWriterOfTheGroupThatIsNamedMayWrite) {
  EXPECT_EQ(Init().ExitCode, 0);
  EXPECT_EQ(As("1001", "1044", {"init"}).ExitCode, 1) << "the group may write without being named";
  scenario_.NoDatabase().Apply();
  const ProgramResult made = Init({"--mode", "0660", "--group", "status"});
  EXPECT_EQ(made.ExitCode, 0) << made.Errors;
  EXPECT_THAT(Owners(), testing::ElementsAre("0:1044 660", "0:1044 660", "0:1044 660", "missing"));
  const ProgramResult writer = As("1001", "1044", {"init"});
  EXPECT_EQ(writer.ExitCode, 0) << writer.Errors;
  EXPECT_EQ(As("1002", "1002", {"init"}).ExitCode, 1) << "a stranger may write";
  EXPECT_EQ(As("1002", "1002", {"show"}).ExitCode, 1) << "a stranger may read";
}

TEST_F(InitAccess, AReaderOfTheGroupMayReadAndNobodyElse) {
  EXPECT_EQ(Init({"--mode=640", "--group=1044"}).ExitCode, 0);
  EXPECT_THAT(Owners(),
              testing::ElementsAre("0:1044 640", "0:1044 640", "0:1044 640", "0:1044 640"));
  EXPECT_EQ(As("1001", "1044", {"show"}).ExitCode, 0);
  EXPECT_EQ(As("1001", "1044", {"init"}).ExitCode, 1);
  EXPECT_EQ(As("1002", "1002", {"show"}).ExitCode, 1);
}

TEST_F(InitAccess, WhatIsThereFollowsWhileAHostHasItOpen) {
  scenario_.Row("GUID", "kept").Apply();
  EXPECT_EQ(Init().ExitCode, 0);
  CStatusInterface host;
  host.InitDatabase(true);
  EXPECT_EQ(host.QueryDatabase(), 0);
  for (const auto& [mode, expected, journal] :
       {std::tuple("0660", "0:1044 660", "missing"), std::tuple("0600", "0:1044 600", "0:1044 600"),
        std::tuple("0666", "0:1044 666", "missing"),
        std::tuple("0644", "0:1044 644", "0:1044 644")}) {
    SCOPED_TRACE(mode);
    EXPECT_EQ(Init({"--mode", mode, "--group", "status"}).ExitCode, 0);
    EXPECT_THAT(std::vector({Owner(""), Owner("-wal"), Owner("-shm")}), testing::Each(expected));
    EXPECT_THAT(Owner("-journal"), testing::AnyOf(journal, "missing"));
    EXPECT_EQ(host.QueryDatabase(), 0);
    EXPECT_EQ(host.m_Status.GUID, "kept");
  }
  host.CloseDatabase();
}

TEST_F(InitAccess, WithoutOptionsGroupAndModeStay) {
  EXPECT_EQ(Init({"--mode", "0640", "--group", "status"}).ExitCode, 0);
  EXPECT_EQ(Init().ExitCode, 0);
  EXPECT_EQ(Owner(""), "0:1044 640");
  EXPECT_EQ(Init({"--mode", "0600"}).ExitCode, 0);
  EXPECT_EQ(Owner(""), "0:1044 600");
  EXPECT_EQ(Init({"--group", "root"}).ExitCode, 0);
  EXPECT_EQ(Owner(""), "0:0 600");
}

TEST_F(InitAccess, AFileOfAnotherUserBesideItIsLeftAlone) {
  EXPECT_EQ(Init().ExitCode, 0);
  const std::string foreign = std::string(kDatabase) + "-journal";
  std::filesystem::remove(foreign);
  std::filesystem::create_symlink("/tmp/secret", foreign);
  ASSERT_EQ(close(creat("/tmp/secret", 0600)), 0);
  Init({"--mode", "0666"});
  struct stat secret = {};
  ASSERT_EQ(stat("/tmp/secret", &secret), 0);
  EXPECT_EQ(secret.st_mode & 0777U, 0600U);
}

TEST_F(InitAccess, OnlyItsOwnerAndRootChangeIt) {
  EXPECT_EQ(Init({"--mode", "0666"}).ExitCode, 0);
  const ProgramResult result = As("1001", "1044", {"init", "--mode", "0600"});
  EXPECT_EQ(result.ExitCode, 2);
  EXPECT_THAT(result.Errors, HasSubstr("statuscollector: /dev/shm/status.db keeps its group and "
                                       "mode; run the command as root\n"));
  EXPECT_EQ(Owner(""), "0:0 666");
}

TEST_F(InitAccess, WhatIsNoModeOrNoGroupMakesNothing) {
  for (const char* mode :
       {"0777", "4660", "0440", "0620", "0604", "0646", "0888", "rw", "0x180", "-660", "00660x"}) {
    SCOPED_TRACE(mode);
    const ProgramResult result = Init({std::string("--mode=") + mode});
    EXPECT_EQ(result.ExitCode, 2);
    EXPECT_EQ(result.Errors, std::string("statuscollector: --mode: ") + mode +
                                 " is no mode for a database; give 0600, 0640, 0644, 0660, 0664 or "
                                 "0666\n");
  }
  const ProgramResult group = Init({"--group", "nobodys"});
  EXPECT_EQ(group.ExitCode, 2);
  EXPECT_EQ(group.Errors,
            "statuscollector: --group: there is no group nobodys; `getent group` lists them\n");
  EXPECT_EQ(Owner(""), "missing");
}

}  // namespace
