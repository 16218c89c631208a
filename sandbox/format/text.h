#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

// The line formats of a scenario have this in common.
namespace sandbox {

// Calls `use` for each line of `text`, without its line feed.
void ForEachRawLine(std::string_view text, const std::function<void(const std::string&)>& use);

// Calls `use` with the words of each line that has any; `#` at the start of a word begins a
// comment. In a word \x and two hexadecimal digits stand for a byte. An exception of `use` is
// rethrown as std::runtime_error with the line number.
void ForEachLine(std::string_view text,
                 const std::function<void(const std::vector<std::string>&)>& use);

// A word of such a line, with blanks, control bytes, '#' and backslashes as \x and digits. `plain`
// is not empty: there is no empty word.
std::string WordText(std::string_view plain);

// "0A", and the byte of two such digits; throws std::runtime_error when they are none.
std::string Hexadecimal(char byte);
char ByteOf(std::string_view digits);

// The number in decimal digits; throws std::runtime_error when `word` is none, or more than `most`.
std::uint64_t NumberOf(const std::string& word,
                       std::uint64_t most = std::numeric_limits<std::uint64_t>::max());

}  // namespace sandbox
