#include "serve/history.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <utility>

#include "views/numbers.h"

namespace serve {
namespace {

using std::chrono::duration_cast;
using std::chrono::milliseconds;

constexpr std::int64_t kPerSecond = 1000;
constexpr std::int64_t kJump = 5 * kPerSecond;  // less is what a clock is set right by all day
constexpr std::int64_t kLate = 5 * kPerSecond;  // for a cycle, beside two intervals
constexpr std::chrono::hours kPruneEach{1};

// For what a cycle and a save need meanwhile.
constexpr std::size_t kReserve = std::size_t{1} << 20;

std::size_t MostBytes() {
  // A save copies names and findings, which need half as much in a file.
  const std::size_t copied =
      (HistoryBytesOf<HistoryPart::kNames>() + HistoryBytesOf<HistoryPart::kFindings>()) / 2;
  return kMostHistoryBytes - kReserve - copied;
}

std::int64_t Floor(std::int64_t number, std::int64_t divisor) {
  return number / divisor - (number % divisor < 0 ? 1 : 0);
}

ClockTimes TimesOf(const insight::Snapshot& snapshot, const std::string& boot) {
  return {duration_cast<milliseconds>(snapshot.Began.time_since_epoch()).count(),
          duration_cast<milliseconds>(snapshot.BeganSteady.time_since_epoch()).count(), boot};
}

}  // namespace

UnixSeconds HistoryData::Now() const { return Floor(Latest.System, kPerSecond); }

bool HistoryData::IsOfToday(std::size_t row) const {
  const HistoryRows::Rows& all = Rows.All();
  const UnixSeconds time = all[row].Time;
  const std::size_t own = all.size() - Rows.OfThisBoot();
  const UnixSeconds began = own < all.size() ? all[own].Time : Now();
  return time >= Now() - kHistorySeconds && (row >= own || (time >= kClockSet && time <= began));
}

std::optional<std::uint32_t> HistoryData::Find(std::string_view identity) const {
  for (std::size_t end = identity.size(); end != std::string_view::npos && end > 0;) {
    end = identity.rfind('/', end - 1);
    const bool whole = end == std::string_view::npos;
    const auto series = whole ? Names.Find("", identity)
                              : Names.Find(identity.substr(0, end), identity.substr(end + 1));
    if (series || whole) {
      return series;
    }
  }
  return std::nullopt;
}

History::History(std::chrono::seconds interval, std::string boot)
    : interval_(interval),
      boot_(std::move(boot)),
      data_(static_cast<std::uint32_t>(interval.count())) {}

void History::Restore(HistoryData data) {
  const std::lock_guard lock(mutex_);
  std::vector<bool> named(data.Rows.SeriesCount());
  data.Names.Visit(
      [&named](std::string_view, std::string_view, std::uint32_t series) { named[series] = true; });
  for (std::uint32_t series = 0; series < named.size(); ++series) {
    if (!named[series]) {
      free_.push_back(series);
    }
  }
  if (data.Latest.Boot.empty() || data.Latest.Boot != boot_) {
    data.Rows.SetOfThisBoot(0);
    data.Findings.EndRestoring(kClockSet);
  }
  data_ = std::move(data);
}

// Moves what was seen in this boot when the clock was set, and returns whether cycles are missing
// before this one.
bool History::KeepTime(const insight::Snapshot& snapshot) {
  const ClockTimes now = TimesOf(snapshot, boot_);
  const ClockTimes before = std::exchange(data_.Latest, now);
  const std::int64_t passed = now.Steady - before.Steady;
  const bool first = std::exchange(first_, false);
  if (!first || (!boot_.empty() && before.Boot == boot_)) {
    const std::int64_t jump = now.System - before.System - passed;
    if (std::abs(jump) > kJump) {
      const UnixSeconds seconds = Floor(jump + kPerSecond / 2, kPerSecond);
      data_.Rows.Shift(seconds);
      data_.Findings.Shift(seconds);
    }
  }
  return first || passed > 2 * milliseconds(interval_).count() + kLate;
}

void History::Prune() {
  const std::vector<bool> used = data_.Rows.Used();
  data_.Names.Visit([&](std::string_view, std::string_view, std::uint32_t series) {
    if (!used[series]) {
      free_.push_back(series);
    }
  });
  data_.Names.Keep(used);
}

std::optional<std::uint32_t> History::NewSeries() {
  if (!free_.empty()) {
    const std::uint32_t series = free_.back();
    free_.pop_back();
    return series;
  }
  if (data_.Rows.SeriesCount() >= HistoryRows::kMostSeries) {
    return std::nullopt;
  }
  data_.Rows.AddSeries(1);
  return data_.Rows.SeriesCount() - 1;
}

std::optional<std::uint32_t> History::SeriesOf(const Reading& reading) {
  std::optional<std::uint32_t> series = data_.Names.Find(*reading.Element, reading.Field);
  if (!series && HistoryBytesOf<HistoryPart::kNames>() < HistoryNames::kMostBytes) {
    series = NewSeries();
    if (series) {
      data_.Names.Add(*reading.Element, reading.Field, *series);
    }
  }
  return series;
}

std::vector<std::optional<HistoryFindings::Beginning>> History::Add(
    const insight::Snapshot& snapshot) {
  const Identities identities(snapshot.Document);
  std::vector<Reading> readings;
  views::VisitNumbers(
      snapshot, [&](const QtSts::TreeElement& element, const std::string& field, double number) {
        readings.push_back({&identities.Of(element), field, static_cast<float>(number)});
      });
  const std::vector<std::string> findings = IdentitiesOf(snapshot.Findings, identities);

  const std::lock_guard lock(mutex_);
  ++version_;
  const bool first = first_;
  const bool gap = KeepTime(snapshot);
  if (snapshot.BeganSteady - pruned_ >= kPruneEach) {
    pruned_ = snapshot.BeganSteady;
    Prune();
  }
  data_.LeftOut = 0;
  std::vector<SeriesNumber> numbers;
  numbers.reserve(readings.size());
  for (const Reading& reading : readings) {
    if (const std::optional<std::uint32_t> series = SeriesOf(reading)) {
      numbers.push_back({*series, reading.Number});
    } else {
      ++data_.LeftOut;
    }
  }
  data_.Rows.Add(data_.Now(), gap, numbers, MostBytes(), held_);
  const HistoryRows& rows = data_.Rows;
  const bool alone = rows.OfThisBoot() == rows.All().size();
  auto beginnings = data_.Findings.Update(snapshot, findings, data_.Now(), first);
  data_.Findings.Forget(data_.Now(), alone);
  return beginnings;
}

void History::SetHeld(bool held) {
  const std::lock_guard lock(mutex_);
  held_ = held;
}

std::uint64_t History::Version() const {
  const std::lock_guard lock(mutex_);
  return version_;
}

std::string BootOfController() {
  std::ifstream file("/proc/sys/kernel/random/boot_id");
  std::string boot;
  std::getline(file, boot);
  return boot;
}

}  // namespace serve
