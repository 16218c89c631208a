#include "tests/db/companions_fixture.h"

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>

namespace fs = std::filesystem;

namespace {

constexpr const char* kTable =
    "CREATE TABLE status(address TEXT PRIMARY KEY, value TEXT) WITHOUT ROWID;"
    "INSERT INTO status VALUES('a','1');";

}  // namespace

Companions::Companions() { fs::permissions(dir_, fs::perms(01777)); }

void Companions::SetUp() {
  if (geteuid() != 0) {
    GTEST_SKIP() << "only root can be several users";
  }
}

void Companions::MakeRollback() { MakeForeign(file_, kTable); }

void Companions::MakeWriteAhead() {
  MakeForeign(file_, std::string("PRAGMA journal_mode=WAL;") + kTable);
  ASSERT_EQ(Files(), std::vector<std::string>{"status.db"});
}

void Companions::Put(const char* suffix, User user, mode_t mode, const std::string& bytes) {
  std::ofstream(file_ + suffix) << bytes;
  Own(file_ + suffix, user, mode);
}

void Companions::RemoveAll() {
  reader_.CloseDatabase();
  for (const auto& name : Files()) {
    fs::remove(dir_ / name);
  }
}

int Companions::OpenReader() { return reader_.OpenDatabaseReadOnly(file_.c_str(), kNoMutex); }

void Own(const std::string& name, User user, mode_t mode) {
  ASSERT_EQ(chown(name.c_str(), user.Id, user.Group), 0);
  ASSERT_EQ(chmod(name.c_str(), mode), 0);
}

std::string Owner(const std::string& name) {
  struct stat found {};
  if (lstat(name.c_str(), &found) != 0) {
    return "missing";
  }
  char text[64];
  std::snprintf(text, sizeof text, "%u:%u %o", found.st_uid, found.st_gid, found.st_mode & 07777);
  return text;
}

bool Become(User user) {
  return setgroups(0, nullptr) == 0 && setgid(user.Group) == 0 && setuid(user.Id) == 0;
}

std::string As(User user, const std::function<std::string()>& action) {
  int ends[2];
  EXPECT_EQ(pipe(ends), 0);
  Child child([&] {
    const std::string text = Become(user) ? action() : "cannot become the user";
    return write(ends[1], text.c_str(), text.size() + 1) > 0 ? 0 : 1;
  });
  close(ends[1]);
  char text[1000] = "died";
  if (read(ends[0], text, sizeof text - 1) <= 0) {
    std::snprintf(text, sizeof text, "exit %d", child.Wait());
  }
  close(ends[0]);
  return text;
}

std::string ReadAll(const std::string& file, const Rows& expected) {
  CSQLdatabase reader;
  std::string failure;
  const std::string report = Stderr([&] {
    if (reader.OpenDatabaseReadOnly(file.c_str(), kNoMutex) == 0) {
      failure = Thrown([&] { failure = ReadRows(reader) == expected ? "" : "other rows"; });
    }
  });
  return report + failure;
}

std::string Refused(const std::string& name, const std::string& why) {
  return "14:" + name + " " + why + ": remove it while no program has the database open";
}
