// Making files that are complete from the start; private to this folder.
#pragma once

#include <sys/types.h>

#include <string>

namespace sqlitedb {

// The folder that `name` is in, "." when it names none.
std::string FolderOf(const std::string& name);

// Makes an empty file that has owner, group and mode before it has its name, so that nobody finds
// it otherwise; where the file system cannot do that, nobody can open it until it has them. Never
// touches what is there already, and does nothing where the effective user may not do all of it.
// Only root gives a file to `owner`; others keep theirs.
void MakeEmptyFile(const std::string& name, uid_t owner, gid_t group, mode_t mode);

}  // namespace sqlitedb
