#include "serve/history_rows.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

namespace serve {
namespace {

constexpr std::uint32_t kVarintBits = 7;
constexpr std::uint32_t kVarintMore = 1U << kVarintBits;
constexpr std::size_t kNumberBytes = 4;
constexpr std::uint32_t kByteBits = 8;

// No number is the same as no number.
bool IsSame(float one, float other) {
  return one == other || (std::isnan(one) && std::isnan(other));
}

void PutVarint(std::uint32_t number, std::vector<std::uint8_t>* bytes) {
  for (; number >= kVarintMore; number >>= kVarintBits) {
    bytes->push_back(static_cast<std::uint8_t>(number | kVarintMore));
  }
  bytes->push_back(static_cast<std::uint8_t>(number));
}

void PutNumber(float number, std::vector<std::uint8_t>* bytes) {
  const auto bits = std::bit_cast<std::uint32_t>(number);
  for (std::size_t at = 0; at < kNumberBytes; ++at) {
    bytes->push_back(static_cast<std::uint8_t>(bits >> (at * kByteBits)));
  }
}

// Takes a varint of at most `kMostSeries` off the front.
std::optional<std::uint32_t> TakeVarint(std::span<const std::uint8_t>* bytes) {
  std::uint32_t number = 0;
  for (std::uint32_t shift = 0; !bytes->empty() && number <= HistoryRows::kMostSeries;
       shift += kVarintBits) {
    constexpr std::uint32_t kMostShift = 21;
    if (shift > kMostShift) {
      return std::nullopt;
    }
    const std::uint32_t byte = bytes->front();
    *bytes = bytes->subspan(1);
    number |= (byte & (kVarintMore - 1)) << shift;
    if (byte < kVarintMore) {
      return number;
    }
  }
  return std::nullopt;
}

// Calls `visit` with the series and the number of each change. False: these bytes are no changes of
// `count` series.
template <class Visit>
bool VisitChanges(std::span<const std::uint8_t> bytes, std::uint32_t count, const Visit& visit) {
  std::uint32_t next = 0;
  while (!bytes.empty()) {
    const std::optional<std::uint32_t> skipped = TakeVarint(&bytes);
    if (!skipped || *skipped >= count - next || bytes.size() < kNumberBytes) {
      return false;
    }
    std::uint32_t bits = 0;
    for (std::size_t at = 0; at < kNumberBytes; ++at) {
      bits |= static_cast<std::uint32_t>(bytes[at]) << (at * kByteBits);
    }
    bytes = bytes.subspan(kNumberBytes);
    const auto number = std::bit_cast<float>(bits);
    if (std::isinf(number)) {
      return false;
    }
    visit(next + *skipped, std::isnan(number) ? kNoNumber : number);
    next += *skipped + 1;
  }
  return true;
}

std::span<const std::uint8_t> ChangesOf(const HistoryRows::Row& row) {
  return {row.Changes.get(), row.Size};
}

HistoryRows::Row MakeRow(UnixSeconds time, bool gap, std::span<const std::uint8_t> changes) {
  const auto copy = std::allocate_shared_for_overwrite<std::uint8_t[]>(
      HistoryAllocator<std::uint8_t, HistoryPart::kRows>(), changes.size());
  std::ranges::copy(changes, copy.get());
  return {time, gap, static_cast<std::uint32_t>(changes.size()), copy};
}

HistoryRows::Row MakeRow(UnixSeconds time, bool gap, std::span<const float> before,
                         std::span<const float> now) {
  std::vector<std::uint8_t> changes;
  std::uint32_t next = 0;
  for (std::uint32_t at = 0; at < now.size(); ++at) {
    if (!IsSame(before[at], now[at])) {
      PutVarint(at - next, &changes);
      PutNumber(now[at], &changes);
      next = at + 1;
    }
  }
  return MakeRow(time, gap, changes);
}

template <class Numbers>
void Apply(const HistoryRows::Row& row, Numbers* numbers) {
  VisitChanges(ChangesOf(row), static_cast<std::uint32_t>(numbers->size()),
               [numbers](std::uint32_t at, float number) { (*numbers)[at] = number; });
}

UnixSeconds StepOf(UnixSeconds time, std::uint32_t step) {
  const UnixSeconds rest = time % step;
  return time - (rest < 0 ? rest + step : rest);
}

}  // namespace

void HistoryRows::AddSeries(std::uint32_t count) {
  for (Numbers* const numbers : {&base_, &before_, &current_}) {
    numbers->resize(numbers->size() + count, kNoNumber);
  }
}

std::vector<bool> HistoryRows::Used() const {
  std::vector<bool> used(base_.size());
  for (std::size_t at = 0; at < base_.size(); ++at) {
    used[at] = !std::isnan(base_[at]) || !std::isnan(current_[at]);
  }
  for (const Row& row : rows_) {
    VisitChanges(ChangesOf(row), SeriesCount(),
                 [&used](std::uint32_t at, float /*number*/) { used[at] = true; });
  }
  return used;
}

void HistoryRows::Add(UnixSeconds time, bool gap, std::span<const SeriesNumber> numbers,
                      std::size_t limit, bool held) {
  Numbers now(current_.size(), kNoNumber);
  for (const SeriesNumber& each : numbers) {
    now[each.Series] = each.Number;
  }
  if (own_ > 0) {
    time = std::max(time, rows_.back().Time);
  }
  DropOld(time);
  const bool same_step =
      step_ > interval_ && own_ > 0 && StepOf(rows_.back().Time, step_) == StepOf(time, step_);
  if (same_step || (held && own_ > 0 && IsFull(limit))) {
    gap = gap || rows_.back().Gap;
    rows_.pop_back();
    --own_;
    current_ = before_;
  }
  before_ = current_;
  rows_.push_back(MakeRow(time, gap, before_, now));
  ++own_;
  current_.swap(now);
  if (!held) {
    Shrink(limit);
  }
}

bool HistoryRows::IsFull(std::size_t limit) const {
  return rows_.size() > kMostRows || HistoryBytes() > limit;
}

void HistoryRows::Shrink(std::size_t limit) {
  while (IsFull(limit) && step_ < kHistorySeconds) {
    Coarsen();
  }
  while (IsFull(limit) && rows_.size() > 1) {
    DropFront();
  }
}

void HistoryRows::DropFront() {
  Apply(rows_.front(), &base_);
  own_ = std::min(own_, rows_.size() - 1);
  rows_.pop_front();
}

// A clock that was wrong before this boot may have given rows times that are still to come. They
// stay until this boot alone is long enough.
void HistoryRows::DropOld(UnixSeconds now) {
  const bool long_boot = own_ > 0 && rows_[rows_.size() - own_].Time < now - kHistorySeconds;
  while (!rows_.empty() &&
         (rows_.front().Time < now - kHistorySeconds || (long_boot && own_ < rows_.size()))) {
    DropFront();
  }
  if (rows_.empty()) {
    before_ = current_;
  }
}

bool HistoryRows::MayMerge(std::size_t first, std::size_t second) const {
  const std::size_t begin = rows_.size() - own_;
  return (first < begin) == (second < begin) &&
         StepOf(rows_[first].Time, step_) == StepOf(rows_[second].Time, step_);
}

void HistoryRows::Coarsen() {
  step_ *= 2;
  const std::size_t others = rows_.size() - own_;
  Rows kept;
  std::size_t own = 0;
  Numbers written = base_;
  Numbers running = base_;
  bool gap = false;
  bool merged = false;
  for (std::size_t at = 0; at < rows_.size(); ++at) {
    Row& row = rows_[at];
    Apply(row, &running);
    gap = gap || row.Gap;
    if (at + 1 < rows_.size() && MayMerge(at, at + 1)) {
      row.Changes.reset();
      merged = true;
      continue;
    }
    kept.push_back(merged ? MakeRow(row.Time, gap, written, running) : row);
    row.Changes.reset();
    own += at < others ? 0 : 1;
    if (at + 1 == rows_.size()) {
      before_ = written;
    }
    written = running;
    gap = merged = false;
  }
  rows_.swap(kept);
  own_ = own;
}

void HistoryRows::Shift(UnixSeconds seconds) {
  for (std::size_t at = rows_.size() - own_; at < rows_.size(); ++at) {
    rows_[at].Time += seconds;
  }
}

void HistoryRows::Read(std::span<const std::uint32_t> series,
                       const std::function<void(const Row&, std::span<const float>)>& visit) const {
  constexpr std::uint32_t kUnasked = std::numeric_limits<std::uint32_t>::max();
  std::vector<std::uint32_t> places(base_.size(), kUnasked);
  std::vector<float> numbers;
  for (const std::uint32_t each : series) {
    places[each] = static_cast<std::uint32_t>(numbers.size());
    numbers.push_back(base_[each]);
  }
  for (const Row& row : rows_) {
    VisitChanges(ChangesOf(row), SeriesCount(), [&](std::uint32_t at, float number) {
      if (places[at] != kUnasked) {
        numbers[places[at]] = number;
      }
    });
    visit(row, numbers);
  }
}

void HistoryRows::SetBase(std::span<const float> base) {
  for (Numbers* const numbers : {&base_, &before_, &current_}) {
    numbers->assign(base.begin(), base.end());
  }
}

bool HistoryRows::Restore(UnixSeconds time, bool gap, std::span<const std::uint8_t> changes) {
  before_ = current_;
  const bool whole = VisitChanges(
      changes, SeriesCount(), [this](std::uint32_t at, float number) { current_[at] = number; });
  rows_.push_back(MakeRow(time, gap, changes));
  return whole;
}

}  // namespace serve
