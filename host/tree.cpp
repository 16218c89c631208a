#include "host/tree.h"

#include <libxml/tree.h>

#include <algorithm>
#include <memory>
#include <new>

namespace host {
namespace {

using QtSts::ClassInfo;
using QtSts::Field;

const char* Text(const xmlChar* text) { return reinterpret_cast<const char*>(text); }

std::string AttributeText(xmlNode* node, const xmlAttr* attribute) {
  struct Free {
    void operator()(xmlChar* text) const { xmlFree(text); }
  };
  const std::unique_ptr<xmlChar, Free> text(xmlGetNoNsProp(node, attribute->name));
  if (text == nullptr) {
    throw std::bad_alloc();
  }
  return Text(text.get());
}

Element ReadElement(xmlNode* node, const char* name, const ClassInfo& info);

Element ReadList(xmlNode* node, const char* name) {
  Element list{name, nullptr, 0, {}, {}};
  for (xmlNode* child = node->children; child != nullptr; child = child->next) {
    const ClassInfo& info = *QtSts::ClassNamed(Text(child->name));
    list.Children.push_back(ReadElement(child, info.Name, info));
    list.Children.back().Position = list.Children.size() - 1;
  }
  return list;
}

// The XML is the document's own, so every name in it is listed.
Element ReadElement(xmlNode* node, const char* name, const ClassInfo& info) {
  Element element{name, &info, 0, {}, {}};
  for (const xmlAttr* attribute = node->properties; attribute; attribute = attribute->next) {
    element.Values.push_back(
        {QtSts::FieldNamed(info, Text(attribute->name)), AttributeText(node, attribute)});
  }
  for (xmlNode* child = node->children; child != nullptr; child = child->next) {
    const Field& field = *QtSts::FieldNamed(info, Text(child->name));
    element.Children.push_back(field.Elements != nullptr
                                   ? ReadList(child, field.Name)
                                   : ReadElement(child, field.Name, *field.Record));
  }
  return element;
}

}  // namespace

bool Element::IsA(std::string_view class_name) const {
  const ClassInfo* const wanted = QtSts::ClassNamed(class_name);
  return Class != nullptr && wanted != nullptr && QtSts::IsA(*Class, *wanted);
}

const Value* Element::FindValue(std::string_view name) const {
  const auto found = std::find_if(Values.begin(), Values.end(),
                                  [name](const Value& value) { return name == value.Field->Name; });
  return found == Values.end() ? nullptr : &*found;
}

const Element* Element::FindChild(std::string_view name) const {
  const auto found = std::find_if(Children.begin(), Children.end(),
                                  [name](const Element& child) { return name == child.Name; });
  return found == Children.end() ? nullptr : &*found;
}

const Element* Element::Find(std::string_view path) const {
  const Element* element = this;
  while (element != nullptr && !path.empty()) {
    const std::size_t slash = path.find('/');
    element = element->FindChild(path.substr(0, slash));
    path = slash == std::string_view::npos ? "" : path.substr(slash + 1);
  }
  return element;
}

Element ReadTree(QtSts::CStatus& status) {
  struct Free {
    void operator()(xmlNode* node) const { xmlFreeNode(node); }
  };
  const ClassInfo& info = QtSts::CStatus::Class;
  const std::unique_ptr<xmlNode, Free> root(
      xmlNewNode(nullptr, reinterpret_cast<const xmlChar*>(info.Name)));
  if (root == nullptr || !status.Write(root.get())) {
    throw std::bad_alloc();
  }
  return ReadElement(root.get(), info.Name, info);
}

}  // namespace host
