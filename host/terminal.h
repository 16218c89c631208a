// The terminal that a person reads: its size, its colours, and the pager before it.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace host {

// What is written to something else than a terminal has lines of this many columns.
inline constexpr std::size_t kPipeColumns = 80;

struct Window {
  std::size_t Columns = kPipeColumns;
  std::size_t Lines = 0;  // 0: unknown, or no terminal
};

// The window of the terminal that `descriptor` leads to, as it is now. A terminal that does not
// know its size has the columns of the variable COLUMNS. A window has at least 40 columns here: in
// a narrower one the terminal breaks the lines. What is no terminal has kPipeColumns.
Window WindowOf(int descriptor);

enum class Colour { kAuto, kAlways, kNever };

struct ColourName {
  const char* Name;
  Colour When;
};

// The values of --color.
extern const std::span<const ColourName> kColourNames;

// Whether text written to `descriptor` is to carry the escape sequences of colours. kAuto: when it
// is a terminal, TERM is set and is not "dumb", and NO_COLOR is not set or empty.
bool WantsColour(int descriptor, Colour when);

// Whether text written to `descriptor` can be redrawn in place: a terminal with TERM set and not
// "dumb".
bool WantsScreen(int descriptor);

// Shows `text` in the pager on the terminal that `descriptor` leads to, and returns true once the
// pager has ended. Returns false when the text is still to be written: when it is no terminal or a
// dumb one, when the text fits the window, when PAGER is empty or "cat", or when the pager cannot
// be started. The pager is the command in PAGER, else less. The variable LESS is "FRX" for it where
// it is not set. Throws std::system_error.
bool ShowInPager(int descriptor, std::string_view text);

}  // namespace host
