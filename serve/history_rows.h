// What was read in the last 24 hours.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "serve/history_memory.h"

namespace serve {

using UnixSeconds = std::int64_t;  // of the system clock

inline constexpr UnixSeconds kHistorySeconds = 86400;

// No number was read.
inline constexpr float kNoNumber = std::numeric_limits<float>::quiet_NaN();

struct SeriesNumber {
  std::uint32_t Series;
  float Number;
};

// A row of numbers for each step of time, as what changed against the row before. When there are
// too many rows or bytes the step doubles: of the rows of one step the last one stays. One thread
// at a time; a copy of a row keeps what it holds.
// NOLINTNEXTLINE(bugprone-exception-escape): a deque takes memory when it is moved
class HistoryRows {
 public:
  static constexpr std::uint32_t kMostSeries = 65536;
  static constexpr std::size_t kMostRows = 10000;

  using Bytes = std::shared_ptr<const std::uint8_t[]>;
  struct Row {
    UnixSeconds Time;
    bool Gap;            // it is not known what was between the row before and this one
    std::uint32_t Size;  // of Changes
    Bytes Changes;       // for each: the series less the one before it less 1, a varint; a float
  };
  using Rows = std::deque<Row, HistoryAllocator<Row, HistoryPart::kRows>>;

  // `interval` is that of the rows to come.
  explicit HistoryRows(std::uint32_t interval) : interval_(interval), step_(interval) {}

  std::uint32_t SeriesCount() const { return static_cast<std::uint32_t>(current_.size()); }
  void AddSeries(std::uint32_t count);
  // Those that have a number somewhere.
  std::vector<bool> Used() const;

  // What was read at `time`; the series that are not in `numbers` have none. The history has at
  // most `limit` bytes afterwards. With `held` others hold the rows, so that no memory is won by
  // changing them: when it is full the row takes the place of the newest one.
  void Add(UnixSeconds time, bool gap, std::span<const SeriesNumber> numbers, std::size_t limit,
           bool held);

  // Moves the times of the rows of this boot.
  void Shift(UnixSeconds seconds);

  // Calls `visit` with each row and the numbers of `series`, which are all different, in their
  // order.
  void Read(std::span<const std::uint32_t> series,
            const std::function<void(const Row&, std::span<const float>)>& visit) const;

  std::uint32_t Step() const { return step_; }
  const Rows& All() const { return rows_; }
  // How many of the last rows are of this boot.
  std::size_t OfThisBoot() const { return own_; }
  // What there was before the first row.
  std::span<const float> Base() const { return base_; }

  // From a file, instead of Add(): the base, then row after row. False: this is no row.
  void SetBase(std::span<const float> base);
  bool Restore(UnixSeconds time, bool gap, std::span<const std::uint8_t> changes);
  // Of the restored rows the last `count` are of this boot.
  void SetOfThisBoot(std::size_t count) { own_ = count; }

 private:
  using Numbers = HistoryVector<float>;

  bool IsFull(std::size_t limit) const;
  void DropFront();
  void DropOld(UnixSeconds now);
  void Coarsen();
  void Shrink(std::size_t limit);
  bool MayMerge(std::size_t first, std::size_t second) const;

  std::uint32_t interval_;
  std::uint32_t step_;
  Rows rows_;
  std::size_t own_ = 0;
  Numbers base_;
  Numbers before_;   // the newest row
  Numbers current_;  // with the newest row
};

}  // namespace serve
