// Rows of a realistic display at any size.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace bench {

using Row = std::pair<std::string, std::string>;

// About `count` rows, in byte order of their keys: dimming, T-table with device nodes, DCIO
// devices, and sensors of all kinds on the own buses and behind two display interfaces, DCIO boards
// with labelled points among them. Numbers are padded with zeros, as writers do it.
std::vector<Row> MakeRows(std::size_t count);

// Rows that only park attributes: no "Type", so that no record, device or text is made from them.
std::vector<Row> MakeParkedRows(std::size_t count);

}  // namespace bench
