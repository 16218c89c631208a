#include "sandbox/files.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <string>
#include <system_error>

#include "sandbox/descriptor.h"

namespace sandbox {
namespace {

namespace fs = std::filesystem;

TEST(Files, AFileIsWrittenWithItsFoldersAndReadBackByteForByte) {
  const std::string bytes("a\0b\n", 4);
  WriteFile("/home/Zet/.settings/uuid", bytes);
  EXPECT_EQ(bytes, ReadFile("/home/Zet/.settings/uuid"));
}

TEST(Files, AFileHasTheModeThatWasAskedFor) {
  WriteFile("/var/program", "", 0750);
  struct stat status = {};
  ASSERT_EQ(0, stat("/var/program", &status));
  EXPECT_EQ(0750U, status.st_mode & 07777U);
}

TEST(Files, AnOpenFileShowsWhatIsWrittenLater) {
  WriteFile("/proc/driver/dump", "before");
  const Descriptor file(open("/proc/driver/dump", O_RDWR));
  ASSERT_TRUE(file);
  WriteFile("/proc/driver/dump", "later!");
  std::array<char, 6> text = {};
  ASSERT_EQ(6, read(file.Number(), text.data(), text.size()));
  EXPECT_EQ("later!", std::string(text.data(), text.size()));
}

TEST(Files, AFileTakesThePlaceOfAFolderAndAFolderThatOfAFile) {
  WriteFile("/sys/thing/inner", "x");
  WriteFile("/sys/thing", "file now");
  EXPECT_EQ("file now", ReadFile("/sys/thing"));
  MakeFolder("/sys/thing");
  EXPECT_TRUE(fs::is_directory("/sys/thing"));
  MakeFolder("/sys/thing");
  EXPECT_TRUE(fs::is_directory("/sys/thing"));
}

TEST(Files, ALinkLeadsToItsTarget) {
  WriteFile("/run/wd_event", "1");
  MakeLink("/var/run", "/run");
  EXPECT_EQ("1", ReadFile("/var/run/wd_event"));
}

TEST(Files, AFolderOpensLikeAFileButCannotBeRead) {
  MakeFolder("/sys/class/net/eth0/carrier");
  const Descriptor file(open("/sys/class/net/eth0/carrier", O_RDONLY));
  ASSERT_TRUE(file);
  char byte = 0;
  EXPECT_EQ(-1, read(file.Number(), &byte, 1));
}

TEST(Files, SomethingUnopenableExistsButDoesNotOpen) {
  MakeUnopenable("/sys/class/net/eth0/carrier");
  EXPECT_EQ(0, access("/sys/class/net/eth0/carrier", F_OK));
  EXPECT_EQ(-1, open("/sys/class/net/eth0/carrier", O_RDONLY));
  EXPECT_EQ(ENXIO, errno);
}

TEST(Files, RemovingTakesAFileAndAFolderWithItsContents) {
  WriteFile("/proc/driver/one/registers", "x");
  RemoveFile("/proc/driver/one/registers");
  EXPECT_FALSE(fs::exists("/proc/driver/one/registers"));
  WriteFile("/proc/driver/two/deep/registers", "x");
  RemoveFile("/proc/driver");
  EXPECT_FALSE(fs::exists("/proc/driver"));
  RemoveFile("/proc/driver");
}

TEST(Files, RemovingNeverGoesIntoAMount) {
  EXPECT_THROW(RemoveFile("/.proc"), std::system_error);
  EXPECT_THROW(RemoveFile("/dev"), std::system_error);
  EXPECT_THROW(RemoveFile("/usr"), std::system_error);
  EXPECT_TRUE(fs::exists("/usr/bin"));
  EXPECT_TRUE(fs::exists("/dev/null"));
}

TEST(Files, AMissingFileIsAnErrorThatNamesIt) {
  try {
    ReadFile("/etc/missing");
    FAIL() << "nothing was thrown";
  } catch (const std::system_error& error) {
    EXPECT_EQ(std::errc::no_such_file_or_directory, error.code());
    EXPECT_NE(std::string::npos, std::string(error.what()).find("/etc/missing"));
  }
}

}  // namespace
}  // namespace sandbox
