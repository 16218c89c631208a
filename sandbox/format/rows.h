#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <variant>

namespace sandbox {

struct Blob {
  explicit Blob(std::string contents) : Bytes(std::move(contents)) {}
  std::string Bytes;
};

// NULL, a text or a blob.
using RowValue = std::variant<std::nullptr_t, std::string, Blob>;

// A text or a blob; a blob is another key than the text of the same bytes, and comes after all
// texts.
struct RowKey {
  RowKey(std::string text) : Bytes(std::move(text)) {}
  RowKey(const char* text) : Bytes(text) {}
  RowKey(const Blob& blob) : IsBlob(true), Bytes(blob.Bytes) {}
  bool operator==(const RowKey&) const = default;
  bool operator<(const RowKey& other) const {
    return std::tie(IsBlob, Bytes) < std::tie(other.IsBlob, other.Bytes);
  }

  bool IsBlob = false;
  std::string Bytes;
};

// The rows of table `status`, by key.
using Rows = std::map<RowKey, RowValue>;

// Reads the text form: one row a line, key TAB value. In both, \t \n \r \\ \# and \0 stand for a
// tab, a line feed, a carriage return, a backslash, a '#' and a zero byte. A value \N is NULL, a
// key or value that begins with \x is a blob in hexadecimal. Empty lines and lines that begin with
// '#' are ignored. Throws std::runtime_error with the line number when a line is not such a row.
Rows ParseRows(std::string_view text);

// Writes it, in the order of the keys' bytes, which is that of a cycle.
std::string RowsText(const Rows& rows);

}  // namespace sandbox
