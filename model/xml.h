// The document as XML, whole. Scalars are attributes, records and lists child elements, list
// elements are named by class without the leading C; a null value is left out.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "model/document.h"
#include "model/export.h"

namespace QtSts {

// Why a document could not be read, and where.
struct XmlError {
  std::string Element;    // name of the element, empty when the text is not XML at all
  std::string Attribute;  // name of the attribute, empty when the element itself is at fault
  long Line = 0;          // from 1; 0 when there is no text to point into
  std::string Message;

  // "line 3: <Area> attribute Width: not a value that it can hold"
  STATUS_API std::string Text() const;
};

// Larger documents, in bytes, are not read, nor are those with a value of ten million bytes or an
// element of a thousand attributes: none of a controller comes near.
inline constexpr std::size_t kMaximumDocumentSize = std::size_t{64} << 20;

// The whole document as indented UTF-8 text with an XML declaration. Always well-formed: what XML
// cannot carry stands as U+FFFD. What steers terminals stands as character references. Throws
// std::bad_alloc when memory runs out. The document's Write is called, which must not change it.
STATUS_API std::string WriteDocument(const CStatus& status);

// The document in `text`; null, and `*error` filled, when it is not one. That includes points that
// their list would refuse, and a board whose two flags for a connection contradict each other.
// Entities are never expanded and nothing is fetched.
STATUS_API std::unique_ptr<CStatus> ReadDocument(std::string_view text, XmlError* error);

// The same from a file; a file that cannot be read is an error without element and line.
STATUS_API std::unique_ptr<CStatus> ReadDocumentFile(const std::string& path, XmlError* error);

}  // namespace QtSts
