// What the program says when the status database cannot be read or made.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "sandbox/enter.h"
#include "sandbox/rows.h"
#include "sandbox/scenario.h"
#include "sandbox/testing.h"
#include "tests/support/paths.h"
#include "tests/support/run_program.h"

namespace {

namespace fs = std::filesystem;
using test_support::HostProgram;
using test_support::ProgramResult;
using test_support::RunProgram;
using testing::HasSubstr;

constexpr const char* kDatabase = "/dev/shm/status.db";
constexpr const char* kSomebody = "1001";
constexpr gid_t kGroup = 1044;

class TroubleTest : public testing::Test {
 protected:
  void SetUp() override { scenario_.NoDatabase().Apply(); }
  void TearDown() override { fs::remove_all(kDatabase); }

  sandbox::Scenario scenario_ =
      sandbox::Scenario()
          .File("/etc/passwd", "root:x:0:0::/:/bin/sh\nmonitor:x:1001:1001::/:/bin/sh\n")
          .File("/etc/group", "root:x:0:\nstatus:x:1044:\n");
};

// What the program says, all of it in its own name. The library's lines used to stand before it:
// "14:unable to open database file".
std::vector<std::string> Words(const ProgramResult& result) {
  std::vector<std::string> lines;
  std::istringstream errors(result.Errors);
  for (std::string line; std::getline(errors, line);) {
    const bool is_named = line.starts_with("statuscollector: ");
    lines.push_back(is_named ? line.substr(std::strlen("statuscollector: "))
                             : "not named: " + line);
  }
  return lines;
}

// A database whose schema cannot be read.
std::string Damaged() {
  sandbox::SetRows({{"GUID", "abc"}});
  std::ostringstream bytes;
  bytes << std::ifstream(kDatabase).rdbuf();
  sandbox::RemoveDatabase();
  std::string damaged = bytes.str();
  damaged.replace(100, 64, 64, '\xFF');
  return damaged;
}

ProgramResult AsSomebody(const std::string& command) {
  return RunProgram({"/usr/bin/setpriv", "--reuid", kSomebody, "--regid", kSomebody,
                     "--clear-groups", HostProgram(), command});
}

bool MayChangeUser() { return AsSomebody("schema").ExitCode == 0; }

// Only the library's codes used to be there: "14:unable to open database file".
TEST_F(TroubleTest, ADatabaseThatIsMissingIsOneMessageWithACure) {
  const ProgramResult result = RunProgram({HostProgram(), "show", "--cycles", "3"});
  EXPECT_EQ(result.ExitCode, 1);
  EXPECT_THAT(
      Words(result),
      testing::ElementsAre(
          "/dev/shm/status.db does not exist; a host or `statuscollector init` creates it"));
}

TEST_F(TroubleTest, AFileThatIsNoDatabaseIsOneMessageFromShowAndFromInit) {
  std::ofstream(kDatabase) << std::string(8192, 'x');
  const std::string words =
      "/dev/shm/status.db is no database; move it away, then a host or `statuscollector init` "
      "creates a new one";
  EXPECT_THAT(Words(RunProgram({HostProgram(), "show"})), testing::ElementsAre(words));
  const ProgramResult init = RunProgram({HostProgram(), "init"});
  EXPECT_EQ(init.ExitCode, 1);
  EXPECT_THAT(Words(init), testing::ElementsAre("the status database is not ready: " + words));
}

// The library reported each of the seven steps that fail.
TEST_F(TroubleTest, AFileThatIsNoDatabaseIsOneLineFromInitAndStaysAsItIs) {
  for (const std::string& bytes : {std::string(8192, 'x'), Damaged()}) {
    std::ofstream(kDatabase) << bytes;
    const ProgramResult init = RunProgram({test_support::HostProgram(), "init"});
    EXPECT_EQ(init.ExitCode, 1);
    EXPECT_EQ(std::count(init.Errors.begin(), init.Errors.end(), '\n'), 1) << init.Errors;
    EXPECT_THAT(init.Errors, HasSubstr("; move it away, then a host or "));
    std::ostringstream after;
    after << std::ifstream(kDatabase).rdbuf();
    EXPECT_EQ(after.str(), bytes);
  }
}

TEST_F(TroubleTest, AFileThatIsNoDatabaseIsOneMessageFromEveryCommand) {
  const std::vector<std::vector<std::string>> commands = {
      {"show"}, {"explain"}, {"watch", "--count", "2", "--interval", "1"}};
  for (const auto& command : commands) {
    std::vector<std::string> line = {test_support::HostProgram()};
    line.insert(line.end(), command.begin(), command.end());
    std::ofstream(kDatabase) << std::string(8192, 'x');
    EXPECT_THAT(Words(RunProgram(line)), testing::ElementsAre(HasSubstr(" is no database; ")))
        << command.front();
    fs::remove(kDatabase);
    EXPECT_THAT(Words(RunProgram(line)), testing::ElementsAre(HasSubstr(" does not exist; ")))
        << command.front();
  }
}

TEST_F(TroubleTest, AnotherKindOfFileIsNamed) {
  for (const auto& [kind, words] :
       {std::pair("-d", " is a folder; move it away"), std::pair("-p", " is a pipe; move it away"),
        std::pair("-l", " is a symbolic link; move it away")}) {
    SCOPED_TRACE(words);
    fs::remove_all(kDatabase);
    switch (kind[1]) {
      case 'd':
        fs::create_directory(kDatabase);
        break;
      case 'p':
        ASSERT_EQ(mkfifo(kDatabase, 0644), 0);
        break;
      default:
        fs::create_symlink("/tmp/elsewhere.db", kDatabase);
        std::ofstream("/tmp/elsewhere.db") << "";
    }
    EXPECT_THAT(Words(RunProgram({HostProgram(), "show"})),
                testing::ElementsAre(HasSubstr(kDatabase + std::string(words))));
  }
}

TEST_F(TroubleTest, ATableThatIsMissingIsNamedWithItsCure) {
  std::ofstream(kDatabase) << "";
  EXPECT_THAT(Words(RunProgram({HostProgram(), "show"})),
              testing::ElementsAre(
                  "/dev/shm/status.db has no table status; `statuscollector init` creates it"));
  EXPECT_EQ(RunProgram({HostProgram(), "init"}).ExitCode, 0);
  EXPECT_THAT(Words(RunProgram({HostProgram(), "show"})), testing::IsEmpty());
}

TEST_F(TroubleTest, WhoMayNotReadLearnsWhichGroupMay) {
  if (!MayChangeUser()) {
    GTEST_SKIP() << "no other users";
  }
  scenario_.Row("GUID", "abc").Apply();
  ASSERT_EQ(chmod(kDatabase, 0640), 0);
  ASSERT_EQ(chown(kDatabase, 0, kGroup), 0);
  EXPECT_THAT(
      Words(AsSomebody("show")),
      testing::ElementsAre(
          "/dev/shm/status.db cannot be opened: user monitor may not read /dev/shm/status.db "
          "(root:status, mode 0640); members of group status may"));
  ASSERT_EQ(chmod(kDatabase, 0600), 0);
  EXPECT_THAT(Words(AsSomebody("show")), testing::ElementsAre(HasSubstr("; user root may")));
}

TEST_F(TroubleTest, WhoMayNotCreateTheDatabaseLearnsWhoMay) {
  if (!MayChangeUser()) {
    GTEST_SKIP() << "no other users";
  }
  ASSERT_EQ(chmod("/dev/shm", 0755), 0);
  const ProgramResult result = AsSomebody("init");
  chmod("/dev/shm", 01777);
  EXPECT_EQ(result.ExitCode, 1);
  EXPECT_THAT(Words(result), testing::ElementsAre(
                                 HasSubstr("/dev/shm/status.db cannot be created: user monitor may "
                                           "not write /dev/shm (root:root, mode 0755); user root "
                                           "may")));
}

}  // namespace
