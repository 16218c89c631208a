// Who may use the status database: the group and mode of its file and of those that SQLite keeps
// beside it.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace host {

struct Access {
  std::optional<gid_t> Group;  // none: as it is
  std::optional<mode_t> Mode;  // likewise
};

// `mode` in octal digits and the name or number of a group; "" for none. Throws std::runtime_error.
Access ParseAccess(const std::string& mode, const std::string& group);

// Makes the database's file, if it is missing and something is asked for, so that nobody finds it
// with other permissions. Does nothing where it cannot be made. Throws std::system_error.
void MakeWithAccess(const Access& access);

// Gives the database and what is kept beside it what is asked for; its owner stays. This process
// must have the database open in write-ahead mode: no other program uses a journal then. Nobody
// may do more meanwhile than before or afterwards. Throws std::system_error.
void SetAccess(const Access& access);

}  // namespace host
