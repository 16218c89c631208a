// The places at which a cycle catches a failure of the database, and what follows from each.

#include <sqlite3.h>

#include <memory>
#include <stdexcept>

#include "sandbox/rows.h"
#include "tests/collector/cycle_fixture.h"
#include "tests/collector/hooks.h"
#include "tests/support/interposed/sqlite_calls.h"

namespace {

using interposed::Call;
using interposed::FailNext;
using sandbox::RunSql;
using sandbox::SetRow;
using sandbox::SetRows;

constexpr int kIoError = SQLITE_IOERR;
constexpr const char* kIoReport = "10:disk I/O error\n";

class FailureTest : public CycleTest {
 protected:
  ~FailureTest() override {
    interposed::FailNone();
    g_on_call = nullptr;
  }

  // Removes what makes cycles fail, and expects a normal one.
  void ExpectNormalCycle() {
    g_on_thermal_scaler = nullptr;
    SetRows({{"GUID", "normal"}});
    status_.GUID = "";
    EXPECT_EQ(Cycle(), kDone);
    EXPECT_EQ(status_.GUID, "normal");
  }

  // Whether the cycle left its statement as it was.
  bool StatementIsAlive() {
    try {
      collector_.m_Statement.execQuery();
      return true;
    } catch (const CppSQLite3Exception& failure) {
      EXPECT_EQ(failure.errorCode(), SQLITE_MISUSE);
      return false;
    }
  }
};

const CycleResult kMissingTable{1, "1:no such table: status\n"};

TEST_F(FailureTest, OfPreparationIsReportedEveryTimeUntilTheTableIsThere) {
  RunSql("DROP TABLE status;");
  Open();
  collector_.m_LastError = 5;  // what the first cycle stores overwrites it
  for (int cycle = 0; cycle < 3; ++cycle) {
    EXPECT_EQ(Cycle(), kMissingTable);
    EXPECT_EQ(collector_.m_LastError, 0) << "stored, then read and cleared";
  }
  ExpectNormalCycle();
}

TEST_F(FailureTest, OfPreparationComesBackWhenTheTableGoes) {
  SetRow("GUID", "abc");
  Open();
  EXPECT_EQ(Cycle(), kDone);
  RunSql("DROP TABLE status;");
  EXPECT_EQ(Cycle(), kMissingTable);
  ExpectNormalCycle();
}

TEST_F(FailureTest, WithoutInitDatabaseIsOneLine) {
  const CycleResult expected{1, "21:bad parameter or other API misuse\n"};
  EXPECT_EQ(Cycle(), expected);
  EXPECT_EQ(Cycle(), expected);
  EXPECT_NE(status_.LocalTime, "");
  Open();
  ExpectNormalCycle();
}

TEST_F(FailureTest, AfterCloseDatabaseIsTheSame) {
  Open();
  EXPECT_EQ(Cycle(), kDone);
  EXPECT_EQ(collector_.CloseDatabase(), 0);
  EXPECT_EQ(Cycle(), (CycleResult{1, "21:bad parameter or other API misuse\n"}));
  EXPECT_EQ(collector_.CloseDatabase(), 0);
}

constexpr const char* kTooBig =
    "18:string or blob too big: a value or row has more than 1048576 bytes\n";

// The second value is small enough to be read, but not its double.
void MakeItems() {
  RunSql(
      "CREATE TABLE items(address TEXT PRIMARY KEY, value TEXT) WITHOUT ROWID;"
      "INSERT INTO items VALUES('GUID', 'first'), ('MdlsAmbientFailure',"
      "hex(zeroblob(300000))), ('TtableTitle', 'third');");
}

TEST_F(FailureTest, OfExecutionIsReportedAndNotStored) {
  MakeItems();
  MakeView("SELECT address, value || value AS value FROM items WHERE address > 'H';");
  Open();
  EXPECT_EQ(Cycle(), (CycleResult{1, kTooBig}));
  EXPECT_EQ(collector_.m_LastError, 0);
  EXPECT_EQ(status_.GUID, "");
  RunSql("DROP VIEW status;");
  ExpectNormalCycle();
}

// A view over a sorted table gives its rows one by one, so the second is read after the first was
// dispatched.
constexpr const char* kFailsAtSecondRow =
    "SELECT address, iif(address = 'MdlsAmbientFailure', value || value, value) AS value"
    " FROM items;";

TEST_F(FailureTest, OfARowIsReportedAndSkipsTheRest) {
  MakeItems();
  MakeView(kFailsAtSecondRow);
  Open();
  EXPECT_EQ(Cycle(), (CycleResult{1, kTooBig}));
  EXPECT_EQ(status_.GUID, "first");
  EXPECT_EQ(status_.Outputs.Count(), 0U);
  EXPECT_EQ(collector_.m_LastError, 0);
  EXPECT_TRUE(StatementIsAlive()) << "nothing is finalized after a row failure";
  RunSql("DROP VIEW status;");
  ExpectNormalCycle();
}

TEST_F(FailureTest, OfAMissingColumnIsARowFailure) {
  MakeView("SELECT 'GUID' AS address;");
  Open();
  EXPECT_EQ(Cycle(), (CycleResult{1, "25:column index out of range\n"}));
  RunSql("DROP VIEW status;");
  ExpectNormalCycle();
}

TEST_F(FailureTest, OfAHandlerIsARowFailure) {
  SetRows({{"GUID", "first"}, {"ThermalScaler", "1"}, {"TtableTitle", "third"}});
  g_on_thermal_scaler = [](const DispatchedRow&) { throw CppSQLite3Exception(7, "by a handler"); };
  Open();
  EXPECT_EQ(Cycle(), (CycleResult{1, "7:by a handler\n"}));
  EXPECT_EQ(status_.GUID, "first");
  EXPECT_EQ(status_.Outputs.Count(), 0U);
  EXPECT_EQ(collector_.m_LastError, 0);
  ExpectNormalCycle();
}

TEST_F(FailureTest, OfAnotherKindLeavesTheCycleUnreported) {
  SetRow("ThermalScaler", "1");
  g_on_thermal_scaler = [](const DispatchedRow&) {
    throw std::runtime_error("not the database's");
  };
  Open();
  const std::string errors =
      ErrorsOf([&] { EXPECT_THROW(collector_.QueryDatabase(), std::runtime_error); });
  EXPECT_EQ(errors, "");
  ExpectNormalCycle();
}

// What is caught begins with the preparation.
TEST_F(FailureTest, OfTheDatabaseBeforeThePreparationLeavesTheCycleUnreported) {
  Open();
  for (const std::string_view failing : {"Status_ClearLists", "Reset_Globals", "GetTime"}) {
    SCOPED_TRACE(failing);
    g_on_call = [&](const char* call) {
      if (call == failing) {
        throw CppSQLite3Exception(7, "early");
      }
    };
    const std::string errors =
        ErrorsOf([&] { EXPECT_THROW(collector_.QueryDatabase(), CppSQLite3Exception); });
    EXPECT_EQ(errors, "");
    EXPECT_EQ(collector_.m_LastError, 0);
  }
  g_on_call = nullptr;
  ExpectNormalCycle();
}

TEST_F(FailureTest, OfTheQuerysFinalizeInTheLoopIsARowFailure) {
  SetRow("ThermalScaler", "1");
  g_on_thermal_scaler = [](const DispatchedRow&) { FailNext(Call::kSqlReset); };
  Open();
  EXPECT_EQ(Cycle(), (CycleResult{1, kIoReport}));
  EXPECT_TRUE(interposed::Struck()) << "it was not called";
  EXPECT_EQ(collector_.m_LastError, 0);
  EXPECT_TRUE(StatementIsAlive());
  ExpectNormalCycle();
}

TEST_F(FailureTest, OfTheQuerysFinalFinalizeLeavesTheStatement) {
  SetRows({{"ThermalScaler", "1"}, {"TtableTitle", "title"}});
  g_on_thermal_scaler = [&](const DispatchedRow&) {
    collector_.m_LastError = 5;  // ends the loop before the last row
    FailNext(Call::kSqlReset);
  };
  Open();
  EXPECT_EQ(Cycle(), (CycleResult{1, kIoReport}));
  EXPECT_EQ(collector_.m_LastError, 0);
  EXPECT_TRUE(StatementIsAlive());
  ExpectNormalCycle();
}

TEST_F(FailureTest, OfTheStatementsFinalizeFailsTheNextCycleOnly) {
  SetRows({{"GUID", "abc"}, {"ThermalScaler", "1"}});
  g_on_thermal_scaler = [](const DispatchedRow&) { FailNext(Call::kSqlFinalize); };
  Open();
  EXPECT_EQ(Cycle(), (CycleResult{0, kIoReport}));
  EXPECT_TRUE(interposed::Struck()) << "it was not called";
  EXPECT_EQ(status_.GUID, "abc");
  EXPECT_EQ(collector_.m_LastError, kIoError) << "pending";

  g_on_thermal_scaler = nullptr;
  status_.GUID = "";
  status_.LocalTime = "";
  EXPECT_EQ(Cycle(), (CycleResult{1, ""}));
  EXPECT_EQ(status_.GUID, "") << "no row may be read";
  EXPECT_NE(status_.LocalTime, "");
  EXPECT_EQ(collector_.m_LastError, 0);

  EXPECT_EQ(Cycle(), kDone);
  EXPECT_EQ(status_.GUID, "abc");
}

TEST_F(FailureTest, ThatIsPendingWhenARowWasReadEndsTheLoopButNotTheCycle) {
  SetRows({{"GUID", "abc"}, {"ThermalScaler", "1"}, {"TtableTitle", "title"}});
  g_on_thermal_scaler = [&](const DispatchedRow&) { collector_.m_LastError = 5; };
  Open();
  EXPECT_EQ(Cycle(), kDone);
  EXPECT_EQ(status_.GUID, "abc");
  EXPECT_EQ(status_.Outputs.Count(), 0U) << "the rest is skipped";
  EXPECT_EQ(collector_.m_LastError, 0);
  EXPECT_FALSE(StatementIsAlive()) << "both are finalized";
  ExpectNormalCycle();
}

TEST_F(FailureTest, ThatWasPendingBeforeTheCycleIsReadAndCleared) {
  SetRow("GUID", "abc");
  Open();
  collector_.m_LastError = -5;
  EXPECT_EQ(Cycle(), (CycleResult{1, ""}));
  EXPECT_EQ(status_.GUID, "");
  EXPECT_EQ(Cycle(), kDone);
}

// Another process that does not wait.
class Writer {
 public:
  Writer() {
    sqlite3* opened = nullptr;
    EXPECT_EQ(sqlite3_open(sandbox::kDatabase, &opened), SQLITE_OK);
    database_.reset(opened);
  }

  int Write() {
    return sqlite3_exec(database_.get(), "INSERT INTO items VALUES(hex(randomblob(8)), '1');",
                        nullptr, nullptr, nullptr);
  }

 private:
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> database_{nullptr, sqlite3_close};
};

TEST_F(FailureTest, OfARowLeavesNoLockOnTheFile) {
  RunSql("PRAGMA journal_mode=DELETE;");  // in this mode a reader locks writers out
  MakeItems();
  RunSql("INSERT INTO items VALUES('ThermalScaler', '1');");
  MakeView("SELECT * FROM items;");
  Open();
  Writer writer;
  int while_reading = SQLITE_OK;
  g_on_thermal_scaler = [&](const DispatchedRow&) {
    while_reading = writer.Write();
    throw CppSQLite3Exception(7, "by a handler");
  };
  EXPECT_EQ(Cycle().Result, 1);
  EXPECT_EQ(while_reading, SQLITE_BUSY) << "this test cannot see a lock";
  EXPECT_EQ(writer.Write(), SQLITE_OK);

  RunSql(std::string("DROP VIEW status; CREATE VIEW status AS ") + kFailsAtSecondRow);
  EXPECT_EQ(Cycle(), (CycleResult{1, kTooBig}));
  EXPECT_EQ(writer.Write(), SQLITE_OK);
}

}  // namespace
