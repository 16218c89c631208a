// The last 24 hours of the controller: numbers and findings.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "insight/snapshot.h"
#include "serve/history_findings.h"
#include "serve/history_names.h"
#include "serve/history_rows.h"

namespace serve {

// A clock that says less has not been set: 2020-01-01.
inline constexpr UnixSeconds kClockSet = 1577836800;

// Both clocks at one moment, in milliseconds, and the boot that the steady one counts from.
struct ClockTimes {
  std::int64_t System = 0;
  std::int64_t Steady = 0;
  std::string Boot = {};  // "": not known
};

// All that there is, for one thread at a time.
// NOLINTNEXTLINE(bugprone-exception-escape): a deque takes memory when it is moved
struct HistoryData {
  explicit HistoryData(std::uint32_t interval) : Rows(interval) {}

  HistoryRows Rows;
  HistoryNames Names;
  HistoryFindings Findings;
  ClockTimes Latest;        // of the latest cycle
  std::size_t LeftOut = 0;  // numbers of it that there was no room for

  // Whether a row says what was read in the 24 hours before the latest cycle: the clock of another
  // boot may have been wrong, as it was when the row is later than this boot.
  bool IsOfToday(std::size_t row) const;
  UnixSeconds Now() const;
  // The series of a number by the identity of its element and its path from there, or both joined.
  std::optional<std::uint32_t> Find(std::string_view identity) const;
};

// Any thread; none waits for a cycle or for a disk.
class History {
 public:
  // `interval` is that of the cycles, `boot` names the boot of this controller. `before` is what a
  // file has, of whatever boot.
  History(std::chrono::seconds interval, std::string boot);
  void Restore(HistoryData data);

  // What a cycle gave. Returns when each finding of the snapshot began; nothing for those that
  // there is no room for. Of all threads the one that runs cycles.
  std::vector<std::optional<HistoryFindings::Beginning>> Add(const insight::Snapshot& snapshot);

  // What `look` returns for all that there is.
  template <class Looker>
  auto Look(const Looker& look) const {
    const std::lock_guard lock(mutex_);
    return look(data_);
  }

  // Between these the rows are held: changing them wins no memory.
  void SetHeld(bool held);

  // How often Add() was called.
  std::uint64_t Version() const;

 private:
  struct Reading {
    const std::string* Element;
    std::string Field;
    float Number;
  };

  bool KeepTime(const insight::Snapshot& snapshot);
  std::optional<std::uint32_t> SeriesOf(const Reading& reading);
  std::optional<std::uint32_t> NewSeries();
  void Prune();

  const std::chrono::seconds interval_;
  const std::string boot_;
  mutable std::mutex mutex_;
  HistoryData data_;
  std::vector<std::uint32_t> free_;  // series without a name
  std::chrono::steady_clock::time_point pruned_ = {};
  bool first_ = true;
  bool held_ = false;
  std::uint64_t version_ = 0;
};

// Names the boot of this controller; "" when that cannot be known.
std::string BootOfController();

}  // namespace serve
