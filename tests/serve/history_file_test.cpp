// The history as bytes: what was written is read again, and nothing else is.
#include "serve/history_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>

namespace {

using serve::HistoryData;
using serve::HistoryImage;
using serve::HistoryRows;
using serve::NoHistory;
using serve::ParseHistory;
using serve::SeriesNumber;
using testing::HasSubstr;

constexpr serve::UnixSeconds kNoon = 1800000000;
constexpr std::size_t kNoLimit = std::size_t{1} << 40;

HistoryData Sample() {
  HistoryData data(10);
  data.Rows.AddSeries(4);
  data.Names.Add("", "MemoryFree", 0);
  data.Names.Add("Sensors[OnboardTempSensor]", "Celsius", 1);
  data.Names.Add("Sensors[OnboardTempSensor]", "Connected", 3);
  for (int row = 0; row < 6; ++row) {
    const SeriesNumber numbers[] = {{0, 41.5F}, {3, static_cast<float>(row)}, {1, -7.25F}};
    data.Rows.Add(kNoon + 10 * row, row == 3, std::span(numbers).first(row == 4 ? 1 : 3), kNoLimit,
                  false);
  }
  data.Findings.Restore({.Begin = kNoon,
                         .Before = true,
                         .Identity = "a",
                         .Id = "fan-stopped",
                         .Message = "fan stands still",
                         .Path = "Sensors[0]/CurrentRpm"});
  data.Findings.Restore({.Begin = kNoon, .End = kNoon + 20, .Identity = "b", .Id = "door-open"});
  data.Latest = {kNoon * 1000, 77, "0c8e8a94-1e0b-4d0e-9b9c-5d1d1a1a1a1a"};
  return data;
}

std::string Written(const HistoryData& data) {
  std::string bytes;
  HistoryImage(data).Write([&bytes](std::string_view part) { bytes += part; });
  return bytes;
}

// All bytes but those of the checksum, whatever their order: that of names is none.
std::string Sorted(const HistoryData& data) {
  std::string bytes = Written(data);
  bytes.resize(bytes.size() - 8);
  std::ranges::sort(bytes);
  return bytes;
}

void FixChecksum(std::string* bytes) {
  std::uint64_t checksum = serve::Checksum(std::string_view(*bytes).substr(0, bytes->size() - 8));
  for (std::size_t at = bytes->size() - 8; at < bytes->size(); ++at) {
    (*bytes)[at] = static_cast<char>(checksum & 0xFFU);
    checksum >>= 8U;
  }
}

// Whether it is read; when it is, all of it can be used.
bool IsRead(const std::string& bytes) {
  try {
    const HistoryData data = ParseHistory(bytes, 10);
    EXPECT_EQ(Sorted(ParseHistory(Written(data), 10)), Sorted(data));
    data.Names.Visit([&](std::string_view, std::string_view, std::uint32_t series) {
      data.Rows.Read({{series}}, [](const HistoryRows::Row&, std::span<const float> numbers) {
        EXPECT_FALSE(std::isinf(numbers.front()));
      });
    });
    return true;
  } catch (const NoHistory& reason) {
    EXPECT_STRNE(reason.what(), "");
    return false;
  }
}

TEST(HistoryFile, HasAllThatThereIs) {
  const HistoryData before = Sample();
  const HistoryData after = ParseHistory(Written(before), 10);
  EXPECT_EQ(Sorted(after), Sorted(before));
  EXPECT_EQ(after.Latest.Boot, before.Latest.Boot);
  EXPECT_EQ(after.Find("Sensors[OnboardTempSensor]/Celsius"), 1U);
  EXPECT_EQ(after.Find("MemoryFree"), 0U);
  EXPECT_EQ(after.Find("Celsius"), std::nullopt);
  EXPECT_EQ(after.Rows.OfThisBoot(), 6U);
  std::vector<float> celsius;
  after.Rows.Read({{1}}, [&](const HistoryRows::Row& row, std::span<const float> numbers) {
    EXPECT_EQ(row.Gap, row.Time == kNoon + 30);
    celsius.push_back(numbers.front());
  });
  ASSERT_EQ(celsius.size(), 6U);
  EXPECT_EQ(celsius[3], -7.25F);
  EXPECT_TRUE(std::isnan(celsius[4]));
  EXPECT_EQ(celsius[5], -7.25F);
  ASSERT_EQ(after.Findings.All().size(), 2U);
  EXPECT_EQ(after.Findings.All().front().Message, "fan stands still");
  EXPECT_TRUE(after.Findings.All().front().Before);
  EXPECT_EQ(after.Findings.All().back().End, kNoon + 20);
}

TEST(HistoryFile, OfNothingIsReadToo) { EXPECT_TRUE(IsRead(Written(HistoryData(10)))); }

TEST(HistoryFile, IsNotReadWhenItEndsAnywhereElse) {
  const std::string whole = Written(Sample());
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_FALSE(IsRead(whole.substr(0, size))) << size;
  }
  EXPECT_FALSE(IsRead(whole + std::string(1, '\0')));
  EXPECT_TRUE(IsRead(whole));
}

TEST(HistoryFile, IsNotReadWithAnotherBitAnywhere) {
  const std::string whole = Written(Sample());
  for (std::size_t bit = 0; bit < whole.size() * 8; ++bit) {
    std::string damaged = whole;
    damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ (1 << (bit % 8)));
    EXPECT_FALSE(IsRead(damaged)) << bit;
  }
}

// As somebody would make it who means ill: the checksum is right.
TEST(HistoryFile, IsReadWholeOrRefusedWhateverStandsInIt) {
  const std::string whole = Written(Sample());
  std::minstd_rand random(1);
  int refused = 0;
  for (std::size_t at = 0; at + 8 < whole.size(); ++at) {
    for (const int value : {0, 1, 0x7F, 0x80, 0xFF, static_cast<int>(random() % 256)}) {
      std::string other = whole;
      other[at] = static_cast<char>(value);
      FixChecksum(&other);
      refused += IsRead(other) ? 0 : 1;
    }
  }
  EXPECT_GT(refused, 100);
}

TEST(HistoryFile, SaysWhyItIsNone) {
  const auto reason = [](const std::string& bytes) -> std::string {
    try {
      ParseHistory(bytes, 10);
    } catch (const NoHistory& refusal) {
      return refusal.what();
    }
    return "";
  };
  EXPECT_EQ(reason(""), "is no history");
  EXPECT_EQ(reason("SQLite format 3"), "is no history");
  std::string later = Written(Sample());
  later[8] = 2;
  FixChecksum(&later);
  EXPECT_EQ(reason(later), "is of another version");
  EXPECT_EQ(reason(Written(Sample()) + "x"), "is damaged: it has another size");
}

// The rows that it has are not touched by what comes after.
TEST(HistoryFile, IsWhatItWasWhenItsWritingBegan) {
  HistoryData data = Sample();
  const HistoryImage image(data);
  const std::string before = Written(data);
  const SeriesNumber numbers[] = {{0, 5}};
  data.Rows.Add(kNoon + 2 * serve::kHistorySeconds, false, numbers, kNoLimit, false);
  std::string bytes;
  image.Write([&bytes](std::string_view part) { bytes += part; });
  EXPECT_EQ(bytes, before);
}

}  // namespace
