#include "db/sql_database.h"

#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

#include "db/companions.h"
#include "db/connection.h"

namespace {

using Failure = std::optional<CppSQLite3Exception>;

// Reports what `action` throws and puts it in `*failure`. Returns its code.
template <class Action>
int ReportFailure(Failure* failure, Action action) {
  failure->reset();
  try {
    action();
    return SQLITE_OK;
  } catch (const CppSQLite3Exception& thrown) {
    thrown.Report();
    *failure = thrown;
    return thrown.errorCode();
  }
}

template <class Action>
int ReportFailure(Action action) {
  Failure ignored;
  return ReportFailure(&ignored, action);
}

void RequireName(const char* name) {
  if (name == nullptr) {
    throw sqlitedb::Failure(nullptr, SQLITE_MISUSE);
  }
}

std::string Quoted(const std::string& identifier) {
  std::string quoted = "\"";
  for (const char c : identifier) {
    quoted.append(c == '"' ? 2 : 1, c);
  }
  return quoted + '"';
}

// Casting to a blob counts bytes; length() of a text would count characters, up to a zero byte.
std::string RefuseLonger(const char* column, int bytes) {
  const std::string limit = std::to_string(bytes);
  return std::string("SELECT RAISE(ABORT, '") + column + " is longer than " + limit +
         " bytes') WHERE length(CAST(NEW." + column + " AS BLOB)) > " + limit + "; ";
}

std::string WriteAheadMode(CppSQLite3DB& connection) {
  CppSQLite3Statement statement = connection.compileStatement("PRAGMA journal_mode=WAL");
  return statement.execQuery().getStringField(0, "");
}

// Where another program writes in the old mode, or switches at the same time, SQLite says so at
// once, without waiting for its lock.
void SwitchToWriteAhead(CppSQLite3DB& connection) {
  const auto end = std::chrono::steady_clock::now() + sqlitedb::kBusyTimeout;
  for (;;) {
    try {
      const std::string mode = WriteAheadMode(connection);
      if (mode != "wal") {
        throw CppSQLite3Exception(SQLITE_ERROR, "journal mode is " + mode + ", not wal");
      }
      return;
    } catch (const CppSQLite3Exception& failure) {
      if (failure.errorCode() != SQLITE_BUSY || std::chrono::steady_clock::now() >= end) {
        throw;
      }
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

}  // namespace

CSQLdatabase::CSQLdatabase() = default;

CSQLdatabase::~CSQLdatabase() = default;

int CSQLdatabase::OpenDatabaseWrite(const char* file, unsigned short flags,
                                    unsigned short synchronous) {
  Failure ignored;
  return OpenDatabaseWrite(file, flags, synchronous, &ignored);
}

int CSQLdatabase::OpenDatabaseWrite(const char* file, unsigned short flags,
                                    unsigned short synchronous, Failure* failure) {
  CloseDatabase();
  return ReportFailure(failure, [&] {
    m_DB.open(file, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | flags);
    if (m_DB.readOnly()) {
      throw sqlitedb::Failure(nullptr, SQLITE_READONLY);
    }
    Run("PRAGMA synchronous=" + std::to_string(synchronous));
    SwitchToWriteAhead(m_DB);
    sqlitedb::PrepareCompanions(file);  // the switch took the journal away
  });
}

int CSQLdatabase::OpenDatabaseReadOnly(const char* file, unsigned short flags) {
  CloseDatabase();
  return ReportFailure([&] { m_DB.open(file, SQLITE_OPEN_READONLY | flags); });
}

int CSQLdatabase::CreateTable(const char* name, unsigned short id) {
  Failure ignored;
  return CreateTable(name, id, &ignored);
}

int CSQLdatabase::CreateTable(const char* name, unsigned short id, Failure* failure) {
  return ReportFailure(failure, [&] {
    RequireName(name);
    m_DB.compileStatement("SELECT 1 FROM sqlite_schema");  // looks at what CREATE will change
    Run("CREATE TABLE IF NOT EXISTS " + Quoted(name) +
        "(address TEXT PRIMARY KEY, value TEXT) WITHOUT ROWID");
    table_names_[id] = name;
  });
}

int CSQLdatabase::CreateTrigger(const char* name) {
  Failure ignored;
  return CreateTrigger(name, &ignored);
}

int CSQLdatabase::CreateTrigger(const char* name, Failure* failure) {
  return ReportFailure(failure, [&] {
    RequireName(name);
    const std::string table = Quoted(name);
    // SQLite looks for the columns of a trigger only when a writer comes, who must not suffer for
    // a table that was there before and has other columns.
    m_DB.compileStatement(("SELECT address, value FROM " + table).c_str());
    if (std::none_of(table_names_.begin(), table_names_.end(),
                     [&](const auto& known) { return known.second == name; })) {
      throw CppSQLite3Exception(SQLITE_ERROR,
                                std::string("CreateTable did not find or make table ") + name);
    }
    for (const char* event : {"insert", "update"}) {
      Run("CREATE TRIGGER IF NOT EXISTS " + Quoted(std::string(name) + '_' + event + "_length") +
          " BEFORE " + event + " ON " + table + " BEGIN " +
          RefuseLonger("address", kMaxAddressBytes) + RefuseLonger("value", kMaxValueBytes) +
          "END");
    }
  });
}

int CSQLdatabase::CloseDatabase() {
  m_Statement = CppSQLite3Statement();
  const int code = m_DB.close();
  return ReportFailure([&] {
    if (code != SQLITE_OK) {
      throw sqlitedb::Failure(nullptr, code);
    }
  });
}

std::string CSQLdatabase::TableName(unsigned short id) const {
  const auto known = table_names_.find(id);
  return known != table_names_.end() ? known->second : "";
}

std::int32_t CSQLdatabase::ReadAndClearLastError() noexcept {
  return std::exchange(m_LastError, 0);
}

void CSQLdatabase::Run(const std::string& sql) {
  CppSQLite3Statement statement = m_DB.compileStatement(sql.c_str());
  statement.execQuery();
}
