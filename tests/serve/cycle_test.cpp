// What a cycle has of the one before.
#include "serve/cycle.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "model/document.h"

namespace {

using serve::Cycle;

Cycle WithFindings(int began, const std::vector<std::string>& ids) {
  insight::Snapshot snapshot{.Document = QtSts::DocumentTree(QtSts::CStatus()),
                             .Began = serve::SystemTime(std::chrono::seconds(began)),
                             .BeganSteady = {}};
  for (const std::string& id : ids) {
    snapshot.Findings.emplace_back().Id = id;
  }
  return {.Snapshot = std::move(snapshot), .Xml = nullptr, .Trouble = "", .LastSuccess = {}};
}

// They have no others to say so where the history has no room for them.
TEST(Beginnings, AreThoseOfTheCycleBefore) {
  Cycle first = WithFindings(10, {"a", "b"});
  serve::AddBeginnings(nullptr, &first);
  EXPECT_EQ(first.FindingsBefore, (std::vector<bool>{true, true}));
  Cycle second = WithFindings(20, {"b", "c"});
  serve::AddBeginnings(&first, &second);
  EXPECT_EQ(second.FindingsSince, (std::vector{first.Snapshot.Began, second.Snapshot.Began}));
  EXPECT_EQ(second.FindingsBefore, (std::vector<bool>{true, false}));
  Cycle third = WithFindings(30, {"c", "b", "a"});
  serve::AddBeginnings(&second, &third);
  EXPECT_EQ(third.FindingsSince,
            (std::vector{second.Snapshot.Began, first.Snapshot.Began, third.Snapshot.Began}));
  EXPECT_EQ(third.FindingsBefore, (std::vector<bool>{false, true, false}));
}

}  // namespace
