// The document as JSON (RFC 8259, UTF-8), whole. A record is an object: its values, then its
// records and lists. A list is an array of objects, each with its class name as first member
// "Class". Numbers are numbers in their shortest form, except that not-a-number and the infinities
// are the strings "NaN", "INF" and "-INF"; lists of numbers are arrays; what is not reported has no
// member. It says what the document's XML says, and no more.
#pragma once

#include <functional>
#include <string>

#include "model/document.h"
#include "model/export.h"

namespace QtSts {

class DocumentTree;
class JsonText;

// The whole document, indented by two blanks for each level. Always JSON: what XML cannot carry
// stands as U+FFFD, what steers terminals is escaped. Throws std::bad_alloc.
STATUS_API std::string WriteJson(const CStatus& status);
STATUS_API std::string WriteJson(const DocumentTree& document);

// The same, and after its own the members of the root that `add` writes (model/json_text.h).
STATUS_API std::string WriteJson(const DocumentTree& document,
                                 const std::function<void(JsonText*)>& add);

}  // namespace QtSts
