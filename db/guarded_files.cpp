#include "db/guarded_files.h"

#include <sqlite3.h>

#include <new>
#include <string>
#include <string_view>

#include "db/companions.h"
#include "db/connection.h"
#include "db/cpp_sqlite3.h"
#include "db/file_lock.h"

namespace sqlitedb {

namespace {

constexpr const char* kName = "sqlitedb";

sqlite3_vfs* g_system = nullptr;

// Of a database, after what the system's VFS keeps of its file.
struct Guard {
  sqlite3_io_methods Methods;  // the system's, but for what is replaced here
  int (*IsReserved)(sqlite3_file*, int*);
  const char* Name;  // SQLite's, as long as the file is open
};

Guard& GuardOf(sqlite3_file* file) {
  return *reinterpret_cast<Guard*>(reinterpret_cast<char*>(file) + g_system->szOsFile);
}

bool EndsWith(std::string_view name, Companion companion) {
  return name.ends_with(SuffixOf(companion));
}

std::string DatabaseOf(std::string_view name, Companion companion) {
  return std::string(name.substr(0, name.size() - std::string_view(SuffixOf(companion)).size()));
}

// No exception may pass through SQLite.
template <class Action>
int Guarded(Action action) noexcept {
  try {
    return action();
  } catch (const CppSQLite3Exception& failure) {
    return failure.errorCode();
  } catch (const std::bad_alloc&) {
    return SQLITE_NOMEM;
  }
}

int Exists(std::string_view name, Companion companion, int* exists) {
  const Standing standing = Look(DatabaseOf(name, companion), companion);
  *exists = standing == Standing::kUsable ? 1 : 0;
  return standing == Standing::kRefused ? SQLITE_CANTOPEN : SQLITE_OK;
}

int Access(sqlite3_vfs* /*self*/, const char* name, int flags, int* result) noexcept {
  if (flags == SQLITE_ACCESS_EXISTS) {
    for (const Companion companion : {Companion::kJournal, Companion::kLog}) {
      if (EndsWith(name, companion)) {
        return Guarded([&] { return Exists(name, companion, result); });
      }
    }
  }
  return g_system->xAccess(g_system, name, flags, result);
}

// A journal can name any file as the one that it shares with the journals of other databases. What
// the journal holds has been rolled back when SQLite asks for that file, to delete it once no other
// journal names it. That is left to the programs that use several databases.
bool MayOpen(const char* name, int flags) {
  if ((flags & SQLITE_OPEN_SUPER_JOURNAL) != 0) {
    return false;
  }
  const bool make = (flags & SQLITE_OPEN_CREATE) != 0;
  if ((flags & SQLITE_OPEN_MAIN_DB) != 0) {
    return PrepareDatabase(name, make);
  }
  if ((flags & SQLITE_OPEN_WAL) != 0 && EndsWith(name, Companion::kLog)) {
    return PrepareToOpen(DatabaseOf(name, Companion::kLog), {Companion::kLog, Companion::kIndex},
                         make);
  }
  if ((flags & SQLITE_OPEN_MAIN_JOURNAL) != 0 && EndsWith(name, Companion::kJournal)) {
    return PrepareToOpen(DatabaseOf(name, Companion::kJournal), {Companion::kJournal}, make);
  }
  return true;
}

// SQLite asks when it finds a journal: where a writer is at work, it is his, and the rows are read
// without it.
int CheckReservedLock(sqlite3_file* file, int* result) noexcept {
  const Guard& guard = GuardOf(file);
  const int code = guard.IsReserved(file, result);
  if (code != SQLITE_OK || *result == 0) {
    return code;
  }
  return Guarded([&] {
    *result = ReservedByteIsOnlyRead(guard.Name) ? 0 : 1;
    return SQLITE_OK;
  });
}

void GuardDatabase(sqlite3_file* file, const char* name) {
  Guard& guard = GuardOf(file);
  guard = {*file->pMethods, file->pMethods->xCheckReservedLock, name};
  guard.Methods.xCheckReservedLock = CheckReservedLock;
  file->pMethods = &guard.Methods;
}

int Open(sqlite3_vfs* /*self*/, const char* name, sqlite3_file* file, int flags,
         int* out) noexcept {
  const int code =
      name == nullptr ? SQLITE_OK
                      : Guarded([&] { return MayOpen(name, flags) ? SQLITE_OK : SQLITE_CANTOPEN; });
  if (code != SQLITE_OK) {
    file->pMethods = nullptr;
    return code;
  }
  const int opened = g_system->xOpen(g_system, name, file, flags, out);
  if (opened == SQLITE_OK && name != nullptr && (flags & SQLITE_OPEN_MAIN_DB) != 0) {
    GuardDatabase(file, name);
  }
  return opened;
}

// Taken back when the library is unloaded.
class Registration {
 public:
  Registration() {
    g_system = sqlite3_vfs_find("unix");
    if (g_system == nullptr) {
      throw Failure(nullptr, SQLITE_NOMEM);
    }
    vfs_ = *g_system;
    vfs_.zName = kName;
    vfs_.szOsFile += static_cast<int>(sizeof(Guard));
    vfs_.xAccess = Access;
    vfs_.xOpen = Open;
    if (const int code = sqlite3_vfs_register(&vfs_, 0); code != SQLITE_OK) {
      throw Failure(nullptr, code);
    }
  }
  Registration(const Registration&) = delete;
  Registration& operator=(const Registration&) = delete;
  ~Registration() { sqlite3_vfs_unregister(&vfs_); }

 private:
  sqlite3_vfs vfs_{};
};

}  // namespace

const char* GuardedFiles() {
  static Registration registration;
  return kName;
}

}  // namespace sqlitedb
