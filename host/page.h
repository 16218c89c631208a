// Lines of at most 80 columns: titles, facts and tables.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace host {

enum class Align { kLeft, kRight };

// A blank at which no line is broken; on the page it is one like the others.
inline constexpr const char* kTie = "\u00A0";

// `text` with blanks, so that it takes at least `width` columns.
std::string Padded(const std::string& text, std::size_t width, Align side = Align::kLeft);

// One line of a table, or more where its last cell is wrapped. All texts are printable.
struct Row {
  bool Marked = false;  // needs attention
  std::vector<std::string> Cells;
};

struct Heading {
  std::string Text;
  Align Side = Align::kLeft;
};

class Page {
 public:
  static constexpr std::size_t kColumns = 80;

  // With `colour`, titles and marked lines carry the escape sequences of terminals.
  explicit Page(bool colour) : m_Colour(colour) {}

  // A blank line, unless the page is empty, and the title.
  void Title(std::string_view title);

  // A blank line, unless a title stands before it.
  void Gap();

  void Line(std::string_view text);

  // Aligned columns below their headings, which are left out when all are empty. Each row has as
  // many cells as there are headings. What is too wide is wrapped in the last column and cut in the
  // others. Rows that are marked start with "!".
  void Table(const std::vector<Heading>& headings, const std::vector<Row>& rows);

  std::string Take() { return std::move(m_Text); }

 private:
  void Styled(const char* style, std::string_view text);
  void TableRow(const std::vector<Heading>& headings, const std::vector<std::size_t>& widths,
                const Row& row, const char* style);

  bool m_Colour;
  bool m_AfterTitle = false;
  std::string m_Text;
};

}  // namespace host
