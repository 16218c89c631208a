// A connection, its statements and their rows. None of these objects may be used by two threads
// at a time. All of them release what they hold when they are destroyed.
#pragma once

#include <memory>
#include <string>

#include "db/export.h"

namespace sqlitedb {
struct Connection;
struct Prepared;
}  // namespace sqlitedb

// A failure of the database: SQLite's result code and its message. Deliberately not a
// std::exception: only who names it catches it. Copying never throws.
class SQLITEDB_API CppSQLite3Exception {
 public:
  // Code 0 would mean success and is kept as 1, SQLite's general error.
  CppSQLite3Exception(int code, std::string message);

  // The same with what errorCode() leaves out.
  CppSQLite3Exception(int code, std::string message, int extended_code, int system_error);

  // Never 0.
  SQLITEDB_API int errorCode() const noexcept { return code_; }

  // Zero-terminated; lives as long as the exception. UTF-8; in place of what could steer a
  // terminal in the names that a writer gave there is U+FFFD.
  const SQLITEDB_API char* errorMessage() const noexcept { return message_->c_str(); }

  // SQLite's extended result code, of which errorCode() is the low byte; the same as errorCode()
  // when SQLite says no more.
  int extendedCode() const noexcept;

  // errno of the system call that failed; 0 when it is not known.
  int systemError() const noexcept;

  // Writes the code, ":", the message and a line feed to standard error.
  void Report() const noexcept;

 private:
  int code_;
  std::shared_ptr<const std::string> message_;
};

// The rows of one execution of a statement, in the order of its SQL. Borrows the statement: the
// read lock is held until the query is finalized, destroyed, assigned to or has failed. Once its
// statement has run again or is gone, reading on throws code 21. An empty query is at its end.
class SQLITEDB_API CppSQLite3Query {
 public:
  CppSQLite3Query() noexcept;
  CppSQLite3Query(CppSQLite3Query&& other) noexcept;
  CppSQLite3Query& operator=(CppSQLite3Query&& other) noexcept;
  ~CppSQLite3Query();

  // True when there is no current row.
  SQLITEDB_API bool eof() const noexcept { return eof_; }

  // Goes to the next row, or to the end. Throws CppSQLite3Exception when the row cannot be read,
  // the query being empty and its read lock gone then; code 18 when it is a row too many, 21 when
  // there is no current row.
  void nextRow();

  // Text of a column of the current row, counted from 0; `if_null` when the column is NULL. The
  // bytes are the stored ones, zero-terminated, and valid until nextRow or the end of the query.
  // Throws CppSQLite3Exception, code 25, when there is no such column, 21 when there is no row.
  const char* getStringField(int column, const char* if_null);

  // Bytes of the text that getStringField gives for a column, those after a zero byte included; 0
  // when the column is NULL, not there, or there is no row.
  int getFieldBytes(int column) noexcept;

  // Name of a column, counted from 0, as the statement, its table or its view calls it, whether or
  // not there is a row. What could steer a terminal is U+FFFD, and a long name is cut. ""
  // when there is no such column, or the query is empty.
  // NOLINTNEXTLINE(readability-identifier-naming): named like the functions beside it
  std::string getFieldName(int column) const;

  // Ends the query: the read lock goes, the statement stays. Harmless when empty. Throws
  // CppSQLite3Exception on failure, the query being empty then.
  void finalize();

 private:
  friend class CppSQLite3Statement;
  CppSQLite3Query(std::shared_ptr<sqlitedb::Prepared> prepared, bool eof) noexcept;

  bool Running() const noexcept;

  std::shared_ptr<sqlitedb::Prepared> prepared_;
  unsigned run_ = 0;
  bool eof_ = true;
};

// One compiled statement; keeps its connection alive. Assigning to it releases the statement that
// was there, and reports nothing.
class SQLITEDB_API CppSQLite3Statement {
 public:
  CppSQLite3Statement() noexcept;
  CppSQLite3Statement(CppSQLite3Statement&& other) noexcept;
  CppSQLite3Statement& operator=(CppSQLite3Statement&& other) noexcept;
  ~CppSQLite3Statement();

  // Runs the statement up to its first row. Running it again starts it anew, so it has one query
  // at a time. Each run, the first one with compiling, may spend 100 million steps of SQLite's
  // machine, 10 seconds of this thread's processor time within SQLite and 128 MiB of memory; no
  // file is written. Then it is interrupted. A statement that reads needs a database of at most
  // 128 MiB, and gives at most 131,072 rows. Throws CppSQLite3Exception: code 21 when empty, code
  // 9 when interrupted, code 18 where the database, or a row, is too large.
  CppSQLite3Query execQuery() &;

  // A query of a statement that is about to go would have no rows.
  CppSQLite3Query execQuery() && = delete;

  // Frees the statement. Harmless when empty. Throws CppSQLite3Exception when its last run had
  // failed and nothing has reported that yet, the statement being empty then.
  void finalize();

 private:
  friend class CppSQLite3DB;
  explicit CppSQLite3Statement(std::shared_ptr<sqlitedb::Prepared> prepared) noexcept;

  std::shared_ptr<sqlitedb::Prepared> prepared_;
};

// One connection to a database file that anybody may have written: symbolic links are not
// followed, the schema is not trusted, no code is loaded, sizes are limited, waiting for a lock
// ends after 2000 ms. A statement that reads (SELECT, VALUES or WITH) calls no function that it
// does not name itself, however its tables and views are made, and views are kept simple.
class SQLITEDB_API CppSQLite3DB {
 public:
  CppSQLite3DB() noexcept;
  CppSQLite3DB(const CppSQLite3DB&) = delete;
  CppSQLite3DB& operator=(const CppSQLite3DB&) = delete;
  ~CppSQLite3DB();

  // Opens `file` with SQLITE_OPEN_ flags, after closing what was open. A connection that can
  // write leaves the write-ahead log in place when it is the last to close. Throws
  // CppSQLite3Exception, nothing being open then.
  void open(const char* file, int flags);

  // Why nothing is open: the failure of the last open. Null when it succeeded, or since close.
  // Lives until the next open or close.
  const CppSQLite3Exception* openFailure() const noexcept;

  // Closes the connection, once its last statement is gone. Harmless when not open. Returns
  // SQLite's code, 0 when done.
  int close() noexcept;

  // True when open and not able to write, be it by request or for want of permission.
  bool readOnly() const noexcept;

  // Compiles the first statement of `sql`. Throws CppSQLite3Exception: code 21 when not open,
  // code 14 when the opened file was deleted or replaced by another, or when a file that SQLite
  // keeps beside it may be written by somebody who may not write the database, code 1 when
  // it reads a table or view that is not safe to read.
  CppSQLite3Statement compileStatement(const char* sql);

 private:
  std::shared_ptr<sqlitedb::Connection> connection_;
};
