// One database file, several programs: locks, snapshots, killed writers, lost files.
#include <gmock/gmock.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <memory>
#include <set>
#include <thread>

#include "db/sql_database.h"
#include "tests/db/database_fixture.h"

namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::Pair;
using testing::SizeIs;

namespace fs = std::filesystem;
using namespace std::chrono_literals;

class Sharing : public DatabaseTest {
 protected:
  // A database of the layer with one row, closed.
  void MakeOwn() {
    CSQLdatabase writer;
    ASSERT_EQ(writer.OpenDatabaseWrite(file_.c_str(), kNoMutex, 0), 0);
    ASSERT_EQ(writer.CreateTable("status", 100), 0);
    ASSERT_EQ(Foreign(file_).Do("INSERT INTO status VALUES('a','1')"), "");
  }

  int OpenReader() { return reader_.OpenDatabaseReadOnly(file_.c_str(), kNoMutex); }

  // Reads as a user who may read the file and write nothing: "" or what is thrown.
  std::string ReadUnprivileged() {
    fs::permissions(dir_, fs::perms(0555));
    for (const auto& name : Files()) {
      fs::permissions(dir_ / name, fs::perms(0444));
    }
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    Child child([&] {
      CSQLdatabase reader;
      const std::string result =
          BecomeUnprivileged() && reader.OpenDatabaseReadOnly(file_.c_str(), kNoMutex) == 0
              ? Thrown([&] {
                  if (ReadRows(reader) != Rows{{"a", "1"}}) {
                    throw CppSQLite3Exception(1, "wrong rows");
                  }
                })
              : "not open";
      return write(ends[1], result.c_str(), result.size() + 1) > 0 ? 0 : 1;
    });
    char text[200] = "nothing";
    EXPECT_GT(read(ends[0], text, sizeof text - 1), 0);
    close(ends[0]);
    close(ends[1]);
    return text;
  }

  CSQLdatabase reader_;
};

// Stamps all rows with a new number, again and again, in a transaction each.
int Stamp(const std::string& file, int writer, std::chrono::microseconds pause) {
  Foreign foreign(file);
  foreign.Do("PRAGMA busy_timeout=20000");
  for (int i = 0;; ++i) {
    const std::string stamp = std::to_string(writer) + "_" + std::to_string(i);
    if (foreign.Do("BEGIN IMMEDIATE; UPDATE status SET value='" + stamp + "'; COMMIT") != "") {
      return 1;
    }
    std::this_thread::sleep_for(pause);
  }
}

bool OneSnapshot(const Rows& rows) {
  return rows.size() == 50 && std::all_of(rows.begin(), rows.end(), [&](const auto& row) {
           return row.second == rows.front().second;
         });
}

constexpr const char* kFiftyRows =
    "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c LIMIT 50) "
    "INSERT INTO status SELECT 'k'||x, '0' FROM c";

}  // namespace

TEST_F(Sharing, WriteAheadLogStaysWhenTheLastWriterCloses) {
  MakeOwn();
  EXPECT_THAT(Files(),
              ElementsAre("status.db", "status.db-journal", "status.db-shm", "status.db-wal"));
}

TEST_F(Sharing, ReaderWithoutAnyWritePermissionReadsWhatAClosedWriterLeft) {
  MakeOwn();
  EXPECT_EQ(ReadUnprivileged(), "");
}

TEST_F(Sharing, ReaderWithoutAnyWritePermissionReadsRollbackMode) {
  MakeForeign(file_, "CREATE TABLE status(address, value); INSERT INTO status VALUES('a','1')");
  EXPECT_EQ(ReadUnprivileged(), "");
}

// SQLite alone cannot read write-ahead mode when it may make neither the log nor its index.
TEST_F(Sharing, ReaderWithoutAnyWritePermissionReadsALogThatAForeignWriterTookAway) {
  MakeOwn();
  ASSERT_EQ(Foreign(file_).Do("PRAGMA wal_checkpoint(TRUNCATE)"), "");
  fs::remove(file_ + "-wal");
  fs::remove(file_ + "-shm");
  EXPECT_EQ(ReadUnprivileged(), "");
}

TEST_F(Sharing, ReaderWithPermissionReadsALogThatAForeignWriterTookAway) {
  MakeOwn();
  fs::remove(file_ + "-wal");
  fs::remove(file_ + "-shm");
  ASSERT_EQ(OpenReader(), 0);
  EXPECT_THAT(ReadRows(reader_), ElementsAre(Pair("a", "1")));
}

TEST_F(Sharing, FileWithoutWritePermissionReportsOnWriteAndStaysReadable) {
  MakeForeign(file_, "CREATE TABLE status(address, value); INSERT INTO status VALUES('a','1')");
  fs::permissions(file_, fs::perms(0444));
  Child child([&] {
    CSQLdatabase database;
    std::string report;
    return BecomeUnprivileged() &&
                   Stderr([&] { database.OpenDatabaseWrite(file_.c_str(), kNoMutex, 0); }) ==
                       "8:attempt to write a readonly database\n" &&
                   ReadRows(database) == Rows{{"a", "1"}}
               ? 0
               : 1;
  });
  EXPECT_EQ(child.Wait(), 0);
}

TEST_F(Sharing, FileWithoutReadPermissionReports) {
  MakeForeign(file_, "CREATE TABLE status(address, value)");
  fs::permissions(file_, fs::perms(0000));
  Child child([&] {
    CSQLdatabase database;
    return BecomeUnprivileged() &&
                   Stderr([&] { database.OpenDatabaseReadOnly(file_.c_str(), kNoMutex); }) ==
                       "14:unable to open database file\n" &&
                   database.m_DB.openFailure()->systemError() == EACCES
               ? 0
               : 1;
  });
  EXPECT_EQ(child.Wait(), 0);
}

// SQLite used to say "database is locked" at once here, without waiting.
TEST_F(Sharing, SwitchToWriteAheadModeWaitsForAWriterInRollbackMode) {
  MakeForeign(file_, "CREATE TABLE status(address, value)");
  Signal ready;
  Child writer([&] {
    Foreign foreign(file_);
    // To commit it waits for those who look at the file, as every writer has to.
    std::string failure = foreign.Do(
        "PRAGMA busy_timeout=10000; BEGIN IMMEDIATE; INSERT INTO status VALUES('a','1')");
    ready.Send();
    std::this_thread::sleep_for(300ms);
    failure += foreign.Do("COMMIT");
    return failure.empty() ? 0 : 1;
  });
  ready.Await();
  EXPECT_EQ(reader_.OpenDatabaseWrite(file_.c_str(), kNoMutex, 0), 0);
  EXPECT_EQ(writer.Wait(), 0);
  EXPECT_EQ(Setting(reader_, "PRAGMA journal_mode"), "wal");
  EXPECT_THAT(ReadRows(reader_), ElementsAre(Pair("a", "1")));
}

TEST_F(Sharing, ManyProgramsMayOpenAndCreateAtTheSameTime) {
  for (int round = 0; round < 20; ++round) {
    SCOPED_TRACE(round);
    const std::string file = dir_ / ("round" + std::to_string(round));
    std::vector<std::unique_ptr<Child>> children;
    for (int i = 0; i < 8; ++i) {
      children.push_back(std::make_unique<Child>([&] {
        CSQLdatabase database;
        return database.OpenDatabaseWrite(file.c_str(), kNoMutex, 0) +
               database.CreateTable("status", 100) + database.CreateTrigger("status");
      }));
    }
    for (const auto& child : children) {
      EXPECT_EQ(child->Wait(), 0);
    }
  }
}

TEST_F(Sharing, OpenQueryKeepsItsSnapshotAndBlocksNoWriter) {
  MakeOwn();
  ASSERT_EQ(OpenReader(), 0);
  CppSQLite3Statement statement = reader_.m_DB.compileStatement(kSelect);
  CppSQLite3Query query = statement.execQuery();
  Foreign writer(file_);
  EXPECT_EQ(writer.Do("INSERT INTO status VALUES('b','2')"), "");
  query.nextRow();
  EXPECT_TRUE(query.eof());
  EXPECT_THAT(ReadRows(reader_), ElementsAre(Pair("a", "1"), Pair("b", "2")));
}

TEST_F(Sharing, EndedQueryLetsTheLogBeEmptied) {
  MakeOwn();
  Foreign writer(file_);
  ASSERT_EQ(writer.Do("INSERT INTO status VALUES('b','2')"), "");
  ASSERT_EQ(OpenReader(), 0);
  CppSQLite3Statement statement = reader_.m_DB.compileStatement(kSelect);
  {
    const CppSQLite3Query query = statement.execQuery();
    EXPECT_EQ(writer.Get("PRAGMA wal_checkpoint(TRUNCATE)"), "1") << "the query holds no snapshot";
  }
  EXPECT_EQ(writer.Get("PRAGMA wal_checkpoint(TRUNCATE)"), "0");
}

TEST_F(Sharing, WritersAtFullSpeedNeverFailAReaderNorShowItAMix) {
  MakeOwn();
  ASSERT_EQ(Foreign(file_).Do(std::string("DELETE FROM status;") + kFiftyRows), "");
  Child first([&] { return Stamp(file_, 1, 0us); });
  Child second([&] { return Stamp(file_, 2, 0us); });
  ASSERT_EQ(OpenReader(), 0);
  std::set<std::string> stamps;
  for (int cycle = 0; cycle < 500 || stamps.size() < 50; ++cycle) {
    const Rows rows = ReadRows(reader_);
    ASSERT_TRUE(OneSnapshot(rows)) << "cycle " << cycle;
    stamps.insert(rows.front().second);
    ASSERT_LT(cycle, 1'000'000) << "the writers do not write";
  }
}

TEST_F(Sharing, ForeignWriterInRollbackModeNeverShowsAMix) {
  MakeForeign(file_, std::string("CREATE TABLE status(address, value);") + kFiftyRows);
  Child writer([&] { return Stamp(file_, 1, 2ms); });
  ASSERT_EQ(OpenReader(), 0);
  std::set<std::string> stamps;
  for (int cycle = 0; cycle < 200 || stamps.size() < 20; ++cycle) {
    const std::string failure = Thrown([&] {
      const Rows rows = ReadRows(reader_);
      ASSERT_TRUE(OneSnapshot(rows)) << "cycle " << cycle;
      stamps.insert(rows.front().second);
    });
    ASSERT_THAT(failure, AnyOf("", "5:database is locked")) << "cycle " << cycle;
    ASSERT_LT(cycle, 1'000'000) << "the writer does not write";
  }
}

TEST_F(Sharing, WriterKilledInMidTransactionNeedsNoRepair) {
  MakeOwn();
  ASSERT_EQ(OpenReader(), 0);
  for (int round = 0; round < 25; ++round) {
    const std::string mark = "<round " + std::to_string(round) + ">";
    Signal ready;
    Child writer([&] {
      Foreign foreign(file_);
      const std::string failure = foreign.Do(
          "PRAGMA cache_spill=1; PRAGMA cache_size=2; BEGIN IMMEDIATE;"
          "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c LIMIT 2000) "
          "INSERT INTO status SELECT 'k'||x, '" +
          mark + "' || hex(zeroblob(100)) FROM c");
      ready.Send();
      pause();
      return failure.empty() ? 0 : 1;
    });
    ready.Await();
    ASSERT_NE(Bytes(file_ + "-wal").find(mark), std::string::npos) << "the writer did not write";
    EXPECT_THAT(ReadRows(reader_), ElementsAre(Pair("a", "1"))) << "round " << round;
    writer.Kill();
    writer.Wait();
    EXPECT_THAT(ReadRows(reader_), ElementsAre(Pair("a", "1"))) << "round " << round;
    EXPECT_EQ(Setting(reader_, "PRAGMA integrity_check"), "ok");
  }
  fs::permissions(dir_, fs::perms(0755));
  reader_.CloseDatabase();
  EXPECT_EQ(ReadUnprivileged(), "");
}

TEST_F(Sharing, LockHeldByAnotherProgramIsWaitedForThenThrown) {
  MakeForeign(file_, "CREATE TABLE status(address, value)");
  ASSERT_EQ(OpenReader(), 0);
  Foreign writer(file_);
  ASSERT_EQ(writer.Do("BEGIN EXCLUSIVE"), "");
  const double seconds =
      Seconds([&] { EXPECT_EQ(Thrown([&] { ReadRows(reader_); }), "5:database is locked"); });
  EXPECT_GT(seconds, 1.5);
  EXPECT_LT(seconds, 8.0);
  ASSERT_EQ(writer.Do("COMMIT"), "");
  EXPECT_THAT(ReadRows(reader_), SizeIs(0));
}

TEST_F(Sharing, DeletedFileIsReportedAndNotReadAnyFurther) {
  for (const bool writes : {false, true}) {
    SCOPED_TRACE(writes);
    MakeOwn();
    const auto open = [&] {
      return writes ? reader_.OpenDatabaseWrite(file_.c_str(), kNoMutex, 0) : OpenReader();
    };
    ASSERT_EQ(open(), 0);
    EXPECT_THAT(ReadRows(reader_), SizeIs(1));
    for (const auto& name : Files()) {
      fs::remove(dir_ / name);
    }
    EXPECT_EQ(Thrown([&] { ReadRows(reader_); }), "14:database file was deleted or replaced");
    MakeOwn();
    EXPECT_EQ(Thrown([&] { ReadRows(reader_); }), "14:database file was deleted or replaced");
    ASSERT_EQ(open(), 0);
    EXPECT_THAT(ReadRows(reader_), ElementsAre(Pair("a", "1")));
    reader_.CloseDatabase();
    for (const auto& name : Files()) {
      fs::remove(dir_ / name);
    }
  }
}

TEST_F(Sharing, ReplacedFileIsReportedUntilOpenedAgain) {
  MakeForeign(file_, "CREATE TABLE status(address, value); INSERT INTO status VALUES('a','1')");
  ASSERT_EQ(OpenReader(), 0);
  EXPECT_THAT(ReadRows(reader_), ElementsAre(Pair("a", "1")));
  MakeForeign(file_ + "2",
              "CREATE TABLE status(address, value); INSERT INTO status VALUES('b','2')");
  fs::rename(file_ + "2", file_);
  EXPECT_EQ(Thrown([&] { ReadRows(reader_); }), "14:database file was deleted or replaced");
  ASSERT_EQ(OpenReader(), 0);
  EXPECT_THAT(ReadRows(reader_), ElementsAre(Pair("b", "2")));
}

TEST_F(Sharing, TruncatedFileIsReportedOrGivesTheRowsItHad) {
  for (const bool own : {false, true}) {
    for (const std::uintmax_t size : {0, 1, 100, 4096, 5000}) {
      SCOPED_TRACE(testing::Message() << (own ? "write-ahead" : "rollback") << " mode, " << size);
      const std::string create = "CREATE TABLE status(address, value);";
      own ? MakeOwn() : MakeForeign(file_, create + "INSERT INTO status VALUES('a','1')");
      ASSERT_EQ(OpenReader(), 0);
      EXPECT_THAT(ReadRows(reader_), ElementsAre(Pair("a", "1")));
      fs::resize_file(file_, size);
      Rows rows;
      const std::string failure = Thrown([&] { rows = ReadRows(reader_); });
      EXPECT_TRUE(failure != "" || (rows == Rows{{"a", "1"}})) << rows.size() << " rows";
      reader_.CloseDatabase();
      for (const auto& name : Files()) {
        fs::remove(dir_ / name);
      }
    }
  }
}
