// Rows for a user who may not write the database, while it is in write-ahead mode and has no log:
// SQLite would make one, which would be his. Private to this folder.
#pragma once

#include <sqlite3.h>

#include <string>

namespace sqlitedb {

// Larger databases are not copied.
constexpr sqlite3_int64 kLargestCopy = 64 << 20;

// No statement may run on `file`. Makes `copy`, an open database in memory on which no statement
// runs, what stands in `file`. The file is read at one moment: under SQLite's shared lock no
// program can change it without making a log, which is looked for once more afterwards. Reading it
// page by page, as SQLite does of a file that is said never to change, would find that out only
// after rows had been handed on.
//
// False when `file` can be read like any other: it is not in write-ahead mode, or it has a log by
// now. Throws CppSQLite3Exception: code 5 when it stays locked for kBusyTimeout, 18
// when it is too large.
bool CopyDatabase(sqlite3* file, const std::string& name, sqlite3* copy);

}  // namespace sqlitedb
