// Each outcome of a row: what makes it and what just misses it.
#include <algorithm>
#include <cctype>

#include "tests/insight/row_cases.h"
#include "tests/insight/row_fixture.h"

namespace {

using insight::InfoOf;
using insight::Outcome;

std::vector<RowCase> AllCases() {
  std::vector<RowCase> all = OtherCases();
  all.insert(all.end(), ErrorCases().begin(), ErrorCases().end());
  return all;
}

// "unknown-key" as "UnknownKey".
std::string NameOfCase(const testing::TestParamInfo<RowCase>& info) {
  std::string name;
  bool begins = true;
  for (const char* c = InfoOf(info.param.What).Id; *c != '\0'; ++c) {
    if (*c != '-') {
      name += begins ? static_cast<char>(std::toupper(*c)) : *c;
    }
    begins = *c == '-';
  }
  return name;
}

class RowOutcome : public ExplainedRows, public testing::WithParamInterface<RowCase> {
 protected:
  void ExplainInItsTable(const sandbox::Rows& rows, const char* changes) {
    const std::string table = GetParam().Table;
    if (!table.empty()) {
      sandbox::RunSql(table);
    }
    sandbox::SetRows(rows);
    if (*changes != '\0') {
      sandbox::RunSql(changes);
    }
    Explain();
  }
};

TEST_P(RowOutcome, IsReportedForItsRow) {
  const RowCase& expected = GetParam();
  ExplainInItsTable(expected.Makes, expected.Changes);
  const std::string text = TextOf(expected.Key, expected.What);
  EXPECT_THAT(text, testing::HasSubstr(expected.Says));
  EXPECT_EQ(RowOf(expected.Key).Class(), InfoOf(expected.What).Class)
      << RowOf(expected.Key).Remarks.front().Text;
  EXPECT_FALSE(text.empty() || text.ends_with('.') || text.find('\n') != std::string::npos);
}

TEST_P(RowOutcome, IsNotReportedForRowsThatJustMissIt) {
  const RowCase& expected = GetParam();
  ExplainInItsTable(expected.Misses, "");
  ASSERT_EQ(snapshot_->Rows.size(), expected.Misses.size());
  for (const insight::Row& row : snapshot_->Rows) {
    EXPECT_EQ(TextOf(row.Key, expected.What), "") << row.Key;
  }
}

INSTANTIATE_TEST_SUITE_P(Each, RowOutcome, testing::ValuesIn(AllCases()), NameOfCase);

TEST(RowOutcomes, HaveEachACase) {
  std::vector<Outcome> cases;
  for (const RowCase& each : AllCases()) {
    cases.push_back(each.What);
  }
  std::ranges::sort(cases);
  std::vector<Outcome> all;
  for (const insight::OutcomeInfo& info : insight::Outcomes()) {
    all.push_back(info.What);
  }
  EXPECT_EQ(cases, all);
}

}  // namespace
