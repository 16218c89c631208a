#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace sandbox {

// The status database, first, and what SQLite keeps beside it.
inline constexpr std::array kDatabaseFiles = {"/dev/shm/status.db", "/dev/shm/status.db-journal",
                                              "/dev/shm/status.db-wal", "/dev/shm/status.db-shm"};
inline constexpr const char* kDatabase = kDatabaseFiles[0];

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
  RowKey(Blob blob) : IsBlob(true), Bytes(std::move(blob.Bytes)) {}
  auto operator<=>(const RowKey&) const = default;

  bool IsBlob = false;
  std::string Bytes;
};

// The rows of table `status`, by key.
using Rows = std::map<RowKey, RowValue>;

// Reads the text form: one row a line, key TAB value. In both, \t \n \r \\ and \# stand for a tab,
// a line feed, a carriage return, a backslash and a '#'. A value \N is NULL, a key or value that
// begins with \x is a blob in hexadecimal. Empty lines and lines that begin with '#' are ignored.
// Throws std::runtime_error with the line number when a line is not such a row.
Rows ParseRows(std::string_view text);

// Makes these the rows of table `status`, as one transaction of another process would: the
// database and the table are made when absent, connections that are open see the change. Throws
// std::runtime_error.
void SetRows(const Rows& rows);

// Adds or replaces one row.
void SetRow(const RowKey& key, const RowValue& value);
void RemoveRow(const RowKey& key);

// Runs SQL statements on the database, for what the above cannot do.
void RunSql(const std::string& statements);

// Removes the database file and its companions.
void RemoveDatabase();

}  // namespace sandbox
