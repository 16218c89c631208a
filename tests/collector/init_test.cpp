// Opening, creating and closing the status database.

#include <sqlite3.h>

#include <filesystem>
#include <memory>
#include <type_traits>

#include "sandbox/files.h"
#include "sandbox/rows.h"
#include "tests/collector/cycle_fixture.h"
#include "tests/support/interposed/sqlite_calls.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

class InitTest : public CycleTest {
 protected:
  InitTest() { sandbox::RemoveDatabase(); }

  // What `InitDatabase` writes to standard error; its result must be 0.
  std::string Init(bool write) {
    return ErrorsOf([&] { EXPECT_EQ(collector_.InitDatabase(write), 0); });
  }

  static bool DatabaseExists() { return std::filesystem::exists(sandbox::kDatabase); }
};

// First column of each row, read by another connection.
std::vector<std::string> Select(const char* sql) {
  sqlite3* opened = nullptr;
  EXPECT_EQ(sqlite3_open_v2(sandbox::kDatabase, &opened, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
  const std::unique_ptr<sqlite3, int (*)(sqlite3*)> database(opened, sqlite3_close);
  std::vector<std::string> values;
  const auto collect = [](void* list, int, char** columns, char**) {
    static_cast<std::vector<std::string>*>(list)->emplace_back(columns[0]);
    return 0;
  };
  EXPECT_EQ(sqlite3_exec(opened, sql, collect, &values, nullptr), SQLITE_OK)
      << sqlite3_errmsg(opened);
  return values;
}

TEST_F(InitTest, OpensNothingInTheConstructor) {
  const std::size_t before = OpenDescriptors();
  const CStatusInterface collector;
  EXPECT_EQ(OpenDescriptors(), before);
  EXPECT_FALSE(DatabaseExists());
  EXPECT_EQ(collector.m_UTCTime, "");
  EXPECT_EQ(collector.m_Status.ConfigurationTimestamp, "2000-01-01T00:00:00");
  EXPECT_EQ(collector.m_LastError, 0);
}

TEST_F(InitTest, HoldsDocumentProbeAndUtcTextInThisOrder) {
  const void* const members[] = {&collector_.m_Status, &collector_.m_Hardware,
                                 &collector_.m_UTCTime};
  EXPECT_LT(members[0], members[1]);
  EXPECT_LT(members[1], members[2]);
}

TEST_F(InitTest, OpensTheDatabaseForItsOneThread) {
  constexpr int kFlags = 32768 | SQLITE_OPEN_NOFOLLOW;
  Init(true);
  EXPECT_EQ(g_open_flags, kFlags | SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
  Init(false);
  EXPECT_EQ(g_open_flags, kFlags | SQLITE_OPEN_READONLY);
}

TEST_F(InitTest, CreatesThreeTablesThenThreeTriggersOfEach) {
  EXPECT_EQ(Init(true), "");
  EXPECT_THAT(Select("SELECT type || ' of ' || tbl_name FROM sqlite_master "
                     "WHERE type IN ('table', 'trigger') GROUP BY 1 ORDER BY min(rowid)"),
              ElementsAre("table of status", "table of io", "table of packages",
                          "trigger of status", "trigger of io", "trigger of packages"));
  EXPECT_EQ(collector_.TableName(100), "status");
  EXPECT_EQ(collector_.TableName(101), "io");
  EXPECT_EQ(collector_.TableName(102), "packages");
}

TEST_F(InitTest, MakesTablesWhoseFirstColumnsAreAddressAndValue) {
  Init(true);
  for (const char* table : {"status", "io", "packages"}) {
    const std::string sql = std::string("SELECT name FROM pragma_table_info('") + table + "')";
    EXPECT_THAT(Select(sql.c_str()), ElementsAre("address", "value")) << table;
  }
}

// It is publicly derived from the database class.
static_assert(std::is_convertible_v<CStatusInterface*, CSQLdatabase*>);
static_assert(std::has_virtual_destructor_v<CSQLdatabase>);

TEST_F(InitTest, ForWritingDoesNotWaitForADisk) {
  Init(true);
  CppSQLite3Statement statement = collector_.m_DB.compileStatement("PRAGMA synchronous");
  CppSQLite3Query level = statement.execQuery();
  EXPECT_STREQ(level.getStringField(0, ""), "0");
}

TEST_F(InitTest, ForWritingTwiceKeepsTheRows) {
  EXPECT_EQ(Init(true), "");
  sandbox::SetRow("GUID", "abc");
  EXPECT_EQ(Init(true), "");
  EXPECT_EQ(Cycle(), kDone);
  EXPECT_EQ(status_.GUID, "abc");
}

TEST_F(InitTest, ForReadingCreatesNothing) {
  EXPECT_EQ(Init(false), "14:unable to open database file\n");
  EXPECT_FALSE(DatabaseExists());
  EXPECT_EQ(Cycle(), (CycleResult{1, "21:bad parameter or other API misuse\n"}));
  EXPECT_FALSE(DatabaseExists());
}

TEST_F(InitTest, ForReadingFindsWhatAWriterCreated) {
  CStatusInterface writer;
  writer.InitDatabase(true);
  sandbox::SetRow("GUID", "abc");
  EXPECT_EQ(Init(false), "");
  EXPECT_EQ(Cycle(), kDone);
  EXPECT_EQ(status_.GUID, "abc");
}

TEST_F(InitTest, ReturnsZeroAndReportsWhenNothingCanBeOpened) {
  sandbox::MakeFolder(sandbox::kDatabase);
  EXPECT_THAT(Init(true), StartsWith("14:"));
  EXPECT_THAT(Init(false), StartsWith("14:"));
  EXPECT_EQ(Cycle().Result, 1);
  sandbox::RemoveFile(sandbox::kDatabase);
}

TEST_F(InitTest, LetsTheDatabaseBeClosedTwiceAndWithoutOpening) {
  EXPECT_EQ(collector_.CloseDatabase(), 0);
  Init(true);
  EXPECT_EQ(collector_.CloseDatabase(), 0);
  EXPECT_EQ(collector_.CloseDatabase(), 0);
}

TEST_F(InitTest, ReturnsTheResultOfClosing) {
  Init(true);
  interposed::FailNext(interposed::Call::kSqlClose);
  EXPECT_EQ(ErrorsOf([&] { EXPECT_EQ(collector_.CloseDatabase(), SQLITE_IOERR); }),
            "10:disk I/O error\n");
}

TEST_F(InitTest, ReleasesEverythingWithoutCloseDatabase) {
  CStatusInterface creator;
  creator.InitDatabase(true);
  creator.CloseDatabase();
  sandbox::SetRow("GUID", "abc");
  const std::size_t before = OpenDescriptors();
  for (const bool write : {true, false}) {
    CStatusInterface collector;
    collector.InitDatabase(write);
    EXPECT_EQ(collector.QueryDatabase(), 0);
    EXPECT_GT(OpenDescriptors(), before);
  }
  EXPECT_EQ(OpenDescriptors(), before);
}

TEST_F(InitTest, WorksAgainAfterCloseDatabase) {
  Init(true);
  sandbox::SetRow("GUID", "abc");
  EXPECT_EQ(Cycle(), kDone);
  collector_.CloseDatabase();
  EXPECT_EQ(Init(false), "");
  status_.GUID = "";
  EXPECT_EQ(Cycle(), kDone);
  EXPECT_EQ(status_.GUID, "abc");
}

}  // namespace
