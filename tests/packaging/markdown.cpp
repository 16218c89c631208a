#include "tests/packaging/markdown.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

namespace markdown {
namespace {

std::string Trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(' ');
  if (begin == std::string_view::npos) {
    return "";
  }
  return std::string(text.substr(begin, text.find_last_not_of(' ') - begin + 1));
}

// The text of a heading of any level; empty for any other line.
std::string HeadingOf(const std::string& line) {
  const std::size_t level = line.find_first_not_of('#');
  return level == 0 || level == std::string::npos ? "" : Trimmed(line.substr(level));
}

bool IsTableRow(const std::string& line) { return line.starts_with("|"); }

Cells CellsOf(const std::string& line) {
  Cells cells;
  std::size_t begin = 1;
  for (std::size_t end = line.find('|', begin); end != std::string::npos;
       end = line.find('|', begin)) {
    cells.push_back(Trimmed(std::string_view(line).substr(begin, end - begin)));
    begin = end + 1;
  }
  return cells;
}

constexpr std::string_view kGap = "...";

// Whether `line` is `pattern`, in which "..." stands for anything.
bool Matches(std::string_view line, std::string_view pattern) {
  const std::size_t gap = pattern.find(kGap);
  if (gap == std::string_view::npos) {
    return line == pattern;
  }
  if (line.substr(0, gap) != pattern.substr(0, gap)) {
    return false;
  }
  const std::string_view rest = pattern.substr(gap + kGap.size());
  for (std::size_t skipped = gap; skipped <= line.size(); ++skipped) {
    if (Matches(line.substr(skipped), rest)) {
      return true;
    }
  }
  return false;
}

bool MatchesAt(const std::vector<std::string>& document, std::size_t at,
               const std::vector<std::string>& pattern, std::size_t from) {
  for (; from < pattern.size() && pattern[from] != kGap; ++from, ++at) {
    if (at == document.size() || !Matches(document[at], pattern[from])) {
      return false;
    }
  }
  if (from == pattern.size()) {
    return true;
  }
  for (; at < document.size(); ++at) {
    if (MatchesAt(document, at, pattern, from + 1)) {
      return true;
    }
  }
  return false;
}

std::vector<std::string> WithoutIndent(std::string_view text) {
  std::vector<std::string> lines = Lines(text);
  for (std::string& line : lines) {
    line.erase(0, line.find_first_not_of(' '));
  }
  return lines;
}

}  // namespace

std::vector<std::string> Lines(std::string_view text) {
  std::vector<std::string> lines;
  std::istringstream stream{std::string(text)};
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

std::vector<Cells> Table(std::string_view page, std::string_view heading) {
  const std::vector<std::string> lines = Lines(page);
  const auto is_heading = [](const std::string& line) { return !HeadingOf(line).empty(); };
  const auto start = std::ranges::find(lines, heading, &HeadingOf);
  const auto stop = start == lines.end() ? start : std::find_if(start + 1, lines.end(), is_heading);
  auto row = std::find_if(start, stop, &IsTableRow);
  if (stop - row < 3) {  // its head, the rule and a row
    throw std::runtime_error("no table below the heading " + std::string(heading));
  }
  std::vector<Cells> table;
  for (row += 2; row != stop && IsTableRow(*row); ++row) {
    table.push_back(CellsOf(*row));
  }
  return table;
}

std::vector<std::string> Names(std::string_view cell) {
  std::vector<std::string> names;
  for (std::size_t begin = cell.find('`'); begin != std::string_view::npos;) {
    const std::size_t end = cell.find('`', begin + 1);
    if (end == std::string_view::npos) {
      break;
    }
    names.emplace_back(cell.substr(begin + 1, end - begin - 1));
    begin = cell.find('`', end + 1);
  }
  return names;
}

std::string Name(std::string_view cell) {
  const std::vector<std::string> names = Names(cell);
  return names.size() == 1 ? names[0] : "";
}

std::vector<Block> Blocks(std::string_view page) {
  std::vector<Block> blocks;
  std::string heading;
  bool inside = false;
  for (const std::string& line : Lines(page)) {
    if (line.starts_with("```")) {
      inside = !inside;
      if (inside) {
        blocks.push_back({heading, line.substr(3), ""});
      }
    } else if (inside) {
      blocks.back().Text += line + "\n";
    } else if (!HeadingOf(line).empty()) {
      heading = HeadingOf(line);
    }
  }
  return blocks;
}

bool Shows(std::string_view document, std::string_view example) {
  std::vector<std::string> pattern = WithoutIndent(example);
  pattern.insert(pattern.begin(), std::string(kGap));
  return MatchesAt(WithoutIndent(document), 0, pattern, 0);
}

}  // namespace markdown
