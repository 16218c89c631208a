// How remarks about a row are made. Private to this library.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

#include "insight/snapshot.h"

namespace insight {

// The bytes that a remark speaks of.
struct Excerpt {
  RowPart Part = RowPart::kNone;
  std::size_t Begin = 0;
  std::size_t End = 0;
};

Excerpt WholeKey(const Row& row);
Excerpt WholeValue(const Row& row);
// From `begin` to the end of the key.
Excerpt KeyFrom(const Row& row, std::size_t begin);

// Once for each outcome.
void AddRemark(Row* row, Outcome what, std::string text, const Excerpt& place = {});

bool HasRemark(const Row& row, Outcome what);

// One text of these parts.
std::string Joined(std::initializer_list<std::string_view> parts);

// A text between quotes as a message has it: clean UTF-8 in one line, without the middle of a long
// one.
std::string Quoted(std::string_view text);

// `; the nearest is "Celsius"`; "" when there is none.
std::string NearestIs(std::string_view nearest);

// "1 row", "3 rows".
std::string Counted(std::size_t count, std::string_view what);

}  // namespace insight
