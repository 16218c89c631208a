// What the tests of rows share: a bare controller whose rows are explained.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "insight/snapshot.h"
#include "sandbox/enter.h"
#include "sandbox/rows.h"
#include "sandbox/scenario.h"
#include "tests/collector/scratch_variables.h"

class ExplainedRows : public testing::Test {
 protected:
  // A controller without devices, interfaces and files; the scratch state is that of a fresh
  // process.
  ExplainedRows() {
    sandbox::RemoveDatabase();  // a test before may have left another table
    sandbox::Scenario().Database().Apply();
    ClearScratch();
    collector_.InitDatabase(false);
  }

  // The next cycle, with these rows.
  const insight::Snapshot& Explain(const sandbox::Rows& rows) {
    sandbox::SetRows(rows);
    return Explain();
  }
  const insight::Snapshot& Explain() {
    snapshot_.emplace(recorder_.RunCycle());
    return *snapshot_;
  }

  const insight::Row& RowOf(const std::string& key) const {
    for (const insight::Row& row : snapshot_->Rows) {
      if (row.Key == key) {
        return row;
      }
    }
    throw std::out_of_range("no row " + key);
  }

  // The text of the remark with this outcome; "" without it.
  std::string TextOf(const std::string& key, insight::Outcome what) const {
    for (const insight::Remark& remark : RowOf(key).Remarks) {
      if (remark.What == what) {
        return remark.Text;
      }
    }
    return "";
  }

  // Of all rows, those that are worse than fine: "Sensor_00_Type: inherited".
  std::vector<std::string> Problems() const {
    std::vector<std::string> problems;
    for (const insight::Row& row : snapshot_->Rows) {
      for (const insight::Remark& remark : row.Remarks) {
        const insight::OutcomeInfo& info = insight::InfoOf(remark.What);
        if (info.Class != insight::OutcomeClass::kFine) {
          problems.push_back(row.Key + ": " + info.Id);
        }
      }
    }
    return problems;
  }

  CStatusInterface collector_;
  insight::Recorder recorder_{collector_};
  std::optional<insight::Snapshot> snapshot_;
};
