// CSQLdatabase: opening, tables, triggers, closing.
#include "db/sql_database.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <fstream>

#include "tests/db/database_fixture.h"
#include "tests/support/interposed/sqlite_calls.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr const char* kMisuseLine = "21:bad parameter or other API misuse\n";
constexpr const char* kCantOpenLine = "14:unable to open database file\n";
constexpr const char* kRowTable =
    "CREATE TABLE status(address TEXT PRIMARY KEY, value TEXT); INSERT INTO status VALUES('a','1')";

class Database : public DatabaseTest {
 protected:
  int OpenWrite() { return database_.OpenDatabaseWrite(file_.c_str(), kNoMutex, 0); }
  int OpenReadOnly() { return database_.OpenDatabaseReadOnly(file_.c_str(), kNoMutex); }

  void MakeTable() {
    ASSERT_EQ(OpenWrite(), 0);
    ASSERT_EQ(database_.CreateTable("status", 100), 0);
  }

  // Runs `action`, which must return `code` and write `line` to standard error.
  void Expect(int code, const std::string& line, const std::function<int()>& action) {
    int result = -1;
    EXPECT_EQ(Stderr([&] { result = action(); }), line);
    EXPECT_EQ(result, code);
  }

  CSQLdatabase database_;
};

}  // namespace

TEST_F(Database, OpenForWritingCreatesTheFileInWriteAheadMode) {
  Expect(0, "", [&] { return OpenWrite(); });
  EXPECT_EQ(Setting(database_, "PRAGMA journal_mode"), "wal");
  EXPECT_EQ(database_.CreateTable("status", 100), 0);
  EXPECT_THAT(ReadRows(database_), IsEmpty());
}

TEST_F(Database, SynchronousLevelIsTheOneAskedFor) {
  for (unsigned short level = 0; level <= 3; ++level) {
    SCOPED_TRACE(level);
    ASSERT_EQ(database_.OpenDatabaseWrite(file_.c_str(), kNoMutex, level), 0);
    EXPECT_EQ(Setting(database_, "PRAGMA synchronous"), std::to_string(level));
  }
}

TEST_F(Database, LocksAreWaitedForTwoSecondsInBothModes) {
  ASSERT_EQ(OpenWrite(), 0);
  EXPECT_EQ(Setting(database_, "PRAGMA busy_timeout"), "2000");
  ASSERT_EQ(OpenReadOnly(), 0);
  EXPECT_EQ(Setting(database_, "PRAGMA busy_timeout"), "2000");
}

TEST_F(Database, OpenForReadingNeverCreates) {
  Expect(14, kCantOpenLine, [&] { return OpenReadOnly(); });
  EXPECT_THAT(Files(), IsEmpty());
  EXPECT_EQ(Thrown([&] { ReadRows(database_); }) + "\n", kMisuseLine);
}

TEST_F(Database, OpenForReadingReadsAndDoesNotWrite) {
  MakeForeign(file_, kRowTable);
  Expect(0, "", [&] { return OpenReadOnly(); });
  EXPECT_THAT(ReadRows(database_), ElementsAre(Pair("a", "1")));
  EXPECT_TRUE(database_.m_DB.readOnly());
  Expect(8, "8:attempt to write a readonly database\n",
         [&] { return database_.CreateTable("io", 101); });
  EXPECT_EQ(database_.TableName(101), "");
}

TEST_F(Database, FileOfRollbackModeIsReadAsItIsAndSwitchedByAWriter) {
  MakeForeign(file_, kRowTable);
  ASSERT_EQ(OpenReadOnly(), 0);
  EXPECT_EQ(Setting(database_, "PRAGMA journal_mode"), "delete");
  EXPECT_THAT(ReadRows(database_), ElementsAre(Pair("a", "1")));
  ASSERT_EQ(OpenWrite(), 0);
  EXPECT_EQ(Setting(database_, "PRAGMA journal_mode"), "wal");
  EXPECT_THAT(ReadRows(database_), ElementsAre(Pair("a", "1")));
}

TEST_F(Database, FlagsReachSqlite) {
  Expect(21, kMisuseLine,
         [&] { return database_.OpenDatabaseReadOnly(file_.c_str(), SQLITE_OPEN_CREATE); });
  EXPECT_THAT(Files(), IsEmpty());
}

TEST_F(Database, OpenNeedsAFileName) {
  for (const char* name : {static_cast<const char*>(nullptr), ""}) {
    Expect(21, kMisuseLine, [&] { return database_.OpenDatabaseReadOnly(name, kNoMutex); });
    Expect(21, kMisuseLine, [&] { return database_.OpenDatabaseWrite(name, kNoMutex, 0); });
  }
}

TEST_F(Database, OpenInAFolderThatIsNotThereReports) {
  const std::string lost = dir_ / "no" / "status.db";
  Expect(14, kCantOpenLine, [&] { return database_.OpenDatabaseWrite(lost.c_str(), kNoMutex, 0); });
}

TEST_F(Database, FailureToOpenIsKeptUntilItIsOpenedAgainOrClosed) {
  EXPECT_EQ(database_.m_DB.openFailure(), nullptr);
  const std::string lost = dir_ / "no" / "status.db";
  EXPECT_EQ(Stderr([&] { database_.OpenDatabaseReadOnly(lost.c_str(), kNoMutex); }), kCantOpenLine);
  EXPECT_EQ(Thrown([&] { database_.m_DB.compileStatement(kSelect); }) + "\n", kMisuseLine);
  EXPECT_FALSE(database_.m_DB.readOnly());
  ASSERT_NE(database_.m_DB.openFailure(), nullptr);
  EXPECT_EQ(database_.m_DB.openFailure()->errorCode(), SQLITE_CANTOPEN);
  EXPECT_EQ(database_.m_DB.openFailure()->systemError(), ENOENT);
  ASSERT_EQ(OpenWrite(), 0);
  EXPECT_EQ(database_.m_DB.openFailure(), nullptr);
  Stderr([&] { database_.OpenDatabaseReadOnly(nullptr, kNoMutex); });
  ASSERT_NE(database_.m_DB.openFailure(), nullptr);
  EXPECT_EQ(database_.m_DB.openFailure()->errorCode(), SQLITE_MISUSE);
  EXPECT_EQ(database_.CloseDatabase(), 0);
  EXPECT_EQ(database_.m_DB.openFailure(), nullptr);
}

TEST_F(Database, OpenAgainClosesFirst) {
  MakeTable();
  ASSERT_EQ(OpenWrite(), 0);
  const int descriptors = OpenDescriptors();
  for (int i = 0; i < 5; ++i) {
    ASSERT_EQ(OpenWrite(), 0);
  }
  EXPECT_EQ(OpenDescriptors(), descriptors);
  const std::string lost = dir_ / "lost.db";
  Expect(14, kCantOpenLine, [&] { return database_.OpenDatabaseReadOnly(lost.c_str(), kNoMutex); });
  EXPECT_EQ(Thrown([&] { ReadRows(database_); }) + "\n", kMisuseLine);
}

TEST_F(Database, CloseMayComeTwiceOrWithoutOpen) {
  Expect(0, "", [&] { return database_.CloseDatabase(); });
  MakeTable();
  database_.m_Statement = database_.m_DB.compileStatement(kSelect);
  Expect(0, "", [&] { return database_.CloseDatabase(); });
  Expect(0, "", [&] { return database_.CloseDatabase(); });
  EXPECT_EQ(Thrown([&] { database_.m_DB.compileStatement(kSelect); }) + "\n", kMisuseLine);
  EXPECT_EQ(Thrown([&] { database_.m_Statement.execQuery(); }) + "\n", kMisuseLine);
}

TEST_F(Database, CloseReportsAFailureAndIsClosed) {
  ASSERT_EQ(OpenWrite(), 0);
  interposed::FailNext(interposed::Call::kSqlClose);
  Expect(10, "10:disk I/O error\n", [&] { return database_.CloseDatabase(); });
  Expect(0, "", [&] { return database_.CloseDatabase(); });
}

TEST_F(Database, DestructionWithoutCloseLeavesNothingOpen) {
  const int descriptors = OpenDescriptors();
  {
    CSQLdatabase database;
    ASSERT_EQ(database.OpenDatabaseWrite(file_.c_str(), kNoMutex, 0), 0);
    ASSERT_EQ(database.CreateTable("status", 100), 0);
    database.m_Statement = database.m_DB.compileStatement(kSelect);
    const CppSQLite3Query query = database.m_Statement.execQuery();
    EXPECT_GT(OpenDescriptors(), descriptors);
  }
  EXPECT_EQ(OpenDescriptors(), descriptors);
}

TEST_F(Database, FileThatIsNoDatabaseReportsAndKeepsItsBytes) {
  std::ofstream(file_) << std::string(5000, 'x');
  Expect(26, "26:file is not a database\n", [&] { return OpenWrite(); });
  Expect(26, "26:file is not a database\n", [&] { return database_.CreateTable("status", 100); });
  Expect(0, "", [&] { return OpenReadOnly(); });
  EXPECT_EQ(Thrown([&] { ReadRows(database_); }), "26:file is not a database");
  EXPECT_EQ(std::filesystem::file_size(file_), 5000U);
}

TEST_F(Database, EmptyFileIsADatabaseWithoutTables) {
  std::ofstream(file_).flush();
  ASSERT_EQ(OpenReadOnly(), 0);
  EXPECT_EQ(Thrown([&] { ReadRows(database_); }), "1:no such table: status");
  ASSERT_EQ(Foreign(file_).Do(kRowTable), "");
  EXPECT_THAT(ReadRows(database_), ElementsAre(Pair("a", "1")));
}

TEST_F(Database, FileThatCannotBeSwitchedToWriteAheadModeReportsAndStaysOpen) {
  MakeForeign(file_, kRowTable);
  Foreign reader(file_);
  ASSERT_EQ(reader.Do("BEGIN; SELECT * FROM status"), "");
  const double seconds =
      Seconds([&] { Expect(5, "5:database is locked\n", [&] { return OpenWrite(); }); });
  EXPECT_GT(seconds, 1.5);
  EXPECT_LT(seconds, 8.0);
  EXPECT_THAT(ReadRows(database_), ElementsAre(Pair("a", "1")));
}

TEST_F(Database, FileSystemWithoutWriteAheadModeReportsAndStaysOpen) {
  MakeForeign(file_, kRowTable);
  const std::string uri = "file:" + file_ + "?vfs=unix-dotfile";
  Expect(1, "1:journal mode is delete, not wal\n",
         [&] { return database_.OpenDatabaseWrite(uri.c_str(), kNoMutex | SQLITE_OPEN_URI, 0); });
  EXPECT_THAT(ReadRows(database_), ElementsAre(Pair("a", "1")));
}

TEST_F(Database, CreateTableMakesItsTwoColumnsKeyedByAddress) {
  MakeTable();
  EXPECT_EQ(Foreign(file_).Get("SELECT sql FROM sqlite_schema WHERE name='status'"),
            "CREATE TABLE \"status\"(address TEXT PRIMARY KEY, value TEXT) WITHOUT ROWID");
}

TEST_F(Database, CreateTableKeepsTheTableThatIsThere) {
  constexpr const char* kOwn = "CREATE TABLE status(address, value, since INTEGER)";
  MakeForeign(file_, std::string(kOwn) + "; INSERT INTO status VALUES('a','1',7)");
  MakeTable();
  Expect(0, "", [&] { return database_.CreateTable("status", 100); });
  EXPECT_EQ(Foreign(file_).Get("SELECT sql FROM sqlite_schema"), kOwn);
  EXPECT_THAT(ReadRows(database_), ElementsAre(Pair("a", "1")));
}

TEST_F(Database, CreateTableGivesItsIdentifierTheName) {
  ASSERT_EQ(OpenWrite(), 0);
  EXPECT_EQ(database_.CreateTable("status", 100), 0);
  EXPECT_EQ(database_.CreateTable("io", 101), 0);
  EXPECT_EQ(database_.CreateTable("packages", 102), 0);
  EXPECT_EQ(database_.TableName(100), "status");
  EXPECT_EQ(database_.TableName(101), "io");
  EXPECT_EQ(database_.TableName(102), "packages");
  EXPECT_EQ(database_.TableName(103), "");
}

TEST_F(Database, AnyNameCanBeATable) {
  ASSERT_EQ(OpenWrite(), 0);
  for (const std::string name :
       {"select", "two words", "a\"b", "a'b", "x; DROP TABLE status;--", "[y]", "\xc3\xa4"}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(database_.CreateTable(name.c_str(), 1), 0);
    EXPECT_EQ(database_.CreateTrigger(name.c_str()), 0);
    EXPECT_EQ(database_.TableName(1), name);
    EXPECT_EQ(Setting(database_,
                      "SELECT name FROM sqlite_schema WHERE type='table' "
                      "ORDER BY rootpage DESC LIMIT 1"),
              name);
  }
}

TEST_F(Database, CreateReportsWhatCannotBeMade) {
  Expect(21, kMisuseLine, [&] { return database_.CreateTable("status", 100); });
  ASSERT_EQ(OpenWrite(), 0);
  Expect(21, kMisuseLine, [&] { return database_.CreateTable(nullptr, 100); });
  Expect(21, kMisuseLine, [&] { return database_.CreateTrigger(nullptr); });
  Expect(1, "1:object name reserved for internal use: sqlite_x\n",
         [&] { return database_.CreateTable("sqlite_x", 100); });
  EXPECT_EQ(database_.TableName(100), "");
}

TEST_F(Database, OpeningAndCreatingReturnTheFailureThatTheyReport) {
  std::optional<CppSQLite3Exception> failure;
  const auto text = [&] {
    return failure ? std::to_string(failure->errorCode()) + ":" + failure->errorMessage() + "\n"
                   : "none";
  };
  Expect(21, kMisuseLine, [&] { return database_.CreateTable("status", 100, &failure); });
  EXPECT_EQ(text(), kMisuseLine);
  Expect(14, kCantOpenLine,
         [&] { return database_.OpenDatabaseWrite("/no/such/folder", kNoMutex, 0, &failure); });
  EXPECT_EQ(text(), kCantOpenLine);
  EXPECT_EQ(failure->systemError(), ENOENT);
  Expect(0, "", [&] { return database_.OpenDatabaseWrite(file_.c_str(), kNoMutex, 0, &failure); });
  EXPECT_EQ(text(), "none");
  Expect(1, "1:no such table: status\n",
         [&] { return database_.CreateTrigger("status", &failure); });
  EXPECT_EQ(text(), "1:no such table: status\n");
  Expect(0, "", [&] { return database_.CreateTable("status", 100, &failure); });
  EXPECT_EQ(text(), "none");
  failure.emplace(1, "before");
  Expect(0, "", [&] { return database_.CreateTrigger("status", &failure); });
  EXPECT_EQ(text(), "none");
}

TEST_F(Database, CreateTriggerNeedsATableOfCreateTable) {
  ASSERT_EQ(OpenWrite(), 0);
  Expect(1, "1:no such table: status\n", [&] { return database_.CreateTrigger("status"); });
  ASSERT_EQ(Foreign(file_).Do(kRowTable), "");
  Expect(1, "1:CreateTable did not find or make table status\n",
         [&] { return database_.CreateTrigger("status"); });
  ASSERT_EQ(database_.CreateTable("status", 100), 0);
  Expect(0, "", [&] { return database_.CreateTrigger("status"); });
  Expect(0, "", [&] { return database_.CreateTrigger("status"); });
  EXPECT_EQ(Foreign(file_).Get("SELECT count(*) FROM sqlite_schema WHERE type='trigger'"), "2");
}

// "no such table" used to be reported of a table that was there.
TEST_F(Database, CreateTriggerOfATableThatIsLockedReportsTheLock) {
  MakeForeign(file_, kRowTable);
  ASSERT_EQ(OpenWrite(), 0);
  Foreign writer(file_);
  ASSERT_EQ(writer.Do("PRAGMA locking_mode=EXCLUSIVE; PRAGMA journal_mode=DELETE"), "");
  ASSERT_EQ(writer.Do("BEGIN EXCLUSIVE"), "");
  constexpr const char* kLocked = "5:database is locked\n";
  Expect(5, kLocked, [&] { return database_.CreateTable("status", 100); });
  Expect(5, kLocked, [&] { return database_.CreateTrigger("status"); });
  ASSERT_EQ(writer.Do("COMMIT; PRAGMA locking_mode=NORMAL; SELECT * FROM status"), "");
  Expect(1, "1:CreateTable did not find or make table status\n",
         [&] { return database_.CreateTrigger("status"); });
}

TEST_F(Database, TriggersRefuseWhatIsTooLongAndSaySo) {
  MakeTable();
  ASSERT_EQ(database_.CreateTrigger("status"), 0);
  Foreign writer(file_);
  ASSERT_EQ(writer.Do("INSERT INTO status VALUES('a','1')"), "");
  const std::string address = "19:address is longer than 127 bytes";
  const std::string value = "19:value is longer than 511 bytes";
  const auto text = [](std::size_t length) { return "'" + std::string(length, 'x') + "'"; };
  // Two bytes for each of these characters.
  const auto accents = [](int count) { return "printf('%.*c'," + std::to_string(count) + ",'é')"; };
  struct {
    std::string Sql;
    std::string Result;
  } const rows[] = {
      {"INSERT INTO status VALUES(" + text(127) + ",'v')", ""},
      {"INSERT INTO status VALUES(" + text(128) + ",'v')", address},
      {"INSERT INTO status VALUES('k'," + text(511) + ")", ""},
      {"INSERT INTO status VALUES('l'," + text(512) + ")", value},
      {"INSERT INTO status VALUES(" + text(128) + "," + text(512) + ")", address},
      {"INSERT INTO status VALUES(" + accents(63) + ",'v')", ""},
      {"INSERT INTO status VALUES(" + accents(64) + ",'v')", address},
      {"INSERT INTO status VALUES('m'," + accents(255) + ")", ""},
      {"INSERT INTO status VALUES('n'," + accents(256) + ")", value},
      {"INSERT INTO status VALUES('o', CAST(zeroblob(512) AS TEXT))", value},
      {"INSERT INTO status VALUES('o', zeroblob(512))", value},
      {"INSERT INTO status VALUES('o', NULL)", ""},
      {"INSERT INTO status VALUES(NULL, 'v')", "19:NOT NULL constraint failed: status.address"},
      {"INSERT OR IGNORE INTO status VALUES('p'," + text(512) + ")", value},
      {"INSERT OR REPLACE INTO status VALUES('a'," + text(512) + ")", value},
      {"INSERT OR FAIL INTO status VALUES(" + text(128) + ",'v')", address},
      {"REPLACE INTO status VALUES('a'," + text(511) + ")", ""},
      {"INSERT INTO status VALUES('a','v') ON CONFLICT(address) DO UPDATE SET value=" + text(512),
       value},
      {"UPDATE status SET value=" + text(511) + " WHERE address='a'", ""},
      {"UPDATE status SET value=" + text(512) + " WHERE address='a'", value},
      {"UPDATE OR IGNORE status SET value=" + text(512) + " WHERE address='a'", value},
      {"UPDATE status SET address=" + text(128) + " WHERE address='a'", address},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.Sql);
    EXPECT_EQ(writer.Do(row.Sql), row.Result);
  }
  EXPECT_EQ(writer.Get("SELECT max(length(CAST(address AS BLOB))) FROM status"), "127");
  EXPECT_EQ(writer.Get("SELECT max(length(CAST(value AS BLOB))) FROM status"), "511");
}

TEST_F(Database, RefusedRowUndoesItsStatementAndNothingElse) {
  MakeTable();
  ASSERT_EQ(database_.CreateTrigger("status"), 0);
  Foreign writer(file_);
  ASSERT_EQ(writer.Do("BEGIN; INSERT INTO status VALUES('a','1')"), "");
  ASSERT_EQ(writer.Do("INSERT INTO status VALUES('b','2'),('c',hex(zeroblob(256)))"),
            "19:value is longer than 511 bytes");
  ASSERT_EQ(writer.Do("COMMIT"), "");
  EXPECT_THAT(ReadRows(database_), ElementsAre(Pair("a", "1")));
}

// SQLite would accept the triggers, and every later insert of the table's own writer would fail.
TEST_F(Database, TableWithOtherColumnsGetsNoTriggerButAReport) {
  MakeForeign(file_, "CREATE TABLE status(name, text)");
  MakeTable();
  Expect(1, "1:no such column: address\n", [&] { return database_.CreateTrigger("status"); });
  EXPECT_EQ(Foreign(file_).Do("INSERT INTO status VALUES('a','b')"), "");
}

TEST_F(Database, ViewGetsNoTriggerButAReport) {
  MakeForeign(file_, "CREATE VIEW status AS SELECT 'a' AS address, 'b' AS value");
  MakeTable();
  Expect(1, "1:cannot create BEFORE trigger on view: status\n",
         [&] { return database_.CreateTrigger("status"); });
  EXPECT_THAT(ReadRows(database_), ElementsAre(Pair("a", "b")));
}

TEST_F(Database, LastErrorIsOnlyReadAndClearedHere) {
  EXPECT_EQ(database_.m_LastError, 0);
  database_.m_LastError = 7;
  Stderr([&] {
    OpenReadOnly();
    database_.CreateTable("status", 100);
    database_.CreateTrigger("status");
    EXPECT_NE(Thrown([&] { database_.m_DB.compileStatement(kSelect); }), "");
  });
  MakeTable();
  database_.CreateTrigger("status");
  ReadRows(database_);
  database_.CloseDatabase();
  EXPECT_EQ(database_.m_LastError, 7);
  EXPECT_EQ(database_.ReadAndClearLastError(), 7);
  EXPECT_EQ(database_.ReadAndClearLastError(), 0);
}
