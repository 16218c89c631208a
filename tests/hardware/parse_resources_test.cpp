#include "hardware/parse_resources.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/hardware/exact.h"

namespace {

constexpr std::int64_t kUntouched = 100000;

TEST(Memory, FreeIsFreePlusCached) {
  QtSts::CStatus status;
  hardware::ParseMemory(ExactText("MemTotal:         1030712 kB\n"
                                  "MemFree:           512000 kB\n"
                                  "Buffers:             1000 kB\n"
                                  "Cached:             12345 kB\n"),
                        &status);
  EXPECT_EQ(status.MemoryTotal, 1030712);
  EXPECT_EQ(status.MemoryFree, 512000 + 12345);
}

TEST(Memory, TakesTheFirstCachedEvenTheTailOfAnotherLabel) {
  QtSts::CStatus status;
  hardware::ParseMemory(ExactText("MemFree: 1000 kB\nSwapCached: 7 kB\nCached: 500 kB\n"), &status);
  EXPECT_EQ(status.MemoryFree, 1007);
}

TEST(Memory, CachedIsAddedEvenWithoutFree) {
  QtSts::CStatus status;
  hardware::ParseMemory(ExactText("Cached: 5 kB\n"), &status);
  EXPECT_EQ(status.MemoryFree, kUntouched + 5);
  hardware::ParseMemory(ExactText("Cached: 5 kB\n"), &status);
  EXPECT_EQ(status.MemoryFree, kUntouched + 10);
}

TEST(Memory, AbsentLabelsLeaveTheirFields) {
  QtSts::CStatus status;
  hardware::ParseMemory(ExactText(""), &status);
  EXPECT_EQ(status.MemoryTotal, kUntouched);
  EXPECT_EQ(status.MemoryFree, kUntouched);
  hardware::ParseMemory(ExactText("MemTotal:"), &status);
  EXPECT_EQ(status.MemoryTotal, 0);
}

TEST(Memory, ReadsGarbageAsZeroAndKeepsSigns) {
  QtSts::CStatus status;
  hardware::ParseMemory(ExactText("MemTotal: lots\nMemFree: -3 kB\n"), &status);
  EXPECT_EQ(status.MemoryTotal, 0);
  EXPECT_EQ(status.MemoryFree, -3);
}

TEST(Memory, HugeSumsWrap) {
  QtSts::CStatus status;
  hardware::ParseMemory(ExactText("MemFree: 9999999999999999999\nCached: 1\n"), &status);
  EXPECT_EQ(status.MemoryFree, std::numeric_limits<std::int64_t>::min());
}

TEST(Uptime, IsADuration) {
  struct {
    long Seconds;
    const char* Text;
  } const kRows[] = {
      {0, "P0DT0H0M0S"},          {59, "P0DT0H0M59S"},   {60, "P0DT0H1M0S"},
      {3599, "P0DT0H59M59S"},     {3600, "P0DT1H0M0S"},  {86399, "P0DT23H59M59S"},
      {86400, "P1DT0H0M0S"},      {93784, "P1DT2H3M4S"}, {365L * 86400, "P365DT0H0M0S"},
      {-93784, "P-1DT-2H-3M-4S"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.Seconds);
    EXPECT_EQ(hardware::UptimeText(row.Seconds), row.Text);
  }
}

TEST(Uptime, OfAnyLengthFits) {
  EXPECT_EQ(hardware::UptimeText(std::numeric_limits<long>::max()).back(), 'S');
  EXPECT_EQ(hardware::UptimeText(std::numeric_limits<long>::min()).back(), 'S');
}

TEST(Storage, IsFourKilobytesABlockIn32Bits) {
  EXPECT_EQ(hardware::StorageKB(0), 0U);
  EXPECT_EQ(hardware::StorageKB(16384), 65536U);
  EXPECT_EQ(hardware::StorageKB(0x3FFFFFFF), 0xFFFFFFFCU);
  EXPECT_EQ(hardware::StorageKB(0x40000001), 4U);
  EXPECT_EQ(hardware::StorageKB(0x100000003), 12U);
}

}  // namespace
