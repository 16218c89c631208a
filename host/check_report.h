// What `check` says of a snapshot, by the conventions of monitoring plugins.
#pragma once

#include <string>
#include <vector>

#include "insight/limits.h"
#include "insight/snapshot.h"

namespace host {

// A finding that is left out: its Id and, unless it is empty, which one: the Id of its source, its
// path or its row key. Reads "fan-stopped" and "fan-stopped:Sensor_13_CurrentRpm". Throws
// std::invalid_argument when there is no such finding, and for a source that is not named.
class Ignored {
 public:
  explicit Ignored(const std::string& text);

  bool Fits(const insight::Finding& finding) const;

 private:
  std::string id_;
  std::string which_;
};

struct Report {
  int Status;        // a PluginStatus
  std::string Text;  // lines
};

// `database_trouble`: what went wrong with the database in words, "" for nothing.
Report CheckReport(const insight::Snapshot& snapshot, const insight::Limits& limits,
                   const std::vector<Ignored>& ignored, const std::string& database_trouble);

}  // namespace host
