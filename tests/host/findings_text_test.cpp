#include "host/findings_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <string>

#include "model/document.h"
#include "tests/host/sample_documents.h"

namespace {

using host::Extent;
using insight::Severity;
using testing::ContainsRegex;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

insight::Snapshot Empty() { return sample::SnapshotOf(QtSts::CStatus()); }

std::string Headline(const insight::Snapshot& snapshot) {
  host::Page page(80, false);
  host::ShowHeadline(snapshot, &page);
  return page.Take();
}

std::string Findings(const insight::Snapshot& snapshot, Extent extent, std::size_t columns = 80) {
  host::Page page(columns, false);
  host::ShowFindings(snapshot, extent, &page);
  return page.Take();
}

TEST(Headline, IsAllWellWithoutFindings) {
  insight::Snapshot snapshot = Empty();
  snapshot.Database.Rows = 433;
  snapshot.Sources.resize(22);
  EXPECT_THAT(Headline(snapshot), StartsWith("all well: no findings in 433 rows and 22 sources\n"));
}

TEST(Headline, NamesTheWorstSeverityFirstAndCountsAll) {
  insight::Snapshot snapshot = Empty();
  snapshot.Findings.push_back(sample::FindingOf(Severity::kWarning, "a"));
  EXPECT_THAT(Headline(snapshot), StartsWith("warning: 1 warning\n"));
  snapshot.Findings.push_back(sample::FindingOf(Severity::kWarning, "b"));
  EXPECT_THAT(Headline(snapshot), StartsWith("warning: 2 warnings\n"));
  snapshot.Findings.push_back(sample::FindingOf(Severity::kUnknown, "c"));
  EXPECT_THAT(Headline(snapshot), StartsWith("unknown: 1 unknown, 2 warnings\n"));
  snapshot.Findings.push_back(sample::FindingOf(Severity::kCritical, "d"));
  EXPECT_THAT(Headline(snapshot), StartsWith("critical: 1 critical, 1 unknown, 2 warnings\n"));
}

struct AgeRow {
  std::optional<long> Seconds;
  const char* Text;
};

TEST(Headline, SaysForHowLongTheDatabaseHasNotChanged) {
  const AgeRow rows[] = {
      {0, "last changed 0 s ago"},
      {-5, "last changed 0 s ago"},
      {12, "last changed 12 s ago"},
      {59, "last changed 59 s ago"},
      {60, "last changed 1 min ago"},
      {3599, "last changed 59 min ago"},
      {3600, "last changed 1 h ago"},
      {12000, "last changed 3 h 20 min ago"},
      {86400, "last changed 1 d ago"},
      {3 * 86400 + 7200, "last changed 3 d 2 h ago"},
      {3 * 86400 + 60, "last changed 3 d ago"},
      {std::nullopt, "when the database last changed is not known"},
  };
  for (const AgeRow& row : rows) {
    SCOPED_TRACE(row.Text);
    insight::Snapshot snapshot = Empty();
    snapshot.Database.Rows = 1;
    if (row.Seconds) {
      snapshot.Database.Unchanged = std::chrono::seconds(*row.Seconds);
    }
    EXPECT_THAT(Headline(snapshot), HasSubstr("\n1 row, "));
    EXPECT_THAT(Headline(snapshot), EndsWith(std::string(row.Text) + "\n"));
  }
}

// Only when the clock was not set meanwhile are the two the same.
TEST(Headline, PrefersTheTimeThatAClockThatIsSetDoesNotChange) {
  insight::Snapshot snapshot = Empty();
  snapshot.Began = std::chrono::system_clock::from_time_t(100'000);
  snapshot.Database.LastChanged = std::chrono::system_clock::from_time_t(99'970);
  EXPECT_THAT(Headline(snapshot), HasSubstr("last changed 30 s ago"));
  snapshot.Database.Unchanged = std::chrono::seconds(5);
  EXPECT_THAT(Headline(snapshot), HasSubstr("last changed 5 s ago"));
}

TEST(ShowFindings, LeavesOutWhatIsNotThere) {
  insight::Snapshot snapshot = Empty();
  EXPECT_EQ(Findings(snapshot, Extent::kFull), "");
  snapshot.Findings.push_back(sample::FindingOf(Severity::kWarning, "door open"));
  EXPECT_EQ(Findings(snapshot, Extent::kFull), "\n! warning   door open\n");
  snapshot.Findings.back().Key = "DCIO_0_State";
  EXPECT_EQ(Findings(snapshot, Extent::kFull), "\n! warning   door open\n     DCIO_0_State\n");
  EXPECT_EQ(Findings(snapshot, Extent::kFull, 120), "\n! warning   door open    DCIO_0_State\n");
}

// Columns for places that no finding has used to take room from the texts.
TEST(ShowFindings, HaveTheWholePageWhereNoneHasAPlace) {
  insight::Snapshot snapshot = Empty();
  snapshot.Findings.push_back(sample::FindingOf(Severity::kUnknown, std::string(65, 'm') + " n"));
  snapshot.Findings.back().Hint = std::string(60, 'h') + " i";
  EXPECT_EQ(Findings(snapshot, Extent::kFull), "\n! unknown   " + std::string(65, 'm') +
                                                   " n\n     look at: " + std::string(60, 'h') +
                                                   " i\n");
}

// "%" used to stand on the line below its number.
TEST(ShowFindings, BreakNoLineBetweenANumberAndItsUnit) {
  insight::Snapshot snapshot = Empty();
  snapshot.Findings.push_back(
      sample::FindingOf(Severity::kWarning,
                        "airflow 14 is 7.35 % of its long-term average, below the limit of 25 %"));
  EXPECT_EQ(Findings(snapshot, Extent::kFull),
            "\n! warning   airflow 14 is 7.35 % of its long-term average, below the limit of\n"
            "            25 %\n");
}

TEST(ShowFindings, PutsPathsBesideTheTextsWhereThereIsRoom) {
  insight::Snapshot snapshot = Empty();
  snapshot.Findings.push_back(
      sample::FindingOf(Severity::kCritical, "power is off", "Outputs[0]/X"));
  snapshot.Findings.back().Hint = "the switch";
  snapshot.Findings.push_back(sample::FindingOf(Severity::kWarning, "door open", "DCIO/Y"));
  snapshot.Findings.back().Key = "DCIO_0_State";
  EXPECT_EQ(Findings(snapshot, Extent::kFull, 100),
            "\n"
            "! critical  power is off         Outputs[0]/X\n"
            "            look at: the switch\n"
            "! warning   door open            DCIO/Y        DCIO_0_State\n");
  EXPECT_EQ(Findings(snapshot, Extent::kFull, 80),
            "\n"
            "! critical  power is off\n"
            "     look at: the switch\n"
            "     Outputs[0]/X\n"
            "! warning   door open\n"
            "     DCIO/Y  DCIO_0_State\n");
}

TEST(ShowFindings, WrapsNoPathThatHasRoomOnALine) {
  insight::Snapshot snapshot = Empty();
  const std::string path =
      "Outputs[0]/DisplayInterfaces[0]/Sensors[5]/Points/Inputs/Points[0]/State";
  snapshot.Findings.push_back(sample::FindingOf(Severity::kWarning, "door open", path));
  snapshot.Findings.back().Key = "Sensor_05_DcioPoint_00_State";
  for (const std::size_t columns : {80U, 100U, 132U, 180U, 300U}) {
    EXPECT_THAT(Findings(snapshot, Extent::kFull, columns), HasSubstr(path)) << columns;
    EXPECT_THAT(Findings(snapshot, Extent::kFull, columns),
                HasSubstr("Sensor_05_DcioPoint_00_State"))
        << columns;
  }
}

TEST(ShowFindings, NeedsOneLineForEachInBrief) {
  EXPECT_EQ(
      Findings(sample::TroubledSnapshot(), Extent::kBrief),
      "\n"
      "! critical  the display's power is off\n"
      "! critical  fan 7 stands still, I/O board 0 at address 33 behind the router at \u2026\n"
      "! unknown   /dev/zetdisplay is missing\n"
      "! warning   door open: Service door behind the lowest cabinet, I/O board 0 at a\u2026\n"
      "! warning   the sensor is not connected, temperature sensor at address 17\n");
}

// Where it ended used to be known to the terminal alone.
TEST(ShowFindings, AreNotCutWhereTheyGoToNoTerminal) {
  insight::Snapshot snapshot = Empty();
  const std::string message = std::string(300, 'm') + " end";
  snapshot.Findings.push_back(sample::FindingOf(Severity::kWarning, message));
  host::Page brief(80, false, true);
  host::ShowFindings(snapshot, Extent::kBrief, &brief);
  EXPECT_EQ(brief.Take(), "\n! warning   " + message + "\n");
  host::Page full(80, false, true);
  host::ShowFindings(snapshot, Extent::kAbridged, &full);
  EXPECT_THAT(full.Take(), EndsWith("m end\n"));
}

TEST(ShowFindings, SaysWhatToLookAtOnceForFindingsInARow) {
  insight::Snapshot snapshot = Empty();
  for (const char* const fan : {"fan 1 stands still", "fan 2 stands still"}) {
    snapshot.Findings.push_back(sample::FindingOf(Severity::kWarning, fan));
    snapshot.Findings.back().Hint = "the fan";
  }
  EXPECT_EQ(Findings(snapshot, Extent::kFull),
            "\n"
            "! warning   fan 1 stands still\n"
            "     look at: the fan\n"
            "! warning   fan 2 stands still\n");
}

// Their number alone named no cause.
TEST(ShowFindings, NamesTheFirstRowsThatHaveErrors) {
  insight::Snapshot snapshot = Empty();
  for (int i = 0; i < 7; ++i) {
    insight::Row& row = snapshot.Rows.emplace_back();
    row.Key = "Key_" + std::to_string(i);
    row.Remarks.emplace_back();
    row.Remarks.back().What = i == 2 ? insight::Outcome::kWrapped : insight::Outcome::kUnknownKey;
    row.Remarks.back().Text = "no such key\x1b[2J " + row.Key;
  }
  snapshot.Findings.push_back(sample::FindingOf(Severity::kWarning, "6 rows have errors", "P"));
  snapshot.Findings.back().Id = "row-errors";
  const std::string text = Findings(snapshot, Extent::kFull);
  EXPECT_THAT(text, HasSubstr("  row Key_0: no such key\uFFFD[2J Key_0\n"));
  EXPECT_THAT(text, Not(HasSubstr("Key_2"))) << "a notice";
  EXPECT_THAT(text, ContainsRegex("  row Key_5: no such key\uFFFD.2J Key_5\n +...\n"));
  EXPECT_THAT(text, Not(HasSubstr("Key_6")));
  EXPECT_THAT(Findings(snapshot, Extent::kFull, 180), HasSubstr("  row Key_5: no such key"));
}

TEST(ShowFindings, NamesRowsWithTheSameErrorTogetherAndThoseThatAFindingNamesNotAgain) {
  insight::Snapshot snapshot = Empty();
  for (const char* key : {"Sensor_01_Bus", "Sensor_01_Face", "Sensor_02_Connected"}) {
    insight::Row& row = snapshot.Rows.emplace_back();
    row.Key = key;
    row.Remarks.emplace_back();
    row.Remarks.back().What = insight::Outcome::kNoType;
    row.Remarks.back().Text = "no row completes it";
  }
  snapshot.Rows.back().Remarks.back().Text = "\"True\" is wrong";
  snapshot.Findings.push_back(
      sample::FindingOf(Severity::kWarning, "the row is wrong: \"True\" is wrong; so"));
  snapshot.Findings.back().Key = "Sensor_02_Connected";
  snapshot.Findings.push_back(sample::FindingOf(Severity::kWarning, "3 rows have errors"));
  snapshot.Findings.back().Id = "row-errors";
  snapshot.Findings.back().Key = "Sensor_01_Bus";
  EXPECT_EQ(Findings(snapshot, Extent::kFull),
            "\n! warning   the row is wrong: \"True\" is wrong; so\n"
            "     Sensor_02_Connected\n"
            "! warning   3 rows have errors\n"
            "     row Sensor_01_Bus: no row completes it; likewise 1 more row of Sensor_01:\n"
            "     Face\n");
}

// A cable that is cut loses hundreds of sensors; the display itself is to stay on the page.
TEST(ShowFindings, AbridgesManyFindingsOfOneKind) {
  insight::Snapshot snapshot = Empty();
  for (int i = 0; i < 300; ++i) {
    snapshot.Findings.push_back(
        sample::FindingOf(Severity::kWarning, "sensor " + std::to_string(i) + " is lost"));
    snapshot.Findings.back().Id = "sensor-lost";
  }
  snapshot.Findings.push_back(sample::FindingOf(Severity::kWarning, "door open"));
  snapshot.Findings.back().Id = "door-open";
  const std::string abridged = Findings(snapshot, Extent::kAbridged);
  EXPECT_THAT(abridged, HasSubstr("sensor 19 is lost"));
  EXPECT_THAT(abridged, Not(HasSubstr("sensor 20 is lost")));
  EXPECT_THAT(abridged, HasSubstr("\n     and 280 more like it: --section findings shows all\n"
                                  "! warning   door open\n"));
  const std::string brief = Findings(snapshot, Extent::kBrief);
  EXPECT_EQ(std::count(brief.begin(), brief.end(), '\n'), 1 + 20 + 1 + 1);
  EXPECT_THAT(Findings(snapshot, Extent::kFull), HasSubstr("sensor 299 is lost"));
}

TEST(ShowFindings, CutsATextThatWouldFillThePage) {
  insight::Snapshot snapshot = Empty();
  snapshot.Findings.push_back(sample::FindingOf(Severity::kWarning, std::string(10'000, 'n')));
  snapshot.Findings.back().Hint = std::string(10'000, 'h');
  const std::string text = Findings(snapshot, Extent::kFull);
  EXPECT_LT(std::count(text.begin(), text.end(), '\n'), 12);
  EXPECT_THAT(text, HasSubstr("n\u2026\n"));
}

}  // namespace
