// Rows of a realistic display at any size, and rows of one kind alone.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace bench {

using Row = std::pair<std::string, std::string>;

// What the rows are.
struct Mix {
  // "display": dimming, T-table with device nodes, DCIO devices, and sensors of all kinds on the
  // own buses and behind display interfaces, DCIO boards with labelled points among them. "parked":
  // sensors without "Type", so that no record, device or text is made from them. "points": DCIO
  // boards on an own bus, with as many labelled points as they take. "nodes": device nodes of the
  // T-table. "unknown": keys that sort after every row of the key table.
  std::string_view What = "display";
  std::size_t Rows = 100;      // about so many
  std::size_t Interfaces = 2;  // display interfaces that the sensors are spread over
};

// In byte order of their keys. Numbers are padded with zeros, as writers do it. Throws
// std::invalid_argument for an unknown mix.
std::vector<Row> MakeRows(const Mix& mix);

}  // namespace bench
