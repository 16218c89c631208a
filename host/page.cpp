#include "host/page.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "host/printable.h"

namespace host {
namespace {

constexpr std::size_t kMargin = 2;  // "! " or two blanks
constexpr std::size_t kGap = 2;     // between columns
constexpr std::size_t kLeastWrapped = 20;

const std::string kNothing;

constexpr const char* kTitleStyle = "\x1b[1m";
constexpr const char* kHeadingStyle = "\x1b[2m";
constexpr const char* kNoStyle = "";
constexpr const char* kWellStyle = "\x1b[1;32m";
constexpr const char* kMarkedStyles[] = {kNoStyle, "\x1b[1;33m", "\x1b[1;35m", "\x1b[1;31m"};

const char* StyleOf(Mark mark) { return kMarkedStyles[static_cast<std::size_t>(mark)]; }

const char* MarkText(Mark mark) { return mark == Mark::kNone ? "  " : "! "; }

// Lines end at a blank, those of a long path after a slash, and where there is neither anywhere.
std::vector<std::string> Wrapped(std::string_view text, std::size_t width) {
  std::vector<std::string> lines;
  while (Width(text) > width) {
    std::size_t cut = std::max<std::size_t>(BytesWithin(text, width), 1);
    const std::size_t blank = text.rfind(' ', cut);
    const std::size_t slash = text.rfind('/', cut - 1);
    const bool at_blank = blank != std::string_view::npos && blank > 0;
    if (at_blank) {
      cut = blank;
    } else if (slash != std::string_view::npos && slash > 0) {
      cut = slash + 1;
    }
    lines.emplace_back(text.substr(0, cut));
    text.remove_prefix(cut + (at_blank ? 1 : 0));
  }
  lines.emplace_back(text);
  return lines;
}

std::string Untied(std::string_view text) {
  const std::string_view tie = kTie;
  std::string untied;
  for (std::size_t found = text.find(tie); found != std::string_view::npos;
       found = text.find(tie)) {
    untied.append(text.substr(0, found)).append(" ");
    text.remove_prefix(found + tie.size());
  }
  return untied.append(text);
}

}  // namespace

std::string Padded(const std::string& text, std::size_t width, Align side) {
  const std::string blanks(width - std::min(width, Width(text)), ' ');
  return side == Align::kRight ? blanks + text : text + blanks;
}

void Page::Styled(const char* style, std::string_view text) {
  std::string line = Untied(text);
  line.resize(line.find_last_not_of(' ') + 1);
  const bool styled = colour_ && *style != '\0';
  text_.append(styled ? style : "").append(line).append(styled ? "\x1b[0m\n" : "\n");
  after_title_ = false;
}

void Page::Headline(Mark how, std::string_view text) {
  for (const std::string& line : Wrapped(text, columns_)) {
    Styled(how == Mark::kNone ? kWellStyle : StyleOf(how), line);
  }
}

void Page::Plain(std::string_view text) {
  for (const std::string& line : Wrapped(text, columns_)) {
    Styled(kNoStyle, line);
  }
}

void Page::Title(std::string_view title) {
  text_ += text_.empty() ? "" : "\n";
  for (const std::string& line : Wrapped(title, columns_)) {
    Styled(kTitleStyle, line);
  }
  after_title_ = true;
}

void Page::Single(Mark how, std::string_view text) {
  Styled(StyleOf(how), MarkText(how) + std::string(text));
}

void Page::Gap() { text_ += after_title_ ? "" : "\n"; }

void Page::Line(std::string_view text) {
  for (const std::string& line : Wrapped(text, columns_ - kMargin)) {
    Styled(kNoStyle, std::string(kMargin, ' ') + line);
  }
}

// Widths that hold every cell, made narrower until the row fits the page: first the wrapped column,
// then whichever is widest.
Page::Grid Page::Measure(const std::vector<Heading>& headings, const std::vector<Row>& rows,
                         std::size_t wrapped) const {
  Grid grid = {headings, {}, std::min(wrapped, headings.size() - 1)};
  std::vector<std::size_t>& widths = grid.Widths;
  for (std::size_t i = 0; i < headings.size(); ++i) {
    std::size_t width = Width(headings[i].Text);
    for (const Row& row : rows) {
      width = std::max(width, Width(row.Cells[i]));
    }
    widths.push_back(width);
  }
  const std::size_t taken = kMargin + kGap * (headings.size() - 1);
  const std::size_t room = std::max(columns_, taken) - taken;
  std::size_t sum = std::accumulate(widths.begin(), widths.end(), std::size_t{0});
  for (; sum > room; --sum) {
    std::size_t& wraps = widths[grid.Wrapped];
    --(wraps > kLeastWrapped ? wraps : *std::max_element(widths.begin(), widths.end()));
  }
  return grid;
}

void Page::TableRow(const Grid& grid, const Row& row, const char* style) {
  const std::size_t columns = grid.Widths.size();
  std::vector<std::vector<std::string>> cells;
  cells.reserve(columns);
  std::size_t lines = 1;
  for (std::size_t i = 0; i < columns; ++i) {
    cells.push_back(Wrapped(row.Cells[i], std::max<std::size_t>(grid.Widths[i], 1)));
    lines = std::max(lines, cells.back().size());
  }
  std::string_view mark = MarkText(row.How);
  for (std::size_t part = 0; part < lines; ++part) {
    std::string line(std::exchange(mark, "  "));
    for (std::size_t i = 0; i < columns; ++i) {
      const std::string& cell = part < cells[i].size() ? cells[i][part] : kNothing;
      line += Padded(cell, grid.Widths[i], grid.Headings[i].Side);
      line.append(kGap, ' ');
    }
    Styled(style, line);
  }
}

void Page::Table(const std::vector<Heading>& headings, const std::vector<Row>& rows,
                 std::size_t wrapped) {
  const Grid grid = Measure(headings, rows, wrapped);
  Row top;
  bool titled = false;
  for (const Heading& heading : headings) {
    top.Cells.push_back(heading.Text);
    titled = titled || !heading.Text.empty();
  }
  if (titled) {
    TableRow(grid, top, kHeadingStyle);
  }
  for (const Row& row : rows) {
    TableRow(grid, row, StyleOf(row.How));
  }
}

}  // namespace host
