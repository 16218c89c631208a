// Files that the program writes, and streams that cannot be written.
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
#include "sandbox/testing.h"
#include "tests/host/program_fixture.h"
#include "tests/support/validate.h"

namespace {

namespace fs = std::filesystem;
using test_support::ProgramResult;
using testing::HasSubstr;
using testing::Not;

constexpr uid_t kSomebody = 1001;  // who is not the user of the tests

mode_t Mode(const std::string& path) {
  struct stat status = {};
  stat(path.c_str(), &status);
  return status.st_mode & 07777;
}

class OutputTest : public ShowTest {
 protected:
  void SetUp() override {
    ShowTest::SetUp();
    fs::remove_all(folder_);
    fs::create_directories(folder_);
  }

  std::vector<std::string> Files() const {
    std::vector<std::string> files;
    for (const auto& entry : fs::directory_iterator(folder_)) {
      files.push_back(entry.path().filename());
    }
    std::sort(files.begin(), files.end());
    return files;
  }

  const std::string folder_ = "/tmp/output_test";
  const std::string file_ = folder_ + "/status.xml";
};

TEST_F(OutputTest, WritesTheDocumentToAFile) {
  const ProgramResult result = Collector({"show", "--format", "xml", "--output", file_});
  EXPECT_EQ(result.ExitCode, kAllWell) << result.Errors;
  EXPECT_EQ(result.Output, "");
  EXPECT_TRUE(test_support::IsValidDocument(Read(file_)));
  EXPECT_THAT(Files(), testing::ElementsAre("status.xml"));
  EXPECT_EQ(Mode(file_), 0644U);
}

TEST_F(OutputTest, WritesTheDocumentOfAFailedCycle) {
  scenario_.NoDatabase().Apply();
  EXPECT_EQ(Collector({"show", "--format", "xml", "-o", file_}).ExitCode, kFailed);
  EXPECT_TRUE(test_support::IsValidDocument(Read(file_)));
}

TEST_F(OutputTest, ReplacesAFileAndKeepsItsPermissions) {
  Write(file_, "old");
  chmod(file_.c_str(), 0600);
  EXPECT_EQ(Collector({"show", "--output", file_}).ExitCode, kAllWell);
  EXPECT_THAT(Read(file_), StartsAsText());
  EXPECT_EQ(Mode(file_), 0600U);
}

// A user could lay a file ready that became one of root's, run with root's rights, and writable.
TEST_F(OutputTest, KeepsNoPermissionThatAnotherUserHasChosenForHimself) {
  Write(file_, "old");
  chmod(file_.c_str(), 06777);
  EXPECT_EQ(Collector({"show", "--output", file_}).ExitCode, kAllWell);
  EXPECT_EQ(Mode(file_), 0777U) << "one's own";
  if (lchown(file_.c_str(), kSomebody, kSomebody) != 0) {
    GTEST_SKIP() << "no other users: " << std::strerror(errno);
  }
  chmod(file_.c_str(), 06777);
  EXPECT_EQ(Collector({"show", "--output", file_}).ExitCode, kAllWell);
  EXPECT_EQ(Mode(file_), 0755U) << "somebody else's";
}

TEST_F(OutputTest, FollowsASymbolicLink) {
  Write(folder_ + "/real", "old");
  fs::create_symlink("real", file_);
  EXPECT_EQ(Collector({"show", "--output", file_}).ExitCode, kAllWell);
  EXPECT_TRUE(fs::is_symlink(file_));
  EXPECT_THAT(Read(folder_ + "/real"), StartsAsText());
}

// The link used to be replaced by the file.
TEST_F(OutputTest, FollowsASymbolicLinkToAFileThatIsNotThereYet) {
  fs::create_directories(folder_ + "/kept");
  fs::create_symlink("kept/real", folder_ + "/second");
  fs::create_symlink(folder_ + "/second", file_);
  EXPECT_EQ(Collector({"show", "--output", file_}).ExitCode, kAllWell);
  EXPECT_THAT(Files(), testing::ElementsAre("kept", "second", "status.xml"));
  EXPECT_TRUE(fs::is_symlink(file_));
  EXPECT_THAT(Read(folder_ + "/kept/real"), StartsAsText());
}

// Where fs.protected_symlinks is set, the kernel would follow none of these, but was only asked
// about the name before the link came.
TEST_F(OutputTest, FollowsNoLinkOfAnotherUserInAFolderOfEverybody) {
  const std::string secret = folder_ + "-secret";
  Write(secret, "old");
  fs::create_symlink(secret, file_);
  chmod(folder_.c_str(), 01777);
  if (lchown(file_.c_str(), kSomebody, kSomebody) != 0) {
    GTEST_SKIP() << "no other users: " << std::strerror(errno);
  }
  const ProgramResult result = Collector({"show", "--output", file_});
  EXPECT_EQ(result.ExitCode, kTrouble);
  EXPECT_THAT(result.Errors,
              testing::EndsWith("statuscollector: " + file_ +
                                ": Permission denied; see who may write there, and who may enter "
                                "its folders\n"));
  EXPECT_EQ(Read(secret), "old");
  chmod(folder_.c_str(), 0755);
  EXPECT_EQ(Collector({"show", "--output", file_}).ExitCode, kAllWell) << "root's folder";
  EXPECT_THAT(Read(secret), StartsAsText());
  ASSERT_EQ(lchown(folder_.c_str(), kSomebody, kSomebody), 0);
  chmod(folder_.c_str(), 01777);
  EXPECT_EQ(Collector({"show", "--output", file_}).ExitCode, kAllWell) << "of the link's owner";
}

// It used to be replaced, too.
TEST_F(OutputTest, RefusesASymbolicLinkWithoutAnEnd) {
  fs::create_symlink("status.xml", file_);
  const ProgramResult result = Collector({"show", "--output", file_});
  EXPECT_EQ(result.ExitCode, kTrouble);
  EXPECT_THAT(result.Errors, HasSubstr("statuscollector: " + file_ + ": "));
  EXPECT_TRUE(fs::is_symlink(file_));
}

TEST_F(OutputTest, WritesRelativeToTheWorkingFolder) {
  const ProgramResult result = Shell("cd " + folder_ + " && exec $COLLECTOR show -o status.xml");
  EXPECT_EQ(result.ExitCode, kAllWell) << result.Errors;
  EXPECT_THAT(Read(file_), StartsAsText());
}

// A file size limit stands for a full disk.
TEST_F(OutputTest, LeavesTheOldFileAloneWhenItCannotWriteTheWholeNewOne) {
  Write(file_, "old");
  const ProgramResult result =
      Shell("trap '' XFSZ; ulimit -f 1; exec $COLLECTOR show --format xml --output " + file_);
  EXPECT_EQ(result.ExitCode, kTrouble);
  EXPECT_THAT(result.Errors, HasSubstr("statuscollector: " + file_ + ": "));
  EXPECT_EQ(Read(file_), "old");
  EXPECT_THAT(Files(), testing::ElementsAre("status.xml")) << "a temporary file is left";
}

TEST_F(OutputTest, RefusesWhatIsNoRegularFile) {
  scenario_.Folder(folder_ + "/folder");
  fs::create_directories(folder_ + "/folder");
  mkfifo((folder_ + "/pipe").c_str(), 0600);
  for (const char* name : {"folder", "pipe"}) {
    const ProgramResult result = Collector({"show", "--output", folder_ + "/" + name});
    EXPECT_EQ(result.ExitCode, kTrouble);
    EXPECT_THAT(result.Errors, testing::EndsWith(std::string(name) +
                                                 " is not a regular file; give another name\n"));
  }
  EXPECT_THAT(Files(), testing::ElementsAre("folder", "pipe"));
}

// From 249 bytes on, the name of the temporary file beside it used to be too long.
TEST_F(OutputTest, WritesFilesWithTheLongestNames) {
  for (const std::size_t length : {249, 252, 255}) {
    SCOPED_TRACE(length);
    const std::string file = folder_ + "/" + std::string(length, 'n');
    const ProgramResult result = Collector({"show", "--output", file});
    EXPECT_EQ(result.ExitCode, kAllWell) << result.Errors;
    EXPECT_THAT(Read(file), StartsAsText());
  }
  EXPECT_THAT(Files(), testing::SizeIs(3)) << "a temporary file is left";
}

// It used to write a file of this name.
TEST_F(OutputTest, ADashIsStandardOutput) {
  const ProgramResult result = Shell("cd " + folder_ + " && exec $COLLECTOR show -f xml -o -");
  EXPECT_EQ(result.ExitCode, kAllWell) << result.Errors;
  EXPECT_TRUE(test_support::IsValidDocument(result.Output));
  EXPECT_THAT(Files(), testing::IsEmpty());
}

TEST_F(OutputTest, SaysWhenTheFolderIsNotThere) {
  const ProgramResult result = Collector({"show", "--output", "/nowhere/status.xml"});
  EXPECT_EQ(result.ExitCode, kTrouble);
  EXPECT_THAT(result.Errors, HasSubstr("statuscollector: /nowhere/status.xml: "));
}

TEST_F(OutputTest, EndsWithTwoWhenStandardOutputCannotBeWritten) {
  const ProgramResult closed = Shell("exec $COLLECTOR show >&-");
  EXPECT_EQ(closed.ExitCode, kTrouble);
  EXPECT_THAT(closed.Errors, HasSubstr("statuscollector: standard output: "));
  const ProgramResult full =
      Shell("trap '' XFSZ; ulimit -f 1; exec $COLLECTOR schema >" + folder_ + "/schema");
  EXPECT_EQ(full.ExitCode, kTrouble);
  EXPECT_THAT(full.Errors, HasSubstr("statuscollector: standard output: "));
}

// These used to end with 0.
TEST_F(OutputTest, EndsWithTwoWhenNobodyCanReadWhatIsShort) {
  for (const char* arguments : {"init", "--help", "show --help", "--version", "schema"}) {
    SCOPED_TRACE(arguments);
    const ProgramResult closed = Shell(std::string("exec $COLLECTOR ") + arguments + " >&-");
    EXPECT_EQ(closed.ExitCode, kTrouble);
    EXPECT_THAT(closed.Errors, HasSubstr("statuscollector: standard output: "));
  }
}

// Descriptor 4 leads into a pipe without a reader.
ProgramResult WithBrokenPipe(const std::string& line) {
  return Shell(
      "rm -f /tmp/pipe; mkfifo /tmp/pipe; exec 3<>/tmp/pipe 4>/tmp/pipe 3>&-; exec $COLLECTOR " +
      line);
}

// The signal of the broken pipe used to end it without a word.
TEST_F(OutputTest, EndsWithTwoWhenTheReaderIsGone) {
  for (const char* arguments : {"show", "show --format xml", "init", "--help", "schema"}) {
    SCOPED_TRACE(arguments);
    const ProgramResult result = WithBrokenPipe(std::string(arguments) + " >&4");
    EXPECT_EQ(result.ExitCode, kTrouble);
    EXPECT_THAT(result.Errors,
                testing::EndsWith("statuscollector: standard output: Broken pipe; let its reader "
                                  "read to the end\n"));
  }
}

// The same signal used to end the cycle at the probe's first line.
TEST_F(OutputTest, ShowsTheDocumentWhenNobodyReadsTheProbesLines) {
  const ProgramResult result = WithBrokenPipe("show --format xml 2>&4");
  EXPECT_EQ(result.ExitCode, kAllWell);
  EXPECT_TRUE(test_support::IsValidDocument(result.Output));
  EXPECT_THAT(result.Output, Not(HasSubstr("Dev Name")));
}

}  // namespace
