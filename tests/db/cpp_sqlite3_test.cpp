// CppSQLite3Exception, CppSQLite3Statement and CppSQLite3Query.
#include "db/cpp_sqlite3.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <exception>
#include <fstream>
#include <type_traits>

#include "tests/db/database_fixture.h"
#include "tests/support/interposed/allocations.h"
#include "tests/support/interposed/sqlite_calls.h"

namespace {

using interposed::Call;
using interposed::FailNext;
using testing::ElementsAre;
using testing::Pair;

constexpr const char* kMisuse = "21:bad parameter or other API misuse";

class Statement : public DatabaseTest {
 protected:
  void SetUp() override {
    MakeForeign(file_,
                "CREATE TABLE status(address TEXT PRIMARY KEY, value TEXT);"
                "INSERT INTO status VALUES('b','2'),('a','1'),('c',NULL)");
    ASSERT_EQ(database_.OpenDatabaseReadOnly(file_.c_str(), kNoMutex), 0);
  }

  CppSQLite3Statement Select() { return database_.m_DB.compileStatement(kSelect); }

  CSQLdatabase database_;
};

}  // namespace

TEST(Exception, IsNoStandardExceptionAndCopiesWithoutThrowing) {
  static_assert(!std::is_base_of_v<std::exception, CppSQLite3Exception>);
  static_assert(std::is_nothrow_copy_constructible_v<CppSQLite3Exception>);
  static_assert(std::is_nothrow_copy_assignable_v<CppSQLite3Exception>);
  static_assert(std::is_nothrow_destructible_v<CppSQLite3Exception>);
  const CppSQLite3Exception first(1, std::string(300, 'x'));
  CppSQLite3Exception copy(5, "locked");
  copy = first;
  EXPECT_EQ(copy.errorCode(), 1);
  EXPECT_EQ(copy.errorMessage(), std::string(300, 'x'));
}

TEST(Exception, NeverCarriesCodeZero) {
  EXPECT_EQ(CppSQLite3Exception(0, "not an error").errorCode(), 1);
}

TEST(Exception, CarriesTheExtendedCodeAndTheSystemsError) {
  const CppSQLite3Exception failure(14, "unable to open database file", 526, EISDIR);
  const CppSQLite3Exception copy = failure;
  EXPECT_EQ(copy.errorCode(), 14);
  EXPECT_EQ(copy.extendedCode(), 526);
  EXPECT_EQ(copy.systemError(), EISDIR);
  EXPECT_EQ(Stderr([&] { copy.Report(); }), "14:unable to open database file\n");
}

TEST(Exception, HasItsCodeForTheExtendedOneAndNoSystemErrorWithoutThem) {
  EXPECT_EQ(CppSQLite3Exception(21, "misuse").extendedCode(), 21);
  EXPECT_EQ(CppSQLite3Exception(0, "not an error").extendedCode(), 1);
  EXPECT_EQ(CppSQLite3Exception(21, "misuse").systemError(), 0);
}

TEST(Exception, ReportIsCodeColonMessageAndLineFeed) {
  const CppSQLite3Exception failure(1234567, "no such table: status");
  EXPECT_EQ(Stderr([&] { failure.Report(); }), "1234567:no such table: status\n");
}

TEST(Connection, CompilesNothingBeforeItIsOpen) {
  CppSQLite3DB connection;
  EXPECT_EQ(Thrown([&] { connection.compileStatement(kSelect); }), kMisuse);
  EXPECT_FALSE(connection.readOnly());
  EXPECT_EQ(connection.close(), 0);
}

TEST_F(Statement, CompileFailuresCarrySqlitesCodeAndMessageAlone) {
  CppSQLite3DB& connection = database_.m_DB;
  EXPECT_EQ(Thrown([&] { connection.compileStatement(nullptr); }), kMisuse);
  EXPECT_EQ(Thrown([&] { connection.compileStatement("SELEKT 1"); }),
            "1:near \"SELEKT\": syntax error");
  EXPECT_EQ(Thrown([&] { connection.compileStatement("SELECT * FROM io"); }),
            "1:no such table: io");
}

TEST_F(Statement, WithoutSqlCompilesButDoesNotRun) {
  CppSQLite3Statement statement = database_.m_DB.compileStatement("");
  EXPECT_EQ(Thrown([&] { statement.execQuery(); }), kMisuse);
}

TEST_F(Statement, EmptyOneDoesNotRunAndFinalizesHarmlessly) {
  CppSQLite3Statement statement;
  EXPECT_EQ(Thrown([&] { statement.execQuery(); }), kMisuse);
  statement.finalize();
  statement = Select();
  statement.finalize();
  statement.finalize();
  EXPECT_EQ(Thrown([&] { statement.execQuery(); }), kMisuse);
}

TEST_F(Statement, ExecutionFailureCarriesSqlitesCodeAndMessageAlone) {
  CppSQLite3Statement statement =
      database_.m_DB.compileStatement("INSERT INTO status VALUES('d','4')");
  EXPECT_EQ(Thrown([&] { statement.execQuery(); }), "8:attempt to write a readonly database");
  statement.finalize();
}

TEST_F(Statement, OverwrittenOneIsReleasedAndReportsNothing) {
  database_.m_Statement = Select();
  CppSQLite3Query query = database_.m_Statement.execQuery();
  FailNext(Call::kSqlFinalize);
  EXPECT_EQ(Stderr([&] { database_.m_Statement = Select(); }), "");
  EXPECT_TRUE(interposed::Struck()) << "the statement before was not finalized";
  EXPECT_EQ(Thrown([&] { query.nextRow(); }), kMisuse);
}

TEST_F(Statement, FinalizeFailureIsThrownOnceFromAnEmptyStatement) {
  CppSQLite3Statement statement = Select();
  FailNext(Call::kSqlFinalize);
  EXPECT_EQ(Thrown([&] { statement.finalize(); }), "10:disk I/O error");
  EXPECT_EQ(Thrown([&] { statement.finalize(); }), "");
}

TEST_F(Statement, MovesLeavingAnEmptyOne) {
  CppSQLite3Statement first = Select();
  CppSQLite3Statement second(std::move(first));
  EXPECT_EQ(Thrown([&] { first.execQuery(); }), kMisuse);  // NOLINT(bugprone-use-after-move)
  CppSQLite3Statement& same = second;
  second = std::move(same);
  EXPECT_FALSE(second.execQuery().eof());
}

TEST_F(Statement, OutlivesTheOpenConnectionUnharmed) {
  CppSQLite3Statement statement = Select();
  CppSQLite3Query query = statement.execQuery();
  EXPECT_EQ(database_.CloseDatabase(), 0);
  query.nextRow();
  EXPECT_STREQ(query.getStringField(0, ""), "b");
  query.finalize();
  statement.finalize();
}

TEST(Query, EmptyOneIsAtItsEndAndFinalizesHarmlessly) {
  CppSQLite3Query query;
  EXPECT_TRUE(query.eof());
  query.finalize();
  query.finalize();
  EXPECT_TRUE(query.eof());
  EXPECT_EQ(Thrown([&] { query.nextRow(); }), kMisuse);
  EXPECT_EQ(Thrown([&] { query.getStringField(0, ""); }), kMisuse);
}

TEST_F(Statement, QueryGivesTheRowsInTheOrderOfItsSql) {
  EXPECT_THAT(ReadRows(database_), ElementsAre(Pair("a", "1"), Pair("b", "2"), Pair("c", "NULL")));
}

TEST_F(Statement, QueryOfNoRowsIsAtItsEndAtOnce) {
  CppSQLite3Statement statement =
      database_.m_DB.compileStatement("SELECT * FROM status WHERE address='z'");
  CppSQLite3Query query = statement.execQuery();
  EXPECT_TRUE(query.eof());
  EXPECT_EQ(Thrown([&] { query.getStringField(0, ""); }), kMisuse);
  query.finalize();
}

TEST_F(Statement, FieldsKeepTheirBytes) {
  CppSQLite3Statement statement = database_.m_DB.compileStatement(
      "SELECT NULL, '', CAST(x'ff00fe' AS TEXT), x'80c1', 42, 1.5, x''");
  CppSQLite3Query query = statement.execQuery();
  EXPECT_STREQ(query.getStringField(0, "absent"), "absent");
  EXPECT_EQ(query.getStringField(0, nullptr), nullptr);
  EXPECT_STREQ(query.getStringField(1, "absent"), "");
  EXPECT_EQ(std::string(query.getStringField(2, ""), 4), std::string("\xff\0\xfe\0", 4));
  EXPECT_STREQ(query.getStringField(3, ""), "\x80\xc1");
  EXPECT_STREQ(query.getStringField(4, ""), "42");
  EXPECT_STREQ(query.getStringField(5, ""), "1.5");
  EXPECT_STREQ(query.getStringField(6, ""), "");
}

TEST_F(Statement, FieldsHaveTheBytesThatAreStoredBeyondAZeroByteToo) {
  CppSQLite3Statement statement =
      database_.m_DB.compileStatement("SELECT NULL, '', CAST(x'610062' AS TEXT), x'80c1', 42");
  CppSQLite3Query query = statement.execQuery();
  std::vector<int> bytes;
  for (int column = -1; column <= 5; ++column) {
    bytes.push_back(query.getFieldBytes(column));
  }
  EXPECT_THAT(bytes, ElementsAre(0, 0, 0, 3, 2, 2, 0));
  query.finalize();
  EXPECT_EQ(query.getFieldBytes(2), 0);
}

TEST_F(Statement, ColumnsHaveTheirNamesAlsoWithoutARow) {
  CppSQLite3Statement statement =
      database_.m_DB.compileStatement("SELECT 1 AS first, 2 AS \"a\x1b[z\" WHERE 1 = 0");
  CppSQLite3Query query = statement.execQuery();
  EXPECT_TRUE(query.eof());
  EXPECT_EQ(query.getFieldName(0), "first");
  EXPECT_EQ(query.getFieldName(1), "a\xEF\xBF\xBD[z");
  EXPECT_EQ(query.getFieldName(2), "");
  EXPECT_EQ(query.getFieldName(-1), "");
  query.finalize();
  EXPECT_EQ(query.getFieldName(0), "");
  EXPECT_EQ(CppSQLite3Query().getFieldName(0), "");
}

TEST_F(Statement, ColumnThatIsNotThereThrows) {
  CppSQLite3Statement statement = Select();
  CppSQLite3Query query = statement.execQuery();
  for (const int column : {-1, 2, 1000}) {
    SCOPED_TRACE(column);
    EXPECT_EQ(Thrown([&] { query.getStringField(column, ""); }), "25:column index out of range");
  }
  EXPECT_STREQ(query.getStringField(0, ""), "a");
}

TEST_F(Statement, FinalizedQueryLeavesTheStatementReadyToRunAgain) {
  CppSQLite3Statement statement = Select();
  CppSQLite3Query query = statement.execQuery();
  query.nextRow();
  query.finalize();
  EXPECT_TRUE(query.eof());
  query.finalize();
  query = statement.execQuery();
  EXPECT_STREQ(query.getStringField(0, ""), "a");
}

// The query before used to reset the statement under the new one, whose fields were then all NULL.
TEST_F(Statement, QueryAssignedOverOneOfTheSameStatementStartsAtTheFirstRow) {
  CppSQLite3Statement statement = Select();
  CppSQLite3Query query = statement.execQuery();
  query.nextRow();
  query = statement.execQuery();
  EXPECT_STREQ(query.getStringField(0, "reset"), "a");
  query.nextRow();
  EXPECT_STREQ(query.getStringField(0, "reset"), "b");
}

TEST_F(Statement, EarlierQueryNeitherReadsNorEndsALaterRun) {
  CppSQLite3Statement statement = Select();
  CppSQLite3Query earlier = statement.execQuery();
  CppSQLite3Query later = statement.execQuery();
  EXPECT_EQ(Thrown([&] { earlier.nextRow(); }), kMisuse);
  EXPECT_EQ(Thrown([&] { earlier.getStringField(0, ""); }), kMisuse);
  earlier.finalize();
  EXPECT_STREQ(later.getStringField(0, "reset"), "a");
}

TEST_F(Statement, QueryOfAStatementThatIsGoneIsHarmless) {
  CppSQLite3Query query;
  {
    CppSQLite3Statement statement = Select();
    query = statement.execQuery();
  }
  EXPECT_EQ(Thrown([&] { query.nextRow(); }), kMisuse);
  EXPECT_EQ(Thrown([&] { query.getStringField(0, ""); }), kMisuse);
  query.finalize();
  EXPECT_TRUE(query.eof());
}

TEST_F(Statement, MovedQueryGoesOnAndLeavesAnEmptyOne) {
  CppSQLite3Statement statement = Select();
  CppSQLite3Query first = statement.execQuery();
  CppSQLite3Query second(std::move(first));
  EXPECT_TRUE(first.eof());  // NOLINT(bugprone-use-after-move)
  second.nextRow();
  CppSQLite3Query third;
  third = std::move(second);
  CppSQLite3Query& same = third;
  third = std::move(same);
  EXPECT_STREQ(third.getStringField(0, ""), "b");
}

TEST_F(Statement, QueryFinalizeFailureIsThrownOnceFromAnEmptyQuery) {
  CppSQLite3Statement statement = Select();
  CppSQLite3Query query = statement.execQuery();
  FailNext(Call::kSqlReset);
  EXPECT_EQ(Thrown([&] { query.finalize(); }), "10:disk I/O error");
  EXPECT_TRUE(query.eof());
  EXPECT_EQ(Thrown([&] { query.finalize(); }), "");
  statement.finalize();
}

TEST_F(Statement, QueryHoldsTheReadLockUntilItEnds) {
  Foreign writer(file_);
  CppSQLite3Statement statement = Select();
  constexpr const char* kInsert = "INSERT OR REPLACE INTO status VALUES('d','4')";
  struct {
    const char* Name;
    std::function<void(CppSQLite3Query&)> End;
  } const ends[] = {
      {"finalize", [](CppSQLite3Query& query) { query.finalize(); }},
      {"destructor", [](CppSQLite3Query& query) { const CppSQLite3Query dies(std::move(query)); }},
      {"assignment", [](CppSQLite3Query& query) { query = CppSQLite3Query(); }},
      {"last row",
       [](CppSQLite3Query& query) {
         while (!query.eof()) {
           query.nextRow();
         }
       }},
  };
  for (const auto& end : ends) {
    SCOPED_TRACE(end.Name);
    CppSQLite3Query query = statement.execQuery();
    EXPECT_EQ(writer.Do(kInsert), "5:database is locked");
    end.End(query);
    EXPECT_EQ(writer.Do(kInsert), "");
  }
}

TEST_F(Statement, RowFailureIsReportedOnceAndLeavesNoLock) {
  ASSERT_EQ(Foreign(file_).Do("WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c LIMIT "
                              "999) INSERT INTO status SELECT 'k'||x, hex(zeroblob(99)) FROM c"),
            "");
  const std::string page(4096, '\xa5');
  std::fstream bytes(file_, std::ios::in | std::ios::out | std::ios::binary);
  for (int number = 10; number < 40; ++number) {
    bytes.seekp(number * 4096);
    bytes << page;
  }
  bytes.close();

  database_.m_Statement = database_.m_DB.compileStatement("SELECT * FROM status");
  CppSQLite3Query query = database_.m_Statement.execQuery();
  EXPECT_EQ(Thrown([&] {
              while (!query.eof()) {
                query.nextRow();
              }
            }),
            "11:database disk image is malformed");
  EXPECT_TRUE(query.eof());
  EXPECT_EQ(Thrown([&] { query.finalize(); }), "");
  EXPECT_EQ(Foreign(file_).Do("BEGIN EXCLUSIVE; COMMIT"), "");
  EXPECT_EQ(Thrown([&] { database_.m_Statement.finalize(); }), "");
}

TEST_F(Statement, RowsAreReadWithoutAnAllocation) {
  CppSQLite3Statement statement = database_.m_DB.compileStatement(
      "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c LIMIT 1000) "
      "SELECT 'key'||x, 'value'||x FROM c");
  CppSQLite3Query query = statement.execQuery();
  const std::uint64_t before = interposed::g_allocations.Made;
  int rows = 0;
  for (; !query.eof(); query.nextRow()) {
    rows += query.getStringField(0, "")[0] == 'k' && query.getStringField(1, "")[0] == 'v' ? 1 : 0;
  }
  EXPECT_EQ(interposed::g_allocations.Made - before, 0U);
  EXPECT_EQ(rows, 1000);
  EXPECT_GT(before, 0U) << "allocations are not counted";
}
