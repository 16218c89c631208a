#include "sandbox/format/rows.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>
#include <stdexcept>

#include "sandbox/format/limits.h"
#include "sandbox/format/text.h"

namespace sandbox {
namespace {

constexpr std::string_view kNull = "\\N";
constexpr std::string_view kBlob = "\\x";

struct Escape {
  char Letter;
  char Meaning;
};
constexpr Escape kEscapes[] = {{'t', '\t'},  {'n', '\n'}, {'r', '\r'},
                               {'\\', '\\'}, {'#', '#'},  {'0', '\0'}};

std::string Unescape(std::string_view text) {
  std::string plain;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '\\') {
      plain += text[at];
      continue;
    }
    ++at;
    const Escape* const known = std::ranges::find_if(kEscapes, [&](const Escape& escape) {
      return at < text.size() && escape.Letter == text[at];
    });
    if (known == std::end(kEscapes)) {
      throw std::runtime_error("unknown escape in: " + std::string(text));
    }
    plain += known->Meaning;
  }
  return plain;
}

std::string Escaped(std::string_view plain) {
  std::string text;
  for (const char c : plain) {
    const Escape* const known = std::ranges::find(kEscapes, c, &Escape::Meaning);
    if (known == std::end(kEscapes)) {
      text += c;
    } else {
      text.append("\\").append(1, known->Letter);
    }
  }
  return text;
}

std::string FromHexadecimal(std::string_view digits) {
  std::string bytes;
  for (std::size_t at = 0; at < digits.size(); at += 2) {
    bytes += ByteOf(digits.substr(at, 2));
  }
  return bytes;
}

// A text or a blob, as a RowKey or a RowValue.
template <class Cell>
Cell ParseCell(std::string_view text) {
  if (text.starts_with(kBlob)) {
    return Blob(FromHexadecimal(text.substr(kBlob.size())));
  }
  return Unescape(text);
}

RowValue ParseValue(std::string_view text) {
  return text == kNull ? RowValue(nullptr) : ParseCell<RowValue>(text);
}

std::string BlobText(std::string_view bytes) {
  std::string text(kBlob);
  for (const char c : bytes) {
    text += Hexadecimal(c);
  }
  return text;
}

std::string KeyText(const RowKey& key) {
  return key.IsBlob ? BlobText(key.Bytes) : Escaped(key.Bytes);
}

std::string ValueText(const RowValue& value) {
  if (const auto* const text = std::get_if<std::string>(&value)) {
    return Escaped(*text);
  }
  const auto* const blob = std::get_if<Blob>(&value);
  return blob == nullptr ? std::string(kNull) : BlobText(blob->Bytes);
}

}  // namespace

Rows ParseRows(std::string_view text) {
  Rows rows;
  std::size_t number = 0;
  ForEachRawLine(text, [&](const std::string& line) {
    if (++number > kMostRows) {
      throw std::runtime_error("more than " + std::to_string(kMostRows) + " lines");
    }
    if (line.empty() || line.front() == '#') {
      return;
    }
    try {
      const std::size_t tab = line.find('\t');
      if (tab == std::string::npos) {
        throw std::runtime_error("expected a key, a tab and a value");
      }
      const std::string_view view = line;
      if (!rows.emplace(ParseCell<RowKey>(view.substr(0, tab)), ParseValue(view.substr(tab + 1)))
               .second) {
        throw std::runtime_error("the key stands twice");
      }
    } catch (const std::exception& error) {
      throw std::runtime_error("line " + std::to_string(number) + ": " + error.what());
    }
  });
  return rows;
}

std::string RowsText(const Rows& rows) {
  std::string text;
  for (const auto& [key, value] : rows) {
    text.append(KeyText(key)).append("\t").append(ValueText(value)).append("\n");
  }
  return text;
}

}  // namespace sandbox
