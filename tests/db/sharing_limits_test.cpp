// What other programs that may write the database, or read it, can do to a reader all the same.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string_view>

#include "db/sql_database.h"
#include "tests/db/database_fixture.h"

namespace {

using testing::ElementsAre;
using testing::Pair;

namespace fs = std::filesystem;

constexpr char const* kTable =
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

std::string Bytes(std::string const& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

bool Thorough() {
  char const* const wanted = std::getenv("STATUS_LONG");
  return wanted != nullptr && std::string_view(wanted) == "1";
}

}  // namespace

TEST_F(SharingLimits, ProgramThatLocksTheDatabaseForItselfFailsReadersInEveryMode) {
  for (bool const write_ahead : {false, true}) {
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
    for (auto const& name : Files()) {
      fs::remove(dir_ / name);
    }
  }
}

// SQLite tells a change by the counter in the file, which is the same in both.
TEST_F(SharingLimits, FileThatIsOverwrittenInPlaceIsNotNoticed) {
  Make(false);
  std::string const other = file_ + "2";
  MakeForeign(other, kTable);
  ASSERT_EQ(Foreign(file_).Do("UPDATE status SET value='first'"), "");
  ASSERT_EQ(Foreign(other).Do("UPDATE status SET value='other'"), "");
  ASSERT_EQ(OpenReader(), 0);
  EXPECT_THAT(ReadRows(reader_), ElementsAre(Pair("a", "first")));
  std::string const bytes = Bytes(other);
  int const fd = open(file_.c_str(), O_WRONLY);
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
    bool const writing = foreign.Do("BEGIN IMMEDIATE; UPDATE status SET value='2'").empty();
    int const index = open((file_ + "-shm").c_str(), O_WRONLY);
    std::string const zeros(96, '\0');
    bool const broken =
        pwrite(index, zeros.data(), zeros.size(), 0) == static_cast<ssize_t>(zeros.size());
    ready.Send();
    pause();  // with the descriptor open: closing it would drop the locks
    return writing && broken ? 0 : 1;
  });
  ready.Await();
  ASSERT_EQ(OpenReader(), 0);
  double const seconds =
      Seconds([&] { EXPECT_EQ(Thrown([&] { ReadRows(reader_); }), "15:locking protocol"); });
  EXPECT_GT(seconds, 5.0);
  EXPECT_LT(seconds, 60.0);
}

// Closing a descriptor of a file drops all locks that the process has on it, so SQLite waits.
TEST_F(SharingLimits, DescriptorOfASecondConnectionStaysUntilTheFirstReleasesItsLock) {
  Make(true);
  ASSERT_EQ(OpenReader(), 0);
  ASSERT_EQ(ReadRows(reader_).size(), 1U);
  int const before = OpenDescriptors();
  {
    CSQLdatabase second;
    ASSERT_EQ(second.OpenDatabaseReadOnly(file_.c_str(), kNoMutex), 0);
    ASSERT_EQ(ReadRows(second).size(), 1U);
  }
  EXPECT_GT(OpenDescriptors(), before);
  reader_.CloseDatabase();
  EXPECT_LT(OpenDescriptors(), before);
}
