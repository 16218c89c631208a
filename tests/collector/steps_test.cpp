// What a cycle does in which order, and what it costs.

#include "sandbox/rows.h"
#include "tests/collector/cycle_fixture.h"
#include "tests/collector/hooks.h"
#include "tests/support/interposed/allocations.h"
#include "tests/support/interposed/sqlite_calls.h"

namespace {

using testing::ElementsAre;

class StepsTest : public CycleTest {
 protected:
  ~StepsTest() override {
    g_on_call = nullptr;
    g_on_compile = nullptr;
  }

  // The calls of one cycle that come through this program, and the statement that it compiles. Left
  // out is the one that SQLite compiles itself when it is asked for the size of the database.
  std::vector<std::string> Steps() {
    std::vector<std::string> steps;
    g_on_call = [&](const char* call) { steps.emplace_back(call); };
    g_on_compile = [&](const char* sql) {
      if (!std::string_view(sql).starts_with("PRAGMA \"main\".page_count")) {
        steps.emplace_back(sql);
      }
    };
    g_on_thermal_scaler = [&](const DispatchedRow& row) { steps.push_back(row.Key); };
    Cycle();
    g_on_call = nullptr;
    g_on_compile = nullptr;
    return steps;
  }

  // Allocations of one cycle over `count` rows of about 500 bytes.
  std::uint64_t Allocations(int count) {
    sandbox::Rows rows;
    for (int number = 100; number < 100 + count; ++number) {
      rows["ThermalScaler" + std::to_string(number) + std::string(90, 'k')] = std::string(400, 'v');
    }
    sandbox::SetRows(rows);
    const std::uint64_t before = interposed::g_allocations.Made;
    EXPECT_EQ(collector_.QueryDatabase(), 0);
    return interposed::g_allocations.Made - before;
  }
};

// The clock is read once: two readings could differ.
TEST_F(StepsTest, OfACycleAreProbeResetTimeStatementRows) {
  sandbox::SetRows({{"ThermalScaler", "1"}, {"ThermalScalerX", "2"}});
  Open();
  Cycle();  // in the first, SQLite reads the names of the tables too
  EXPECT_THAT(Steps(), ElementsAre("Status_ClearLists", "Reset_Globals", "GetTime", "time",
                                   "SELECT * FROM status ORDER BY address ASC;", "ThermalScaler",
                                   "ThermalScalerX"));
}

TEST_F(StepsTest, OfACycleWithoutADatabaseEndWithTheTime) {
  EXPECT_THAT(Steps(), ElementsAre("Status_ClearLists", "Reset_Globals", "GetTime", "time"));
}

TEST_F(StepsTest, OfARowAllocateNothing) {
  Open();
  Allocations(1);  // what is allocated once
  const std::uint64_t one_row = Allocations(1);
  EXPECT_EQ(Allocations(300), one_row);
}

}  // namespace
