#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "db/cpp_sqlite3.h"
#include "db/export.h"

// The database of key/value tables that a host and its writers share: a connection, the statement
// that runs on it and the code of a failure that is still to be acted upon. Opening, creating and
// closing never throw a CppSQLite3Exception: they report it on standard error and return its
// code, 0 when done. One thread at a time.
class SQLITEDB_API CSQLdatabase {
 public:
  // Longest address and value, in bytes, that the triggers of a table let in.
  static constexpr int kMaxAddressBytes = 127;
  static constexpr int kMaxValueBytes = 511;

  CSQLdatabase();
  CSQLdatabase(const CSQLdatabase&) = delete;
  CSQLdatabase& operator=(const CSQLdatabase&) = delete;
  virtual ~CSQLdatabase();

  // Opens `file` for reading and writing, created if absent, in write-ahead mode; closes what was
  // open. `flags`: further SQLITE_OPEN_ flags. `synchronous`: SQLite's level, 0 off to 3 extra.
  // A file that opens but cannot be written or switched stays open as it is, and is reported.
  int OpenDatabaseWrite(const char* file, unsigned short flags, unsigned short synchronous);

  // Opens `file` for reading, never creating it; closes what was open.
  int OpenDatabaseReadOnly(const char* file, unsigned short flags);

  // Makes sure of a table of that name with the columns address, its key, and value. A table that
  // is there stays as it is. From then on `id` stands for the name.
  int CreateTable(const char* name, unsigned short id);

  // Makes sure that writers of a table of CreateTable get an error for an address or a value that
  // is too long, instead of having it cut.
  int CreateTrigger(const char* name);

  // The same three, which also put what they reported in `*failure`; it is empty when all went
  // well.
  int OpenDatabaseWrite(const char* file, unsigned short flags, unsigned short synchronous,
                        std::optional<CppSQLite3Exception>* failure);
  int CreateTable(const char* name, unsigned short id, std::optional<CppSQLite3Exception>* failure);
  int CreateTrigger(const char* name, std::optional<CppSQLite3Exception>* failure);

  // Closes the connection and its statement. Harmless when not open.
  int CloseDatabase();

  // Name that CreateTable gave to `id`; "" when none.
  std::string TableName(unsigned short id) const;

  // The last error code, which is 0 from then on.
  std::int32_t ReadAndClearLastError() noexcept;

  CppSQLite3DB m_DB;
  CppSQLite3Statement m_Statement;
  std::int32_t m_LastError = 0;  // 0 when there is none. Set by derived classes and hosts only.

 private:
  void Run(const std::string& sql);

  std::map<unsigned short, std::string> table_names_;
};
