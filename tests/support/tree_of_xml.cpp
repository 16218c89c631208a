#include "tests/support/tree_of_xml.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <memory>

#include "model/tree.h"

namespace test_support {
namespace {

const char* Text(const xmlChar* text) { return reinterpret_cast<const char*>(text); }

// One line for each element and value, in order: "Outputs[0]/StatusFlags=4".
class Lines {
 public:
  void Add(const std::string& line) { text_ += line + "\n"; }
  std::string Take() { return std::move(text_); }

 private:
  std::string text_;
};

// NOLINTNEXTLINE(misc-no-recursion)
void AddNode(const xmlNode* node, const std::string& indent, Lines* lines) {
  lines->Add(indent + Text(node->name));
  for (const xmlAttr* attribute = node->properties; attribute; attribute = attribute->next) {
    const std::unique_ptr<xmlChar, decltype(xmlFree)> value(
        xmlNodeListGetString(node->doc, attribute->children, 1), xmlFree);
    lines->Add(indent + "  " + Text(attribute->name) + "=" + (value ? Text(value.get()) : ""));
  }
  for (const xmlNode* child = node->children; child != nullptr; child = child->next) {
    if (child->type == XML_ELEMENT_NODE) {
      AddNode(child, indent + " ", lines);
    }
  }
}

// NOLINTNEXTLINE(misc-no-recursion)
void AddElement(const QtSts::TreeElement& element, const std::string& indent, Lines* lines) {
  lines->Add(indent + element.Name());
  for (const QtSts::TreeValue& value : element.Values()) {
    lines->Add(indent + "  " + value.Listed().Name + "=" + value.Written());
  }
  for (const QtSts::TreeElement& child : element.Children()) {
    AddElement(child, indent + " ", lines);
  }
}

std::string FirstDifference(const std::string& tree, const std::string& xml) {
  std::size_t begin = 0;
  while (begin < tree.size() || begin < xml.size()) {
    const auto line = [begin](const std::string& text) {
      return begin < text.size() ? text.substr(begin, text.find('\n', begin) - begin) : "nothing";
    };
    if (line(tree) != line(xml)) {
      return "the tree says " + line(tree) + ", the XML " + line(xml);
    }
    begin += line(tree).size() + 1;
  }
  return "";
}

}  // namespace

std::string TreeDiffersFromXml(const QtSts::CStatus& status, const std::string& xml) {
  const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
      xmlReadMemory(xml.data(), static_cast<int>(xml.size()), nullptr, nullptr,
                    XML_PARSE_NONET | XML_PARSE_HUGE | XML_PARSE_NOERROR),
      &xmlFreeDoc);
  if (document == nullptr) {
    return "the XML is not well-formed";
  }
  Lines of_xml;
  AddNode(xmlDocGetRootElement(document.get()), "", &of_xml);
  Lines of_tree;
  const QtSts::DocumentTree tree(status);
  AddElement(tree.Root(), "", &of_tree);
  return FirstDifference(of_tree.Take(), of_xml.Take());
}

}  // namespace test_support
