#include <libxml/parser.h>
#include <libxml/tree.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <system_error>

#include "model/xml.h"
#include "model/xml_memory.h"

namespace QtSts {
namespace {

const char* Text(const xmlChar* text) { return reinterpret_cast<const char*>(text); }

struct FreeDocument {
  void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};
using Document = std::unique_ptr<xmlDoc, FreeDocument>;

struct FreeText {
  void operator()(xmlChar* text) const { xmlFree(text); }
};

// Fills objects from elements. The first fault ends the reading and stands in the error.
class Reader {
 public:
  explicit Reader(XmlError* error) : m_Error(error) {}

  bool ReadObject(const ClassInfo& info, void* object, xmlNode* node) {
    return CheckNames(info, node) && ReadFields(info, object, node);
  }

 private:
  bool Fail(xmlNode* node, const char* attribute, const char* message) {
    m_Error->Element = Text(node->name);
    m_Error->Attribute = attribute;
    m_Error->Line = xmlGetLineNo(node);
    m_Error->Message = message;
    return false;
  }

  // Everything that the element holds is a field of the class, each child element once.
  bool CheckNames(const ClassInfo& info, xmlNode* node) {
    if (node->ns != nullptr) {
      return Fail(node, "", "unknown element");
    }
    for (const xmlAttr* attribute = node->properties; attribute; attribute = attribute->next) {
      const Field* const field = FieldNamed(info, Text(attribute->name));
      if (field == nullptr || field->Scalar == nullptr || attribute->ns != nullptr) {
        return Fail(node, Text(attribute->name), "unknown attribute");
      }
    }
    for (xmlNode* child = node->children; child != nullptr; child = child->next) {
      if (!IsElement(child)) {
        if (!IsIgnorable(child)) {
          return Fail(node, "", "text where only elements may stand");
        }
        continue;
      }
      const Field* const field = FieldNamed(info, Text(child->name));
      if (field == nullptr || field->Scalar != nullptr) {
        return Fail(child, "", "unknown element");
      }
      if (Child(node, Text(child->name)) != child) {
        return Fail(child, "", "element stands twice");
      }
    }
    return true;
  }

  static bool IsElement(const xmlNode* node) { return node->type == XML_ELEMENT_NODE; }

  static bool IsIgnorable(xmlNode* node) {
    return node->type == XML_COMMENT_NODE || xmlIsBlankNode(node) == 1;
  }

  static xmlNode* Child(const xmlNode* node, const char* name) {
    xmlNode* child = node->children;
    while (child != nullptr && !(IsElement(child) && std::strcmp(Text(child->name), name) == 0)) {
      child = child->next;
    }
    return child;
  }

  bool ReadFields(const ClassInfo& info, void* object, xmlNode* node) {
    if (info.Base != nullptr && !ReadFields(*info.Base, info.ToBase(object), node)) {
      return false;
    }
    for (std::size_t i = 0; i < info.FieldCount; ++i) {
      const Field& field = info.Fields[i];
      if (!(field.Scalar != nullptr ? ReadScalar(field, object, node)
                                    : ReadElement(field, object, node))) {
        return false;
      }
    }
    return true;
  }

  bool ReadScalar(const Field& field, void* object, xmlNode* node) {
    const std::unique_ptr<xmlChar, FreeText> text(
        xmlGetNoNsProp(node, reinterpret_cast<const xmlChar*>(field.Name)));
    if (text == nullptr) {
      return field.Optional || Fail(node, field.Name, "attribute is missing");
    }
    if (!field.Scalar->Parse(Text(text.get()), field.Make(object))) {
      return Fail(node, field.Name, "not a value that it can hold");
    }
    return true;
  }

  bool ReadElement(const Field& field, void* object, xmlNode* node) {
    xmlNode* const child = Child(node, field.Name);
    if (child == nullptr) {
      if (field.Optional) {
        return true;
      }
      Fail(node, "", "");
      m_Error->Message = std::string("element <") + field.Name + "> is missing";
      return false;
    }
    return field.Elements != nullptr ? ReadList(field, field.Make(object), child)
                                     : ReadObject(*field.Record, field.Make(object), child);
  }

  bool ReadList(const Field& field, void* list, xmlNode* node) {
    if (node->ns != nullptr) {
      return Fail(node, "", "unknown element");
    }
    if (node->properties != nullptr) {
      return Fail(node, Text(node->properties->name), "unknown attribute");
    }
    for (xmlNode* child = node->children; child != nullptr; child = child->next) {
      if (!IsElement(child)) {
        if (!IsIgnorable(child)) {
          return Fail(node, "", "text where only elements may stand");
        }
        continue;
      }
      const ClassInfo* const info = ClassNamed(Text(child->name));
      if (info == nullptr || info->Create == nullptr || !IsA(*info, *field.Record)) {
        return Fail(child, "", "not an element of this list");
      }
      std::unique_ptr<CBaseStatus> element(info->Create());
      if (!ReadObject(*info, dynamic_cast<void*>(element.get()), child)) {
        return false;
      }
      field.Elements->Add(list, element.release());
    }
    return true;
  }

  XmlError* m_Error;
};

struct FreeParser {
  void operator()(xmlParserCtxt* parser) const { xmlFreeParserCtxt(parser); }
};

void Refuse(XmlError* error, const std::string& message) {
  *error = XmlError();
  error->Message = message;
}

// The parser's private data is the error to fill. The first fault counts: the others follow from
// it.
void KeepFirst(void* parser, xmlErrorPtr fault) {
  auto* const error = static_cast<XmlError*>(static_cast<xmlParserCtxt*>(parser)->_private);
  if (error->Message.empty() && fault->level >= XML_ERR_ERROR) {
    const std::string_view message = fault->message == nullptr ? "" : fault->message;
    Refuse(error, "not a document: ");
    error->Message += message.substr(0, message.find('\n'));
    error->Line = fault->line;
  }
}

// A document type could declare entities, so a document with one is not read on.
void RefuseDocumentType(void* parser, const xmlChar*, const xmlChar*, const xmlChar*) {
  auto* const context = static_cast<xmlParserCtxt*>(parser);
  Refuse(static_cast<XmlError*>(context->_private),
         "not a document: document types are not accepted");
  xmlStopParser(context);
}

// What stands between '<' and '>' without being a tag.
struct Aside {
  std::string_view Begin;
  std::string_view End;
};
constexpr Aside kAsides[] = {{"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}};

// Attributes of the tag that begins `text`; `*length` is where it ends.
std::size_t CountAttributes(std::string_view text, std::size_t* length) {
  std::size_t count = 0;
  char quote = '\0';
  std::size_t position = 0;
  for (; position < text.size() && (quote != '\0' || text[position] != '>'); ++position) {
    const char c = text[position];
    if (quote != '\0') {
      quote = c == quote ? '\0' : quote;
    } else if (c == '"' || c == '\'') {
      quote = c;
    } else {
      count += c == '=' ? 1 : 0;
    }
  }
  *length = position;
  return count;
}

// No class has a tenth of this.
constexpr std::size_t kMaximumAttributes = 1000;

// libxml2 compares each attribute of a tag with all others, which must not take for ever.
bool HasCrowdedTag(std::string_view text) {
  std::size_t position = text.find('<');
  while (position != std::string_view::npos) {
    text.remove_prefix(position);
    const auto* const aside =
        std::find_if(std::begin(kAsides), std::end(kAsides),
                     [text](const Aside& candidate) { return text.starts_with(candidate.Begin); });
    std::size_t length = 0;
    if (aside != std::end(kAsides)) {
      length = std::min(text.find(aside->End, aside->Begin.size()), text.size());
    } else if (CountAttributes(text, &length) > kMaximumAttributes) {
      return true;
    }
    text.remove_prefix(length);
    position = text.find('<');
  }
  return false;
}

// How texts in other encodings than UTF-8 begin: UTF-16 with its mark, EBCDIC.
constexpr std::string_view kOtherEncodings[] = {"\xFE\xFF", "\xFF\xFE", "\x4C\x6F\xA7\x94"};

// UTF-16 and UTF-32 without a mark have zero bytes, which XML in UTF-8 never has.
bool IsUtf8(std::string_view text) {
  return text.find('\0') == std::string_view::npos &&
         std::none_of(std::begin(kOtherEncodings), std::end(kOtherEncodings),
                      [text](std::string_view begin) { return text.starts_with(begin); });
}

// Of UTF-8 only: libxml2 reads that in place. To convert it needs buffers, and crashes when there
// is no memory to grow them.
Document ParseText(std::string_view text, XmlError* error) {
  const std::unique_ptr<xmlParserCtxt, FreeParser> parser(xmlNewParserCtxt());
  if (parser == nullptr) {
    throw std::bad_alloc();
  }
  *error = XmlError();
  parser->_private = error;
  parser->sax->internalSubset = &RefuseDocumentType;
  parser->sax->serror = &KeepFirst;
  constexpr int kOptions = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING |
                           XML_PARSE_BIG_LINES | XML_PARSE_IGNORE_ENC;
  Document document(xmlCtxtReadMemory(parser.get(), text.data(), static_cast<int>(text.size()),
                                      nullptr, nullptr, kOptions));
  if (document != nullptr && error->Message.empty()) {
    return document;
  }
  if (error->Message.empty()) {
    Refuse(error, "not a document: libxml2 gives no reason");
  }
  return nullptr;
}

struct CloseFile {
  void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); }
};

// 0, or the code of what failed. Little more is read than a document may have, so that an endless
// file ends.
int ReadFile(const std::string& path, std::string* text) {
  const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "rbe"));
  if (file == nullptr) {
    return errno;
  }
  char block[65536];
  while (text->size() <= kMaximumDocumentSize && std::feof(file.get()) == 0) {
    text->append(block, std::fread(block, 1, sizeof block, file.get()));
    if (std::ferror(file.get()) != 0) {
      return errno;
    }
  }
  return 0;
}

}  // namespace

bool CListedStatus::Parse(_xmlNode* node) {
  XmlError error;
  const ClassInfo* const info = ClassOf(*this);
  return node != nullptr && info != nullptr &&
         Reader(&error).ReadObject(*info, dynamic_cast<void*>(this), node);
}

std::string XmlError::Text() const {
  std::string text = Line > 0 ? "line " + std::to_string(Line) + ": " : "";
  if (!Element.empty()) {
    text += "<" + Element + "> ";
  }
  if (!Attribute.empty()) {
    text += "attribute " + Attribute + ": ";
  }
  return text + Message;
}

std::unique_ptr<CStatus> ReadDocument(std::string_view text, XmlError* error) {
  if (text.size() > kMaximumDocumentSize) {
    Refuse(error, "not a document: larger than " + std::to_string(kMaximumDocumentSize) + " bytes");
    return nullptr;
  }
  if (!IsUtf8(text)) {
    Refuse(error, "not a document: the text is not UTF-8");
    return nullptr;
  }
  if (HasCrowdedTag(text)) {
    Refuse(error, "not a document: an element with more than " +
                      std::to_string(kMaximumAttributes) + " attributes");
    return nullptr;
  }
  const XmlMemoryWatch memory;
  const Document document = ParseText(text, error);
  if (memory.RanOut()) {
    throw std::bad_alloc();
  }
  if (document == nullptr) {
    return nullptr;
  }
  xmlNode* const root = xmlDocGetRootElement(document.get());
  if (root == nullptr || std::strcmp(Text(root->name), CStatus::Class.Name) != 0) {
    Refuse(error, std::string("the outermost element is not <") + CStatus::Class.Name + ">");
    return nullptr;
  }
  auto status = std::make_unique<CStatus>();
  const bool whole = Reader(error).ReadObject(CStatus::Class, status.get(), root);
  if (memory.RanOut()) {
    throw std::bad_alloc();
  }
  return whole ? std::move(status) : nullptr;
}

std::unique_ptr<CStatus> ReadDocumentFile(const std::string& path, XmlError* error) {
  std::string text;
  if (const int code = ReadFile(path, &text); code != 0) {
    Refuse(error, "the file cannot be read: " + std::generic_category().message(code));
    return nullptr;
  }
  return ReadDocument(text, error);
}

}  // namespace QtSts
