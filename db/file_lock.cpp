#include "db/file_lock.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cstdlib>
#include <memory>

namespace sqlitedb {

namespace {

constexpr off_t kReservedByte = 0x40000001;

struct CloseFolder {
  void operator()(DIR* folder) const noexcept { closedir(folder); }
};

// A descriptor of this process for the file at a name, -1 when there is none.
int DescriptorOf(const std::string& name) {
  struct stat wanted {};
  if (stat(name.c_str(), &wanted) != 0) {
    return -1;
  }
  const std::unique_ptr<DIR, CloseFolder> all(opendir("/proc/self/fd"));
  while (const dirent* const entry = all != nullptr ? readdir(all.get()) : nullptr) {
    const int fd = std::atoi(entry->d_name);
    struct stat found {};
    if (fstat(fd, &found) == 0 && found.st_dev == wanted.st_dev && found.st_ino == wanted.st_ino) {
      return fd;
    }
  }
  return -1;
}

}  // namespace

// No two processes have the byte locked if one of them writes, so the first lock that is found says
// which it is.
bool ReservedByteIsOnlyRead(const std::string& file) {
  struct flock lock {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  lock.l_start = kReservedByte;
  lock.l_len = 1;
  const int fd = DescriptorOf(file);
  return fd != -1 && fcntl(fd, F_GETLK, &lock) == 0 && lock.l_type == F_RDLCK;
}

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
