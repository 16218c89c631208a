// Write-ahead mode without a log, read by who may not make one.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <set>
#include <thread>

#include "db/sql_database.h"
#include "tests/db/database_fixture.h"

namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::Pair;

namespace fs = std::filesystem;

constexpr const char* kTable =
    "PRAGMA journal_mode=WAL;"
    "CREATE TABLE status(address TEXT PRIMARY KEY, value TEXT) WITHOUT ROWID;";

// The tests run as a user who may only read, in a child of a process that writes.
class DatabaseCopy : public DatabaseTest {
 protected:
  DatabaseCopy() {
    fs::permissions(dir_, fs::perms(01777));
    MakeForeign(file_, std::string(kTable) + "INSERT INTO status VALUES('a','1')");
    fs::permissions(file_, fs::perms(0644));
    EXPECT_THAT(Files(), ElementsAre("status.db"));
  }

  // Runs `action` as a user who may not write the database; the test's failures are its own.
  void Unprivileged(const std::function<void()>& action) {
    Child child([&] {
      if (!BecomeUnprivileged()) {
        return 1;
      }
      action();
      return HasFailure() ? 2 : 0;
    });
    EXPECT_EQ(child.Wait(), 0);
  }

  void SetUp() override {
    if (geteuid() != 0) {
      GTEST_SKIP() << "the database must belong to another user";
    }
  }

  void Open() { ASSERT_EQ(reader_.OpenDatabaseReadOnly(file_.c_str(), kNoMutex), 0); }

  Rows All() { return ReadRows(reader_); }

  CSQLdatabase reader_;
};

}  // namespace

TEST_F(DatabaseCopy, ShowsEachCycleWhatStandsInTheFileOrInTheLogThatCame) {
  Signal go;
  Signal done;
  Child writer([&] {
    for (int i = 2; i < 6; ++i) {
      go.Await();
      {
        Foreign foreign(file_);  // takes the log away when it closes
        foreign.Do("UPDATE status SET value=" + std::to_string(i));
        if (i % 2 == 0) {
          done.Send();
          go.Await();
        }
      }
      done.Send();
    }
    return 0;
  });
  Unprivileged([&] {
    Open();
    EXPECT_THAT(All(), ElementsAre(Pair("a", "1")));
    for (const std::string value : {"2", "2", "3", "4", "4", "5"}) {
      go.Send();
      done.Await();
      EXPECT_THAT(All(), ElementsAre(Pair("a", value)));
      EXPECT_THAT(All(), ElementsAre(Pair("a", value)));
    }
    EXPECT_TRUE(reader_.m_DB.readOnly());
    EXPECT_EQ(reader_.CloseDatabase(), 0);
  });
  EXPECT_EQ(writer.Wait(), 0);
}

TEST_F(DatabaseCopy, QueryThatRunsKeepsItsRows) {
  MakeForeign(file_, "INSERT INTO status VALUES('b','1')");
  Signal go;
  Signal done;
  Child writer([&] {
    go.Await();
    const bool written = Foreign(file_).Do("UPDATE status SET value='2'").empty();
    done.Send();
    return written ? 0 : 1;
  });
  Unprivileged([&] {
    Open();
    CppSQLite3Statement statement = reader_.m_DB.compileStatement(kSelect);
    CppSQLite3Query query = statement.execQuery();
    go.Send();
    done.Await();
    EXPECT_THAT(All(), ElementsAre(Pair("a", "1"), Pair("b", "1")));
    query.nextRow();
    EXPECT_STREQ(query.getStringField(1, ""), "1");
    query.nextRow();
    EXPECT_TRUE(query.eof());
    EXPECT_THAT(All(), ElementsAre(Pair("a", "2"), Pair("b", "2")));
  });
  EXPECT_EQ(writer.Wait(), 0);
}

// A writer that opens, writes and closes makes a log, empties it into the file and takes it away.
TEST_F(DatabaseCopy, WritersThatComeAndGoNeverShowItAMix) {
  MakeForeign(file_,
              "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c LIMIT 500) "
              "INSERT INTO status SELECT 'k'||x, '0' FROM c; UPDATE status SET value='0'");
  Child writer([&] {
    for (int i = 1;; ++i) {
      Foreign foreign(file_);
      foreign.Do("PRAGMA busy_timeout=20000");
      if (foreign.Do("UPDATE status SET value='" + std::to_string(i) + "'") != "") {
        return 1;
      }
    }
  });
  Unprivileged([&] {
    std::set<std::string> stamps;
    int failures = 0;
    int cycle = 0;
    for (; cycle < 300 || stamps.size() < 20; ++cycle) {
      Open();  // a reader that stays keeps the log in place
      const std::string failure = Thrown([&] {
        const Rows rows = All();
        ASSERT_EQ(rows.size(), 501U) << "cycle " << cycle;
        ASSERT_TRUE(std::all_of(rows.begin(), rows.end(),
                                [&](const auto& row) { return row.second == rows[0].second; }))
            << "cycle " << cycle;
        stamps.insert(rows[0].second);
      });
      // The first writer has begun to make the index and has not ended.
      ASSERT_THAT(failure,
                  AnyOf("", "5:database is locked", "8:attempt to write a readonly database"))
          << "cycle " << cycle;
      failures += failure.empty() ? 0 : 1;
      ASSERT_LT(cycle, 100'000) << "the writer does not write";
    }
    EXPECT_LT(failures, cycle / 10);
  });
}

TEST_F(DatabaseCopy, LeavesNoLockBehind) {
  Unprivileged([&] {
    Open();
    const int descriptors = OpenDescriptors();
    for (int i = 0; i < 3; ++i) {
      EXPECT_THAT(All(), ElementsAre(Pair("a", "1")));
    }
    EXPECT_EQ(OpenDescriptors(), descriptors);
  });
  EXPECT_EQ(Foreign(file_).Do("PRAGMA journal_mode=DELETE; BEGIN EXCLUSIVE; COMMIT"), "");
}

TEST_F(DatabaseCopy, FileThatStaysLockedIsReportedAfterTwoSeconds) {
  Signal ready;
  Child writer([&] {
    Foreign foreign(file_);
    const std::string failure = foreign.Do(
        "PRAGMA locking_mode=EXCLUSIVE; PRAGMA journal_mode=DELETE; UPDATE status SET value='2'; "
        "PRAGMA journal_mode=WAL; BEGIN EXCLUSIVE; UPDATE status SET value='3'");
    unlink((file_ + "-wal").c_str());
    ready.Send();
    pause();
    return failure.empty() ? 0 : 1;
  });
  ready.Await();
  Unprivileged([&] {
    Open();
    const double seconds =
        Seconds([&] { EXPECT_EQ(Thrown([&] { All(); }), "5:database is locked"); });
    EXPECT_GT(seconds, 1.5);
  });
}

TEST_F(DatabaseCopy, LogWithoutItsIndexIsReportedWithWhatToDo) {
  {
    Child writer([&]() -> int {
      Foreign foreign(file_);
      const bool written = foreign.Do("UPDATE status SET value='2'").empty();
      unlink((file_ + "-shm").c_str());
      _exit(written ? 0 : 1);
    });
    ASSERT_EQ(writer.Wait(), 0);
  }
  Unprivileged([&] {
    Open();
    EXPECT_EQ(Thrown([&] { All(); }),
              "14:" + file_ +
                  "-shm is missing, and user 65534 may not make it: a program that may write the "
                  "database must open it once");
  });
  CSQLdatabase host;
  ASSERT_EQ(host.OpenDatabaseReadOnly(file_.c_str(), kNoMutex), 0);
  Unprivileged([&] {
    Open();
    EXPECT_THAT(All(), ElementsAre(Pair("a", "2")));
  });
}

TEST_F(DatabaseCopy, DatabaseOfMoreThan64MegabytesIsReportedWithWhatToDo) {
  fs::resize_file(file_, (64 << 20) + 4096);
  Unprivileged([&] {
    Open();
    EXPECT_EQ(Thrown([&] { All(); }),
              "18:database is larger than 64 MiB: a program that may write it must open it once");
  });
  fs::resize_file(file_, 64 << 20);
  Unprivileged([&] {
    Open();
    EXPECT_THAT(All(), ElementsAre(Pair("a", "1")));
  });
}

TEST_F(DatabaseCopy, FileThatIsNoDatabaseOrBrokenFailsAsItDoesOtherwise) {
  for (const std::string expected :
       {"26:file is not a database", "11:database disk image is malformed"}) {
    SCOPED_TRACE(expected);
    const int fd = open(file_.c_str(), O_WRONLY);
    const std::string bytes = expected[0] == '2' ? "x" : std::string(4, '\xff');
    ASSERT_EQ(pwrite(fd, bytes.data(), bytes.size(), expected[0] == '2' ? 0 : 100),
              static_cast<ssize_t>(bytes.size()));
    close(fd);
    Unprivileged([&] {
      Open();
      EXPECT_EQ(Thrown([&] { All(); }), expected);
      EXPECT_EQ(Thrown([&] { All(); }), expected);
    });
    const int repaired = open(file_.c_str(), O_WRONLY);
    ASSERT_EQ(pwrite(repaired, "S", 1, 0), 1);
    close(repaired);
  }
}

TEST_F(DatabaseCopy, DatabaseInMemoryNeedsNoFiles) {
  CSQLdatabase memory;
  EXPECT_LT(Seconds([&] {
              memory.m_DB.open(":memory:", 1);
              EXPECT_EQ(Setting(memory, "SELECT 'row'"), "row");
            }),
            1.5);
}
