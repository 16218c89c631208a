// The document as text for people.
#pragma once

#include <string>

#include "host/tree.h"

namespace host {

// The tree as UTF-8 text of at most 80 columns: first what needs attention, then sections of facts
// and aligned tables with units and names instead of codes; "not reported" where a value is absent.
// No byte of a row or file steers the terminal. With `colour`, escape sequences mark titles and
// what needs attention; the text is the same without them.
std::string RenderText(const Element& document, bool colour);

}  // namespace host
