// The document as JSON (RFC 8259, UTF-8), whole. A record is an object: its values, then its
// records and lists. A list is an array of objects, each with its class name as first member
// "Class". Numbers are numbers in their shortest form, except that not-a-number and the infinities
// are the strings "NaN", "INF" and "-INF"; lists of numbers are arrays; what is not reported has no
// member. It says what the document's XML says, and no more.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "model/document.h"
#include "model/export.h"

namespace QtSts {

class DocumentTree;
class JsonText;

// Why a document could not be read, and where.
struct JsonError {
  std::string Path;  // as model/tree.h writes it; empty when the text as a whole is at fault
  long Line = 0;     // from 1; 0 when there is no text to point into
  std::string Message;

  // "line 3: Outputs[0]/Area/Width: not a value that it can hold"
  STATUS_API std::string Text() const;
};

// The whole document, indented by two blanks for each level. Always JSON: what XML cannot carry
// stands as U+FFFD, what steers terminals is escaped. Throws std::bad_alloc.
STATUS_API std::string WriteJson(const CStatus& status);
STATUS_API std::string WriteJson(const DocumentTree& document);

// The same, and after its own the members of the root that `add` writes (model/json_text.h).
STATUS_API std::string WriteJson(const DocumentTree& document,
                                 const std::function<void(JsonText*)>& add);

// The document in `text`; null, and `*error` filled, when it is not one. As strict as reading its
// XML: a member that is missing, unknown, given twice or of another type is an error. Members may
// stand in any order; "Insight" of the root, which `statuscollector show` adds, is passed over.
// Integers are read from integers, all numbers to the nearest value of their field's type. A text
// must be one that XML can carry. Limits are those of XML (kMaximumDocumentSize, model/xml.h), for
// the document and for a value. Throws std::bad_alloc.
STATUS_API std::unique_ptr<CStatus> ReadJson(std::string_view text, JsonError* error);

}  // namespace QtSts
