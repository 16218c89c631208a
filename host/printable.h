// Text that is safe and measurable on a terminal.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace host {

// Any bytes as the text that may go to a terminal: without blanks at its ends, tabs and line ends
// as blanks, and what could steer the terminal or turn the reading direction (other control
// characters, escape sequences with them, format characters) or is not UTF-8 as U+FFFD.
std::string Printable(std::string_view source);

// The functions below take printable text.

// Columns that printable text takes.
std::size_t Width(std::string_view text);

// Bytes of the longest beginning of `text` that takes at most `columns`.
std::size_t BytesWithin(std::string_view text, std::size_t columns);

// `text` in at most `columns`; what is cut off leaves "…" behind.
std::string Truncated(std::string_view text, std::size_t columns);

// "1 row", "2 rows".
std::string Counted(std::size_t count, std::string_view one, std::string_view many);

}  // namespace host
