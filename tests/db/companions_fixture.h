// What the tests of the companions share: a folder like /dev/shm, and processes of other users.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

#include "tests/db/database_fixture.h"

constexpr const char* kSuffixes[] = {"-journal", "-wal", "-shm"};

struct User {
  uid_t Id;
  gid_t Group;
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
  void Put(const char* suffix, User user, mode_t mode, const std::string& bytes = "");

  // Removes the database and all beside it.
  void RemoveAll();

  int OpenReader();

  std::string Path(const char* suffix) const { return file_ + suffix; }

  CSQLdatabase reader_;
};

// Gives a file to `user`.
void Own(const std::string& name, User user, mode_t mode);

// "owner:group mode" of a file, or "missing".
std::string Owner(const std::string& name);

// Makes the calling process one of `user`.
bool Become(User user);

// Runs `action`, which gives "" or what went wrong, in a process of `user`.
std::string As(User user, const std::function<std::string()>& action);

// "" when the rows of `file` are as expected, else what went wrong.
std::string ReadAll(const std::string& file, const Rows& expected = {{"a", "1"}});

// The report of a companion that is refused.
std::string Refused(const std::string& name, const std::string& why);
