#include <cstddef>
#include <string_view>

#include "model/json.h"
#include "model/json_text.h"
#include "model/tree.h"

namespace QtSts {
namespace {

// A floating point number as it is written.
void AddReal(std::string_view written, JsonText* json) {
  if (written.find_first_of("NI") != std::string_view::npos) {
    json->String(written);  // not-a-number and the infinities, which JSON has no numbers for
  } else {
    // Without a fraction, readers take it for the integer 0 and lose the sign.
    json->Literal(written == "-0" ? "-0.0" : written);
  }
}

void AddReals(std::string_view written, JsonText* json) {
  json->Open('[');
  while (!written.empty()) {
    const std::size_t blank = written.find(' ');
    json->Next();
    AddReal(written.substr(0, blank), json);
    written = blank == std::string_view::npos ? "" : written.substr(blank + 1);
  }
  json->Close(']');
}

void AddValue(const TreeValue& value, JsonText* json) {
  switch (value.Kind()) {
    case ValueKind::kText:
      json->String(value.Text());
      break;
    case ValueKind::kFloat:
    case ValueKind::kDouble:
      AddReal(value.Written(), json);
      break;
    case ValueKind::kReals:
      AddReals(value.Written(), json);
      break;
    default:
      json->Literal(value.Written());
  }
}

void AddElement(const TreeElement& element, JsonText* json);

// NOLINTNEXTLINE(misc-no-recursion): the document's depth is that of its classes
void AddMembers(const TreeElement& element, JsonText* json) {
  for (const TreeValue& value : element.Values()) {
    json->Member(value.Listed().Name);
    AddValue(value, json);
  }
  for (const TreeElement& child : element.Children()) {
    if (element.IsList()) {
      json->Next();
    } else {
      json->Member(child.Name());
    }
    AddElement(child, json);
  }
}

// NOLINTNEXTLINE(misc-no-recursion): likewise
void AddElement(const TreeElement& element, JsonText* json) {
  json->Open(element.IsList() ? '[' : '{');
  if (element.Parent() != nullptr && element.Parent()->IsList()) {
    json->Member("Class");
    json->String(element.Class()->Name);
  }
  AddMembers(element, json);
  json->Close(element.IsList() ? ']' : '}');
}

}  // namespace

std::string WriteJson(const DocumentTree& document, const std::function<void(JsonText*)>& add) {
  JsonText json;
  json.Open('{');
  AddMembers(document.Root(), &json);
  add(&json);
  json.Close('}');
  return json.Take();
}

std::string WriteJson(const DocumentTree& document) {
  return WriteJson(document, [](JsonText* /*json*/) {});
}

std::string WriteJson(const CStatus& status) { return WriteJson(DocumentTree(status)); }

}  // namespace QtSts
