#include <gmock/gmock.h>
#include <sys/sysinfo.h>

#include "sandbox/scenario.h"
#include "tests/hardware/probe_fixture.h"
#include "tests/support/interposed/system_calls.h"

namespace {

using interposed::Call;
using interposed::Failure;
using interposed::StorageEdit;
using sandbox::Scenario;
using sandbox::SetUptime;
using sandbox::WriteFile;
using std::chrono::seconds;

constexpr std::int64_t kUntouched = 100000;

class Memory : public ProbeTest {};

TEST_F(Memory, IsReadFromTheKernelsList) {
  Scenario()
      .File(kMemory,
            "MemTotal:        1030712 kB\nMemFree:          512000 kB\nCached:  12345 kB\n")
      .Apply();
  EXPECT_EQ(probe_.SystemMemoryKB(), 0);
  EXPECT_EQ(status_.MemoryTotal, 1030712);
  EXPECT_EQ(status_.MemoryFree, 524345);
}

TEST_F(Memory, FirstCachedIsAddedEvenTheTailOfAnotherLabelAndWithoutFree) {
  WriteFile(kMemory, "MemFree: 1000 kB\nSwapCached: 7 kB\nCached: 500 kB\n");
  EXPECT_EQ(probe_.SystemMemoryKB(), 0);
  EXPECT_EQ(status_.MemoryFree, 1007);
  WriteFile(kMemory, "Cached: 5 kB\n");
  EXPECT_EQ(probe_.SystemMemoryKB(), 0);
  EXPECT_EQ(status_.MemoryFree, 1012) << "the last cycle's value is there still";
}

TEST_F(Memory, LabelsBeyondTheReadLimitAreNotSeen) {
  const std::string total = "MemTotal: 123";
  constexpr std::size_t kLimit = 2048;
  Scenario().File(kMemory, Padded(kLimit - total.size(), total + "4 kB\nMemFree: 7 kB\n")).Apply();
  EXPECT_EQ(probe_.SystemMemoryKB(), 0);
  EXPECT_EQ(status_.MemoryTotal, 123);
  EXPECT_EQ(status_.MemoryFree, kUntouched);
}

TEST_F(Memory, WithoutAListStays) {
  EXPECT_EQ(probe_.SystemMemoryKB(), 0);
  EXPECT_EQ(status_.MemoryTotal, kUntouched);
  EXPECT_EQ(status_.MemoryFree, kUntouched);
}

class Uptime : public ProbeTest {
 protected:
  // What the probe reports in this second of the machine's uptime. The system counts the second
  // that has begun; when it is over before the probe has asked, the attempt is repeated.
  std::string TextAt(long second) {
    struct sysinfo system;
    do {
      SetUptime(seconds(second - 1));
      EXPECT_EQ(probe_.SystemMemoryKB(), 0);
    } while (sysinfo(&system) == 0 && system.uptime != second);
    return status_.Uptime;
  }
};

TEST_F(Uptime, IsADurationWithOrWithoutAMemoryList) {
  EXPECT_EQ(TextAt(93784), "P1DT2H3M4S");
  EXPECT_EQ(TextAt(59), "P0DT0H0M59S");
  WriteFile(kMemory, "MemTotal: 1 kB\n");
  EXPECT_EQ(TextAt(93784), "P1DT2H3M4S");
  EXPECT_EQ(TextAt(59), "P0DT0H0M59S");
}

TEST_F(Uptime, StaysWhenTheSystemDoesNotAnswer) {
  WriteFile(kMemory, "MemTotal: 5 kB\n");
  const Failure failure(Call::kSysinfo);
  EXPECT_EQ(probe_.SystemMemoryKB(), 0);
  EXPECT_EQ(status_.MemoryTotal, 5);
  EXPECT_EQ(status_.Uptime, "P0S");
}

class Storage : public ProbeTest {};

TEST_F(Storage, IsThatOfTheRootFileSystem) {
  EXPECT_EQ(probe_.SystemStorageKB(), 0);
  EXPECT_EQ(status_.StorageTotal, 65536U) << "the sandbox's root has 64 MiB";
  const std::uint64_t free = status_.StorageFree;
  EXPECT_LE(free, 65536U);
  WriteFile("/filler", std::string(std::size_t{1} << 20, 'x'));
  EXPECT_EQ(probe_.SystemStorageKB(), 0);
  EXPECT_EQ(status_.StorageFree, free - 1024);
}

TEST_F(Storage, CountsBlocksInFoursIn32BitsAndThoseReservedAsFree) {
  const StorageEdit edit([](struct statfs* storage) {
    storage->f_bsize = 512;  // ignored
    storage->f_blocks = 0x40000001;
    storage->f_bfree = 1000;
    storage->f_bavail = 900;
  });
  EXPECT_EQ(probe_.SystemStorageKB(), 0);
  EXPECT_EQ(status_.StorageTotal, 4U);
  EXPECT_EQ(status_.StorageFree, 4000U);
}

TEST_F(Storage, StaysWhenTheSystemDoesNotAnswer) {
  const Failure failure(Call::kStatfs);
  EXPECT_EQ(probe_.SystemStorageKB(), 0);
  EXPECT_EQ(status_.StorageTotal, 100000U);
  EXPECT_EQ(status_.StorageFree, 100000U);
}

}  // namespace
