// What the program says of a table `status` whose first two columns are not key and value.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "sandbox/enter.h"
#include "sandbox/rows.h"
#include "sandbox/scenario.h"
#include "tests/support/paths.h"
#include "tests/support/run_program.h"

namespace {

using test_support::HostProgram;
using test_support::ProgramResult;
using test_support::RunProgram;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kWords = "; the first is read as the key, the second as the value";

class ColumnOrder : public testing::Test {
 protected:
  void SetUp() override {
    sandbox::RemoveDatabase();
    sandbox::Scenario().Database().Apply();
  }
  void TearDown() override { sandbox::RemoveDatabase(); }

  // The table status, or view, made anew.
  static void Make(const std::string& sql) { sandbox::RunSql("DROP TABLE status; " + sql); }

  static ProgramResult Run(const std::string& command) {
    return RunProgram({HostProgram(), command});
  }
};

// Both used to say nothing, and every row was read as an unknown key.
TEST_F(ColumnOrder, IsSaidByInitAndExplainWhenTheValueComesFirst) {
  Make("CREATE TABLE status(value TEXT, address TEXT); INSERT INTO status VALUES('a', 'GUID')");
  const std::string line = std::string(
                               "statuscollector: the first column of table status is value,"
                               " not address") +
                           kWords;
  const ProgramResult init = Run("init");
  EXPECT_EQ(init.ExitCode, 0);
  EXPECT_EQ(init.Output, "The status database is ready.\n");
  EXPECT_THAT(init.Errors, HasSubstr(line));
  EXPECT_THAT(Run("explain").Errors, HasSubstr(line));
}

// They used to count rows with errors, and to look for the program that writes them.
TEST_F(ColumnOrder, LeadsTheWarningsOfShowAndCheckWhenTheValueComesFirst) {
  sandbox::RemoveDatabase();
  sandbox::Scenario demo = sandbox::Scenario::Load(sandbox::SourcePath("scenarios/demo"));
  demo.Apply();
  Make(
      "CREATE TABLE status(value TEXT, address TEXT); INSERT INTO status VALUES('a', 'GUID'),"
      "('b', 'TtableTitle')");
  const std::string cause = "the first column of table status is value, not address" +
                            std::string(kWords) + ", whatever their names: 2 rows have errors";
  EXPECT_THAT(
      Run("check").Output,
      HasSubstr(cause +
                ": /dev/shm/status.db; see the program that creates the table: make the table "
                "anew with address as the first one"));
  EXPECT_THAT(RunProgram({HostProgram(), "show", "--brief"}).Output,
              HasSubstr("\n! warning   " + cause));
  // A single row in error has another reason.
  Make(
      "CREATE TABLE status(name TEXT, address TEXT); INSERT INTO status VALUES('GUID', 'a'),"
      "('xyzzy', 'b')");
  EXPECT_THAT(Run("check").Output, Not(HasSubstr("column")));
}

// The first column read is the key, and the second the value, whatever their names.
TEST_F(ColumnOrder, DecidesWhatIsReadAndNotTheNames) {
  Make(
      "CREATE TABLE status(name TEXT, content TEXT, address TEXT, value TEXT);"
      "INSERT INTO status VALUES('GUID', 'read', 'ErrorFlags', 'not read')");
  const ProgramResult show = RunProgram({HostProgram(), "show", "--format", "xml"});
  EXPECT_THAT(show.Output, HasSubstr(" GUID=\"read\""));
  EXPECT_THAT(show.Output, Not(HasSubstr("not read")));
  EXPECT_THAT(
      Run("explain").Errors,
      HasSubstr("the first column of table status is name, not address" + std::string(kWords)));
}

TEST_F(ColumnOrder, IsSaidWhenTheValueComesThird) {
  Make("CREATE TABLE status(address TEXT, note TEXT, value TEXT)");
  EXPECT_THAT(
      Run("explain").Errors,
      HasSubstr("the second column of table status is note, not value" + std::string(kWords)));
}

TEST_F(ColumnOrder, OfAViewIsThatOfItsColumns) {
  sandbox::RunSql("CREATE TABLE items(address TEXT, value TEXT)");
  Make("CREATE VIEW status AS SELECT value, address FROM items");
  EXPECT_THAT(Run("explain").Errors, HasSubstr("is value, not address"));
}

TEST_F(ColumnOrder, IsRightWithOtherNamesOfTheValueFurtherColumnsAndCapitals) {
  for (const char* columns :
       {"address TEXT PRIMARY KEY, value TEXT", "Address TEXT, VALUE TEXT, note TEXT",
        "address TEXT, content TEXT", "address TEXT"}) {
    SCOPED_TRACE(columns);
    Make("CREATE TABLE status(" + std::string(columns) + ")");
    EXPECT_THAT(Run("explain").Errors, Not(HasSubstr("column of table")));
  }
}

TEST_F(ColumnOrder, SteersNoTerminal) {
  Make("CREATE TABLE status(\"\x1b[2J\" TEXT, address TEXT)");
  const std::string errors = Run("explain").Errors;
  EXPECT_THAT(errors, HasSubstr("the first column of table status is \xEF\xBF\xBD[2J, not"));
  EXPECT_THAT(errors, Not(HasSubstr("\x1b")));
}

TEST_F(ColumnOrder, IsSaidOfAFirstColumnWithoutAName) {
  Make("CREATE TABLE status(\"\" TEXT, address TEXT, value TEXT)");
  const std::string words = "the first column of table status is \"\", not address";
  EXPECT_THAT(Run("explain").Errors, HasSubstr(words + kWords));
}

// ---- Tables and views of the writers' own, which init used to refuse for want of a column value

TEST_F(ColumnOrder, IsOfNoAccountForInitWhereACycleCanReadTheTable) {
  const std::string lengths =
      " status refuses no key of more than 127 bytes and no value of more than 511: ";
  const std::string cure = "; let its writers keep to these lengths\n";
  for (const auto& [sql, words] :
       {std::pair("TABLE status(address TEXT, content TEXT)",
                  "table" + lengths +
                      "its columns are not address and value, which triggers are made for" + cure),
        std::pair("VIEW status AS SELECT address, content AS value FROM items",
                  "view" + lengths + "views have no such triggers" + cure)}) {
    SCOPED_TRACE(sql);
    sandbox::RemoveDatabase();
    sandbox::Scenario().Database().Apply();
    sandbox::RunSql("CREATE TABLE IF NOT EXISTS items(address TEXT, content TEXT)");
    Make("CREATE " + std::string(sql));
    const ProgramResult init = Run("init");
    EXPECT_EQ(init.ExitCode, 0);
    EXPECT_EQ(init.Output, "The status database is ready.\n");
    EXPECT_EQ(init.Errors, "statuscollector: " + words);
    EXPECT_EQ(Run("show").ExitCode, 0);
  }
}

TEST_F(ColumnOrder, IsOfAccountForInitWhereNoColumnIsCalledAddress) {
  Make("CREATE TABLE status(name TEXT, value TEXT)");
  const ProgramResult init = Run("init");
  EXPECT_EQ(init.ExitCode, 1);
  EXPECT_THAT(init.Errors, HasSubstr("statuscollector: the status database is not ready: "));
  EXPECT_THAT(init.Errors, HasSubstr("no such column: address; statuscollector-rows(5) says"));
  EXPECT_EQ(init.Output, "");
}

// ---- What docs/rows.md says of keys that are not TEXT in byte order

std::string Xml() { return RunProgram({HostProgram(), "show", "--format", "xml"}).Output; }

TEST_F(ColumnOrder, OfRowsPutsKeysThatAreBlobsBehindAllTexts) {
  Make(
      "CREATE TABLE status(address, value TEXT);"
      "INSERT INTO status VALUES(CAST('GUID' AS BLOB), 'of a blob')");
  EXPECT_THAT(Xml(), HasSubstr(" GUID=\"of a blob\""));
  sandbox::RunSql("INSERT INTO status VALUES('TtableTitle', 'a title')");
  const std::string xml = Xml();
  EXPECT_THAT(xml, HasSubstr(" GUID=\"\""));
  EXPECT_THAT(xml, HasSubstr(" Title=\"a title\""));
}

TEST_F(ColumnOrder, OfRowsIsThatOfTheCollationOfTheirKeys) {
  const char* const rows =
      "INSERT INTO status VALUES('Sensor_00_Type', 'CANDcioAndFanRpm'),"
      "('Sensor_00_fan_01_Rpm', '900')";
  Make(std::string("CREATE TABLE status(address TEXT, value TEXT);") + rows);
  EXPECT_THAT(Xml(), HasSubstr("<FanRpms/>"));
  Make(std::string("CREATE TABLE status(address TEXT COLLATE NOCASE, value TEXT);") + rows);
  EXPECT_THAT(Xml(), HasSubstr("<FanRpm Ordinal=\"0\" FanNumber=\"1\" Rpm=\"900\"/>"));
}

TEST_F(ColumnOrder, OfRowsCannotBeThatOfACollationOfTheWriters) {
  Make("CREATE TABLE status(address TEXT, value TEXT)");
  sandbox::RunSql(
      "PRAGMA writable_schema=ON; UPDATE sqlite_schema SET sql = 'CREATE TABLE status(address TEXT "
      "COLLATE mine, value TEXT)' WHERE name = 'status'");
  const ProgramResult show = RunProgram({HostProgram(), "show", "--format", "xml"});
  EXPECT_EQ(show.ExitCode, 1);
  EXPECT_THAT(show.Errors, HasSubstr("cannot be read: no such collation sequence: mine;"));
}

}  // namespace
