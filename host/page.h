// Lines of a page of a given width: titles, facts and tables.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace host {

enum class Align { kLeft, kRight };

// A blank at which no line is broken; on the page it is one like the others.
inline constexpr const char* kTie = "\u00A0";

// `text` with blanks, so that it takes at least `width` columns.
std::string Padded(const std::string& text, std::size_t width, Align side = Align::kLeft);

// How much attention a line needs. Marked lines start with "!".
enum class Mark : std::uint8_t { kNone, kWarning, kUnknown, kCritical };

// One line of a table, or more where a cell is wrapped. All texts are printable.
struct Row {
  Mark How = Mark::kNone;
  std::vector<std::string> Cells;
};

struct Heading {
  std::string Text;
  Align Side = Align::kLeft;
};

class Page {
 public:
  // With `colour`, titles and marked lines carry the escape sequences of terminals. What is `whole`
  // goes to no terminal: nothing is to be cut to fit it.
  Page(std::size_t columns, bool colour, bool whole = false)
      : columns_(columns), colour_(colour), whole_(whole) {}

  std::size_t Columns() const { return columns_; }
  bool IsWhole() const { return whole_; }

  // The first line, which says how all is, wrapped: kNone for well.
  void Headline(Mark how, std::string_view text);

  // A line without style, wrapped.
  void Plain(std::string_view text);

  // A blank line, unless the page is empty, and the title, wrapped.
  void Title(std::string_view title);

  // A blank line, unless a title stands before it.
  void Gap();

  // Wrapped, below titles a little to the right.
  void Line(std::string_view text);

  // A line in the style of a table's row, not wrapped.
  void Single(Mark how, std::string_view text);

  // Aligned columns below their headings, which are left out when all are empty. Each row has as
  // many cells as there are headings. What is too wide is wrapped, first in column `wrapped`, the
  // last unless another is named. A path is broken after one of its slashes.
  void Table(const std::vector<Heading>& headings, const std::vector<Row>& rows,
             std::size_t wrapped = kLast);

  std::string Take() { return std::move(text_); }

 private:
  static constexpr std::size_t kLast = static_cast<std::size_t>(-1);

  // The columns of one table.
  struct Grid {
    const std::vector<Heading>& Headings;
    std::vector<std::size_t> Widths;
    std::size_t Wrapped;
  };

  Grid Measure(const std::vector<Heading>& headings, const std::vector<Row>& rows,
               std::size_t wrapped) const;
  void Styled(const char* style, std::string_view text);
  void TableRow(const Grid& columns, const Row& row, const char* style);

  std::size_t columns_;
  bool colour_;
  bool whole_;
  bool after_title_ = false;
  std::string text_;
};

}  // namespace host
