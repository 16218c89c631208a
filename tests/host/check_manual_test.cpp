// The tables of limits and findings in docs/host.md, held to those of the library.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "insight/findings.h"
#include "insight/limits.h"
#include "tests/support/golden.h"

namespace {

// The rows of the table below `heading`, without its two head rows.
std::vector<std::string> Table(const std::string& heading) {
  const std::string page = test_support::ReadSource("docs/host.md");
  std::istringstream lines(page.substr(page.find("\n#### " + heading + "\n") + 1));
  std::vector<std::string> rows;
  std::string line;
  std::getline(lines, line);
  while (std::getline(lines, line) && !line.starts_with("#")) {
    if (line.starts_with("|")) {
      rows.push_back(line);
    }
  }
  rows.erase(rows.begin(), rows.begin() + 2);
  return rows;
}

std::string Cell(const insight::Range& range) {
  return range.IsEverything() ? "" : "`" + insight::Written(range) + "` ";
}

TEST(ManualOfCheck, HasEveryLimitWithItsDefaults) {
  std::vector<std::string> expected;
  for (const insight::LimitInfo& info : insight::LimitTable()) {
    expected.push_back(std::string("| `") + info.Name + "` | " + info.Unit + " | " + info.About +
                       " | " + Cell(info.Default.Warning) + "| " + Cell(info.Default.Critical) +
                       "|");
  }
  EXPECT_EQ(Table("Limits"), expected);
}

TEST(ManualOfCheck, HasEveryFindingWithItsSeverity) {
  std::vector<std::string> expected;
  for (const insight::FindingInfo& info : insight::FindingTable()) {
    expected.push_back(std::string("| `") + info.Id + "` | " + insight::NameOf(info.Level) + " | " +
                       info.When + " |");
  }
  EXPECT_EQ(Table("Findings"), expected);
}

}  // namespace
