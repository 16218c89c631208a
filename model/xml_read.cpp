#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <system_error>
#include <vector>

#include "model/xml.h"
#include "model/xml_memory.h"
#include "model/xml_reader.h"

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
using OwnText = std::unique_ptr<xmlChar, FreeText>;

// Gives the reader a node of a tree and what it holds; false when memory runs out.
bool ReadNode(XmlReader& reader, xmlNode* node) {
  std::vector<OwnText> texts;
  std::vector<XmlAttribute> attributes;
  for (const xmlAttr* attribute = node->properties; attribute; attribute = attribute->next) {
    if (texts.emplace_back(xmlGetNoNsProp(node, attribute->name)) == nullptr &&
        attribute->ns == nullptr) {
      return false;
    }
    const char* const value = texts.back() == nullptr ? "" : Text(texts.back().get());
    attributes.push_back({Text(attribute->name), attribute->ns != nullptr, value});
  }
  reader.Begin(Text(node->name), node->ns != nullptr, attributes, xmlGetLineNo(node));
  for (xmlNode* child = node->children; child != nullptr && !reader.Failed(); child = child->next) {
    if (child->type == XML_PI_NODE) {
      reader.Instruction();
    } else if (child->type != XML_ELEMENT_NODE) {
      const bool ignored = child->type == XML_COMMENT_NODE || xmlIsBlankNode(child) == 1;
      reader.Text(ignored ? "" : "text");
    } else if (!ReadNode(reader, child)) {
      return false;
    }
  }
  reader.End();
  return true;
}

struct FreeParser {
  void operator()(xmlParserCtxt* parser) const { xmlFreeParserCtxt(parser); }
};

void Refuse(XmlError* error, const std::string& message) {
  *error = XmlError();
  error->Message = message;
}

// What the parser's functions share, as its private data.
struct Parsing {
  XmlReader Reader;
  XmlError Fault;  // of the text, which is no XML; the reader has its own
  bool NoMemory = false;
};

// Calls `act` with what is shared. No exception may pass through libxml2.
template <class Act>
void Guarded(void* parser, const Act& act) {
  auto* const context = static_cast<xmlParserCtxt*>(parser);
  auto* const parsing = static_cast<Parsing*>(context->_private);
  try {
    act(*parsing);
  } catch (const std::bad_alloc&) {
    parsing->NoMemory = true;
    xmlStopParser(context);
  }
}

// The first fault counts: the others follow from it.
void KeepFirst(void* parser, xmlErrorPtr fault) {
  Guarded(parser, [fault](Parsing& parsing) {
    if (parsing.Fault.Message.empty() && fault->level >= XML_ERR_ERROR) {
      const std::string_view message = fault->message == nullptr ? "" : fault->message;
      Refuse(&parsing.Fault, "not a document: ");
      parsing.Fault.Message += message.substr(0, message.find('\n'));
      parsing.Fault.Line = fault->line;
    }
  });
}

// A document type could declare entities, so a document with one is not read on.
void RefuseDocumentType(void* parser, const xmlChar*, const xmlChar*, const xmlChar*) {
  Guarded(parser, [parser](Parsing& parsing) {
    Refuse(&parsing.Fault, "not a document: document types are not accepted");
    xmlStopParser(static_cast<xmlParserCtxt*>(parser));
  });
}

// An attribute comes as five pointers: name, prefix, namespace, and begin and end of the value.
void Begin(void* parser, const xmlChar* name, const xmlChar*, const xmlChar* uri, int,
           const xmlChar**, int attribute_count, int, const xmlChar** parts) {
  Guarded(parser, [=](Parsing& parsing) {
    std::vector<XmlAttribute> attributes;
    for (const xmlChar** part = parts; part != parts + std::ptrdiff_t{5} * attribute_count;
         part += 5) {
      const auto length = static_cast<std::size_t>(part[4] - part[3]);
      attributes.push_back({Text(part[0]), part[2] != nullptr, {Text(part[3]), length}});
    }
    parsing.Reader.Begin(Text(name), uri != nullptr, attributes, xmlSAX2GetLineNumber(parser));
  });
}

void End(void* parser, const xmlChar*, const xmlChar*, const xmlChar*) {
  Guarded(parser, [](Parsing& parsing) { parsing.Reader.End(); });
}

void Between(void* parser, const xmlChar* text, int length) {
  Guarded(parser, [=](Parsing& parsing) {
    parsing.Reader.Text({Text(text), static_cast<std::size_t>(length)});
  });
}

void Instruction(void* parser, const xmlChar*, const xmlChar*) {
  Guarded(parser, [](Parsing& parsing) { parsing.Reader.Instruction(); });
}

// The parser keeps no tree: it gives the reader what it meets.
void SetHandlers(xmlParserCtxt* parser, Parsing* parsing) {
  parser->_private = parsing;
  xmlSAXHandler& sax = *parser->sax;
  sax.internalSubset = &RefuseDocumentType;
  sax.serror = &KeepFirst;
  sax.startElementNs = &Begin;
  sax.endElementNs = &End;
  sax.characters = &Between;
  sax.ignorableWhitespace = &Between;
  sax.cdataBlock = &Between;
  sax.processingInstruction = &Instruction;
  sax.comment = nullptr;
  sax.reference = nullptr;
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
void ParseText(std::string_view text, Parsing* parsing) {
  const std::unique_ptr<xmlParserCtxt, FreeParser> parser(xmlNewParserCtxt());
  if (parser == nullptr) {
    throw std::bad_alloc();
  }
  SetHandlers(parser.get(), parsing);
  // The values of attributes come with their references replaced; no entity can be declared.
  constexpr int kOptions = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING |
                           XML_PARSE_BIG_LINES | XML_PARSE_IGNORE_ENC | XML_PARSE_NOENT;
  const Document document(xmlCtxtReadMemory(
      parser.get(), text.data(), static_cast<int>(text.size()), nullptr, nullptr, kOptions));
  if (document == nullptr && parsing->Fault.Message.empty()) {
    Refuse(&parsing->Fault, "not a document: libxml2 gives no reason");
  }
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
  const ClassInfo* const info = ClassOf(*this);
  if (node == nullptr || info == nullptr) {
    return false;
  }
  InitializeXml();
  XmlError error;
  XmlReader reader(*info, dynamic_cast<void*>(this), &error);
  return ReadNode(reader, node) && !reader.Failed();
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
  auto status = std::make_unique<CStatus>();
  *error = XmlError();
  Parsing parsing{XmlReader(CStatus::Class, status.get(), error, CStatus::Class.Name), {}};
  const XmlMemoryWatch memory;
  ParseText(text, &parsing);
  if (parsing.NoMemory || memory.RanOut()) {
    throw std::bad_alloc();
  }
  if (!parsing.Fault.Message.empty()) {
    *error = parsing.Fault;  // whatever the elements before it hold
    return nullptr;
  }
  return parsing.Reader.Failed() ? nullptr : std::move(status);
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
