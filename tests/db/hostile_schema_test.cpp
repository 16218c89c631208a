// What a writer can put into a database beside a table `status`, which is as it should be, or into
// the schema by hand.
#include <gmock/gmock.h>

#include <ctime>

#include "tests/db/database_fixture.h"

namespace {

using testing::ElementsAre;
using testing::Pair;

constexpr char const* kTable =
    "CREATE TABLE status(address TEXT PRIMARY KEY, value TEXT) WITHOUT ROWID;"
    "INSERT INTO status VALUES('a','1');";

// Takes seconds within one function.
constexpr char const* kSlow = "instr(hex(zeroblob(500000)), hex(zeroblob(250000)) || ''x'')";

class HostileSchema : public DatabaseTest {
 protected:
  void Make(std::string const& sql) {
    MakeForeign(file_, sql);
    ASSERT_EQ(database_.OpenDatabaseReadOnly(file_.c_str(), kNoMutex), 0);
  }

  /// "" or what reading fails with, which must come at once.
  std::string Read() {
    std::clock_t const start = std::clock();
    std::string const failure =
        Thrown([&] { EXPECT_THAT(ReadRows(database_), ElementsAre(Pair("a", "1"))); });
    EXPECT_LT(std::clock() - start, 2 * CLOCKS_PER_SEC);
    return failure;
  }

  CSQLdatabase database_;
};

}  // namespace

// SQLite reads the table of ANALYZE with the schema, and computes its generated columns.
TEST_F(HostileSchema, StatisticsAreNotRead) {
  Make(std::string(kTable) +
       "CREATE TABLE statistics(tbl, idx, stat, spare); INSERT INTO statistics VALUES(1,2,3,4);"
       "PRAGMA writable_schema=ON;"
       "UPDATE sqlite_schema SET name='sqlite_stat1', tbl_name='sqlite_stat1', "
       "sql='CREATE TABLE sqlite_stat1(tbl, idx AS (" +
       kSlow + "), stat, spare, more)' WHERE name='statistics'");
  EXPECT_EQ(Read(), "");
  std::clock_t const start = std::clock();
  EXPECT_EQ(database_.OpenDatabaseWrite(file_.c_str(), kNoMutex, 0), 0);
  EXPECT_LT(std::clock() - start, 2 * CLOCKS_PER_SEC);
  EXPECT_EQ(Read(), "");
}

TEST_F(HostileSchema, DatabaseThatWasAnalyzedIsRead) {
  Make(std::string(kTable) + "CREATE INDEX i ON status(value); ANALYZE");
  EXPECT_EQ(Read(), "");
}
