// Who belongs to a group, by the system's user and group databases; private to this folder.
#pragma once

#include <sys/types.h>

namespace sqlitedb {

// True when `group` is the login group of `user` or lists him. False also when the databases
// cannot be read. Asks the system each time, so that a change is seen.
bool IsMember(uid_t user, gid_t group);

// True when `group` is the login group of `user`, bears his name and lists nobody else.
bool IsOwnGroup(uid_t user, gid_t group);

}  // namespace sqlitedb
