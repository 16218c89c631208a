// What is asked of the text of a view before SQLite compiles it; private to this folder.
#pragma once

#include <string>
#include <string_view>

namespace sqlitedb {

constexpr std::size_t kMaxViewBytes = 4096;

// Of one table to others. What SQLite weighs before it reads them grows with the power of their
// number and with that of their indexes.
constexpr int kMaxJoins = 10;

// The words of a text or name in small letters, each between two blanks. Quotes and all other
// signs are gone, so that a name that a text mentions is found in it, however it is quoted there.
std::string Words(std::string_view text);

// What keeps SQLite from being let at the view that `text` creates: "has a subquery", or nullptr.
const char* FaultOfView(std::string_view text);

}  // namespace sqlitedb
