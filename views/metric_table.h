// The table of metrics: rendering and manual are made from it. Private to this folder.
#pragma once

#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "model/listing.h"
#include "views/metrics.h"

namespace views {

struct Sample {
  std::vector<std::pair<const char*, std::string>> Labels;
  double Value = 0;
};

struct Metric;

// What samples are made from; Snapshot is null before the first cycle is over.
struct Sources {
  const insight::Snapshot* Snapshot = nullptr;
  const Served& Server;
};

using Samples = std::vector<Sample>;

// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): in the order of the table of the page
struct Metric {
  const char* Name;  // without "statuscollector_"
  bool IsCounter;    // a number that only grows until the program or the controller starts anew
  const char* About;
  const char* Labels;  // names between blanks
  // Those of `metric`.
  void (*Collect)(const Metric& metric, const Sources& from, Samples* samples);

  // Of a value in the document: the class whose elements have it (the classes derived from it
  // included), the path from there, and what makes the base unit of it.
  const QtSts::ClassInfo* Class = nullptr;
  const char* Field = "";
  double Factor = 1;
  double Offset = 0;
  double Least = -std::numeric_limits<double>::infinity();  // what is below stands for no value
  bool AlsoDisconnected = false;  // of sensors that are not connected, too
};

// In the order in which they are rendered.
std::span<const Metric> MetricTable();

}  // namespace views
