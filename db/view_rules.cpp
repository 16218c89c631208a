#include "db/view_rules.h"

#include <algorithm>

namespace sqlitedb {

namespace {

bool IsLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' || c == '$' ||
         (c & 0x80) != 0;
}

char Small(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// Everything but blanks, in small letters.
std::string Dense(std::string_view text) {
  std::string dense;
  for (const char c : text) {
    if (c != ' ' && (c < '\t' || c > '\r')) {
      dense += Small(c);
    }
  }
  return dense;
}

// Each of these lets a short text grow as a power of its length while it is compiled. What only
// looks like one, in quotes, is refused as well.
constexpr struct {
  const char* Found;
  const char* Fault;
} kInWords[] =
    {
        {" with ", "has the word WITH"},
        {" values ", "has the word VALUES"},
        {" natural ", "has the word NATURAL"},
},
  kInDense[] = {
      {"(select", "has a subquery"},
      {"--", "has a comment"},
      {"/*", "has a comment"},
      {"\xef\xbb\xbf", "has a byte order mark"},
};

}  // namespace

std::string Words(std::string_view text) {
  std::string words = " ";
  for (const char c : text) {
    if (IsLetter(Small(c))) {
      words += Small(c);
    } else if (words.back() != ' ') {
      words += ' ';
    }
  }
  if (words.back() != ' ') {
    words += ' ';
  }
  return words;
}

const char* FaultOfView(std::string_view text) {
  if (text.size() > kMaxViewBytes) {
    return "is longer than 4096 bytes";
  }
  const std::string words = Words(text);
  for (const auto& rule : kInWords) {
    if (words.find(rule.Found) != std::string::npos) {
      return rule.Fault;
    }
  }
  const std::string dense = Dense(text);
  for (const auto& rule : kInDense) {
    if (dense.find(rule.Found) != std::string::npos) {
      return rule.Fault;
    }
  }
  return nullptr;
}

}  // namespace sqlitedb
