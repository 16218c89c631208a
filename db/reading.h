// Statements that read tables and views which anybody may have made; private to this folder.
//
// SQLite looks at the clock and counts steps between the steps of a program, not within one
// function, and not while it compiles: a view of 4 KiB can take minutes and gigabytes in either. So
// neither happens before the schema has been looked at, under a read transaction that lasts until
// the program runs.
#pragma once

#include "db/connection.h"

namespace sqlitedb {

// Whether `sql` is a statement that reads rows, by its first word.
bool Reads(const char* sql) noexcept;

// While SQLite may read the schema, also because it was changed after a statement was compiled:
// what SQLite reads with it is not read.
class CloseLook {
 public:
  explicit CloseLook(Connection& connection);
  CloseLook(const CloseLook&) = delete;
  CloseLook& operator=(const CloseLook&) = delete;
  ~CloseLook();

 private:
  Connection& connection_;
};

// A read transaction, and the schema of the file in SQLite's memory. Throws CppSQLite3Exception.
class Snapshot {
 public:
  explicit Snapshot(Connection& connection);
  Snapshot(const Snapshot&) = delete;
  Snapshot& operator=(const Snapshot&) = delete;
  ~Snapshot();

 private:
  Connection& connection_;
};

// Compiles `sql` into `prepared`. Throws CppSQLite3Exception, code 1 where a view or a program is
// refused.
void CompileReading(Prepared& prepared, const char* sql);

// Throws CppSQLite3Exception, code 18, where the database is larger than kMaxDatabaseBytes. For a
// Snapshot of its connection.
void CheckSize(Connection& connection);

// Compiles anew what was compiled for another schema than the one that the file has. For a
// Snapshot of its connection.
void FollowSchema(Prepared& prepared);

}  // namespace sqlitedb
