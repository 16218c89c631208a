// Where a file system has no files without names, a capture has another one until it is whole.
#include "tests/capture/without_unnamed_files.h"

#include <gmock/gmock.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <filesystem>

#include "sandbox/files.h"
#include "tests/capture/capture_fixture.h"

namespace {

using captured::CaptureWithoutUnnamedFiles;
using captured::kFile;
using testing::Contains;
using testing::ElementsAre;
using testing::Key;

constexpr const char* kFolder = "/captures";

std::vector<std::string> Names() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(kFolder)) {
    names.push_back(entry.path().filename());
  }
  return names;
}

int ExitCode(int status) { return WIFEXITED(status) ? WEXITSTATUS(status) : -1; }

class WithoutUnnamedFiles : public captured::CaptureTest {
 protected:
  void SetUp() override {
    CaptureTest::SetUp();
    if (!IsSkipped()) {
      captured::Load("minimal").Apply();
      sandbox::MakeFolder(kFolder);
    }
  }
};

// As file systems and old kernels say it.
TEST_F(WithoutUnnamedFiles, ACaptureIsWholeAndAlone) {
  for (const int error : {EOPNOTSUPP, EISDIR, EINVAL}) {
    EXPECT_EQ(ExitCode(CaptureWithoutUnnamedFiles(kFile, error)), 0) << error;
    EXPECT_THAT(captured::Read(), Contains(Key("document.xml")));
    EXPECT_THAT(Names(), ElementsAre("one.tar.zst"));
    std::filesystem::remove(kFile);
  }
}

TEST_F(WithoutUnnamedFiles, ACaptureTakesThePlaceOfAnotherFile) {
  sandbox::WriteFile(kFile, "before", 0666);
  EXPECT_EQ(ExitCode(CaptureWithoutUnnamedFiles(kFile, EOPNOTSUPP)), 0);
  struct stat status = {};
  ASSERT_EQ(stat(kFile, &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0600U);
  EXPECT_THAT(captured::Read(), Contains(Key("document.xml")));
  EXPECT_THAT(Names(), ElementsAre("one.tar.zst"));
}

TEST_F(WithoutUnnamedFiles, NothingIsLeftOnADiskThatIsFull) {
  ASSERT_EQ(mount("full", kFolder, "tmpfs", 0, "size=4k"), 0);
  sandbox::WriteFile("/captures/before", "kept");
  EXPECT_EQ(ExitCode(CaptureWithoutUnnamedFiles(kFile, EOPNOTSUPP)), 2);
  EXPECT_THAT(Names(), ElementsAre("before"));
  umount(kFolder);
}

TEST_F(WithoutUnnamedFiles, AnyOtherFailureIsOne) {
  EXPECT_EQ(ExitCode(CaptureWithoutUnnamedFiles(kFile, EACCES)), 2);
  EXPECT_THAT(Names(), testing::IsEmpty());
}

// Who interrupted it while it wrote used to find the file with the other name.
TEST_F(WithoutUnnamedFiles, ASignalWaitsUntilTheFileIsWhole) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    const int status = CaptureWithoutUnnamedFiles(kFile, EOPNOTSUPP, signal);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << status;
    EXPECT_THAT(Names(), ElementsAre("one.tar.zst"));
    EXPECT_THAT(captured::Read(), Contains(Key("document.xml")));
    std::filesystem::remove_all(kFolder);
    sandbox::MakeFolder(kFolder);
  }
}

}  // namespace
