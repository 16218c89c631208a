// The status database: what it comes to, and since when it has not changed.
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <thread>

#include "sandbox/files.h"
#include "sandbox/testing.h"
#include "tests/insight/source_fixture.h"

namespace {

namespace fs = std::filesystem;
using insight::DatabaseState;
using insight::Recorder;
using insight::Snapshot;
using insight::SourceState;
using sandbox::kDatabase;
using std::chrono::seconds;
using std::chrono::system_clock;
using testing::AllOf;
using testing::Ge;
using testing::Lt;

const std::string kLog = std::string(kDatabase) + "-wal";
constexpr seconds kThreeDays{3 * 86400};

// A host that stays, with its recorder.
class Host {
 public:
  Host() : recorder_(collector_) { collector_.InitDatabase(false); }

  Snapshot Cycle() { return recorder_.RunCycle(); }

 private:
  CStatusInterface collector_;
  Recorder recorder_;
};

class Database : public testing::Test {
 protected:
  Database() { sandbox::Scenario().Row("GUID", "abc").Apply(); }
  ~Database() override { sandbox::RemoveDatabase(); }

  // Sets the time at which `path` last changed.
  static void Touch(const std::string& path, system_clock::time_point time) {
    const auto nanoseconds =
        std::chrono::duration_cast<std::chrono::nanoseconds>(time.time_since_epoch()).count();
    const timespec times[] = {{0, UTIME_OMIT},
                              {nanoseconds / 1'000'000'000, nanoseconds % 1'000'000'000}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  }

  static system_clock::time_point Ago(seconds age) { return system_clock::now() - age; }

  // A machine that is slow makes any age larger.
  static auto About(seconds age) { return AllOf(Ge(age), Lt(age + seconds(600))); }
};

TEST_F(Database, CountsItsRows) {
  sandbox::SetRow("ErrorFlags", "0x1");
  EXPECT_EQ(Host().Cycle().Database.Rows, 2U);
}

TEST_F(Database, ThatIsThreeDaysOldIsSoForAHostThatIsRestarted) {
  const auto changed = Ago(kThreeDays);
  Touch(kDatabase, changed);
  for (int start = 0; start < 2; ++start) {
    const DatabaseState state = Host().Cycle().Database;
    EXPECT_THAT(state.Unchanged.value(), About(kThreeDays));
    EXPECT_EQ(std::chrono::floor<seconds>(state.LastChanged.value()),
              std::chrono::floor<seconds>(changed));
  }
}

// The steady clock goes on from what was seen first.
TEST_F(Database, AgesFromOneCycleToTheNext) {
  Touch(kDatabase, Ago(kThreeDays));
  Host host;
  const seconds first = host.Cycle().Database.Unchanged.value();
  std::this_thread::sleep_for(seconds(1));
  EXPECT_GE(host.Cycle().Database.Unchanged.value(), first + seconds(1));
}

// The clock was set back since it was written.
TEST_F(Database, FromTheFutureIsNew) {
  Touch(kDatabase, Ago(-kThreeDays));
  Host host;
  EXPECT_THAT(host.Cycle().Database.Unchanged.value(), About(seconds(0)));
  std::this_thread::sleep_for(seconds(1));
  EXPECT_THAT(host.Cycle().Database.Unchanged.value(), About(seconds(1)));
}

// The clock was set ahead by three days between two cycles: what was written a moment ago with the
// old time is not three days old.
TEST_F(Database, ThatChangesIsNoOlderThanTheLookBefore) {
  Host host;
  host.Cycle();
  sandbox::SetRow("GUID", "def");
  Touch(kDatabase, Ago(kThreeDays));
  EXPECT_THAT(host.Cycle().Database.Unchanged.value(), About(seconds(0)));
}

TEST_F(Database, ThatChangesIsNewAgain) {
  Touch(kDatabase, Ago(kThreeDays));
  Host host;
  EXPECT_THAT(host.Cycle().Database.Unchanged.value(), About(kThreeDays));
  sandbox::SetRow("GUID", "def");
  EXPECT_THAT(host.Cycle().Database.Unchanged.value(), About(seconds(0)));
}

// Whoever opens and closes the database touches its file, but not the log.
TEST_F(Database, IsAsOldAsItsLogWhileThatHoldsSomething) {
  sandbox::WriteFile(kLog, "rows");
  Touch(kLog, Ago(kThreeDays));
  Host host;
  EXPECT_THAT(host.Cycle().Database.Unchanged.value(), About(kThreeDays));
  Touch(kDatabase, Ago(seconds(0)));
  EXPECT_THAT(host.Cycle().Database.Unchanged.value(), About(kThreeDays));
  Touch(kLog, Ago(seconds(0)));
  EXPECT_THAT(host.Cycle().Database.Unchanged.value(), About(seconds(0)));
}

TEST_F(Database, IsAsOldAsItsFileWhileTheLogIsEmpty) {
  sandbox::WriteFile(kLog, "");
  Touch(kDatabase, Ago(kThreeDays));
  EXPECT_THAT(Host().Cycle().Database.Unchanged.value(), About(kThreeDays));
}

// A connection of a writer.
class Writer {
 public:
  Writer() { EXPECT_EQ(sqlite3_open(kDatabase, &database_), SQLITE_OK); }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;
  ~Writer() { sqlite3_close(database_); }

  void Do(const char* statement) {
    EXPECT_EQ(sqlite3_exec(database_, statement, nullptr, nullptr, nullptr), SQLITE_OK);
  }

 private:
  sqlite3* database_ = nullptr;
};

TEST_F(Database, WithALogIsAsOldAsItsRowsWhoeverOpensAndClosesIt) {
  Writer writer;
  writer.Do("PRAGMA journal_mode=WAL");
  writer.Do("UPDATE status SET value='def'");
  Touch(kLog, Ago(kThreeDays));
  Host host;
  EXPECT_THAT(host.Cycle().Database.Unchanged.value(), About(kThreeDays));
  {
    Writer other;
    other.Do("PRAGMA user_version");
    Touch(kDatabase, Ago(seconds(0)));
  }
  EXPECT_THAT(host.Cycle().Database.Unchanged.value(), About(kThreeDays));
  writer.Do("UPDATE status SET value='ghi'");
  EXPECT_THAT(host.Cycle().Database.Unchanged.value(), About(seconds(0)));
}

TEST_F(Database, ThatIsNotThereHasNoAge) {
  Host host;
  host.Cycle();
  sandbox::RemoveDatabase();
  const DatabaseState state = host.Cycle().Database;
  EXPECT_FALSE(state.LastChanged.has_value());
  EXPECT_FALSE(state.Unchanged.has_value());
  EXPECT_FALSE(state.EveryoneMayWrite);
}

TEST_F(Database, SaysWhenEveryoneMayWriteIt) {
  EXPECT_FALSE(Host().Cycle().Database.EveryoneMayWrite);
  fs::permissions(kDatabase, fs::perms(0666));
  EXPECT_TRUE(Host().Cycle().Database.EveryoneMayWrite);
  fs::permissions(kDatabase, fs::perms(0644));
  sandbox::WriteFile(kLog, "rows");
  fs::permissions(kLog, fs::perms(0666));
  EXPECT_TRUE(Host().Cycle().Database.EveryoneMayWrite);
}

// ---- Among the sources

Verdict VerdictOfDatabase(Host& host) { return VerdictOf(host.Cycle(), "database"); }

TEST_F(Database, ThatIsMissingStaysMissingInLaterCycles) {
  sandbox::RemoveDatabase();
  Host host;
  const Verdict missing{SourceState::kMissing, ENOENT, "No such file or directory"};
  EXPECT_EQ(VerdictOfDatabase(host), missing);
  EXPECT_EQ(VerdictOfDatabase(host), missing);
}

TEST_F(Database, WithoutRowsIsEmpty) {
  sandbox::RemoveRow("GUID");
  Host host;
  EXPECT_EQ(VerdictOfDatabase(host), (Verdict{SourceState::kEmpty, 0, "no rows"}));
}

TEST_F(Database, OfAnotherFormatIsMalformed) {
  sandbox::WriteFile(kDatabase, std::string(4096, 'x'));
  Host host;
  EXPECT_EQ(VerdictOfDatabase(host),
            (Verdict{SourceState::kMalformed, 0, "file is not a database"}));
}

TEST_F(Database, WithoutTheTableIsMalformed) {
  sandbox::RunSql("DROP TABLE status");
  Host host;
  EXPECT_EQ(VerdictOfDatabase(host),
            (Verdict{SourceState::kMalformed, 0, "no such table: status"}));
}

TEST_F(Database, ThatAnotherProgramKeepsIsLocked) {
  Host host;
  sandbox::RunSql("PRAGMA journal_mode=DELETE");
  Writer writer;
  writer.Do("BEGIN EXCLUSIVE");
  const Snapshot snapshot = host.Cycle();
  EXPECT_EQ(VerdictOf(snapshot, "database"),
            (Verdict{SourceState::kLocked, 0, "database is locked"}));
  EXPECT_FALSE(snapshot.IsReported("Outputs[0]/Title"));
  EXPECT_FALSE(snapshot.IsReported("Sensors[3]/Celsius"));
}

TEST_F(Database, ThatNobodyHasOpenedHasFailed) {
  CStatusInterface collector;
  EXPECT_EQ(VerdictOf(Recorder(collector).RunCycle(), "database").State, SourceState::kFailed);
}

}  // namespace
