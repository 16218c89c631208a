#include "tests/support/validate.h"

#include <libxml/parser.h>
#include <libxml/xmlschemas.h>

#include <memory>

#include "model/schema.h"

namespace test_support {
namespace {

template <auto kFree>
struct Freeing {
  template <class T>
  void operator()(T* object) const {
    kFree(object);
  }
};
template <class T, auto kFree>
using Owned = std::unique_ptr<T, Freeing<kFree>>;

using Parser = Owned<xmlSchemaParserCtxt, &xmlSchemaFreeParserCtxt>;
using Schema = Owned<xmlSchema, &xmlSchemaFree>;
using Validator = Owned<xmlSchemaValidCtxt, &xmlSchemaFreeValidCtxt>;
using Document = Owned<xmlDoc, &xmlFreeDoc>;

// Collects libxml2's complaints in the std::string at `messages`.
void Collect(void* messages, xmlErrorPtr error) {
  *static_cast<std::string*>(messages) +=
      "line " + std::to_string(error->line) + ": " + error->message;
}

int Size(const std::string& text) { return static_cast<int>(text.size()); }

}  // namespace

testing::AssertionResult IsValid(const std::string& xml, const std::string& schema) {
  std::string messages;
  const Parser parser(xmlSchemaNewMemParserCtxt(schema.data(), Size(schema)));
  xmlSchemaSetParserStructuredErrors(parser.get(), &Collect, &messages);
  const Schema parsed(xmlSchemaParse(parser.get()));
  if (parsed == nullptr) {
    return testing::AssertionFailure() << "not a schema: " << messages;
  }
  const Document document(xmlReadMemory(xml.data(), Size(xml), nullptr, nullptr,
                                        XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_BIG_LINES));
  if (document == nullptr) {
    return testing::AssertionFailure() << "not well-formed: " << xmlGetLastError()->message;
  }
  const Validator validator(xmlSchemaNewValidCtxt(parsed.get()));
  xmlSchemaSetValidStructuredErrors(validator.get(), &Collect, &messages);
  return xmlSchemaValidateDoc(validator.get(), document.get()) == 0
             ? testing::AssertionSuccess()
             : testing::AssertionFailure() << "not valid: " << messages;
}

testing::AssertionResult IsValidDocument(const std::string& xml) {
  return IsValid(xml, QtSts::WriteSchema());
}

}  // namespace test_support
