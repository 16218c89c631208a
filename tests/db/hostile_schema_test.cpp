// What a writer can put into a database beside a table `status`, which is as it should be, or into
// the schema by hand.
#include <gmock/gmock.h>

#include <ctime>

#include "tests/db/database_fixture.h"
#include "tests/support/interposed/allocations.h"

namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::Pair;

// Takes seconds within one function.
constexpr const char* kSlow = "instr(hex(zeroblob(500000)), hex(zeroblob(250000)) || ''x'')";

class HostileSchema : public ForeignDatabaseTest {
 protected:
  // "" or what reading fails with, which must come at once.
  std::string Read() {
    const std::clock_t start = std::clock();
    const std::string failure =
        Thrown([&] { EXPECT_THAT(ReadRows(database_), ElementsAre(Pair("a", "1"))); });
    EXPECT_LT(std::clock() - start, 2 * CLOCKS_PER_SEC);
    return failure;
  }
};

}  // namespace

// SQLite reads the table of ANALYZE with the schema, and computes its generated columns.
TEST_F(HostileSchema, StatisticsAreNotRead) {
  Make(std::string(kTableWithARow) +
       "CREATE TABLE statistics(tbl, idx, stat, spare); INSERT INTO statistics VALUES(1,2,3,4);"
       "PRAGMA writable_schema=ON;"
       "UPDATE sqlite_schema SET name='sqlite_stat1', tbl_name='sqlite_stat1', "
       "sql='CREATE TABLE sqlite_stat1(tbl, idx AS (" +
       kSlow + "), stat, spare, more)' WHERE name='statistics'");
  EXPECT_EQ(Read(), "");
  const std::clock_t start = std::clock();
  EXPECT_EQ(database_.OpenDatabaseWrite(file_.c_str(), kNoMutex, 0), 0);
  EXPECT_LT(std::clock() - start, 2 * CLOCKS_PER_SEC);
  EXPECT_EQ(Read(), "");
}

// SQLite reads a schema that was changed after a statement was compiled when that statement runs.
TEST_F(HostileSchema, StatisticsThatComeAfterCompilingAreNotRead) {
  MakeForeign(file_, std::string(kTableWithARow) +
                         "CREATE TABLE statistics(tbl, idx, stat, spare); "
                         "INSERT INTO statistics VALUES(1,2,3,4);");
  ASSERT_EQ(database_.OpenDatabaseWrite(file_.c_str(), kNoMutex, 0), 0);
  CppSQLite3Statement statement =
      database_.m_DB.compileStatement("CREATE TABLE IF NOT EXISTS other(x)");
  ASSERT_EQ(Foreign(file_).Do(std::string("PRAGMA writable_schema=ON;"
                                          "UPDATE sqlite_schema SET name='sqlite_stat1', "
                                          "tbl_name='sqlite_stat1', "
                                          "sql='CREATE TABLE sqlite_stat1(tbl, idx AS (") +
                              kSlow +
                              "), stat, spare, more)' WHERE name='statistics';"
                              "PRAGMA schema_version=100"),
            "");
  const std::clock_t start = std::clock();
  EXPECT_EQ(Thrown([&] { statement.execQuery(); }), "");
  EXPECT_LT(std::clock() - start, 2 * CLOCKS_PER_SEC);
  EXPECT_EQ(Thrown([&] { ReadRows(database_, "SELECT x, x FROM other"); }), "");
}

TEST_F(HostileSchema, DatabaseThatWasAnalyzedIsRead) {
  Make(std::string(kTableWithARow) + "CREATE INDEX i ON status(value); ANALYZE");
  EXPECT_EQ(Read(), "");
}

// Virtual tables read their settings when a statement is compiled.
TEST_F(HostileSchema, VirtualTableIsRefusedBeforeItIsAsked) {
  for (const char* name : {"status", "f"}) {
    SCOPED_TRACE(name);
    fs::remove(file_);
    Make(std::string("CREATE VIRTUAL TABLE ") + name +
         " USING fts5(address, value); PRAGMA writable_schema=ON;"
         "UPDATE sqlite_schema SET type='view', rootpage=0, sql='CREATE VIEW " +
         name + "_config AS SELECT " + kSlow + " AS k, 1 AS v' WHERE name='" + name + "_config'");
    if (std::string(name) != "status") {
      ASSERT_EQ(Foreign(file_).Do("CREATE VIEW status AS SELECT address, value FROM F"), "");
    }
    EXPECT_EQ(Read(), "1:table or view reads a virtual table");
  }
}

// A writer can put down an index as one of the schema, with which it need not agree.
TEST_F(HostileSchema, IndexOfTheSchemaHidesNoView) {
  for (const char* columns : {"type", kSlow}) {
    SCOPED_TRACE(columns);
    fs::remove(file_);
    Make(
        "CREATE TABLE t(x, y); INSERT INTO t VALUES('a','1');"
        "CREATE TABLE s(type, name, tbl_name, rootpage, sql); CREATE INDEX i ON s(type);"
        "CREATE VIEW status AS SELECT x AS address, (SELECT y) AS value FROM t;"
        "PRAGMA writable_schema=ON;"
        "UPDATE sqlite_schema SET tbl_name='sqlite_master', "
        "sql='CREATE INDEX i ON sqlite_master(" +
        std::string(columns) + ")' WHERE name='i'");
    const std::string refused = "1:index i is on sqlite_master";
    EXPECT_EQ(Read(), refused);
    const std::clock_t start = std::clock();
    EXPECT_EQ(Stderr([&] {
                database_.OpenDatabaseWrite(file_.c_str(), kNoMutex, 0);
                database_.CreateTable("s", 1);
                database_.CreateTable("packages", 2);
              }),
              refused + "\n" + refused + "\n");
    EXPECT_LT(std::clock() - start, 2 * CLOCKS_PER_SEC);
  }
}

// "status" and "status!" have the same words.
TEST_F(HostileSchema, ViewsThatDifferInSignsOnlyAreNested) {
  std::string sql = "CREATE VIEW \"status \" AS SELECT 1 AS address, 2 AS value;";
  std::string last = "status ";
  for (int i = 0; i < 20; ++i) {
    const std::string next = last + "!";
    sql +=
        "CREATE VIEW \"" + next + "\" AS SELECT a.* FROM \"" + last + "\" a, \"" + last + "\" b;";
    last = next;
  }
  Make(sql + "CREATE VIEW status AS SELECT * FROM \"" + last + '"');
  EXPECT_EQ(Read(), "1:view status ! reads view status ");
}

// PRAGMA default_cache_size of the writer stands in the file.
TEST_F(HostileSchema, CacheIsNotAsLargeAsTheFileSays) {
  Make(
      "CREATE TABLE status(address, value); PRAGMA default_cache_size=1000000;"
      "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c LIMIT 100000) "
      "INSERT INTO status SELECT 'k', hex(zeroblob(200)) FROM c");
  const long before = sqlite3_memory_used();
  for (const char* sql : {"SELECT * FROM status", "SELECT value, address FROM status"}) {
    EXPECT_EQ(ReadRows(database_, sql).size(), 100'000U);
    EXPECT_LT(sqlite3_memory_used() - before, 8 << 20);
  }
}

TEST_F(HostileSchema, ViewsOfOthersTakeNoMemory) {
  Make(std::string(kTableWithARow) +
       "PRAGMA writable_schema=ON;"
       "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c LIMIT 1000) "
       "INSERT INTO sqlite_schema SELECT 'view', 'v'||x, 'v'||x, 0, 'CREATE VIEW v'||x||'/*'||"
       "hex(zeroblob(15000))||'*/ AS SELECT 1' FROM c");
  interposed::Allocations& allocations = interposed::g_allocations;
  allocations.MostBytes = allocations.Bytes;
  const std::size_t before = allocations.Bytes;
  EXPECT_EQ(Read(), "");
  EXPECT_LT(allocations.MostBytes - before, 1U << 20);
}
