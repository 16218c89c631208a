// SQLite's files as the system gives them, but for a database and its companions, which are looked
// at once more when SQLite decides on them; private to this folder.
#pragma once

namespace sqlitedb {

// Name of the VFS for sqlite3_open_v2, registered at the first call. It is not the default of
// the process, whose other databases are not affected. Throws CppSQLite3Exception.
//
// SQLite asks for a journal and opens a log only while it holds its shared lock on the database.
// Nobody who follows its locks takes a companion away meanwhile, and nobody else can, in a folder
// where users may remove only what is theirs. So what was looked at is what is opened.
//
// Where SQLite asks whether a writer is at work, another process's lock for reading is no answer.
const char* GuardedFiles();

}  // namespace sqlitedb
