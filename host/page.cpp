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

constexpr const char* kTitleStyle = "\x1b[1m";
constexpr const char* kHeadingStyle = "\x1b[2m";
constexpr const char* kMarkedStyle = "\x1b[1;31m";
constexpr const char* kNoStyle = "";

// Widths that hold every cell, made narrower until the row fits the page: first the last column,
// which is wrapped, then whichever is widest.
std::vector<std::size_t> ColumnWidths(const std::vector<Heading>& headings,
                                      const std::vector<Row>& rows) {
  std::vector<std::size_t> widths;
  for (std::size_t i = 0; i < headings.size(); ++i) {
    std::size_t width = Width(headings[i].Text);
    for (const Row& row : rows) {
      width = std::max(width, Width(row.Cells[i]));
    }
    widths.push_back(width);
  }
  const std::size_t room = Page::kColumns - kMargin - kGap * (headings.size() - 1);
  while (std::accumulate(widths.begin(), widths.end(), std::size_t{0}) > room) {
    std::size_t& last = widths.back();
    --(last > kLeastWrapped ? last : *std::max_element(widths.begin(), widths.end()));
  }
  return widths;
}

std::vector<std::string> Wrapped(std::string_view text, std::size_t width) {
  std::vector<std::string> lines;
  while (Width(text) > width) {
    std::size_t cut = BytesWithin(text, width);
    const std::size_t blank = text.rfind(' ', cut);
    const bool at_blank = blank != std::string_view::npos && blank > 0;
    cut = at_blank ? blank : std::max<std::size_t>(cut, 1);
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
  const bool styled = m_Colour && *style != '\0';
  m_Text.append(styled ? style : "").append(line).append(styled ? "\x1b[0m\n" : "\n");
  m_AfterTitle = false;
}

void Page::Title(std::string_view title) {
  m_Text += m_Text.empty() ? "" : "\n";
  Styled(kTitleStyle, Truncated(title, kColumns));
  m_AfterTitle = true;
}

void Page::Gap() { m_Text += m_AfterTitle ? "" : "\n"; }

void Page::Line(std::string_view text) {
  for (const std::string& line : Wrapped(text, kColumns - kMargin)) {
    Styled(kNoStyle, std::string(kMargin, ' ') + line);
  }
}

void Page::TableRow(const std::vector<Heading>& headings, const std::vector<std::size_t>& widths,
                    const Row& row, const char* style) {
  std::string line = row.Marked ? "! " : "  ";
  for (std::size_t i = 0; i + 1 < widths.size(); ++i) {
    line += Padded(Truncated(row.Cells[i], widths[i]), widths[i], headings[i].Side);
    line.append(kGap, ' ');
  }
  const std::string further(Width(line), ' ');
  for (const std::string& part : Wrapped(row.Cells.back(), widths.back())) {
    Styled(style, line + Padded(part, widths.back(), headings.back().Side));
    line = further;
  }
}

void Page::Table(const std::vector<Heading>& headings, const std::vector<Row>& rows) {
  const std::vector<std::size_t> widths = ColumnWidths(headings, rows);
  Row top;
  bool titled = false;
  for (const Heading& heading : headings) {
    top.Cells.push_back(heading.Text);
    titled = titled || !heading.Text.empty();
  }
  if (titled) {
    TableRow(headings, widths, top, kHeadingStyle);
  }
  for (const Row& row : rows) {
    TableRow(headings, widths, row, row.Marked ? kMarkedStyle : kNoStyle);
  }
}

}  // namespace host
