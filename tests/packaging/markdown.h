// The tables and fenced blocks of a page of docs/, for tests that keep the page true.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace markdown {

using Cells = std::vector<std::string>;  // of one row of a table, without the blanks around them

// The rows of the first table below `heading` ("Sensor kinds"), without its two head rows. Throws
// std::runtime_error when there is no such heading or no table before the next one.
std::vector<Cells> Table(std::string_view page, std::string_view heading);

// Everything that stands between backticks in `cell`.
std::vector<std::string> Names(std::string_view cell);

// The one name in `cell`; empty when there are none or several.
std::string Name(std::string_view cell);

// A fenced block with the heading above it.
struct Block {
  std::string Heading;
  std::string Language;
  std::string Text;
};

std::vector<Block> Blocks(std::string_view page);

std::vector<std::string> Lines(std::string_view text);

// Whether the lines of `example` stand somewhere in `text`, indented or not. In the example, "..."
// stands for anything: within a line, or as a line of its own for any number of lines.
bool Shows(std::string_view text, std::string_view example);

}  // namespace markdown
