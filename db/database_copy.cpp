#include "db/database_copy.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <memory>
#include <thread>

#include "db/companions.h"
#include "db/connection.h"
#include "db/file_lock.h"

namespace sqlitedb {

namespace {

// Of the header: the versions that a program must know to write and to read the file.
constexpr int kVersionBytes = 18;
constexpr unsigned char kRollback = 1;
constexpr unsigned char kWriteAhead = 2;
constexpr sqlite3_int64 kHeaderSize = 100;

using Bytes = std::unique_ptr<unsigned char, decltype(&sqlite3_free)>;

void Check(int code) {
  if (code != SQLITE_OK) {
    throw Failure(nullptr, code);
  }
}

void TakeSharedLock(FileLock& lock) {
  const auto end = std::chrono::steady_clock::now() + kBusyTimeout;
  int code = lock.Take(SQLITE_LOCK_SHARED);
  while (code == SQLITE_BUSY && std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    code = lock.Take(SQLITE_LOCK_SHARED);
  }
  Check(code);
}

bool InWriteAheadMode(sqlite3_file* file, sqlite3_int64 size) {
  std::array<unsigned char, 2> versions{};
  if (size < kHeaderSize) {
    return false;
  }
  Check(file->pMethods->xRead(file, versions.data(), versions.size(), kVersionBytes));
  return versions[0] == kWriteAhead && versions[1] == kWriteAhead;
}

Bytes Read(sqlite3_file* file, sqlite3_int64 size) {
  if (size > kLargestCopy) {
    throw CppSQLite3Exception(SQLITE_TOOBIG,
                              "database is larger than " + std::to_string(kLargestCopy >> 20) +
                                  " MiB: a program that may write it must open it once");
  }
  Bytes bytes(static_cast<unsigned char*>(sqlite3_malloc64(static_cast<sqlite3_uint64>(size))),
              &sqlite3_free);
  if (bytes == nullptr) {
    throw Failure(nullptr, SQLITE_NOMEM);
  }
  Check(file->pMethods->xRead(file, bytes.get(), static_cast<int>(size), 0));
  return bytes;
}

}  // namespace

bool CopyDatabase(sqlite3* file, const std::string& name, sqlite3* copy) {
  FileLock lock(file);
  TakeSharedLock(lock);
  sqlite3_int64 size = 0;
  Check(lock.File()->pMethods->xFileSize(lock.File(), &size));
  if (!LogIsAbsent(name) || !InWriteAheadMode(lock.File(), size)) {
    return false;
  }
  Bytes bytes = Read(lock.File(), size);
  if (!LogIsAbsent(name)) {
    return false;
  }
  // A database in memory has no log.
  std::fill_n(bytes.get() + kVersionBytes, 2, kRollback);
  Check(sqlite3_deserialize(copy, "main", bytes.release(), size, size,
                            SQLITE_DESERIALIZE_FREEONCLOSE | SQLITE_DESERIALIZE_READONLY));
  return true;
}

}  // namespace sqlitedb
