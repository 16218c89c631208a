// A snapshot as metrics, in the text format that Prometheus reads.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "insight/snapshot.h"

namespace views {

// What a snapshot does not say of the program that makes one after the other.
struct Served {
  std::chrono::seconds Interval = {};  // between the beginnings of two cycles
  std::uint64_t Cycles = 0;
  std::uint64_t Failed = 0;  // of them
  std::optional<std::chrono::system_clock::time_point> LastSuccess = {};
  // Of a cycle that is not over when the next one should begin: since when, and what it asked last.
  std::optional<std::chrono::system_clock::time_point> HangsSince = {};
  std::string Asked = {};
};

// All metrics of the table that have a value; null: no cycle is over yet. UTF-8, whatever the rows
// hold. Throws std::bad_alloc.
std::string RenderMetrics(const insight::Snapshot* snapshot, const Served& served);

// The table of metrics as a page of the manual.
std::string DescribeMetrics();

}  // namespace views
