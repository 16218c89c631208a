// What other programs that may write the database, or read it, can do to a reader all the same.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

#include "db/sql_database.h"
#include "tests/db/database_fixture.h"

namespace {

using testing::ElementsAre;
using testing::Pair;

namespace fs = std::filesystem;

constexpr const char* kTable =
    "CREATE TABLE status(address TEXT PRIMARY KEY, value TEXT) WITHOUT ROWID;"
    "INSERT INTO status VALUES('a','1');";

class SharingLimits : public DatabaseTest {
 protected:
  void Make(bool write_ahead) {
    MakeForeign(file_, std::string(write_ahead ? "PRAGMA journal_mode=WAL;" : "") + kTable);
  }

  int OpenReader() { return reader_.OpenDatabaseReadOnly(file_.c_str(), kNoMutex); }

  CSQLdatabase reader_;
};

bool Thorough() {
  const char* const wanted = std::getenv("STATUS_LONG");
  return wanted != nullptr && std::string_view(wanted) == "1";
}

}  // namespace

TEST_F(SharingLimits, ProgramThatLocksTheDatabaseForItselfFailsReadersInEveryMode) {
  for (const bool write_ahead : {false, true}) {
    SCOPED_TRACE(write_ahead);
    Make(write_ahead);
    Foreign other(file_);
    ASSERT_EQ(other.Do("PRAGMA locking_mode=EXCLUSIVE; UPDATE status SET value='2'"), "");
    ASSERT_EQ(OpenReader(), 0);
    EXPECT_GT(
        Seconds([&] { EXPECT_EQ(Thrown([&] { ReadRows(reader_); }), "5:database is locked"); }),
        1.5);
    ASSERT_EQ(other.Do("PRAGMA locking_mode=NORMAL; UPDATE status SET value='3'"), "");
    EXPECT_THAT(ReadRows(reader_), ElementsAre(Pair("a", "3")));
    reader_.CloseDatabase();
    for (const auto& name : Files()) {
      fs::remove(dir_ / name);
    }
  }
}

// SQLite knows a change by the counter in the file, which is the same in both.
TEST_F(SharingLimits, FileThatIsOverwrittenInPlaceIsNotNoticed) {
  Make(false);
  const std::string other = file_ + "2";
  MakeForeign(other, kTable);
  ASSERT_EQ(Foreign(file_).Do("UPDATE status SET value='first'"), "");
  ASSERT_EQ(Foreign(other).Do("UPDATE status SET value='other'"), "");
  ASSERT_EQ(OpenReader(), 0);
  EXPECT_THAT(ReadRows(reader_), ElementsAre(Pair("a", "first")));
  const std::string bytes = Bytes(other);
  const int fd = open(file_.c_str(), O_WRONLY);
  ASSERT_EQ(pwrite(fd, bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
  EXPECT_THAT(ReadRows(reader_), ElementsAre(Pair("a", "first")));
  close(fd);
  ASSERT_EQ(OpenReader(), 0);
  EXPECT_THAT(ReadRows(reader_), ElementsAre(Pair("a", "other")));
}

TEST_F(SharingLimits, BrokenIndexWhoseWriterNeverEndsIsGivenUpAfterTenSeconds) {
  if (!Thorough()) {
    GTEST_SKIP() << "takes ten seconds: STATUS_LONG=1";
  }
  Make(true);
  Signal ready;
  Child writer([&] {
    Foreign foreign(file_);
    const bool writing = foreign.Do("BEGIN IMMEDIATE; UPDATE status SET value='2'").empty();
    const int index = open((file_ + "-shm").c_str(), O_WRONLY);
    const std::string zeros(96, '\0');
    const bool broken =
        pwrite(index, zeros.data(), zeros.size(), 0) == static_cast<ssize_t>(zeros.size());
    ready.Send();
    pause();  // with the descriptor open: closing it would drop the locks
    return writing && broken ? 0 : 1;
  });
  ready.Await();
  ASSERT_EQ(OpenReader(), 0);
  const double seconds =
      Seconds([&] { EXPECT_EQ(Thrown([&] { ReadRows(reader_); }), "15:locking protocol"); });
  EXPECT_GT(seconds, 5.0);
  EXPECT_LT(seconds, 60.0);
}

// Closing a descriptor of a file drops all locks that the process has on it, so SQLite waits.
TEST_F(SharingLimits, DescriptorOfASecondConnectionStaysUntilTheFirstReleasesItsLock) {
  Make(true);
  ASSERT_EQ(OpenReader(), 0);
  ASSERT_EQ(ReadRows(reader_).size(), 1U);
  const int before = OpenDescriptors();
  {
    CSQLdatabase second;
    ASSERT_EQ(second.OpenDatabaseReadOnly(file_.c_str(), kNoMutex), 0);
    ASSERT_EQ(ReadRows(second).size(), 1U);
  }
  EXPECT_GT(OpenDescriptors(), before);
  reader_.CloseDatabase();
  EXPECT_LT(OpenDescriptors(), before);
}

namespace {

// A byte of the database that a writer has locked for writing while he works.
constexpr off_t kReservedByte = 0x40000001;

// Their pages are too many for SQLite's cache.
constexpr const char* kManyRows =
    "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c LIMIT 2000) "
    "INSERT INTO status SELECT 'k'||x, hex(zeroblob(100)) FROM c";

// Breaks off a transaction of which a part is in the file already.
void KillAWriter(const std::string& file) {
  Signal ready;
  Child writer([&] {
    Foreign foreign(file);
    const bool written = foreign
                             .Do("PRAGMA cache_spill=1; PRAGMA cache_size=1; BEGIN IMMEDIATE;"
                                 "UPDATE status SET value='uncommitted'")
                             .empty();
    ready.Send();
    pause();
    return written ? 0 : 1;
  });
  ready.Await();
  writer.Kill();
  writer.Wait();
  ASSERT_NE(Bytes(file).find("uncommitted"), std::string::npos) << "the writer did not write";
  ASSERT_GT(fs::file_size(file + "-journal"), 0U);
}

// Locks that byte for reading, which needs no right to write.
int LockReservedByte(const std::string& file, int command) {
  struct flock lock {};
  lock.l_type = F_RDLCK;
  lock.l_whence = SEEK_SET;
  lock.l_start = kReservedByte;
  lock.l_len = 1;
  const int fd = open(file.c_str(), O_RDONLY);
  return fcntl(fd, command, &lock);
}

}  // namespace

// Such a lock used to pass for a writer at work, and what the killed one had not committed was
// read, with result 0.
TEST_F(SharingLimits, ReadLockOfAStrangerKeepsNoBrokenTransactionFromBeingRolledBack) {
  for (const int command : {F_SETLK, F_OFD_SETLK}) {
    SCOPED_TRACE(command);
    Make(false);
    ASSERT_EQ(Foreign(file_).Do(kManyRows), "");
    ASSERT_EQ(OpenReader(), 0);
    const Rows committed = ReadRows(reader_);
    KillAWriter(file_);
    Signal ready;
    Child stranger([&] {
      const int result = LockReservedByte(file_, command);
      ready.Send();
      pause();
      return result;
    });
    ready.Await();
    EXPECT_EQ(Thrown([&] { ReadRows(reader_); }), "8:attempt to write a readonly database");
    CSQLdatabase host;
    host.m_DB.open(file_.c_str(), SQLITE_OPEN_READWRITE | kNoMutex);
    EXPECT_EQ(ReadRows(host), committed);
    EXPECT_EQ(ReadRows(reader_), committed);
    host.CloseDatabase();
    reader_.CloseDatabase();
    for (const auto& name : Files()) {
      fs::remove(dir_ / name);
    }
  }
}

TEST_F(SharingLimits, WriterAtWorkInRollbackModeIsNotRolledBack) {
  constexpr const char* kWork = "BEGIN IMMEDIATE; UPDATE status SET value='2'";
  Make(false);
  ASSERT_EQ(OpenReader(), 0);
  {
    Signal ready;
    Signal go_on;
    Child writer([&] {
      Foreign foreign(file_);
      std::string failure = foreign.Do(kWork);
      ready.Send();
      go_on.Await();
      failure += foreign.Do("COMMIT");
      return failure.empty() ? 0 : 1;
    });
    ready.Await();
    EXPECT_GT(fs::file_size(file_ + "-journal"), 0U);
    EXPECT_THAT(ReadRows(reader_), ElementsAre(Pair("a", "1")));
    go_on.Send();
    EXPECT_EQ(writer.Wait(), 0) << "his lock was lost, or his journal";
  }
  EXPECT_THAT(ReadRows(reader_), ElementsAre(Pair("a", "2")));
  Foreign of_this_process(file_);
  ASSERT_EQ(of_this_process.Do("BEGIN IMMEDIATE; UPDATE status SET value='3'"), "");
  EXPECT_GT(fs::file_size(file_ + "-journal"), 0U);
  EXPECT_THAT(ReadRows(reader_), ElementsAre(Pair("a", "2")));
  EXPECT_EQ(of_this_process.Do("COMMIT"), "");
  EXPECT_THAT(ReadRows(reader_), ElementsAre(Pair("a", "3")));
}
