// The document as text for people.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/terminal.h"
#include "insight/snapshot.h"

namespace host {

// How the text is to look.
struct Look {
  std::size_t Columns = kPipeColumns;
  bool Whole = false;   // it goes to no terminal: no text of a finding is cut
  bool Colour = false;  // escape sequences mark titles and what needs attention
  bool Brief = false;   // a line for each finding, and no sections but those of Sections
  std::vector<std::string> Sections = {};  // names of SectionNames(); none: all
  insight::Limits Limits = {};             // that the findings were made with
};

// The parts of the text after the first lines, in its order.
std::vector<std::string> SectionNames();

// The snapshot as UTF-8 text of at most look.Columns columns: how all is, with numbers; what needs
// attention; the display; then sections of facts and aligned tables with units and names instead of
// codes; "not reported" where a value is absent, or is only what its field begins with. No byte of
// a row or file steers the terminal. Colour adds nothing but the escape sequences.
std::string RenderText(const insight::Snapshot& snapshot, const Look& look);

}  // namespace host
