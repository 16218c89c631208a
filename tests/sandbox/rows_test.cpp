#include "sandbox/rows.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "sandbox/files.h"

namespace sandbox {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// A reader as the product is one: a connection of its own that may stay open.
class Reader {
 public:
  Reader() {
    sqlite3* opened = nullptr;
    EXPECT_EQ(SQLITE_OK, sqlite3_open_v2(kDatabase, &opened, SQLITE_OPEN_READONLY, nullptr));
    database_.reset(opened);
  }

  std::vector<std::string> Query(const char* sql) {
    sqlite3_stmt* prepared = nullptr;
    EXPECT_EQ(SQLITE_OK, sqlite3_prepare_v2(database_.get(), sql, -1, &prepared, nullptr))
        << sqlite3_errmsg(database_.get());
    const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement(prepared,
                                                                          sqlite3_finalize);
    std::vector<std::string> lines;
    while (sqlite3_step(prepared) == SQLITE_ROW) {
      std::string line;
      for (int column = 0; column < sqlite3_column_count(prepared); ++column) {
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(prepared, column));
        line += (column > 0 ? "=" : "") + std::string(text != nullptr ? text : "(null)");
      }
      lines.push_back(line);
    }
    return lines;
  }

  std::vector<std::string> Rows() { return Query("SELECT * FROM status ORDER BY address ASC;"); }

 private:
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> database_{nullptr, sqlite3_close};
};

class RowsTest : public testing::Test {
 protected:
  RowsTest() { RemoveDatabase(); }
};

TEST_F(RowsTest, AreReadBackInTheOrderOfTheirKeys) {
  SetRows({{"GUID", "abc"}, {"DimmingLevel", "55"}});
  EXPECT_THAT(Reader().Rows(), ElementsAre("DimmingLevel=55", "GUID=abc"));
}

TEST_F(RowsTest, AValueMayBeNullOrABlob) {
  SetRows({{"A", nullptr}, {"B", Blob(std::string("x\0y", 3))}, {"C", ""}});
  EXPECT_THAT(Reader().Query("SELECT address, typeof(value), length(value) FROM status;"),
              ElementsAre("A=null=(null)", "B=blob=3", "C=text=0"));
}

// A blob comes after all texts, and is another key than the same bytes as a text.
TEST_F(RowsTest, AKeyMayBeABlob) {
  SetRows({{Blob("GUID"), "blob"}, {"GUID", "text"}, {"TtableED", "x"}});
  Reader reader;
  EXPECT_THAT(reader.Rows(), ElementsAre("GUID=text", "TtableED=x", "GUID=blob"));
  EXPECT_THAT(reader.Query("SELECT typeof(address) FROM status ORDER BY address;"),
              ElementsAre("text", "text", "blob"));
  RemoveRow(Blob("GUID"));
  EXPECT_THAT(reader.Rows(), ElementsAre("GUID=text", "TtableED=x"));
}

TEST_F(RowsTest, ATextKeepsItsFormEvenWhenItLooksLikeANumber) {
  SetRows({{"A", "007"}, {"B", "1e3"}});
  EXPECT_THAT(Reader().Rows(), ElementsAre("A=007", "B=1e3"));
}

TEST_F(RowsTest, AnOpenConnectionSeesTheChange) {
  SetRows({{"A", "1"}, {"B", "2"}});
  Reader reader;
  EXPECT_THAT(reader.Rows(), ElementsAre("A=1", "B=2"));
  SetRows({{"C", "3"}});
  EXPECT_THAT(reader.Rows(), ElementsAre("C=3"));
  SetRow("A", "4");
  SetRow("C", "5");
  EXPECT_THAT(reader.Rows(), ElementsAre("A=4", "C=5"));
  RemoveRow("A");
  EXPECT_THAT(reader.Rows(), ElementsAre("C=5"));
}

TEST_F(RowsTest, NoRowsMakeAnEmptyTable) {
  SetRows({});
  EXPECT_THAT(Reader().Rows(), IsEmpty());
}

TEST_F(RowsTest, TheDatabaseIsWrittenAheadAsOnAController) {
  SetRows({});
  EXPECT_THAT(Reader().Query("PRAGMA journal_mode;"), ElementsAre("wal"));
}

TEST_F(RowsTest, AnySqlCanBeRun) {
  SetRows({{"A", "1"}});
  RunSql("DROP TABLE status; CREATE TABLE other(x);");
  EXPECT_THAT(Reader().Query("SELECT name FROM sqlite_master;"), ElementsAre("other"));
  EXPECT_THROW(RunSql("SELECT nonsense;"), std::runtime_error);
}

TEST_F(RowsTest, RemovingTheDatabaseLeavesNoFile) {
  SetRows({{"A", "1"}});
  Reader reader;
  EXPECT_THAT(reader.Rows(), ElementsAre("A=1"));
  RemoveDatabase();
  EXPECT_TRUE(std::filesystem::is_empty("/dev/shm"));
}

}  // namespace
}  // namespace sandbox
