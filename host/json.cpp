#include "host/json.h"

#include <string_view>
#include <utility>

#include "host/json_insight.h"
#include "model/json_text.h"
#include "model/text.h"

namespace host {
namespace {

using QtSts::JsonText;
using QtSts::TreeElement;
using QtSts::TreeValue;
using QtSts::ValueKind;

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

std::string Finished(JsonText json) {
  std::string text = json.Take() + "\n";
  QtSts::EscapeSteering(&text, "\\u", "");  // they stand nowhere but in strings
  return text;
}

}  // namespace

std::string RenderJson(const QtSts::DocumentTree& document) {
  JsonText json;
  AddElement(document.Root(), &json);
  return Finished(std::move(json));
}

std::string RenderJson(const insight::Snapshot& snapshot) {
  JsonText json;
  json.Open('{');
  AddMembers(snapshot.Document.Root(), &json);
  json.Member("Insight");
  AddInsight(snapshot, &json);
  json.Close('}');
  return Finished(std::move(json));
}

std::string RenderInsightJson(const insight::Snapshot& snapshot,
                              const std::vector<std::string>& differing) {
  JsonText json;
  json.Open('{');
  json.Member("Insight");
  AddInsight(snapshot, &json);
  AddTexts("Differing", differing, &json);
  json.Close('}');
  return Finished(std::move(json));
}

}  // namespace host
