#include "model/json_scanner.h"

#include <algorithm>
#include <cstdint>

#include "model/text.h"

namespace QtSts {
namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Removes the digits that `text` begins with; false without any.
bool DropDigits(std::string_view* text) {
  const auto digits = static_cast<std::size_t>(
      std::find_if_not(text->begin(), text->end(), IsDigit) - text->begin());
  text->remove_prefix(digits);
  return digits > 0;
}

bool DropIf(std::string_view* text, std::string_view any) {
  const bool has = !text->empty() && any.find(text->front()) != std::string_view::npos;
  text->remove_prefix(has ? 1 : 0);
  return has;
}

bool IsNumber(std::string_view text) {
  DropIf(&text, "-");
  const bool zero = text.starts_with('0');
  std::string_view whole = text;
  if (!DropDigits(&text) || (zero && whole.size() - text.size() > 1)) {
    return false;
  }
  if (DropIf(&text, ".") && !DropDigits(&text)) {
    return false;
  }
  if (DropIf(&text, "eE")) {
    DropIf(&text, "+-");
    if (!DropDigits(&text)) {
      return false;
    }
  }
  return text.empty();
}

bool IsOfWord(char c) {
  return IsDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '+' || c == '-' ||
         c == '.';
}

void AppendUtf8(std::uint32_t code, std::string* text) {
  const auto append = [text](std::uint32_t byte) { *text += static_cast<char>(byte); };
  if (code < 0x80) {
    append(code);
    return;
  }
  if (code < 0x800) {
    append(0xC0 | (code >> 6U));
  } else {
    if (code < 0x10000) {
      append(0xE0 | (code >> 12U));
    } else {
      append(0xF0 | (code >> 18U));
      append(0x80 | ((code >> 12U) & 0x3FU));
    }
    append(0x80 | ((code >> 6U) & 0x3FU));
  }
  append(0x80 | (code & 0x3FU));
}

// Halves of a character outside of the sixteen bits that an escape has.
bool IsHighHalf(unsigned int code) { return code >= 0xD800 && code <= 0xDBFF; }
bool IsLowHalf(unsigned int code) { return code >= 0xDC00 && code <= 0xDFFF; }

constexpr std::string_view kEscaped = "\"\\/bfnrt";
constexpr std::string_view kEscapes = "\"\\/\b\f\n\r\t";

}  // namespace

bool JsonScanner::Fail(const char* message) {
  fault_ = message;
  return false;
}

char JsonScanner::Next() {
  position_ = std::min(text_.find_first_not_of(" \t\r\n", position_), text_.size());
  return position_ == text_.size() ? '\0' : text_[position_];
}

std::size_t JsonScanner::Position() {
  Next();
  return position_;
}

long JsonScanner::LineOf(std::size_t position) const {
  const std::string_view before = text_.substr(0, position);
  return 1 + std::count(before.begin(), before.end(), '\n');
}

bool JsonScanner::TakeIf(char wanted) {
  const bool has = Next() == wanted && position_ < text_.size();
  position_ += has ? 1 : 0;
  return has;
}

bool JsonScanner::Take(char wanted) { return TakeIf(wanted) || Fail("not JSON"); }

bool JsonScanner::TakeEnd() {
  return Position() == text_.size() || Fail("not JSON: something follows the document");
}

bool JsonScanner::TakeText(std::string* text) {
  text->clear();
  if (!Take('"')) {
    return false;
  }
  while (position_ < text_.size() && text_[position_] != '"') {
    const auto c = static_cast<unsigned char>(text_[position_]);
    if (c < 0x20) {
      return Fail("not JSON: a control character in a text");
    }
    ++position_;
    if (c != '\\') {
      *text += static_cast<char>(c);
    } else if (!TakeEscape(text)) {
      return false;
    }
  }
  if (position_ == text_.size()) {
    return Fail("not JSON: a text without end");
  }
  ++position_;
  const std::size_t size = text->size();
  CleanText(text);  // what it replaces grows
  return text->size() == size || Fail("a text with characters that no document can hold");
}

// What follows a backslash.
bool JsonScanner::TakeEscape(std::string* text) {
  const char c = position_ < text_.size() ? text_[position_++] : '\0';
  if (c != 'u') {
    const std::size_t known = c == '\0' ? std::string_view::npos : kEscaped.find(c);
    if (known == std::string_view::npos) {
      return Fail("not JSON: an unknown escape");
    }
    *text += kEscapes[known];
    return true;
  }
  unsigned int code = 0;
  if (!TakeCode(&code)) {
    return false;
  }
  if (IsHighHalf(code) && text_.substr(position_).starts_with("\\u")) {
    position_ += 2;
    unsigned int low = 0;
    if (!TakeCode(&low)) {
      return false;
    }
    code = IsLowHalf(low) ? 0x10000 + ((code - 0xD800) << 10U) + (low - 0xDC00) : code;
  }
  if (IsHighHalf(code) || IsLowHalf(code)) {
    return Fail("not JSON: half a character");
  }
  AppendUtf8(code, text);
  return true;
}

// Four hexadecimal digits.
bool JsonScanner::TakeCode(unsigned int* code) {
  for (int digit = 0; digit < 4; ++digit) {
    constexpr std::string_view kDigits = "0123456789abcdefABCDEF";
    const std::size_t value =
        position_ < text_.size() ? kDigits.find(text_[position_]) : std::string_view::npos;
    if (value == std::string_view::npos) {
      return Fail("not JSON: an escape without four hexadecimal digits");
    }
    *code = *code * 16 + static_cast<unsigned int>(value < 16 ? value : value - 6);
    ++position_;
  }
  return true;
}

bool JsonScanner::TakeWord(std::string_view* word) {
  Next();
  const auto* const begin = text_.begin() + position_;
  *word = {begin, std::find_if_not(begin, text_.end(), IsOfWord)};
  if (*word != "true" && *word != "false" && *word != "null" && !IsNumber(*word)) {
    return Fail("not JSON");
  }
  position_ += word->size();
  return true;
}

// NOLINTNEXTLINE(misc-no-recursion): no deeper than kMaximumDepth
bool JsonScanner::Skip() {
  std::string text;
  std::string_view word;
  switch (Next()) {
    case '{':
      return TakeMembers([this](std::string_view /*name*/) { return Skip(); });
    case '[':
      return TakeElements([this] { return Skip(); });
    case '"':
      return TakeText(&text);
    default:
      return TakeWord(&word);
  }
}

}  // namespace QtSts
