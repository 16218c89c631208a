#include "db/companions.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <optional>

#include "db/connection.h"
#include "db/file_lock.h"
#include "db/file_system.h"
#include "db/group_member.h"
#include "db/guarded_files.h"

namespace sqlitedb {

namespace {

using FileStatus = struct stat;
using Statuses = std::array<std::optional<FileStatus>, 3>;

constexpr std::array kAll = {Companion::kJournal, Companion::kLog, Companion::kIndex};

std::optional<FileStatus> StatusOf(const std::string& name) {
  FileStatus found{};
  if (lstat(name.c_str(), &found) == 0) {
    return found;
  }
  if (errno != ENOENT) {
    throw Failure(nullptr, SQLITE_CANTOPEN);
  }
  return std::nullopt;
}

std::string NameOf(const std::string& file, Companion companion) {
  return file + SuffixOf(companion);
}

std::optional<FileStatus> StatusOf(const std::string& file, Companion companion) {
  return StatusOf(NameOf(file, companion));
}

std::optional<FileStatus> StatusOfDatabase(const std::string& file) {
  const auto database = StatusOf(file);
  if (database && !S_ISREG(database->st_mode)) {
    throw Failure(nullptr, SQLITE_CANTOPEN);
  }
  return database;
}

bool OthersMayWrite(const FileStatus& status) { return (status.st_mode & S_IWOTH) != 0; }

bool GroupMayWrite(const FileStatus& status) { return (status.st_mode & S_IWGRP) != 0; }

bool UserMayWrite(const FileStatus& database, uid_t user) {
  return user == 0 || user == database.st_uid || user == geteuid() || OthersMayWrite(database) ||
         (GroupMayWrite(database) && IsMember(user, database.st_gid));
}

// SQLite gives a companion the permissions of the database, but the group of its maker.
bool ItsGroupMayWrite(const FileStatus& database, const FileStatus& companion) {
  return OthersMayWrite(database) ||
         (GroupMayWrite(database) &&
          (companion.st_gid == database.st_gid || IsOwnGroup(companion.st_uid, companion.st_gid)));
}

// Why a companion must not be used, "" when only such users may write it as may write the database.
// With a second name, it may be a file of root's that somebody else has put here.
std::string Objection(const FileStatus& database, const FileStatus& companion) {
  const std::string owner = "user " + std::to_string(companion.st_uid);
  if (!S_ISREG(companion.st_mode)) {
    return "is not a regular file and belongs to " + owner;
  }
  if (!UserMayWrite(database, companion.st_uid)) {
    return "belongs to " + owner + ", who may not write the database";
  }
  if (OthersMayWrite(companion) && !OthersMayWrite(database)) {
    return "belongs to " + owner + " and may be written by everybody, unlike the database";
  }
  if (GroupMayWrite(companion) && !ItsGroupMayWrite(database, companion)) {
    return "belongs to " + owner + " and may be written by group " +
           std::to_string(companion.st_gid) + ", unlike the database";
  }
  if (companion.st_nlink > 1) {
    return "belongs to " + owner + " and has a second name";
  }
  return "";
}

// A writer of the group has a journal of his own while he writes, which readers leave alone. What
// his own group may do to it matters once it is to be rolled back, and is looked at then.
bool IsJournalOfWriter(const FileStatus& database, const FileStatus& journal) {
  FileStatus for_himself = journal;
  for_himself.st_mode &= ~static_cast<mode_t>(S_IWGRP);
  return Objection(database, for_himself).empty();
}

// SQLite takes an empty journal for a missing one.
bool IsHarmlessJournal(const FileStatus& database, const FileStatus& journal) {
  return S_ISREG(journal.st_mode) && (journal.st_size == 0 || IsJournalOfWriter(database, journal));
}

bool IsShared(const FileStatus& database) {
  return GroupMayWrite(database) || OthersMayWrite(database);
}

// The user whose log and index every writer can open. In a folder of everybody's, the kernel may
// refuse a file to a program that would create it if missing, unless it belongs to that program's
// user or to the owner of the folder, who is root.
std::optional<uid_t> CommonOwner(const FileStatus& database) {
  if (!IsShared(database)) {
    return database.st_uid;
  }
  const bool root_will_do = database.st_uid == 0 || OthersMayWrite(database) ||
                            IsMember(database.st_uid, database.st_gid);
  return root_will_do ? std::optional<uid_t>(0) : std::nullopt;
}

// A commit takes the journal away, which in such a folder only its owner may do. So several writers
// need one each.
std::optional<uid_t> OwnerAhead(const FileStatus& database, Companion companion) {
  const bool one_each = companion == Companion::kJournal && IsShared(database);
  return one_each ? std::nullopt : CommonOwner(database);
}

uid_t OwnerWhenNeeded(const FileStatus& database, Companion companion) {
  return geteuid() == 0 ? OwnerAhead(database, companion).value_or(database.st_uid) : geteuid();
}

void Make(const std::string& file, Companion companion, const FileStatus& database, uid_t owner) {
  MakeEmptyFile(NameOf(file, companion), owner, database.st_gid, database.st_mode & 0777);
}

Statuses StatusesOf(const std::string& file) {
  Statuses statuses;
  for (std::size_t i = 0; i < kAll.size(); ++i) {
    statuses[i] = StatusOf(file, kAll[i]);
  }
  return statuses;
}

// Ahead of their need, only such companions are made as every writer can use. True when any was.
bool MakeAhead(const std::string& file, const FileStatus& database, const Statuses& statuses) {
  bool any = false;
  for (std::size_t i = 0; i < kAll.size(); ++i) {
    const auto owner = statuses[i] ? std::nullopt : OwnerAhead(database, kAll[i]);
    if (owner && (geteuid() == 0 || geteuid() == *owner) && MayMake(file)) {
      Make(file, kAll[i], database, *owner);
      any = true;
    }
  }
  return any;
}

bool IsLitter(const FileStatus& database, const std::optional<FileStatus>& companion) {
  return companion && S_ISREG(companion->st_mode) && companion->st_size == 0 &&
         !Objection(database, *companion).empty();
}

bool AnyIsLitter(const FileStatus& database, const Statuses& statuses) {
  return IsLitter(database, statuses[0]) || IsLitter(database, statuses[1]) ||
         IsLitter(database, statuses[2]);
}

// Nobody has the database open while it is locked, so nobody has opened these either.
bool RemoveLitter(const std::string& file, const FileStatus& database) {
  Connection writer;
  if (sqlite3_open_v2(file.c_str(), &writer.File,
                      SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOFOLLOW | SQLITE_OPEN_NOMUTEX,
                      GuardedFiles()) != SQLITE_OK) {
    return false;
  }
  FileLock lock(writer.File);
  if (lock.Take(SQLITE_LOCK_SHARED) != SQLITE_OK || lock.Take(SQLITE_LOCK_EXCLUSIVE) != SQLITE_OK) {
    return false;
  }
  for (const Companion companion : kAll) {
    const std::string name = NameOf(file, companion);
    const auto found = StatusOf(name);
    if (IsLitter(database, found) && unlink(name.c_str()) == 0) {
      CppSQLite3Exception(SQLITE_NOTICE, "removed " + name + ", which was empty and belonged to " +
                                             "user " + std::to_string(found->st_uid))
          .Report();
    }
  }
  return true;
}

// What has one name when it is opened stays what it is, whoever gives it another.
void ForgetSecondName(std::optional<FileStatus>& status) {
  if (status) {
    status->st_nlink = 1;
  }
}

[[noreturn]] void Refuse(const std::string& file, Companion companion, const std::string& why) {
  throw CppSQLite3Exception(SQLITE_CANTOPEN, NameOf(file, companion) + " " + why);
}

}  // namespace

const char* SuffixOf(Companion companion) {
  switch (companion) {
    case Companion::kJournal:
      return "-journal";
    case Companion::kLog:
      return "-wal";
    case Companion::kIndex:
      break;
  }
  return "-shm";
}

bool MayMake(const std::string& file) {
  return faccessat(AT_FDCWD, file.c_str(), W_OK, AT_EACCESS) == 0 &&
         faccessat(AT_FDCWD, FolderOf(file).c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

Standing Look(const std::string& file, Companion companion) {
  const auto found = StatusOf(file, companion);
  if (!found) {
    return Standing::kMissing;
  }
  if (S_ISREG(found->st_mode) && found->st_size == 0) {
    return Standing::kEmpty;
  }
  const auto database = StatusOfDatabase(file);
  const bool usable =
      database && (companion == Companion::kJournal ? IsHarmlessJournal(*database, *found)
                                                    : Objection(*database, *found).empty());
  return usable ? Standing::kUsable : Standing::kRefused;
}

void PrepareCompanions(const std::string& file, bool log_is_open) {
  const auto database = StatusOfDatabase(file);
  if (!database) {
    return;
  }
  Statuses statuses = StatusesOf(file);
  if (geteuid() == 0 && AnyIsLitter(*database, statuses) && RemoveLitter(file, *database)) {
    statuses = StatusesOf(file);
  }
  if (MakeAhead(file, *database, statuses)) {
    statuses = StatusesOf(file);
  }
  if (log_is_open) {
    ForgetSecondName(statuses[1]);
    ForgetSecondName(statuses[2]);
  }
  for (std::size_t i = 0; i < kAll.size(); ++i) {
    if (!statuses[i] ||
        (kAll[i] == Companion::kJournal && IsHarmlessJournal(*database, *statuses[i]))) {
      continue;
    }
    const std::string objection = Objection(*database, *statuses[i]);
    if (!objection.empty()) {
      Refuse(file, kAll[i], objection + ": remove it while no program has the database open");
    }
  }
}

bool PrepareDatabase(const std::string& file, bool make_missing) {
  if (StatusOfDatabase(file)) {
    return true;
  }
  if (!make_missing) {
    errno = ENOENT;
    return false;
  }
  const int made = open(file.c_str(), O_CREAT | O_EXCL | O_RDWR | O_NOFOLLOW | O_CLOEXEC,
                        S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH);
  if (made != -1) {
    close(made);  // nobody has locked it yet, so that no lock goes with it
    return true;
  }
  const int error = errno;
  const bool made_by_another = StatusOfDatabase(file).has_value();
  errno = error;
  return made_by_another;
}

bool PrepareToOpen(const std::string& file, std::initializer_list<Companion> companions,
                   bool make_missing) {
  const auto database = StatusOfDatabase(file);
  if (!database) {
    return false;
  }
  for (const Companion companion : companions) {
    auto found = StatusOf(file, companion);
    if (!found && make_missing && MayMake(file)) {
      Make(file, companion, *database, OwnerWhenNeeded(*database, companion));
      found = StatusOf(file, companion);
    }
    if (!found || !Objection(*database, *found).empty()) {
      return false;
    }
  }
  return true;
}

void RequireIndex(const std::string& file) {
  if (!StatusOf(file, Companion::kIndex)) {
    Refuse(file, Companion::kIndex,
           "is missing, and user " + std::to_string(geteuid()) +
               " may not make it: a program that may write the database must open it once");
  }
}

bool LogIsAbsent(const std::string& file) {
  const auto log = StatusOf(file, Companion::kLog);
  return !log || (S_ISREG(log->st_mode) && log->st_size == 0 && !StatusOf(file, Companion::kIndex));
}

}  // namespace sqlitedb
