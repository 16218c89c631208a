#include "model/schema.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>
#include <utility>

#include "model/document.h"
#include "model/documentation.h"
#include "model/listing.h"

namespace QtSts {
namespace {

// Indented XML text, element by element. What the listings say goes in as it is: none of it has
// markup, without which the schema would not be one.
class XmlText {
 public:
  using Attributes = std::initializer_list<std::pair<const char*, std::string_view>>;

  void Open(const char* name, Attributes attributes = {}) {
    Begin(name, attributes);
    text_ += ">\n";
    indent_ += 2;
  }

  void Close(const char* name) {
    indent_ -= 2;
    Indent();
    text_.append("</").append(name).append(">\n");
  }

  void Empty(const char* name, Attributes attributes) {
    Begin(name, attributes);
    text_ += "/>\n";
  }

  void Leaf(const char* name, std::string_view content) {
    Begin(name, {});
    text_.append(">").append(content).append("</").append(name).append(">\n");
  }

  void Line(std::string_view line) { text_.append(line).append("\n"); }

  std::string Take() { return std::move(text_); }

 private:
  void Indent() { text_.append(indent_, ' '); }

  void Begin(const char* name, Attributes attributes) {
    Indent();
    text_.append("<").append(name);
    for (const auto& [attribute, value] : attributes) {
      text_.append(" ").append(attribute).append("=\"").append(value).append("\"");
    }
  }

  std::string text_;
  std::size_t indent_ = 0;
};

void Annotate(XmlText& xml, std::string_view documentation) {
  xml.Open("xs:annotation");
  xml.Leaf("xs:documentation", documentation);
  xml.Close("xs:annotation");
}

void WriteAttribute(XmlText& xml, const Field& field) {
  xml.Open("xs:attribute", {{"name", field.Name},
                            {"type", field.Scalar->SchemaType},
                            {"use", field.Optional ? "optional" : "required"}});
  Annotate(xml, DocumentationOf(field));
  xml.Close("xs:attribute");
}

// The elements of a list: any number, of any class that the list may hold, in any order.
void WriteListType(XmlText& xml, const ClassInfo& base) {
  xml.Open("xs:complexType");
  xml.Open("xs:choice", {{"minOccurs", "0"}, {"maxOccurs", "unbounded"}});
  for (const ClassInfo* const info : Classes()) {
    if (info->Create != nullptr && IsA(*info, base)) {
      xml.Empty("xs:element", {{"name", info->Name}, {"type", info->Name}});
    }
  }
  xml.Close("xs:choice");
  xml.Close("xs:complexType");
}

void WriteElement(XmlText& xml, const Field& field) {
  const char* const least = field.Optional ? "0" : "1";
  if (field.Elements != nullptr) {
    xml.Open("xs:element", {{"name", field.Name}, {"minOccurs", least}});
    Annotate(xml, DocumentationOf(field));
    WriteListType(xml, *field.Record);
  } else {
    xml.Open("xs:element",
             {{"name", field.Name}, {"type", field.Record->Name}, {"minOccurs", least}});
    Annotate(xml, DocumentationOf(field));
  }
  xml.Close("xs:element");
}

// The class's own fields: child elements in order, then attributes.
void WriteFields(XmlText& xml, const ClassInfo& info) {
  const std::span<const Field> fields = info.OwnFields();
  if (std::any_of(fields.begin(), fields.end(),
                  [](const Field& field) { return field.Scalar == nullptr; })) {
    xml.Open("xs:sequence");
    for (const Field& field : fields) {
      if (field.Scalar == nullptr) {
        WriteElement(xml, field);
      }
    }
    xml.Close("xs:sequence");
  }
  for (const Field& field : fields) {
    if (field.Scalar != nullptr) {
      WriteAttribute(xml, field);
    }
  }
}

void WriteType(XmlText& xml, const ClassInfo& info) {
  xml.Open("xs:complexType", {{"name", info.Name}});
  Annotate(xml, std::string(info.About) + ".");
  if (info.Base != nullptr) {
    xml.Open("xs:complexContent");
    xml.Open("xs:extension", {{"base", info.Base->Name}});
    WriteFields(xml, info);
    xml.Close("xs:extension");
    xml.Close("xs:complexContent");
  } else {
    WriteFields(xml, info);
  }
  xml.Close("xs:complexType");
}

void WriteFloats(XmlText& xml) {
  xml.Open("xs:simpleType", {{"name", listing::kFloats.SchemaType}});
  Annotate(xml, "Numbers in order, separated by blanks.");
  xml.Empty("xs:list", {{"itemType", listing::kFloat.SchemaType}});
  xml.Close("xs:simpleType");
}

}  // namespace

std::string WriteSchema() {
  XmlText xml;
  xml.Line(R"(<?xml version="1.0" encoding="UTF-8"?>)");
  xml.Line(
      "<!-- The status document; see statuscollector-document(7). Generated from the listings");
  xml.Line("     of the model classes: change those, not this file. -->");
  xml.Open("xs:schema", {{"xmlns:xs", "http://www.w3.org/2001/XMLSchema"}});
  Annotate(xml, kOfWhichDocuments);
  xml.Empty("xs:element", {{"name", CStatus::Class.Name}, {"type", CStatus::Class.Name}});
  WriteFloats(xml);
  for (const ClassInfo* const info : Classes()) {
    WriteType(xml, *info);
  }
  xml.Close("xs:schema");
  return xml.Take();
}

}  // namespace QtSts
