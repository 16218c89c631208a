// Rows of numbers, with what was put into them kept beside.
#include "serve/history_rows.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <map>
#include <random>
#include <vector>

namespace {

using serve::HistoryBytes;
using serve::HistoryRows;
using serve::kHistorySeconds;
using serve::SeriesNumber;
using serve::UnixSeconds;

constexpr std::size_t kNoLimit = std::size_t{1} << 40;
constexpr UnixSeconds kNoon = 1800000000;

// Adds rows, and knows what was added.
class Model {
 public:
  explicit Model(std::uint32_t interval, std::uint32_t series) : Rows(interval) {
    Rows.AddSeries(series);
  }

  // Each number is there with `share` of a hundred, and another one than before with `change`.
  void Add(UnixSeconds time, std::size_t limit, int share, int change, bool held = false) {
    now_.resize(Rows.SeriesCount(), serve::kNoNumber);
    std::vector<SeriesNumber> numbers;
    for (std::uint32_t series = 0; series < now_.size(); ++series) {
      if (!Chance(share)) {
        now_[series] = serve::kNoNumber;
        continue;
      }
      if (std::isnan(now_[series]) || Chance(change)) {
        now_[series] = static_cast<float>(random_()) / 7;
      }
      numbers.push_back({series, now_[series]});
    }
    Rows.Add(time, false, numbers, limit, held);
    added_[time] = {now_.begin(), now_.begin() + std::min<long>(kKept, std::ssize(now_))};
  }

  // Whether each row has what was added at its time.
  void ExpectTrue() const {
    std::vector<std::uint32_t> series;
    for (std::uint32_t at = 0; at < std::min<std::size_t>(kKept, Rows.SeriesCount()); ++at) {
      series.push_back(at);
    }
    Rows.Read(series, [&](const HistoryRows::Row& row, std::span<const float> numbers) {
      const std::vector<float>& added = added_.at(row.Time);
      for (std::size_t at = 0; at < numbers.size(); ++at) {
        ASSERT_TRUE(numbers[at] == added[at] || (std::isnan(numbers[at]) && std::isnan(added[at])))
            << at << " at " << row.Time << ": " << numbers[at] << ", not " << added[at];
      }
    });
  }

  HistoryRows Rows;

 private:
  static constexpr int kKept = 5;  // series of which all is remembered

  bool Chance(int share) { return static_cast<int>(random_() % 100) < share; }

  std::minstd_rand random_{1};
  std::vector<float> now_;
  std::map<UnixSeconds, std::vector<float>> added_;
};

TEST(HistoryRows, HaveWhatWasRead) {
  Model model(10, 20);
  for (int row = 0; row < 500; ++row) {
    model.Add(kNoon + row * 10, kNoLimit, 80, 30);
    if (row == 200) {
      model.Rows.AddSeries(3);
    }
  }
  model.ExpectTrue();
  EXPECT_EQ(model.Rows.All().size(), 500U);
  EXPECT_EQ(model.Rows.Step(), 10U);
}

TEST(HistoryRows, ForgetWhatIsOlderThanADay) {
  Model model(600, 3);
  for (int row = 0; row < 1000; ++row) {
    model.Add(kNoon + row * 600, kNoLimit, 90, 50);
  }
  model.ExpectTrue();
  EXPECT_EQ(model.Rows.All().size(), 145U);
  EXPECT_EQ(model.Rows.All().front().Time, model.Rows.All().back().Time - kHistorySeconds);
  EXPECT_EQ(model.Rows.Step(), 600U);
}

TEST(HistoryRows, AreOneWhereOnlyOneIsOfToday) {
  Model model(86400, 1);
  for (int row = 0; row < 5; ++row) {
    model.Add(kNoon + row * 2 * kHistorySeconds, kNoLimit, 100, 100);
  }
  model.ExpectTrue();
  EXPECT_EQ(model.Rows.All().size(), 1U);
}

// A second of interval: as many rows as there may be, whatever their size.
TEST(HistoryRows, HalveTheirResolutionWhenThereAreTooMany) {
  Model model(1, 1);
  for (UnixSeconds second = 0; second < 2 * kHistorySeconds; ++second) {
    model.Add(kNoon + second, kNoLimit, 100, 10);
    ASSERT_LE(model.Rows.All().size(), HistoryRows::kMostRows);
  }
  model.ExpectTrue();
  EXPECT_EQ(model.Rows.Step(), 16U);
  EXPECT_GE(model.Rows.All().size(), 86400U / 16);
  EXPECT_LE(model.Rows.All().front().Time, model.Rows.All().back().Time - kHistorySeconds + 16);
}

TEST(HistoryRows, HalveTheirResolutionWhenMemoryIsFull) {
  const std::size_t before = HistoryBytes();
  constexpr std::size_t kLimit = 200000;
  Model model(10, 50);
  for (int row = 0; row < 2 * 8640; ++row) {
    model.Add(kNoon + row * 10, before + kLimit, 95, 60);
    ASSERT_LE(HistoryBytes() - before, kLimit);
  }
  model.ExpectTrue();
  EXPECT_EQ(model.Rows.Step() % 10, 0U);
  EXPECT_GT(model.Rows.Step(), 10U);
  EXPECT_GT(HistoryBytes() - before, kLimit / 3);  // no more is given up than has to be
  EXPECT_LE(model.Rows.All().front().Time,
            model.Rows.All().back().Time - kHistorySeconds + model.Rows.Step());
}

TEST(HistoryRows, TakeNoMemoryForWhatStaysTheSame) {
  const std::size_t before = HistoryBytes();
  Model model(10, 1000);
  for (int row = 0; row < 8640; ++row) {
    model.Add(kNoon + row * 10, kNoLimit, 100, 0);
  }
  EXPECT_LT(HistoryBytes() - before, 1U << 20);
}

// A save that hangs holds the rows for ever.
TEST(HistoryRows, DoNotGrowBeyondTheLimitWhileOthersHoldThem) {
  const std::size_t before = HistoryBytes();
  constexpr std::size_t kLimit = 200000;
  constexpr std::size_t kOneRow = 2000;
  Model model(10, 50);
  int row = 0;
  for (; row < 500; ++row) {
    model.Add(kNoon + row * 10, before + kLimit, 100, 100);
  }
  const HistoryRows::Rows held = model.Rows.All();
  for (; row < 2 * 8640; ++row) {
    model.Add(kNoon + row * 10, before + kLimit, 100, 100, true);
    ASSERT_LE(HistoryBytes() - before, kLimit + kOneRow);
  }
  model.ExpectTrue();
}

TEST(HistoryRows, OfThisBootMoveWhenTheClockIsSet) {
  HistoryRows rows(10);
  rows.AddSeries(1);
  const SeriesNumber one[] = {{0, 1.5F}};
  rows.Add(kNoon, false, one, kNoLimit, false);
  rows.Add(kNoon + 10, false, one, kNoLimit, false);
  rows.SetOfThisBoot(0);
  rows.Add(100, true, one, kNoLimit, false);  // 1970: what is there is still to come
  rows.Add(110, false, one, kNoLimit, false);
  ASSERT_EQ(rows.All().size(), 4U);
  rows.Shift(kNoon);
  EXPECT_EQ(rows.All()[1].Time, kNoon + 10);
  EXPECT_EQ(rows.All()[2].Time, kNoon + 100);
  EXPECT_EQ(rows.All()[3].Time, kNoon + 110);
}

TEST(HistoryRows, OfAnotherBootGoWhenThisOneIsADayLong) {
  HistoryRows rows(3600);
  rows.AddSeries(1);
  const SeriesNumber one[] = {{0, 1.5F}};
  rows.Add(kNoon, false, one, kNoLimit, false);
  rows.SetOfThisBoot(0);
  for (int hour = 0; hour <= 26; ++hour) {
    rows.Add(hour * 3600, false, one, kNoLimit, false);
    EXPECT_EQ(rows.All().front().Time == kNoon, hour < 25) << hour;
  }
}

TEST(HistoryRows, KeepGapsWhenTheResolutionHalves) {
  HistoryRows rows(1);
  rows.AddSeries(1);
  const SeriesNumber one[] = {{0, 1.5F}};
  const int count = static_cast<int>(HistoryRows::kMostRows) + 1;
  for (int row = 0; row < count; ++row) {
    rows.Add(kNoon + row, row == 5001, one, kNoLimit, false);
  }
  ASSERT_EQ(rows.Step(), 2U);
  int gaps = 0;
  for (const HistoryRows::Row& row : rows.All()) {
    gaps += row.Gap ? 1 : 0;
    EXPECT_EQ(row.Gap, row.Time == kNoon + 5001) << row.Time;
  }
  EXPECT_EQ(gaps, 1);
}

TEST(HistoryRows, KnowWhichSeriesHaveANumber) {
  HistoryRows rows(10);
  rows.AddSeries(3);
  const SeriesNumber first[] = {{0, 1}, {1, 2}};
  const SeriesNumber second[] = {{1, 2}};
  rows.Add(kNoon, false, first, kNoLimit, false);
  for (int row = 1; row <= 8641; ++row) {
    rows.Add(kNoon + row * 10, false, second, kNoLimit, false);
    if (row == 8000) {
      EXPECT_EQ(rows.Used(), std::vector<bool>({true, true, false}));
    }
  }
  rows.Add(kNoon + 8642 * 10, false, second, kNoLimit, false);
  EXPECT_EQ(rows.Used(), std::vector<bool>({false, true, false}));
}

}  // namespace
