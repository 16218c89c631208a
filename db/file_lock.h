// SQLite's own lock on a database file, taken outside of a statement; private to this folder.
#pragma once

#include <sqlite3.h>

#include <string>

namespace sqlitedb {

// True while a statement of `db` runs; in write-ahead mode, once its log is open.
bool HoldsLock(sqlite3* db) noexcept;

// True when another process has the byte of `file` locked for reading that a writer locks for
// writing while he works: then nobody is at work. SQLite itself only sees that the byte is locked,
// and anybody who may read the file can do that. Asks through a descriptor that this process has
// open already, for the same reason as below; false where /proc does not list it.
bool ReservedByteIsOnlyRead(const std::string& file);

// Holds no lock until Take() has succeeded; releases it when destroyed. While it lives, nothing
// may run on its connection. Goes through SQLite and not through fcntl, since closing any other
// descriptor of the file would drop the locks of all connections of this process.
class FileLock {
 public:
  explicit FileLock(sqlite3* db) noexcept;
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;
  ~FileLock();

  // `level`: SQLITE_LOCK_SHARED or, once shared, SQLITE_LOCK_EXCLUSIVE. Returns SQLite's code,
  // SQLITE_BUSY at once when another holds the file, or when the connection itself holds a lock.
  int Take(int level) noexcept;

  // The open file, to be read while it is locked; null when the connection has none.
  sqlite3_file* File() const noexcept { return file_; }

 private:
  sqlite3_file* file_ = nullptr;
  bool usable_ = false;
};

}  // namespace sqlitedb
