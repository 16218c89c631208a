// JSON being written, for programs that add members of their own to a document.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "model/text.h"

namespace QtSts {

// JSON (RFC 8259, UTF-8) with two blanks for each level, a member or an element a line. It
// checks nothing: who calls it opens and closes in pairs, and gives each member one value.
class JsonText {
 public:
  // '{' or '['
  void Open(char bracket) {
    text_ += bracket;
    empty_ = true;
    indent_ += 2;
  }

  // '}' or ']'
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

  // A value as it stands in JSON: a number, true, false or null.
  void Literal(std::string_view text) { text_ += text; }

  // A text as CleanText leaves it: without control characters but these.
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

  // All of it, with what steers terminals escaped: that stands nowhere but in texts.
  std::string Take() {
    text_ += '\n';
    EscapeSteering(&text_, "\\u", "");
    return std::move(text_);
  }

 private:
  void NewLine() { text_.append("\n").append(indent_, ' '); }

  std::string text_;
  std::size_t indent_ = 0;
  bool empty_ = false;  // what was opened last has nothing in it yet
};

}  // namespace QtSts
