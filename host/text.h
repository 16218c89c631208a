// The document as text for people.
#pragma once

#include <string>

#include "model/tree.h"

namespace host {

// What the document itself does not tell.
struct Look {
  bool Colour = false;      // escape sequences mark titles and what needs attention
  bool AllRowsRead = true;  // false after a failed cycle, which then needs attention first of all
};

// The tree as UTF-8 text of at most 80 columns: first what needs attention, then sections of facts
// and aligned tables with units and names instead of codes; "not reported" where a value is absent.
// No byte of a row or file steers the terminal. Colour adds nothing but the escape sequences.
std::string RenderText(const QtSts::DocumentTree& document, const Look& look);

}  // namespace host
