// What the tests of the companions share: a folder like /dev/shm, and processes of other users.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

#include "tests/db/database_fixture.h"

constexpr char const* kSuffixes[] = {"-journal", "-wal", "-shm"};

struct User {
  uid_t id;
  gid_t group;
};

constexpr User kStranger{65534, 65534};
constexpr User kWriter{1, 1};  // user daemon, whose login group is daemon

// A database in a folder where everybody may make files and remove his own. Needs root.
class Companions : public DatabaseTest {
 protected:
  Companions();

  void SetUp() override;

  void MakeRollback();

  // In write-ahead mode, and without any other file.
  void MakeWriteAhead();

  // A file of `user` at the name of a companion.
  void Put(char const* suffix, User user, mode_t mode, std::string const& bytes = "");

  // Removes the database and all beside it.
  void RemoveAll();

  int OpenReader();

  std::string Path(char const* suffix) const { return file_ + suffix; }

  CSQLdatabase reader_;
};

// Gives a file to `user`.
void Own(std::string const& name, User user, mode_t mode);

// "owner:group mode" of a file, or "missing".
std::string Owner(std::string const& name);

// Makes the calling process one of `user`.
bool Become(User user);

// Runs `action`, which gives "" or what went wrong, in a process of `user`.
std::string As(User user, std::function<std::string()> const& action);

// "" when the rows of `file` are as expected, else what went wrong.
std::string ReadAll(std::string const& file, Rows const& expected = {{"a", "1"}});

// The report of a companion that is refused.
std::string Refused(std::string const& name, std::string const& why);
