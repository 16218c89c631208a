// What one cycle gave, for every request until the next one is over.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "insight/snapshot.h"
#include "model/compare.h"

namespace serve {

// What only waits for a database that is locked, or for a busy processor, does not hang.
inline constexpr std::chrono::seconds kShortestHang{3};

using SystemTime = std::chrono::system_clock::time_point;

// Nothing of it changes once it is published; every thread may read it.
struct Cycle {
  std::uint64_t Number = 0;  // from 1
  std::uint64_t Failed = 0;  // cycles that failed up to this one
  insight::Snapshot Snapshot;
  std::shared_ptr<const std::string> Xml;  // the document
  std::string Trouble;  // what is wrong with the database, in words; "" for nothing
  std::optional<SystemTime> LastSuccess;
  SystemTime First = {};  // when the first cycle of all began

  // Since when there has been each of the snapshot's findings, in their order, by the history; for
  // those that it has no room for, the beginning of the first of the cycles that had it one after
  // the other.
  std::vector<SystemTime> FindingsSince = {};
  // Whether each of them was there when the program first looked, so that it began before.
  std::vector<bool> FindingsBefore = {};

  // What differs from the document of the cycle before, times aside: the first of it, and how many
  // more there are.
  std::vector<QtSts::Difference> Changes = {};
  std::size_t FurtherChanges = 0;
};

// Fills in when the findings of a cycle began, by the cycle before; null for none.
void AddBeginnings(const Cycle* before, Cycle* cycle);

// A cycle that is not over when the next one should begin, nor after kShortestHang.
struct Hang {
  std::string Asked;  // "reading /dev/travex"
  SystemTime Since;   // when it began

  bool operator==(const Hang&) const = default;
};

// What is answered from. Each has a number of its own, which only grows.
struct State {
  std::uint64_t Version = 0;
  std::shared_ptr<const Cycle> Latest = {};  // null before the first cycle is over
  std::optional<Hang> Hanging = {};
  std::string Failure = {};  // why the latest cycle gave nothing: "out of memory; ..."; "" else
};

}  // namespace serve
