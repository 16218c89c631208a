// What a table or view may be made of to be read.
#include <gmock/gmock.h>

#include <set>

#include "db/sql_database.h"
#include "tests/db/database_fixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::StartsWith;

constexpr const char* kRow = "INSERT INTO status VALUES('a','1');";
constexpr const char* kOther = "CREATE TABLE t(x, y); INSERT INTO t VALUES('a','1');";

class Reading : public ForeignDatabaseTest {
 protected:
  // What reading throws, which must come at once and leave no lock.
  std::string Refusal(const char* sql = kSelect) {
    std::string failure;
    const std::clock_t start = std::clock();
    failure = Thrown([&] { ReadRows(database_, sql); });
    EXPECT_LT(std::clock() - start, 2 * CLOCKS_PER_SEC);
    EXPECT_EQ(Foreign(file_).Do("BEGIN EXCLUSIVE; COMMIT"), "") << "a lock is left";
    return failure;
  }
};

std::string View(const std::string& select) { return "CREATE VIEW status AS " + select + ";"; }

// The numbers from `first` up to `end`, which is left out, each after `before`.
std::string Numbered(int first, int end, const std::string& before) {
  std::string all;
  for (int i = first; i < end; ++i) {
    all += before + std::to_string(i);
  }
  return all;
}

// Views v0 to v19, each made of the one before in place of %.
std::string Nested(const std::string& form) {
  std::string sql = "CREATE VIEW v0 AS SELECT 1 AS address, 2 AS value;";
  for (int i = 1; i < 20; ++i) {
    std::string body = form;
    for (auto at = body.find('%'); at != std::string::npos; at = body.find('%')) {
      body.replace(at, 1, std::to_string(i - 1));
    }
    sql += "CREATE VIEW v" + std::to_string(i) + " AS " + body + ";";
  }
  return sql;
}

}  // namespace

TEST_F(Reading, OrdinaryTablesAndViewsAreRead) {
  for (const std::string& sql : {
           std::string(kTableWithARow),
           std::string("CREATE TABLE status(address TEXT PRIMARY KEY, value TEXT);") + kRow,
           std::string("CREATE TABLE status(address, value);") + kRow,
           std::string("CREATE TABLE status(address, value); CREATE INDEX i ON status(value);"
                       "CREATE INDEX j ON status(address COLLATE NOCASE) WHERE value>'0';") +
               kRow,
           std::string("CREATE TABLE status(address, value, both AS (address || value));"
                       "INSERT INTO status(address, value) VALUES('a','1');"),
           std::string("CREATE TABLE status(address, value DEFAULT (hex(randomblob(8))),"
                       "CHECK(length(address) < 128));") +
               kRow,
           kOther + View("SELECT x AS address, y AS value FROM t"),
           kOther + View("SELECT x AS address, y AS value FROM t WHERE x BETWEEN 'a' AND 'b'"),
           kOther + View("SELECT t.x AS address, coalesce(u.y, 2) AS value FROM t "
                         "LEFT JOIN t u ON t.x = u.x WHERE t.y IN ('1', '2')"),
           kOther + View("SELECT x AS address, y AS value FROM t "
                         "UNION SELECT 'a', '1' UNION ALL SELECT x, y FROM t WHERE y = '3'"),
           kOther + View("SELECT DISTINCT x AS address, CAST(y AS TEXT) AS value FROM t LIMIT 9"),
           kOther + ("CREATE VIEW \"sta\"\"tus\" AS SELECT 1;" + Nested("SELECT 1") +
                     View("SELECT x AS address, y AS value FROM t")),
       }) {
    SCOPED_TRACE(sql);
    Make(sql);
    EXPECT_EQ(Thrown([&] { EXPECT_THAT(ReadRows(database_), ElementsAre(Pair("a", "1"))); }), "");
  }
}

// The first took 38 seconds, with result 0; most of the others take minutes or gigabytes to
// compile.
TEST_F(Reading, ViewThatHasNoBoundIsRefusedAtOnce) {
  struct {
    std::string Sql;
    std::string Failure;
  } const cases[] = {
      {View("SELECT instr(hex(zeroblob(500000)), hex(zeroblob(250000)) || 'x') AS address, 1"),
       "1:table or view calls function zeroblob"},
      {View("SELECT count(*) AS address, 1 AS value FROM t"),
       "1:table or view calls function count"},
      {View("SELECT group_concat(x) AS address, 1 AS value FROM t"),
       "1:table or view calls function group_concat"},
      {View("SELECT x AS address, sum(y) OVER (ORDER BY x) AS value FROM t"),
       "1:table or view calls function sum"},
      {View("SELECT x AS address, y AS value FROM t WHERE x LIKE 'a%'"),
       "1:table or view calls function like"},
      {View("SELECT x AS address, CURRENT_TIMESTAMP AS value FROM t"),
       "1:table or view calls function current_timestamp"},
      {View("SELECT key AS address, value FROM json_each('[1]')"),
       "1:table or view reads a virtual table"},
      {"CREATE VIRTUAL TABLE status USING fts5(address, value);",
       "1:table or view reads a virtual table"},
      {"CREATE TABLE status(address, value AS (hex(address)));",
       "1:table or view calls function hex"},
      {"CREATE TABLE status(address, value, more AS (hex(address)) STORED);", ""},
      {Nested("SELECT a.* FROM v% a, v% b") + View("SELECT * FROM v19"),
       "1:view status reads view v1"},
      {Nested("SELECT * FROM v% UNION ALL SELECT * FROM v%") + View("SELECT * FROM \"V19\""),
       "1:view status reads view v"},
      {"CREATE VIEW \"a\"\"b.c\" AS SELECT 1 AS address, 2 AS value;" +
           View("SELECT x.* FROM[a\"b.c]x"),
       "1:view status reads view a\"b.c"},
      {View("WITH c0 AS (SELECT 1 AS address, 2 AS value), c1 AS (SELECT a.* FROM c0 a, c0 b) "
            "SELECT * FROM c1"),
       "1:view status has the word WITH"},
      {View("VALUES('a','1')"), "1:view status has the word VALUES"},
      {View("SELECT * FROM t NATURAL JOIN t u"), "1:view status has the word NATURAL"},
      {View("SELECT address || address AS address, value FROM ( \n SELECT x AS address, y AS value "
            "FROM t)"),
       "1:view status has a subquery"},
      {View("SELECT x AS address, y AS value FROM t WHERE EXISTS(/**/SELECT 1)"),
       "1:view status has a comment"},
      {View("SELECT x AS address, y AS value FROM t WHERE x IN (\xef\xbb\xbfSELECT 1)"),
       "1:view status has a byte order mark"},
      {View("SELECT x AS address, '" + std::string(4096, 'v') + "' AS value FROM t"),
       "1:view status is longer than 4096 bytes"},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.Sql.substr(0, 100));
    Make(kOther + one.Sql);
    EXPECT_THAT(Refusal(), StartsWith(one.Failure));
    EXPECT_EQ(Refusal().empty(), one.Failure.empty());
  }
}

// Compiling the first took 13 seconds of work: SQLite weighs every index of each of 60 tables in
// every order of the tables.
TEST_F(Reading, ViewOfManyJoinsIsRefusedAtOnce) {
  std::string table = "CREATE TABLE t(x, y";
  for (int i = 0; i < 250; ++i) {
    table += ", c" + std::to_string(i);
  }
  for (int i = 0; i < 250; ++i) {
    table += ", UNIQUE(x, c" + std::to_string(i) + ")";
  }
  table += ", PRIMARY KEY(x, y)) WITHOUT ROWID; INSERT INTO t(x, y) VALUES('a', '1');";
  const std::string select = "SELECT t.x AS address, t.y AS value FROM t";
  std::string equal = " WHERE t0.x = t.x";
  for (int i = 1; i < 60; ++i) {
    equal += " AND t" + std::to_string(i) + ".x = t.x";
  }
  std::string selects;
  for (int i = 1; i < 12; ++i) {
    selects += " UNION " + select + " JOIN t t" + std::to_string(i);
  }
  const std::string joined = Numbered(0, 60, " CROSS JOIN t t");
  for (const std::string& view : {
           select + Numbered(0, 60, ", t t") + equal,
           select + " \"where\"" + Numbered(0, 60, ", t t"),
           select + " [']" + Numbered(0, 60, ", t t"),
           select + joined,
           select + Numbered(0, 11, " Left\nJoin t t"),
           select + selects,
       }) {
    SCOPED_TRACE(view.substr(0, 100));
    Make(table + View(view));
    EXPECT_EQ(Refusal(), "1:view status joins more than 10 tables");
  }
  for (const std::string& view : {
           select + Numbered(0, 10, ", t t"),
           select + " WHERE t.x IN ('a'" + Numbered(0, 60, ",") + ") GROUP BY t.x, t.y",
       }) {
    SCOPED_TRACE(view.substr(0, 100));
    Make(table + View(view));
    EXPECT_EQ(Refusal(), "");
  }
}

// In such a parameter a quote is a letter, so that joins after it would not be counted.
TEST_F(Reading, ViewWithAParameterIsNotKnown) {
  Make(kOther + View("SELECT x AS address, y AS value FROM t WHERE x = 1") +
       "PRAGMA writable_schema=ON; UPDATE sqlite_schema SET sql = "
       "replace(sql, '= 1', '= $a('')') WHERE name = 'status'");
  EXPECT_EQ(Refusal(),
            "11:malformed database schema (status) - parameters are not allowed in views");
}

// Each used to fail every cycle: "malformed database schema".
TEST_F(Reading, TablesAndViewsOfOthersMayBeLargerThanWhatIsRead) {
  for (const std::string& sql : {
           "CREATE TABLE wide(c0" + Numbered(1, 101, ", c") + ");",
           "CREATE TABLE wide(c0" + Numbered(1, 2000, ", c") + ");",
           "CREATE TABLE checked(x, CHECK(x = 0" + Numbered(1, 500, " OR x = ") + "));",
           "CREATE VIEW many AS SELECT 0" + Numbered(1, 100, " UNION SELECT ") + ";",
           "CREATE VIEW call AS SELECT max(0" + Numbered(1, 100, ", ") + ");",
       }) {
    SCOPED_TRACE(sql.substr(0, 60));
    Make(kTableWithARow + sql);
    EXPECT_EQ(Thrown([&] { EXPECT_THAT(ReadRows(database_), ElementsAre(Pair("a", "1"))); }), "");
  }
}

TEST_F(Reading, MoreThanAHundredColumnsAreRefused) {
  Make("CREATE TABLE status(address, value" + Numbered(3, 101, ", c") + ");" +
       "INSERT INTO status(address, value) VALUES('a','1')");
  EXPECT_EQ(Refusal(), "");
  Make("CREATE TABLE status(address, value" + Numbered(3, 102, ", c") + ");");
  EXPECT_EQ(Refusal(), "1:too many columns in result set");
  EXPECT_EQ(Refusal("SELECT address, value FROM status"), "");
}

TEST_F(Reading, FunctionThatTheStatementItselfNamesIsCalled) {
  Make(kTableWithARow);
  EXPECT_EQ(Setting(database_, "SELECT count(*) FROM status"), "1");
  EXPECT_EQ(Setting(database_, "select UPPER(max(address)) from status"), "A");
  EXPECT_EQ(Setting(database_, "SELECT 1 FROM status WHERE address LIKE 'A'"), "1");
}

// SQLite is asked, so that a version with other functions or other operations is found out.
TEST_F(Reading, EveryFunctionOfSqliteIsRefusedInAView) {
  Make(kTableWithARow);
  std::set<std::string> names;
  CppSQLite3Statement list =
      database_.m_DB.compileStatement("PRAGMA function_list");  // names, among others
  for (CppSQLite3Query query = list.execQuery(); !query.eof(); query.nextRow()) {
    names.insert(query.getStringField(0, ""));
  }
  ASSERT_GT(names.size(), 100U);
  std::set<std::string> read;
  for (const std::string& name : names) {
    bool refused = false;
    bool compiles = false;
    for (const char* arguments : {"()", "(x)", "(x,y)", "(x,0.5)", "(x,y,x)", "(x,y,x,y)"}) {
      for (const char* window : {"", " OVER (ORDER BY x)"}) {
        const std::string call = '"' + name + '"' + arguments + window;
        Make(kOther + View("SELECT " + call + " AS address, 1 AS value FROM t"));
        if (Foreign(file_).Do("EXPLAIN SELECT * FROM status").empty()) {
          compiles = true;
          const std::string failure = Refusal();
          refused |= failure.rfind("1:table or view calls function ", 0) == 0 ||
                     failure.rfind("1:unsafe use of ", 0) == 0;
        }
      }
    }
    if (compiles && !refused) {
      read.insert(name);
    }
  }
  EXPECT_THAT(read, ElementsAre("coalesce", "first_value", "ifnull", "iif", "likelihood", "likely",
                                "nth_value", "unlikely"))
      << "SQLite turns these into operations of their own";
}

// SQLite compiles for the schema of the cycle before, and compiles again in the first step.
TEST_F(Reading, SchemaThatChangesBetweenCyclesIsFollowed) {
  struct Schema {
    const char* Name;
    std::string Sql;
    std::string Failure;
  };
  const std::string drop_table = "DROP TABLE IF EXISTS status;";
  const std::string drop_view = "DROP VIEW IF EXISTS status;";
  const Schema schemas[] = {
      {"table", kTableWithARow, ""},
      {"view with a function", View("SELECT hex(x) AS address, y AS value FROM t"),
       "1:table or view calls function hex"},
      {"view of no table", View("SELECT instr('a', 'a') AS address, 1 AS value"),
       "1:table or view calls function instr"},
      {"nested view",
       "DROP VIEW IF EXISTS v; CREATE VIEW v AS SELECT * FROM t;" +
           View("SELECT x AS address, y AS value FROM v"),
       "1:view status reads view v"},
      {"plain view", View("SELECT x AS address, y AS value FROM t"), ""},
      {"plain view of no table", View("SELECT 'a' AS address, 1 AS value"), ""},
      {"generated column",
       "CREATE TABLE status(address, value AS (hex(address)));"
       "INSERT INTO status VALUES('a');",
       "1:table or view calls function hex"},
      {"no table", "", "1:no such table: status"},
  };
  for (const bool write_ahead : {false, true}) {
    Make(kOther);
    Foreign other(file_);
    ASSERT_EQ(other.Do(write_ahead ? "PRAGMA journal_mode=WAL" : "PRAGMA journal_mode=DELETE"), "");
    ASSERT_EQ(other.Do(kTableWithARow), "");
    CppSQLite3Statement kept = database_.m_DB.compileStatement(kSelect);
    const char* before = "table";
    const auto check = [&](const Schema& schema) {
      SCOPED_TRACE(testing::Message() << before << " became " << schema.Name);
      EXPECT_EQ(Refusal(), schema.Failure);
      EXPECT_EQ(Refusal(), schema.Failure) << "the second time";
      EXPECT_EQ(Thrown([&] {
                  CppSQLite3Query query = kept.execQuery();
                  EXPECT_STREQ(query.getStringField(0, ""), "a");
                }),
                schema.Failure)
          << "with a statement that was kept";
      EXPECT_EQ(other.Do("BEGIN EXCLUSIVE; COMMIT"), "") << "a lock is left";
      before = schema.Name;
    };
    for (const Schema& first : schemas) {
      for (const Schema& second : schemas) {
        for (const Schema* schema : {&first, &second}) {
          const bool view = other.Get(
                                "SELECT count(*) FROM sqlite_schema WHERE type='view' AND "
                                "name='status'") == "1";
          ASSERT_EQ(other.Do((view ? drop_view : drop_table) + schema->Sql), "");
          check(*schema);
        }
      }
    }
  }
}

// docs/rows.md says what that does to the document.
TEST_F(Reading, RowsComeInTheOrderThatTheColumnOfTheKeysHas) {
  constexpr const char* kRows =
      "INSERT INTO status VALUES('S_Type',1),('S_fan',2),(CAST('GUID' AS BLOB),3),('Title',4)";
  Make(std::string("CREATE TABLE status(address TEXT PRIMARY KEY, value TEXT);") + kRows);
  EXPECT_THAT(ReadRows(database_), ElementsAre(Pair("S_Type", "1"), Pair("S_fan", "2"),
                                               Pair("Title", "4"), Pair("GUID", "3")));
  Make(std::string("CREATE TABLE status(address TEXT COLLATE NOCASE, value TEXT);") + kRows);
  EXPECT_THAT(ReadRows(database_), ElementsAre(Pair("S_fan", "2"), Pair("S_Type", "1"),
                                               Pair("Title", "4"), Pair("GUID", "3")));
}

// Messages go to the terminal of whoever runs a host, and into logs.
TEST_F(Reading, NamesInMessagesSteerNoTerminal) {
  const struct {
    std::string Name;
    std::string InMessage;
  } cases[] = {
      {"gr\xc3\xb6\xc3\x9f"
       "e \xe2\x82\xac \xf0\x9f\x92\xa1",
       "gr\xc3\xb6\xc3\x9f"
       "e \xe2\x82\xac \xf0\x9f\x92\xa1"},
      {"\x1b[2J\x07", "\xef\xbf\xbd[2J\xef\xbf\xbd"},
      {"a\n0:all well\r",
       "a\xef\xbf\xbd"
       "0:all well\xef\xbf\xbd"},
      {"\x7f", "\xef\xbf\xbd"},
      {"\xc2\x9b"
       "2J",
       "\xef\xbf\xbd\xef\xbf\xbd"
       "2J"},
      {"\x9b"
       "2J",
       "\xef\xbf\xbd"
       "2J"},
      {"\xe2\x80\xae"
       "x",
       "\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd"
       "x"},
      {"cut \xe2\x82", "cut \xef\xbf\xbd\xef\xbf\xbd"},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.InMessage);
    Make(kOther + View("SELECT t.[" + one.Name + "] AS address, y AS value FROM t"));
    EXPECT_EQ(Refusal(), "1:no such column: t." + one.InMessage);
  }
}

// Making such a message took seconds, and a host wrote megabytes in every cycle.
TEST_F(Reading, LongNamesInMessagesAreCut) {
  for (const char* letter : {"CAST(x'80' AS TEXT)", "'n'"}) {
    SCOPED_TRACE(letter);
    Make(std::string(kOther) +
         "PRAGMA writable_schema=ON; UPDATE sqlite_schema SET name = replace(hex("
         "zeroblob(450000)), '0', " +
         std::string(letter) + "), sql = 'CREATE TABLE t('");
    const std::string refusal = Refusal();
    EXPECT_THAT(refusal, StartsWith("11:malformed database schema ("));
    EXPECT_THAT(refusal, testing::EndsWith("..."));
    EXPECT_LT(refusal.size(), 3100U);
  }
}

TEST_F(Reading, CollationOfTheWritersOwnFails) {
  const auto compare = [](void*, int, const void*, int, const void*) { return 0; };
  sqlite3* writer = nullptr;
  ASSERT_EQ(sqlite3_open(file_.c_str(), &writer), SQLITE_OK);
  sqlite3_create_collation(writer, "own", SQLITE_UTF8, nullptr, compare);
  sqlite3_exec(writer, "CREATE TABLE status(address TEXT COLLATE own, value TEXT)", nullptr,
               nullptr, nullptr);
  sqlite3_close(writer);
  ASSERT_EQ(database_.OpenDatabaseReadOnly(file_.c_str(), kNoMutex), 0);
  EXPECT_EQ(Refusal(), "1:no such collation sequence: own");
}

TEST_F(Reading, StatementThatIsKeptHoldsNoLock) {
  Make(kTableWithARow);
  const CppSQLite3Statement kept = database_.m_DB.compileStatement(kSelect);
  EXPECT_EQ(Foreign(file_).Do("BEGIN EXCLUSIVE; COMMIT"), "");
}

TEST_F(Reading, TwoQueriesAtATimeHoldTheirLocksEach) {
  Make(kTableWithARow);
  Foreign other(file_);
  CppSQLite3Statement first = database_.m_DB.compileStatement(kSelect);
  CppSQLite3Query one = first.execQuery();
  CppSQLite3Statement second = database_.m_DB.compileStatement("SELECT value FROM status");
  CppSQLite3Query two = second.execQuery();
  one.finalize();
  EXPECT_STREQ(two.getStringField(0, ""), "1");
  EXPECT_EQ(other.Do("DELETE FROM status"), "5:database is locked");
  two.finalize();
  EXPECT_EQ(other.Do("DELETE FROM status"), "");
  EXPECT_THAT(ReadRows(database_), IsEmpty());
}
