#include "db/cpp_sqlite3.h"

#include <cstdio>
#include <optional>
#include <utility>

#include "db/connection.h"
#include "db/plain_text.h"
#include "db/reading.h"

using sqlitedb::Connect;
using sqlitedb::Connection;
using sqlitedb::Failure;
using sqlitedb::Prepared;

namespace {

// The message of every exception, which so carries more than its class has members for: programs
// hold that class as it is.
struct Details : std::string {
  Details(std::string message, int extended, int system)
      : std::string(std::move(message)), ExtendedCode(extended), SystemError(system) {}

  int ExtendedCode;
  int SystemError;
};

const Details& DetailsOf(const std::shared_ptr<const std::string>& message) {
  return static_cast<const Details&>(*message);
}

}  // namespace

CppSQLite3Exception::CppSQLite3Exception(int code, std::string message)
    : CppSQLite3Exception(code, std::move(message), code, 0) {}

CppSQLite3Exception::CppSQLite3Exception(int code, std::string message, int extended_code,
                                         int system_error)
    : code_(code != SQLITE_OK ? code : SQLITE_ERROR),
      message_(std::make_shared<const Details>(sqlitedb::PlainText(std::move(message)),
                                               extended_code != SQLITE_OK ? extended_code : code_,
                                               system_error)) {}

int CppSQLite3Exception::extendedCode() const noexcept { return DetailsOf(message_).ExtendedCode; }

int CppSQLite3Exception::systemError() const noexcept { return DetailsOf(message_).SystemError; }

void CppSQLite3Exception::Report() const noexcept {
  std::fprintf(stderr, "%d:%s\n", errorCode(), errorMessage());
}

namespace {

// Callers inline these. They are exported by name all the same, which taking their address does.
[[gnu::used]] constexpr auto kEof = &CppSQLite3Query::eof;
[[gnu::used]] constexpr auto kErrorCode = &CppSQLite3Exception::errorCode;
[[gnu::used]] constexpr auto kErrorMessage = &CppSQLite3Exception::errorMessage;

// The exception for `code`, which a statement gave. SQLITE_ROW: for a row too many.
CppSQLite3Exception FailureOfRun(const Prepared& prepared, int code) {
  if (code == SQLITE_ROW) {
    return {SQLITE_TOOBIG,
            "table or view has more than " + std::to_string(sqlitedb::kMaxRows) + " rows"};
  }
  CppSQLite3Exception failure = prepared.Connection->Failed(sqlite3_db_handle(prepared.Stmt), code);
  if (failure.errorCode() == SQLITE_TOOBIG) {
    return {SQLITE_TOOBIG, std::string(failure.errorMessage()) + ": a value or row has more than " +
                               std::to_string(sqlitedb::kMaxValueBytes) + " bytes"};
  }
  return failure;
}

CppSQLite3Exception EndFailedRun(Prepared& prepared, int code) {
  CppSQLite3Exception failure = FailureOfRun(prepared, code);
  ++prepared.Run;
  sqlite3_reset(prepared.Stmt);
  return failure;
}

// Rows that can be read pass through none of these, so they are out of line.
[[noreturn, gnu::cold, gnu::noinline]] void Fail(int code) { throw Failure(nullptr, code); }

[[noreturn, gnu::cold, gnu::noinline]] void FailRun(CppSQLite3Query& query, Prepared& prepared,
                                                    int code) {
  const CppSQLite3Exception failure = EndFailedRun(prepared, code);
  query = CppSQLite3Query();
  throw failure;
}

// What a column is that has no text: `if_null`, unless it cannot be read.
[[gnu::cold, gnu::noinline]] const char* WithoutText(const Prepared& prepared, int column,
                                                     const char* if_null) {
  if (column < 0 || column >= sqlite3_data_count(prepared.Stmt)) {
    Fail(SQLITE_RANGE);
  }
  if (sqlite3_errcode(prepared.Connection->Db) == SQLITE_NOMEM) {
    Fail(SQLITE_NOMEM);
  }
  return if_null;
}

}  // namespace

inline bool CppSQLite3Query::Running() const noexcept {
  return prepared_ != nullptr && prepared_->Run == run_;
}

CppSQLite3Query::CppSQLite3Query() noexcept = default;

CppSQLite3Query::CppSQLite3Query(std::shared_ptr<Prepared> prepared, bool eof) noexcept
    : prepared_(std::move(prepared)), run_(prepared_->Run), eof_(eof) {}

CppSQLite3Query::CppSQLite3Query(CppSQLite3Query&& other) noexcept
    : prepared_(std::move(other.prepared_)),
      run_(other.run_),
      eof_(std::exchange(other.eof_, true)) {}

CppSQLite3Query& CppSQLite3Query::operator=(CppSQLite3Query&& other) noexcept {
  CppSQLite3Query taken(std::move(other));
  std::swap(prepared_, taken.prepared_);
  std::swap(run_, taken.run_);
  std::swap(eof_, taken.eof_);
  return *this;
}

CppSQLite3Query::~CppSQLite3Query() {
  if (Running()) {
    sqlite3_reset(prepared_->Stmt);
  }
}

void CppSQLite3Query::nextRow() {
  if (eof_ || !Running()) {
    Fail(SQLITE_MISUSE);
  }
  sqlitedb::Budget& budget = prepared_->Connection->Budget;
  budget.Enter();
  const int code = sqlite3_step(prepared_->Stmt);
  budget.Leave();
  if (code == SQLITE_ROW && prepared_->CountRow()) {
    return;
  }
  eof_ = true;
  if (code != SQLITE_DONE) {
    FailRun(*this, *prepared_, code);
  }
}

const char* CppSQLite3Query::getStringField(int column, const char* if_null) {
  if (eof_ || !Running()) {
    Fail(SQLITE_MISUSE);
  }
  sqlitedb::Budget& budget = prepared_->Connection->Budget;
  budget.Enter();  // a text in UTF-16 is converted, which can take longer than reading it
  const auto* const text = sqlite3_column_text(prepared_->Stmt, column);
  budget.Leave();
  return text != nullptr ? reinterpret_cast<const char*>(text)
                         : WithoutText(*prepared_, column, if_null);
}

int CppSQLite3Query::getFieldBytes(int column) noexcept {
  return eof_ || !Running() ? 0 : sqlite3_column_bytes(prepared_->Stmt, column);
}

std::string CppSQLite3Query::getFieldName(int column) const {
  const char* const name = Running() ? sqlite3_column_name(prepared_->Stmt, column) : nullptr;
  return name == nullptr ? "" : sqlitedb::PlainText(name);
}

void CppSQLite3Query::finalize() {
  const bool running = Running();
  const auto prepared = std::exchange(prepared_, nullptr);
  eof_ = true;
  if (!running) {
    return;
  }
  const int code = sqlite3_reset(prepared->Stmt);
  if (code != SQLITE_OK) {
    throw Failure(prepared->Connection->Db, code);
  }
}

CppSQLite3Statement::CppSQLite3Statement() noexcept = default;

CppSQLite3Statement::CppSQLite3Statement(std::shared_ptr<Prepared> prepared) noexcept
    : prepared_(std::move(prepared)) {}

CppSQLite3Statement::CppSQLite3Statement(CppSQLite3Statement&& other) noexcept = default;

CppSQLite3Statement& CppSQLite3Statement::operator=(CppSQLite3Statement&& other) noexcept {
  CppSQLite3Statement taken(std::move(other));
  std::swap(prepared_, taken.prepared_);
  return *this;
}

CppSQLite3Statement::~CppSQLite3Statement() {
  if (prepared_ != nullptr) {
    prepared_->Finalize();
  }
}

CppSQLite3Query CppSQLite3Statement::execQuery() & {
  if (prepared_ == nullptr) {
    throw Failure(nullptr, SQLITE_MISUSE);
  }
  ++prepared_->Run;
  sqlite3_reset(prepared_->Stmt);
  sqlitedb::Connection& connection = *prepared_->Connection;
  if (std::exchange(prepared_->BudgetNumber, 0) == connection.Budget.Number()) {
    connection.Budget.Enter();
  } else {
    connection.Budget.Restart();
  }
  std::optional<sqlitedb::Snapshot> snapshot;
  std::optional<sqlitedb::CloseLook> look;
  if (prepared_->Reads) {
    snapshot.emplace(connection);
    sqlitedb::CheckSize(connection);
    sqlitedb::FollowSchema(*prepared_);
  } else {
    connection.Checked.clear();  // it may change the schema
    look.emplace(connection);    // or find that another program has changed it
  }
  prepared_->Rows = 1;
  const int code = sqlite3_step(prepared_->Stmt);
  connection.Budget.Leave();
  if (code != SQLITE_ROW && code != SQLITE_DONE) {
    throw EndFailedRun(*prepared_, code);
  }
  return {prepared_, code == SQLITE_DONE};
}

void CppSQLite3Statement::finalize() {
  const auto prepared = std::exchange(prepared_, nullptr);
  if (prepared == nullptr) {
    return;
  }
  const int code = prepared->Finalize();
  if (code != SQLITE_OK) {
    throw Failure(prepared->Connection->Db, code);
  }
}

namespace {

bool IsOpen(const std::shared_ptr<Connection>& connection) {
  return connection != nullptr && !connection->OpenFailure;
}

}  // namespace

CppSQLite3DB::CppSQLite3DB() noexcept = default;

CppSQLite3DB::~CppSQLite3DB() = default;

void CppSQLite3DB::open(const char* file, int flags) {
  close();
  auto failed = std::make_shared<Connection>();
  try {
    connection_ = Connect(file, flags);
  } catch (const CppSQLite3Exception& failure) {
    failed->OpenFailure = failure;
    connection_ = std::move(failed);
    throw;
  }
}

const CppSQLite3Exception* CppSQLite3DB::openFailure() const noexcept {
  return connection_ != nullptr && connection_->OpenFailure ? &*connection_->OpenFailure : nullptr;
}

int CppSQLite3DB::close() noexcept {
  const auto connection = std::exchange(connection_, nullptr);
  return connection.use_count() == 1 ? connection->Close() : SQLITE_OK;
}

bool CppSQLite3DB::readOnly() const noexcept {
  return IsOpen(connection_) && sqlite3_db_readonly(connection_->File, "main") != 0;
}

CppSQLite3Statement CppSQLite3DB::compileStatement(const char* sql) {
  if (!IsOpen(connection_) || sql == nullptr) {
    throw Failure(nullptr, SQLITE_MISUSE);
  }
  sqlitedb::Refresh(*connection_);
  sqlite3* db = connection_->Db;
  connection_->Budget.Restart();
  auto prepared = std::make_shared<Prepared>(connection_);
  prepared->BudgetNumber = connection_->Budget.Number();
  if (sqlitedb::Reads(sql)) {
    sqlitedb::CompileReading(*prepared, sql);
  } else {
    connection_->Checked.clear();                         // compiling may read the schema
    { const sqlitedb::Snapshot snapshot(*connection_); }  // reads it, and more carefully
    const sqlitedb::CloseLook look(*connection_);         // as it may have changed since
    const int code = sqlite3_prepare_v2(db, sql, -1, &prepared->Stmt, nullptr);
    if (code != SQLITE_OK) {
      throw connection_->Failed(db, code);
    }
  }
  connection_->Budget.Leave();
  return CppSQLite3Statement(std::move(prepared));
}
