#pragma once

#include <array>
#include <string>

#include "sandbox/format/rows.h"

namespace sandbox {

// The status database, first, and what SQLite keeps beside it.
inline constexpr std::array kDatabaseFiles = {"/dev/shm/status.db", "/dev/shm/status.db-journal",
                                              "/dev/shm/status.db-wal", "/dev/shm/status.db-shm"};
inline constexpr const char* kDatabase = kDatabaseFiles[0];

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
