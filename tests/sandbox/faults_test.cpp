#include "sandbox/faults.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <string>

#include "sandbox/descriptor.h"
#include "sandbox/devices.h"
#include "sandbox/files.h"
#include "sandbox/rows.h"
#include "sandbox/scenario.h"
#include "sandbox/testing.h"

namespace sandbox {
namespace {

namespace fs = std::filesystem;

constexpr const char* kFile = "/proc/driver/frame_control/registers";

class FileFaults : public testing::Test {
 protected:
  void SetUp() override {
    SANDBOX_NEEDS_DEVICES();
    Scenario().Apply();
  }
  ~FileFaults() override { Scenario().Apply(); }
};

Descriptor Open(int flags = O_RDONLY) { return Descriptor(open(kFile, flags | O_CLOEXEC)); }

// What one read() gives; its errno as text when it fails.
std::string ReadOnce(const Descriptor& file, std::size_t limit) {
  std::string bytes(limit, '\0');
  const ssize_t count = read(file.Number(), bytes.data(), limit);
  if (count == -1) {
    return "errno " + std::to_string(errno);
  }
  bytes.resize(static_cast<std::size_t>(count));
  return bytes;
}

TEST_F(FileFaults, AFileCannotBeOpenedThoughItIsThere) {
  Scenario().File(kFile, "abc").Fault(kFile, {.Open = EACCES}).Apply();
  for (const int flags : {O_RDONLY, O_RDWR}) {
    EXPECT_FALSE(Open(flags));
    EXPECT_EQ(EACCES, errno);
  }
  struct stat status = {};
  EXPECT_EQ(0, stat(kFile, &status));
  EXPECT_TRUE(S_ISREG(status.st_mode));
}

TEST_F(FileFaults, ReadingFailsAtOnce) {
  Scenario().File(kFile, "abc").Fault(kFile, {.Read = EIO}).Apply();
  const Descriptor file = Open(O_RDWR);
  ASSERT_TRUE(file);
  EXPECT_EQ("errno 5", ReadOnce(file, 10));
  EXPECT_EQ("errno 5", ReadOnce(file, 10));
}

TEST_F(FileFaults, ReadingFailsInTheMiddle) {
  Scenario().File(kFile, "abcdefghij").Fault(kFile, {.Read = ENXIO, .ReadAfter = 5}).Apply();
  const Descriptor file = Open();
  EXPECT_EQ("abc", ReadOnce(file, 3));
  EXPECT_EQ("de", ReadOnce(file, 3));
  EXPECT_EQ("errno 6", ReadOnce(file, 3));
  EXPECT_EQ("abcde", ReadOnce(Open(), 64 << 10));
}

TEST_F(FileFaults, LongFilesArriveWhole) {
  std::string bytes;
  for (int line = 0; bytes.size() < 300'000; ++line) {
    bytes += std::to_string(line) + "\n";
  }
  Scenario().File(kFile, bytes).Fault(kFile, {.Read = EIO, .ReadAfter = 200'000}).Apply();
  const Descriptor file = Open();
  std::string text;
  for (std::string block; (block = ReadOnce(file, 64 << 10)) != "errno 5"; text += block) {
    ASSERT_FALSE(block.empty());
  }
  EXPECT_EQ(bytes.substr(0, 200'000), text);
}

TEST_F(FileFaults, AFileThatEndsBeforeItFailsIsRead) {
  Scenario().File(kFile, "abc").Fault(kFile, {.Read = EIO, .ReadAfter = 5}).Apply();
  const Descriptor file = Open();
  EXPECT_EQ("abc", ReadOnce(file, 10));
  EXPECT_EQ("", ReadOnce(file, 10));
}

TEST_F(FileFaults, ItsStatusCannotBeHad) {
  Scenario().File(kFile, "abc").Fault(kFile, {.Status = ESTALE}).Apply();
  struct stat status = {};
  EXPECT_EQ(-1, stat(kFile, &status));
  EXPECT_EQ(ESTALE, errno);
  const Descriptor file = Open();
  ASSERT_TRUE(file);
  EXPECT_EQ(-1, fstat(file.Number(), &status));
  EXPECT_EQ("abc", ReadOnce(file, 10));
}

TEST_F(FileFaults, APipeTakesThePlaceOfAFile) {
  Scenario().File(kFile, "abc").Fault(kFile, {.IsPipe = true}).Apply();
  for (const int flags : {O_RDONLY | O_NONBLOCK, O_RDWR}) {
    const Descriptor file = Open(flags);
    ASSERT_TRUE(file);
    struct stat status = {};
    ASSERT_EQ(0, fstat(file.Number(), &status));
    EXPECT_TRUE(S_ISFIFO(status.st_mode));
  }
}

TEST_F(FileFaults, AFileThatIsNotThereIsMadeAndGoesAgain) {
  Scenario().Fault(kFile, {.Open = EACCES}).Fault("/etc/pipe", {.IsPipe = true}).Apply();
  EXPECT_TRUE(fs::exists(kFile));
  EXPECT_TRUE(fs::is_fifo("/etc/pipe"));
  SetFileFaults({});
  EXPECT_FALSE(fs::exists(kFile));
  EXPECT_FALSE(fs::exists("/etc/pipe"));
}

TEST_F(FileFaults, AFileIsItselfAgainAfterwards) {
  Scenario().File(kFile, "abc", 0640).Fault(kFile, {.Read = EIO}).Apply();
  struct stat status = {};
  ASSERT_EQ(0, stat(kFile, &status));
  EXPECT_EQ(0640U, status.st_mode & 07777U);
  EXPECT_EQ(3, status.st_size);
  SetFileFaults({});
  EXPECT_EQ("abc", ReadFile(kFile));
  Scenario().Apply();
  EXPECT_FALSE(fs::exists(kFile));
}

TEST_F(FileFaults, TheyAreNotInTheLogOfDevices) {
  Scenario().Fault(kFile, {.Read = EIO}).Apply();
  ReadOnce(Open(), 10);
  EXPECT_THAT(DeviceLog(), testing::IsEmpty());
}

TEST_F(FileFaults, OneFaultTakesThePlaceOfAnother) {
  for (int round = 0; round < 20; ++round) {
    SetFileFaults({.Files = {{kFile, {.Open = 1 + round}}}});
    EXPECT_FALSE(Open());
    EXPECT_EQ(1 + round, errno);
  }
}

TEST_F(FileFaults, AFaultFollowsALinkOfTheScenario) {
  const Scenario scenario = Scenario()
                                .File("/run/resolv.conf", "abc")
                                .Link("/etc/resolv.conf", "/run/resolv.conf")
                                .Fault("/etc/resolv.conf", {.Open = EACCES});
  scenario.Apply();
  EXPECT_EQ(-1, open("/etc/resolv.conf", O_RDONLY));
  EXPECT_EQ(EACCES, errno);
  Scenario(scenario).NoFaults().ApplyAfter(scenario);
  EXPECT_EQ("abc", ReadFile("/etc/resolv.conf"));
}

TEST_F(FileFaults, AQueryFailsWithoutItsTable) {
  const Scenario scenario = Scenario().Row("GUID", "abc").NoTable();
  scenario.Apply();
  EXPECT_TRUE(fs::exists(kDatabase));
  EXPECT_THROW(RunSql("SELECT * FROM status;"), std::runtime_error);
  Scenario(scenario).NoFaults().ApplyAfter(scenario);
  RunSql("SELECT * FROM status;");
}

}  // namespace
}  // namespace sandbox
