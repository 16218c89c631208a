#include "sandbox/rows.h"

#include <sqlite3.h>

#include <memory>
#include <stdexcept>

#include "sandbox/files.h"

namespace sandbox {
namespace {

constexpr const char* kTable =
    "CREATE TABLE IF NOT EXISTS status(address TEXT PRIMARY KEY, value TEXT) WITHOUT ROWID;";
constexpr const char* kInsert = "INSERT OR REPLACE INTO status VALUES(?, ?);";
constexpr const char* kDelete = "DELETE FROM status WHERE address = ?;";
constexpr int kPatience = 5000;  // milliseconds to wait for another connection's lock

class Connection {
 public:
  Connection() {
    RequireInside();
    sqlite3* opened = nullptr;
    const int result = sqlite3_open(kDatabase, &opened);
    database_.reset(opened);
    Require(result == SQLITE_OK);
    sqlite3_busy_timeout(database_.get(), kPatience);
  }

  void Run(const std::string& sql) {
    Require(sqlite3_exec(database_.get(), sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK);
  }

  // Runs a statement whose first parameters are `key` and `value`, if any.
  void Run(const char* sql, const RowKey& key, const RowValue* value) {
    sqlite3_stmt* prepared = nullptr;
    Require(sqlite3_prepare_v2(database_.get(), sql, -1, &prepared, nullptr) == SQLITE_OK);
    const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement(prepared,
                                                                          sqlite3_finalize);
    if (key.IsBlob) {
      BindBlob(prepared, 1, key.Bytes);
    } else {
      BindText(prepared, 1, key.Bytes);
    }
    if (value != nullptr) {
      Bind(prepared, 2, *value);
    }
    Require(sqlite3_step(prepared) == SQLITE_DONE);
  }

 private:
  void Require(bool done) const {
    if (!done) {
      throw std::runtime_error(std::string(kDatabase) + ": " + sqlite3_errmsg(database_.get()));
    }
  }

  void BindText(sqlite3_stmt* statement, int position, const std::string& text) {
    Require(sqlite3_bind_text(statement, position, text.data(), static_cast<int>(text.size()),
                              nullptr) == SQLITE_OK);
  }

  void BindBlob(sqlite3_stmt* statement, int position, const std::string& bytes) {
    Require(sqlite3_bind_blob(statement, position, bytes.data(), static_cast<int>(bytes.size()),
                              nullptr) == SQLITE_OK);
  }

  // Null needs no binding: a fresh statement's parameters are null.
  void Bind(sqlite3_stmt* statement, int position, const RowValue& value) {
    if (const auto* text = std::get_if<std::string>(&value)) {
      BindText(statement, position, *text);
    } else if (const auto* blob = std::get_if<Blob>(&value)) {
      BindBlob(statement, position, blob->Bytes);
    }
  }

  std::unique_ptr<sqlite3, int (*)(sqlite3*)> database_{nullptr, sqlite3_close};
};

void MakeTable(Connection& connection) {
  connection.Run("PRAGMA journal_mode=WAL;");
  connection.Run(kTable);
}

}  // namespace

void SetRows(const Rows& rows) {
  Connection connection;
  MakeTable(connection);
  connection.Run("BEGIN IMMEDIATE; DELETE FROM status;");
  for (const auto& [key, value] : rows) {
    connection.Run(kInsert, key, &value);
  }
  connection.Run("COMMIT;");
}

void SetRow(const RowKey& key, const RowValue& value) {
  Connection connection;
  MakeTable(connection);
  connection.Run(kInsert, key, &value);
}

void RemoveRow(const RowKey& key) { Connection().Run(kDelete, key, nullptr); }

void RunSql(const std::string& statements) { Connection().Run(statements); }

void RemoveDatabase() {
  for (const char* const file : kDatabaseFiles) {
    RemoveFile(file);
  }
}

}  // namespace sandbox
