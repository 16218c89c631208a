#include "db/view_rules.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

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

// Where a text in quotes, or a name, ends that begins with `quote`; `at` is after that.
std::size_t EndOfQuoted(std::string_view text, char quote, std::size_t at) {
  const std::size_t end = text.find(quote == '[' ? ']' : quote, at);
  return end == std::string_view::npos ? text.size() : end + 1;
}

// How many tables are joined to others: commas and the word JOIN from FROM on, up to a word that
// can only come after the tables. The text has no comments, and no parameters: in those, SQLite
// takes quotes for letters, but it knows no view that has any.
int JoinsIn(std::string_view text) {
  constexpr std::string_view kQuotes = "'\"`[";
  constexpr std::string_view kAfterTables[] = {"where", "group", "having",    "order",
                                               "limit", "union", "intersect", "except"};
  int joins = 0;
  bool in_tables = false;
  for (std::size_t at = 0; at < text.size();) {
    const char c = text[at++];
    if (kQuotes.find(c) != std::string_view::npos) {
      at = EndOfQuoted(text, c, at);
    } else if (c == ',') {
      joins += in_tables ? 1 : 0;
    } else if (IsLetter(Small(c))) {
      std::string word(1, Small(c));
      for (; at < text.size() && IsLetter(Small(text[at])); ++at) {
        word += Small(text[at]);
      }
      joins += in_tables && word == "join" ? 1 : 0;
      in_tables = word == "from" ||
                  (in_tables && std::ranges::find(kAfterTables, word) == std::end(kAfterTables));
    }
  }
  return joins;
}

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
  return JoinsIn(text) > kMaxJoins ? "joins more than 10 tables" : nullptr;
}

}  // namespace sqlitedb
