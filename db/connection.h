// What a connection and its statements share; private to this folder.
#pragma once

#include <sqlite3.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "db/budget.h"
#include "db/cpp_sqlite3.h"

namespace sqlitedb {

// How long a lock of another program is waited for.
constexpr std::chrono::milliseconds kBusyTimeout{2000};

// Of a value; a row that is sorted counts as one.
constexpr int kMaxValueBytes = 1 << 20;

// Of a database whose rows are read: all its pages, those in the log included. SQLite copies a key
// of an index whole before any limit of its own counts.
constexpr sqlite3_int64 kMaxDatabaseBytes = 128 << 20;

// Of one run of a statement that reads. Each may cost the document kilobytes.
constexpr int kMaxRows = 131'072;

// An open connection; closed with its last owner, so that no statement outlives it.
struct Connection {
  Connection() = default;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() { Close(); }

  int Close() noexcept;

  // The exception for a failure of a statement of `handle`, after which nothing counts as checked.
  CppSQLite3Exception Failed(sqlite3* handle, int code);

  // Grows each time that SQLite had to read the schema anew, and when ForgetSchema was called.
  int SchemaNumber() const noexcept;

  // Has to be called when `Db` becomes another database.
  void ForgetSchema() noexcept;

  sqlite3* Db = nullptr;    // What statements run on: the file, or a copy of it in memory.
  sqlite3* File = nullptr;  // The opened file, owned.
  sqlite3* Copy = nullptr;  // Owned; null until one was needed.
  sqlitedb::Budget Budget;
  std::optional<CppSQLite3Exception> OpenFailure;  // Then nothing is open, and never was.
  sqlite3_stmt* Touch = nullptr;                   // Reads the schema of `Db`; see Snapshot.
  int Schemas = 0;                                 // What SchemaNumber is without `Touch`.
  std::string Checked;    // The last statement that was found fit to run, or "".
  int CheckedSchema = 0;  // The number of the schema that it was found fit for.
};

// A compiled statement, null once finalized. Only the query that carries the number of the current
// run may read its rows or end it.
struct Prepared {
  explicit Prepared(std::shared_ptr<sqlitedb::Connection> owner) : Connection(std::move(owner)) {}
  Prepared(const Prepared&) = delete;
  Prepared& operator=(const Prepared&) = delete;
  ~Prepared() { Finalize(); }

  int Finalize() noexcept;

  // Of a run that has come to a further row: false when that is one too many.
  bool CountRow() noexcept { return !Reads || ++Rows <= kMaxRows; }

  std::shared_ptr<sqlitedb::Connection> Connection;
  sqlite3_stmt* Stmt = nullptr;
  unsigned Run = 0;
  unsigned BudgetNumber = 0;  // the number of that in which it was compiled; 0 once it has run
  int Rows = 0;               // that the current run has come to
  bool Reads = false;
  int Schema = 0;  // The number of the schema that a statement that reads was compiled for.
};

// The exception for `code`, with the message of `db` where that is about it.
CppSQLite3Exception Failure(sqlite3* db, int code);

// Makes `connection` ready for the next statement. Throws code 14 when its file was deleted or
// replaced, or when one of the files that SQLite keeps beside it is not to be trusted.
void Refresh(Connection& connection);

// Opens `file` with its defences up, or throws.
std::shared_ptr<Connection> Connect(const char* file, int flags);

}  // namespace sqlitedb
