// JSON being written. Private to the renderings.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace host {

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

}  // namespace host
