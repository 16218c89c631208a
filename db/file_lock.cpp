#include "db/file_lock.h"

namespace sqlitedb {

bool HoldsLock(sqlite3* db) noexcept {
  int level = SQLITE_LOCK_NONE;
  sqlite3_file_control(db, "main", SQLITE_FCNTL_LOCKSTATE, &level);
  return level != SQLITE_LOCK_NONE;
}

FileLock::FileLock(sqlite3* db) noexcept {
  sqlite3_file_control(db, "main", SQLITE_FCNTL_FILE_POINTER, &file_);
  usable_ = file_ != nullptr && file_->pMethods != nullptr && !HoldsLock(db);
}

FileLock::~FileLock() {
  if (usable_) {
    file_->pMethods->xUnlock(file_, SQLITE_LOCK_NONE);
  }
}

int FileLock::Take(int level) noexcept {
  return usable_ ? file_->pMethods->xLock(file_, level) : SQLITE_BUSY;
}

}  // namespace sqlitedb
