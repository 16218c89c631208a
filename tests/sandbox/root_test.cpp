#include "sandbox/root.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <net/if.h>
#include <sys/statfs.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <thread>

#include "sandbox/descriptor.h"
#include "sandbox/enter.h"
#include "sandbox/files.h"

namespace sandbox {
namespace {

namespace fs = std::filesystem;

std::string NameOfThisProcess() { return ReadFile("/proc/" + std::to_string(getpid()) + "/comm"); }

TEST(Root, TheProgramKnowsThatItIsInside) { EXPECT_TRUE(Inside()); }

TEST(Root, TheRootFileSystemHasAFixedSize) {
  struct statfs root = {};
  ASSERT_EQ(0, statfs("/", &root));
  EXPECT_EQ(4096, root.f_bsize);
  EXPECT_EQ(16384U, root.f_blocks);
}

TEST(Root, OnlyWhatIsWrittenToTheRootTakesItsSpace) {
  struct statfs before = {};
  ASSERT_EQ(0, statfs("/", &before));
  WriteFile("/dev/shm/large", std::string(100'000, 'x'));
  WriteFile("/tmp/large", std::string(100'000, 'x'));
  WriteFile("/var/small", "x");
  struct statfs after = {};
  ASSERT_EQ(0, statfs("/", &after));
  EXPECT_EQ(before.f_bfree - 1, after.f_bfree);
}

TEST(Root, ProgramsAndLibrariesAreThereButCannotBeChanged) {
  for (const char* path : {"/usr/bin/env", "/bin/sh", "/sbin", "/lib64"}) {
    EXPECT_TRUE(fs::exists(path)) << path;
  }
  EXPECT_EQ(-1, open("/usr/of-the-sandbox", O_CREAT | O_WRONLY, 0644));
  EXPECT_EQ(EROFS, errno);
}

TEST(Root, TheSourceTreeAndTheRunningProgramAreThereButCannotBeChanged) {
  EXPECT_TRUE(fs::exists(SourcePath("sandbox/root.h")));
  EXPECT_TRUE(fs::exists(fs::read_symlink("/proc/self/exe")));
  EXPECT_EQ(-1, open(SourcePath("of-the-sandbox").c_str(), O_CREAT | O_WRONLY, 0644));
  EXPECT_EQ(EROFS, errno);
}

TEST(Root, NothingElseOfTheOutsideIsThere) {
  ClearRoot();  // of what other tests made, should they run in the same program
  for (const char* path : {"/etc/passwd", "/etc/resolv.conf", "/proc/meminfo", "/proc/net",
                           "/sys/class", "/root", "/boot", "/var/lib/dpkg/status", "/home"}) {
    EXPECT_FALSE(fs::exists(path)) << path;
  }
}

TEST(Root, TheUsualDeviceNodesWork) {
  const Descriptor null(open("/dev/null", O_RDWR));
  const Descriptor zero(open("/dev/zero", O_RDWR));
  const Descriptor random(open("/dev/urandom", O_RDONLY));
  char byte = 'x';
  EXPECT_EQ(1, write(null.Number(), &byte, 1));
  EXPECT_EQ(1, read(zero.Number(), &byte, 1));
  EXPECT_EQ('\0', byte);
  EXPECT_EQ(1, read(random.Number(), &byte, 1));
  EXPECT_TRUE(fs::exists("/dev/stdout"));
}

TEST(Root, AProcessFindsItselfInProc) {
  EXPECT_EQ(NameOfThisProcess(), ReadFile("/proc/self/comm"));
  EXPECT_TRUE(fs::is_directory("/proc/self/task/" + std::to_string(getpid())));
  EXPECT_TRUE(fs::exists("/proc/sys/vm/overcommit_memory"));
}

TEST(Root, AThreadFindsItselfInProc) {
  std::string task;
  std::thread([&task] { task = fs::read_symlink("/.proc/thread-self").string(); }).join();
  EXPECT_EQ(0U, task.find(std::to_string(getpid()) + "/task/"));
  EXPECT_TRUE(fs::exists("/proc/thread-self/comm"));
}

TEST(Root, FixturesStandBesideTheProcessesInProc) {
  WriteFile("/proc/meminfo", "MemTotal: 1 kB\n");
  EXPECT_EQ("MemTotal: 1 kB\n", ReadFile("/proc/meminfo"));
}

TEST(Root, TheNetworkHasNothingButLoopbackAndThatIsUp) {
  EXPECT_NE(0U, if_nametoindex("lo"));
  EXPECT_EQ(0U, if_nametoindex("eth0"));
  EXPECT_NE(std::string::npos, ReadFile("/.proc/net/if_inet6").find(" lo\n"));
}

TEST(Root, ClearingTakesEveryFixtureAndNothingElse) {
  for (const char* path :
       {"/proc/meminfo", "/proc/net/route", "/sys/class/net/eth0/carrier", "/etc/resolv.conf",
        "/home/Zet/.settings/uuid", "/dev/shm/netlink-eth0"}) {
    WriteFile(path, "x");
  }
  WriteFile("/dev/shm/status.db", "open, perhaps");
  MakeLink("/var/run", "/run");
  ClearRoot();
  for (const char* path : {"/proc/meminfo", "/proc/net", "/sys/class", "/etc/resolv.conf", "/home",
                           "/dev/shm/netlink-eth0", "/var"}) {
    EXPECT_FALSE(fs::exists(path)) << path;
  }
  for (const char* path : {"/usr/bin/env", "/bin/sh", "/dev/null", "/dev/fd", "/dev/shm/status.db",
                           "/etc", "/sys", "/.proc/meminfo", "/.sandbox"}) {
    EXPECT_TRUE(fs::exists(path)) << path;
  }
  EXPECT_EQ(NameOfThisProcess(), ReadFile("/proc/self/comm"));
  EXPECT_TRUE(fs::exists(SourcePath("sandbox/root.h")));
}

TEST(RootDeathTest, ADeathTestStaysInTheSandbox) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  WriteFile("/etc/motto", "here");
  EXPECT_EXIT(_exit(ReadFile("/etc/motto") == "here" ? 3 : 4), testing::ExitedWithCode(3), "");
}

}  // namespace
}  // namespace sandbox
