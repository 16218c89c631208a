#include "db/connection.h"

#include <chrono>
#include <thread>
#include <utility>

#include "db/companions.h"
#include "db/database_copy.h"
#include "db/file_lock.h"
#include "db/guarded_files.h"

namespace sqlitedb {

namespace {

// SQLite's own default for loading code is off as well, but a build of it may differ.
constexpr struct {
  int Option;
  int Value;
} kDefences[] = {
    {SQLITE_DBCONFIG_DEFENSIVE, 1},
    {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0},
    {SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0},
};

// What holds for the whole schema, made by programs that have nothing to do with us, too;
// reading.cpp has limits for the statements that read. A row is a key of 127 and a value of 511
// bytes, and our longest statement has 700 bytes: there is room for what a foreign writer may do,
// not for what only an attacker would.
constexpr struct {
  int Limit;
  int Value;
} kLimits[] = {
    {SQLITE_LIMIT_LENGTH, kMaxValueBytes},   {SQLITE_LIMIT_SQL_LENGTH, 1 << 16},
    {SQLITE_LIMIT_VDBE_OP, 25'000},          {SQLITE_LIMIT_ATTACHED, 0},
    {SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 100}, {SQLITE_LIMIT_VARIABLE_NUMBER, 100},
};

// Cells are checked as pages are read; a file that shrinks gives an error, not a bus error; sorting
// writes no file.
constexpr const char* kSettings =
    "PRAGMA cell_size_check=ON; PRAGMA mmap_size=0; PRAGMA temp_store=MEMORY;";

void Check(sqlite3* db, int code) {
  if (code != SQLITE_OK) {
    throw Failure(db, code);
  }
}

void Harden(sqlite3* db, Budget& budget) {
  for (const auto& defence : kDefences) {
    Check(db, sqlite3_db_config(db, defence.Option, defence.Value, nullptr));
  }
  for (const auto& limit : kLimits) {
    sqlite3_limit(db, limit.Limit, limit.Value);
  }
  Check(db, sqlite3_busy_timeout(db, static_cast<int>(kBusyTimeout.count())));
  budget.Restart();
  sqlite3_progress_handler(db, Budget::kStepsPerCall, &Budget::Spend, &budget);
  Check(db, sqlite3_exec(db, kSettings, nullptr, nullptr, nullptr));
}

// The write-ahead log stays when the last writer closes, so that a reader who may not create files
// finds it.
void KeepWriteAheadLog(sqlite3* db) {
  int on = 1;
  Check(db, sqlite3_file_control(db, "main", SQLITE_FCNTL_PERSIST_WAL, &on));
}

sqlite3* OpenMemory(Budget& budget) {
  sqlite3* db = nullptr;
  const int code = sqlite3_open_v2(
      ":memory:", &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_MEMORY | SQLITE_OPEN_NOMUTEX, nullptr);
  try {
    Check(db, code);
    Harden(db, budget);
  } catch (const CppSQLite3Exception&) {
    sqlite3_close(db);
    throw;
  }
  return db;
}

void UseDatabase(Connection& connection, sqlite3* db) noexcept {
  if (connection.Db != db) {
    connection.ForgetSchema();
    connection.Db = db;
  }
}

// A query that still runs keeps the copy that it began with.
bool UseCopy(Connection& connection, const std::string& name) {
  if (connection.Copy == nullptr) {
    connection.Copy = OpenMemory(connection.Budget);
  }
  const bool running = sqlite3_txn_state(connection.Copy, "main") != SQLITE_TXN_NONE;
  if (!running) {
    connection.ForgetSchema();
  }
  if (running || CopyDatabase(connection.File, name, connection.Copy)) {
    UseDatabase(connection, connection.Copy);
    return true;
  }
  return false;
}

// In write-ahead mode, what was opened once stays open, and nobody takes it away.
int OpenLog(Connection& connection) {
  connection.Budget.Restart();
  const int code =
      sqlite3_exec(connection.File, "PRAGMA schema_version", nullptr, nullptr, nullptr) & 0xff;
  if (code != SQLITE_OK && code != SQLITE_CANTOPEN && code != SQLITE_READONLY) {
    throw Failure(connection.File, code);
  }
  return code;
}

// A writer that is about to open or to close the database makes or removes log and index one after
// the other.
void ReadWithoutWriting(Connection& connection, const std::string& name) {
  const auto end = std::chrono::steady_clock::now() + kBusyTimeout;
  while (!LogIsAbsent(name) || !UseCopy(connection, name)) {
    const int code = OpenLog(connection);
    if (code == SQLITE_OK) {
      return;
    }
    if (std::chrono::steady_clock::now() >= end) {
      RequireIndex(name);
      throw Failure(connection.File, code);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

}  // namespace

int Connection::Close() noexcept {
  ForgetSchema();
  Db = nullptr;
  if (Copy != nullptr) {
    sqlite3_close(std::exchange(Copy, nullptr));
  }
  return sqlite3_close(std::exchange(File, nullptr));
}

CppSQLite3Exception Connection::Failed(sqlite3* handle, int code) {
  CppSQLite3Exception failure = Failure(handle, code);
  Checked.clear();
  if (failure.errorCode() == SQLITE_CORRUPT) {
    // Pages are checked when they come into SQLite's cache, so those that were refused must leave.
    sqlite3_db_release_memory(handle);
  }
  return failure;
}

int Connection::SchemaNumber() const noexcept {
  return Touch == nullptr ? Schemas
                          : Schemas + sqlite3_stmt_status(Touch, SQLITE_STMTSTATUS_REPREPARE, 0);
}

void Connection::ForgetSchema() noexcept {
  Schemas = SchemaNumber() + 1;
  sqlite3_finalize(std::exchange(Touch, nullptr));
  Checked.clear();
}

int Prepared::Finalize() noexcept {
  ++Run;
  return sqlite3_finalize(std::exchange(Stmt, nullptr));
}

CppSQLite3Exception Failure(sqlite3* db, int code) {
  const int primary = code & 0xff;
  if (primary == SQLITE_INTERRUPT) {
    return {primary, "interrupted after " + std::to_string(Budget::kSteps) + " steps, " +
                         std::to_string(Budget::kSeconds) + " seconds or " +
                         std::to_string(Budget::kMebibytes) + " MiB: table or view too large"};
  }
  const bool known = db != nullptr && (sqlite3_errcode(db) & 0xff) == primary;
  if (!known) {
    return {primary, sqlite3_errstr(primary), code, 0};
  }
  // SQLite notes the system's error for these two alone, and keeps it beyond later failures.
  const bool noted = primary == SQLITE_CANTOPEN || primary == SQLITE_IOERR;
  return {primary, sqlite3_errmsg(db), sqlite3_extended_errcode(db),
          noted ? sqlite3_system_errno(db) : 0};
}

std::shared_ptr<Connection> Connect(const char* file, int flags) {
  if (file == nullptr || *file == '\0') {
    throw Failure(nullptr, SQLITE_MISUSE);
  }
  PrepareCompanions(file);
  auto connection = std::make_shared<Connection>();
  const int code =
      sqlite3_open_v2(file, &connection->File, flags | SQLITE_OPEN_NOFOLLOW, GuardedFiles());
  connection->Db = connection->File;
  Check(connection->Db, code);
  Harden(connection->Db, connection->Budget);
  if (sqlite3_db_readonly(connection->Db, "main") == 0) {
    KeepWriteAheadLog(connection->Db);
  }
  return connection;
}

void Refresh(Connection& connection) {
  int moved = 0;
  sqlite3_file_control(connection.File, "main", SQLITE_FCNTL_HAS_MOVED, &moved);
  if (moved != 0) {
    throw CppSQLite3Exception(SQLITE_CANTOPEN, "database file was deleted or replaced");
  }
  const char* const filename = sqlite3_db_filename(connection.File, "main");
  if (filename == nullptr || *filename == '\0') {
    return;  // in memory
  }
  const std::string name = filename;
  PrepareCompanions(name, HoldsLock(connection.File));
  UseDatabase(connection, connection.File);
  if (!MayMake(name) && !HoldsLock(connection.File)) {
    ReadWithoutWriting(connection, name);
  }
}

}  // namespace sqlitedb
