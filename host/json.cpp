#include "host/json.h"

#include <string_view>
#include <utility>

#include "model/text.h"

namespace host {
namespace {

using QtSts::TreeElement;
using QtSts::TreeValue;
using QtSts::ValueKind;

// JSON with two blanks for each level, a member or an element a line.
class JsonText {
 public:
  void Open(char bracket) {
    m_Text += bracket;
    m_Empty = true;
    m_Indent += 2;
  }

  void Close(char bracket) {
    m_Indent -= 2;
    if (!m_Empty) {
      NewLine();
    }
    m_Text += bracket;
    m_Empty = false;
  }

  // Before each element of an array.
  void Next() {
    m_Text += m_Empty ? "" : ",";
    m_Empty = false;
    NewLine();
  }

  // Before the value of each member of an object. Names need no escapes.
  void Member(std::string_view name) {
    Next();
    m_Text.append("\"").append(name).append("\": ");
  }

  void Literal(std::string_view text) { m_Text += text; }

  // Text of the document has no control characters but these.
  void String(std::string_view text) {
    m_Text += '"';
    for (const char c : text) {
      switch (c) {
        case '"':
          m_Text += "\\\"";
          break;
        case '\\':
          m_Text += "\\\\";
          break;
        case '\t':
          m_Text += "\\t";
          break;
        case '\n':
          m_Text += "\\n";
          break;
        case '\r':
          m_Text += "\\r";
          break;
        default:
          m_Text += c;
      }
    }
    m_Text += '"';
  }

  std::string Take() { return std::move(m_Text); }

 private:
  void NewLine() { m_Text.append("\n").append(m_Indent, ' '); }

  std::string m_Text;
  std::size_t m_Indent = 0;
  bool m_Empty = false;  // what was opened last has nothing in it yet
};

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

// NOLINTNEXTLINE(misc-no-recursion): the document's depth is that of its classes
void AddElement(const TreeElement& element, JsonText* json) {
  json->Open(element.IsList() ? '[' : '{');
  if (element.Parent() != nullptr && element.Parent()->IsList()) {
    json->Member("Class");
    json->String(element.Class()->Name);
  }
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
  json->Close(element.IsList() ? ']' : '}');
}

}  // namespace

std::string RenderJson(const QtSts::DocumentTree& document) {
  JsonText json;
  AddElement(document.Root(), &json);
  std::string text = json.Take() + "\n";
  QtSts::EscapeSteering(&text, "\\u", "");  // they stand nowhere but in strings
  return text;
}

}  // namespace host
