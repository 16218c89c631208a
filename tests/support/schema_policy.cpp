#include "tests/support/schema_policy.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace test_support {
namespace {

const xmlChar* Xml(const char* text) { return reinterpret_cast<const xmlChar*>(text); }

std::string Attribute(xmlNode* node, const char* name) {
  const std::unique_ptr<xmlChar, decltype(xmlFree)> value(xmlGetNoNsProp(node, Xml(name)), xmlFree);
  return value == nullptr ? "" : reinterpret_cast<const char*>(value.get());
}

bool Is(const xmlNode* node, const char* name) { return xmlStrEqual(node->name, Xml(name)) != 0; }

// What a schema promises: "Area/@Width" -> "xs:unsignedInt, required".
using Promises = std::map<std::string, std::string>;

// What stands in `text` between `begin` and the next stop; empty without it.
std::string Following(const std::string& text, const std::string& begin) {
  const std::size_t found = text.find(begin);
  const std::size_t from = found + begin.size();
  return found == std::string::npos ? "" : text.substr(from, text.find('.', from) - from);
}

// The unit and the codes of a field, which only its documentation gives: "Output power. Unit: W.",
// "Who overrides. Values: 0 none, 1 player.".
void CollectDocumentation(const std::string& text, const std::string& path, Promises* promises) {
  if (const std::string unit = Following(text, " Unit: "); !unit.empty()) {
    (*promises)[path + " unit"] = unit;
  }
  std::istringstream codes(Following(text, " Values: "));
  for (std::string code; std::getline(codes >> std::ws, code, ',');) {
    const std::size_t blank = code.find(' ');
    (*promises)[path + " code " + code.substr(0, blank)] = code.substr(blank + 1);
  }
}

// Everything below `node`, whose path is `path`.
void Collect(xmlNode* node, const std::string& path, Promises* promises) {
  for (xmlNode* child = node->children; child != nullptr; child = child->next) {
    std::string at = path;
    if (child->type != XML_ELEMENT_NODE) {
      continue;
    }
    if (Is(child, "attribute")) {
      at += "/@" + Attribute(child, "name");
      (*promises)[at] = Attribute(child, "type") + ", " + Attribute(child, "use");
    } else if (Is(child, "element")) {
      at += "/" + Attribute(child, "name");
      (*promises)[at] = Attribute(child, "type") + ", at least " + Attribute(child, "minOccurs");
    } else if (Is(child, "complexType") || Is(child, "simpleType")) {
      at += "/" + Attribute(child, "name");
      (*promises)[at] = "type";
    } else if (Is(child, "extension")) {
      (*promises)[at + " extends"] = Attribute(child, "base");
    } else if (Is(child, "list")) {
      (*promises)[at + " lists"] = Attribute(child, "itemType");
    } else if (Is(child, "documentation")) {
      const std::unique_ptr<xmlChar, decltype(xmlFree)> text(xmlNodeGetContent(child), xmlFree);
      CollectDocumentation(reinterpret_cast<const char*>(text.get()), path, promises);
    }
    Collect(child, at, promises);
  }
}

Promises Read(const std::string& schema) {
  const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
      xmlReadMemory(schema.data(), static_cast<int>(schema.size()), nullptr, nullptr,
                    XML_PARSE_NONET),
      &xmlFreeDoc);
  if (document == nullptr) {
    throw std::runtime_error("the schema is not well-formed");
  }
  Promises promises;
  Collect(xmlDocGetRootElement(document.get()), "", &promises);
  return promises;
}

}  // namespace

std::vector<std::string> BrokenPromises(const std::string& released, const std::string& current) {
  std::vector<std::string> broken;
  const Promises now = Read(current);
  for (const auto& [what, promise] : Read(released)) {
    const auto found = now.find(what);
    if (found == now.end()) {
      broken.push_back(what + " is gone");
    } else if (found->second != promise) {
      broken.push_back(what + " was " + promise + " and is " + found->second);
    }
  }
  return broken;
}

}  // namespace test_support
