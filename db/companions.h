// The journal, the write-ahead log and the log's index that SQLite keeps beside a database. The
// folder lets everybody make files, so it matters who makes these and whose are used: who may write
// the index can end every program that has it mapped, and who may write a log or a journal can
// change what is read. Nothing here opens a companion: closing the index would drop the locks that
// SQLite has on it. Private to this folder.
#pragma once

#include <initializer_list>
#include <string>

namespace sqlitedb {

enum class Companion { kJournal, kLog, kIndex };

enum class Standing {
  kMissing,
  kEmpty,  // A regular file without a byte, whoever owns it.
  kUsable,
  kRefused,
};

// "-journal", "-wal" or "-shm".
const char* SuffixOf(Companion companion);

// What stands at the name of a companion of `file`. Throws CppSQLite3Exception, code 14, where
// that cannot be seen.
Standing Look(const std::string& file, Companion companion);

// Makes missing companions of `file`, if the effective user may write it and his would do for
// every writer; as root removes those that somebody has left empty who may not write it, with a
// line on standard error for each. Throws CppSQLite3Exception, code 14, when `file` is there and
// is not a regular file, or when a companion may be written by somebody who may not write `file`,
// or is not a regular file: SQLite would wait for ever for the other end of a pipe.
void PrepareCompanions(const std::string& file, bool log_is_open = false);

// Called as SQLite is about to open the database: true when a regular file is there that nobody
// but its owner can take away, made now if it was missing and `make_missing`. Where nothing is,
// somebody else could put a pipe, for whose other end SQLite would wait for ever. When false,
// errno says why. Throws as PrepareCompanions() does.
bool PrepareDatabase(const std::string& file, bool make_missing);

// Called as SQLite is about to open a companion: true when each is there and may be written by
// nobody who may not write `file`. `make_missing`: they are made first, if the effective user may.
bool PrepareToOpen(const std::string& file, std::initializer_list<Companion> companions,
                   bool make_missing);

// True when the effective user may write `file` and make files beside it.
bool MayMake(const std::string& file);

// Throws CppSQLite3Exception, code 14, when the log's index is missing, for a user who cannot read
// the log for want of it.
void RequireIndex(const std::string& file);

// True when no program has a log of `file` open, or can have had since the last true answer while
// the shared lock was held: `file` holds all rows then.
bool LogIsAbsent(const std::string& file);

}  // namespace sqlitedb
