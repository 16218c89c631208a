// JSON being written. Private to the renderings.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace QtSts {

// JSON with two blanks for each level, a member or an element a line.
class JsonText {
 public:
  void Open(char bracket) {
    text_ += bracket;
    empty_ = true;
    indent_ += 2;
  }

  void Close(char bracket) {
    indent_ -= 2;
    if (!empty_) {
      NewLine();
    }
    text_ += bracket;
    empty_ = false;
  }

  // Before each element of an array.
  void Next() {
    text_ += empty_ ? "" : ",";
    empty_ = false;
    NewLine();
  }

  // Before the value of each member of an object. Names need no escapes.
  void Member(std::string_view name) {
    Next();
    text_.append("\"").append(name).append("\": ");
  }

  void Literal(std::string_view text) { text_ += text; }

  // Text of the document has no control characters but these.
  void String(std::string_view text) {
    text_ += '"';
    for (const char c : text) {
      switch (c) {
        case '"':
          text_ += "\\\"";
          break;
        case '\\':
          text_ += "\\\\";
          break;
        case '\t':
          text_ += "\\t";
          break;
        case '\n':
          text_ += "\\n";
          break;
        case '\r':
          text_ += "\\r";
          break;
        default:
          text_ += c;
      }
    }
    text_ += '"';
  }

  std::string Take() { return std::move(text_); }

 private:
  void NewLine() { text_.append("\n").append(indent_, ' '); }

  std::string text_;
  std::size_t indent_ = 0;
  bool empty_ = false;  // what was opened last has nothing in it yet
};

}  // namespace QtSts
