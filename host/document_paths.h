// Paths of the document in options, and those that change in every cycle.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

// True for LocalTime and Uptime, which are other ones in each cycle.
bool ChangesInEachCycle(std::string_view path);

// Some paths of the document, each with all that stands below it: "Network", "Sensors[3]",
// "Outputs[0]/Dimming/DimmingLevel". A list without a position stands for all its elements:
// "Sensors/Celsius" is that of each sensor.
class DocumentPaths {
 public:
  // Throws std::runtime_error, which names the path, for one that no document can have.
  explicit DocumentPaths(std::vector<std::string> paths);

  bool Hold(std::string_view path) const;

 private:
  std::vector<std::string> paths_;
};

}  // namespace host
