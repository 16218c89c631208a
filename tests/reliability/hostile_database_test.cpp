// Everybody may write in /dev/shm: whatever stands where the database should be, a cycle ends in a
// bounded time with result 0 or 1.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <random>
#include <string>

#include "tests/reliability/controller.h"

namespace {

using reliability::Foreign;
using reliability::Outcome;
using reliability::Repetitions;
using testing::StartsWith;

constexpr const char* kTable =
    "CREATE TABLE status(address TEXT PRIMARY KEY, value TEXT) WITHOUT ROWID;";
constexpr const char* kRows =
    "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c LIMIT 300) "
    "INSERT INTO status SELECT 'Sensor_' || x || '_Celsius', 'value' || x FROM c;"
    "INSERT INTO status VALUES('GUID','good'), ('Sensor_1_Type','CANTemp');";

class HostileDatabase : public testing::Test {
 protected:
  HostileDatabase() { sandbox::Scenario().Apply(); }

  // The bytes of a database that `sql` makes.
  static std::string Bytes(const std::string& sql) {
    const std::string file = "/dev/shm/made.db";
    sandbox::RemoveFile(file);
    EXPECT_EQ(Foreign(file).Do(sql), "");
    return sandbox::ReadFile(file);
  }

  static void Make(const std::string& sql) { sandbox::WriteFile(sandbox::kDatabase, Bytes(sql)); }

  // Opens and cycles, as a host that starts.
  Outcome Start() {
    return reliability::Run(&quiet_, [this] {
      collector_.CloseDatabase();
      collector_.InitDatabase(false);
      return collector_.QueryDatabase();
    });
  }

  void ExpectRecovery() {
    sandbox::RemoveDatabase();
    Make(std::string(kTable) + kRows);
    const Outcome cycle = Start();
    EXPECT_EQ(cycle.Result, 0) << cycle.Report;
    EXPECT_EQ(collector_.m_Status.GUID, "good");
  }

  reliability::Quiet quiet_;
  CStatusInterface collector_;
};

// What befalls the bytes of a file: flipped bits, a page of another file, a lost end.
void Corrupt(const std::string& other, std::mt19937* random, std::string* bytes) {
  constexpr std::size_t kPage = 512;
  const auto below = [random](std::size_t limit) { return (*random)() % limit; };
  switch (below(3)) {
    case 0:
      for (std::size_t flips = 1 + below(20); flips > 0; --flips) {
        (*bytes)[below(bytes->size())] ^= static_cast<char>(1U << below(8));
      }
      break;
    case 1:
      for (std::size_t pages = 1 + below(3); pages > 0; --pages) {
        bytes->replace(below(bytes->size() / kPage) * kPage, kPage, other,
                       below(other.size() / kPage) * kPage, kPage);
      }
      break;
    default:
      bytes->resize(below(bytes->size()));
  }
}

}  // namespace

TEST_F(HostileDatabase, CorruptedFileGivesARecordOrAReportAndNeverAHang) {
  const std::string small_pages = "PRAGMA page_size=512; VACUUM;";
  const std::string good = Bytes(small_pages + kTable + kRows);
  const std::string others[] = {
      good,
      Bytes(small_pages +
            "CREATE TABLE status(address, value, more); CREATE INDEX i ON "
            "status(value); INSERT INTO status VALUES(1, x'00ff', zeroblob(3000));" +
            "CREATE VIEW v AS SELECT * FROM status;"),
      Bytes(small_pages + "PRAGMA encoding='UTF-16';" + kTable + kRows),
  };
  std::mt19937 random(20260304);
  int failures = 0;
  const int files = Repetitions(400, 10000);
  for (int i = 0; i < files; ++i) {
    std::string bytes = others[random() % std::size(others)];
    Corrupt(others[random() % std::size(others)], &random, &bytes);
    sandbox::RemoveDatabase();
    sandbox::WriteFile(sandbox::kDatabase, bytes);
    const Outcome cycle = Start();
    ASSERT_TRUE(cycle.Result == 0 || cycle.Result == 1) << "file " << i;
    ASSERT_FALSE(cycle.Threw) << "file " << i;
    if (cycle.Result == 1) {
      ASSERT_GE(reliability::ReportLines(cycle.Report), 1) << "file " << i << cycle.Report;
      ++failures;
    }
  }
  EXPECT_GT(failures, files / 10);
  EXPECT_LT(failures, files);
  ExpectRecovery();
}

TEST_F(HostileDatabase, EndlessOrHugeViewEndsInABoundedTimeWithAReport) {
  const char* const views[] = {
      "SELECT 'GUID' AS address, a.x AS value FROM t a, t b, t c, t d",
      "SELECT 'k' || a.x AS address, b.x AS value FROM t a, t b, t c",
  };
  const std::string table =
      "CREATE TABLE t(x);"
      "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c LIMIT 1000) "
      "INSERT INTO t SELECT x FROM c;";
  for (int i = 0; i < Repetitions(1, static_cast<int>(std::size(views))); ++i) {
    SCOPED_TRACE(views[i]);
    sandbox::RemoveDatabase();
    Make(table + "CREATE VIEW status AS " + views[i]);
    const auto start = std::chrono::steady_clock::now();
    const Outcome cycle = Start();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
    EXPECT_EQ(cycle.Result, 1);
    EXPECT_THAT(cycle.Report, StartsWith("9:interrupted"));
  }
  ExpectRecovery();
}

TEST_F(HostileDatabase, SymbolicLinkPipeAndFolderAreRefusedWithAReport) {
  const std::string good = Bytes(std::string(kTable) + kRows);
  const struct {
    const char* Name;
    void (*Make)();
  } odd[] = {
      {"symbolic link", [] { sandbox::MakeLink(sandbox::kDatabase, "/dev/shm/made.db"); }},
      {"pipe", [] { mkfifo(sandbox::kDatabase, 0666); }},
      {"folder", [] { sandbox::MakeFolder(sandbox::kDatabase); }},
      {"socket", [] { sandbox::MakeUnopenable(sandbox::kDatabase); }},
  };
  for (const auto& row : odd) {
    SCOPED_TRACE(row.Name);
    sandbox::RemoveDatabase();
    row.Make();
    const Outcome cycle = Start();
    EXPECT_EQ(cycle.Result, 1);
    EXPECT_THAT(cycle.Report, StartsWith("14:unable to open database file\n"));
    EXPECT_NE(collector_.m_Status.GUID, "good");
  }
  ExpectRecovery();
}
