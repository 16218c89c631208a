// What is remarkable about the key of a row. Private to this library.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

#include "collector/observer.h"
#include "collector/state/row_tables.h"
#include "insight/row_values.h"
#include "insight/snapshot.h"

namespace insight {

// Of the texts as the database holds them, and of the entry of the key table.
void JudgeCells(const observe::RowBegins& begins, Row* row);

// The entry of the key table at `position`, "" for -1.
std::string_view EntryAt(int position);

// How the value of a key without a number is read.
ValueFormat FormatOfKey(int entry);

// Of a number in a key, which begins at `begin` and is read as `store` says; `end` is the byte that
// has to follow it: '_', or 0 for the end of the key. Whether it is digits alone, and fits.
bool JudgeKeyNumber(const observe::Stores& store, std::size_t begin, char end, Row* row);

// The attribute of a sensor or DCIO device that a row of this name is taken for; null when there is
// none.
const rows::Attribute* AttributeOf(std::string_view entry, const char* name);

// How the value of this attribute is read; `part` is that of a point.
ValueFormat FormatOfAttribute(const rows::Attribute& attribute, std::string_view part);

// Of an attribute, whose name begins at `begin` of the key.
void JudgeAttribute(const rows::Attribute& known, const observe::Stores& store, std::size_t begin,
                    Row* row);

// The attribute, or the part of a point, that an unknown one is nearest to.
std::string_view NearestAttribute(std::string_view entry, bool is_part, std::string_view unknown);

// The numbers of one family of keys.
struct FamilyNumbers {
  std::size_t FirstWidth = 0;  // digits of the one that came first
  std::size_t LeastWidth = 0;
  std::size_t MostWidth = 0;
  long Highest = -1;
  std::size_t Completed = 0;  // elements, in all lists

  // False when the one that came first has another width.
  bool Add(std::size_t width, long number);
};

}  // namespace insight
