// The n-th call of a kind fails, for n = 1, 2, 3 and so on until a cycle passes untouched, once and
// from then on. After each failure nothing may be left behind, and the next cycle must be whole.
#include <gmock/gmock.h>

#include <memory>
#include <tuple>

#include "model/can_sensors.h"
#include "model/xml.h"
#include "sandbox/system_log.h"
#include "sandbox/testing.h"
#include "tests/collector/scratch_variables.h"
#include "tests/reliability/controller.h"
#include "tests/support/interposed/allocations.h"
#include "tests/support/interposed/failure.h"

namespace {

using interposed::Call;
using interposed::Extent;
using interposed::Failure;
using reliability::Document;
using reliability::FirstDifference;
using reliability::Foreign;
using reliability::Outcome;
using reliability::ReportLines;
using reliability::Run;

// Opened from the test's start to its end.
struct Laboratory {
  Laboratory() { reliability::BusyController().Apply(); }

  // The document of a fresh collector on the present scratch state, which is put back. A document
  // depends on nothing else that lasts, so that it is known while the state stays the same.
  const std::string& Untouched() {
    if (std::string state = ScratchText(); state != state_) {
      const Scratch before = SaveScratch();
      CStatusInterface collector;
      collector.InitDatabase(false);
      const Outcome outcome = Run(&Output, [&] { return collector.QueryDatabase(); });
      EXPECT_EQ(outcome.Result, 0) << outcome.Report;
      RestoreScratch(before);
      state_ = std::move(state);
      untouched_ = Document(&collector.m_Status);
    }
    return untouched_;
  }

  sandbox::SystemLog Log;
  reliability::Quiet Output;

 private:
  std::string state_;
  std::string untouched_;
};

// The option is whether the database is in write-ahead mode, or whether it is created.
using Parameter = std::tuple<Call, Extent, bool>;

std::string NameOf(const Parameter& parameter, const char* with, const char* without) {
  const auto& [call, extent, option] = parameter;
  return std::string(interposed::NameOf(call)) + (extent == Extent::kOnce ? "Once" : "FromThenOn") +
         (option ? with : without);
}

constexpr char kTouch[] = "UPDATE status SET value='1' WHERE address='MdlsAmbientFailure'";

// One collector, opened and warm, and one failing call in one of its cycles.
class WarmCycle {
 public:
  WarmCycle(Laboratory* laboratory, bool write_ahead)
      : laboratory_(*laboratory), write_ahead_(write_ahead) {
    EXPECT_EQ(other_.Do(write_ahead ? "PRAGMA journal_mode=WAL" : "PRAGMA journal_mode=DELETE"),
              "");
    collector_.InitDatabase(false);
    for (int i = 0; i < 3; ++i) {
      EXPECT_EQ(other_.Do(kTouch), "");
      EXPECT_EQ(Cycle().Result, 0);
      CheckLocks();
    }
    steady_ = SaveScratch();
    rows_only_ = reliability::RowsOnly(&collector_.m_Status);
    // As long as one connection to a file holds a lock, SQLite keeps the descriptor of another that
    // was closed, for the next one.
    laboratory_.Untouched();
    descriptors_ = reliability::OpenDescriptors();
  }

  // False once the cycle passes untouched.
  bool Fail(Call call, unsigned long nth, Extent extent) {
    RestoreScratch(steady_);
    reliability::ForgetTrackerReports();
    // The reader's pages are stale by this, so that it reads the file.
    EXPECT_EQ(other_.Do(kTouch), "");
    const Outcome outcome = Run(&laboratory_.Output, [&] {
      const Failure failure(call, nth, extent);
      return collector_.QueryDatabase();
    });
    const bool struck = interposed::Struck();
    laboratory_.Log.Read();
    EXPECT_EQ(reliability::OpenDescriptors(), descriptors_);
    CheckLocks();
    CheckPromise(outcome, call);
    CheckNext(outcome);
    return struck;
  }

 private:
  Outcome Cycle() {
    return Run(&laboratory_.Output, [this] { return collector_.QueryDatabase(); });
  }

  void CheckLocks() {
    if (write_ahead_) {
      EXPECT_EQ(other_.Get("PRAGMA wal_checkpoint(TRUNCATE)"), "0") << "a snapshot is still held";
    }
    EXPECT_EQ(other_.Do("BEGIN EXCLUSIVE; COMMIT"), "") << "a lock is still held";
  }

  void CheckPromise(const Outcome& outcome, Call call) {
    if (outcome.Threw) {
      EXPECT_EQ(call, Call::kMemory);
      EXPECT_EQ(outcome.Report, "");
      return;
    }
    if (outcome.Result != 0) {
      EXPECT_EQ(outcome.Result, 1);
      EXPECT_EQ(ReportLines(outcome.Report), 1) << outcome.Report;
      return;
    }
    // Only a statement that fails when it is finalized is reported by a cycle that succeeds.
    const int lines = ReportLines(outcome.Report);
    EXPECT_TRUE(lines == 0 || (lines == 1 && call == Call::kSqlFinalize)) << outcome.Report;
    EXPECT_EQ(FirstDifference(reliability::RowsOnly(&collector_.m_Status), rows_only_), "");
  }

  void CheckNext(const Outcome& failed) {
    if (!failed.Threw && failed.Result == 0 && !failed.Report.empty()) {
      const Outcome pending = Cycle();
      EXPECT_EQ(pending.Result, 1) << "the pending code makes the next cycle fail";
      EXPECT_EQ(pending.Report, "");
    }
    const std::string& untouched = laboratory_.Untouched();
    const Outcome next = Cycle();
    EXPECT_EQ(next.Result, 0);
    EXPECT_EQ(next.Report, "");
    EXPECT_EQ(FirstDifference(Document(&collector_.m_Status), untouched), "");
    EXPECT_EQ(reliability::OpenDescriptors(), descriptors_);
  }

  Laboratory& laboratory_;
  const bool write_ahead_;
  Foreign other_;
  CStatusInterface collector_;
  Scratch steady_;
  std::string rows_only_;
  int descriptors_ = 0;
};

// From the opening on, and the closing too; each time with a new collector.
class WholeLife {
 public:
  WholeLife(Laboratory* laboratory, bool write) : laboratory_(*laboratory), write_(write) {
    if (write_) {
      sandbox::RemoveDatabase();
    }
    EXPECT_EQ(Live(Call::kMemory, 0, Extent::kOnce).Report, "");
    descriptors_ = reliability::OpenDescriptors();
    steady_ = SaveScratch();
    laboratory_.Untouched();
  }

  bool Fail(Call call, unsigned long nth, Extent extent) {
    RestoreScratch(steady_);
    reliability::ForgetTrackerReports();
    if (write_) {
      sandbox::RemoveDatabase();
    }
    const Outcome outcome = Live(call, nth, extent);
    const bool struck = interposed::Struck();
    EXPECT_TRUE(!outcome.Threw || call == Call::kMemory);
    EXPECT_GE(ReportLines(outcome.Report), 0) << outcome.Report;
    EXPECT_EQ(reliability::OpenDescriptors(), descriptors_);
    laboratory_.Log.Read();
    CheckNext();
    return struck;
  }

 private:
  Outcome Live(Call call, unsigned long nth, Extent extent) {
    return Run(&laboratory_.Output, [&] {
      const Failure failure(call, nth, extent);
      CStatusInterface collector;
      collector.InitDatabase(write_);
      const int result = collector.QueryDatabase();
      collector.CloseDatabase();
      return result;
    });
  }

  void CheckNext() {
    if (write_) {
      CheckCreation();
    }
    const std::string& untouched = laboratory_.Untouched();
    CStatusInterface collector;
    collector.InitDatabase(false);
    const Outcome next = Run(&laboratory_.Output, [&] { return collector.QueryDatabase(); });
    EXPECT_EQ(next.Result, 0);
    EXPECT_EQ(next.Report, "");
    EXPECT_EQ(FirstDifference(Document(&collector.m_Status), untouched), "");
  }

  // Whatever a failed creation left is completed by the next.
  void CheckCreation() {
    {
      CStatusInterface collector;
      const Outcome outcome =
          Run(&laboratory_.Output, [&] { return collector.InitDatabase(true); });
      EXPECT_EQ(outcome.Report, "");
    }
    Foreign other;
    EXPECT_EQ(other.Get("SELECT count(*) FROM sqlite_schema WHERE type='trigger'"), "6");
    EXPECT_EQ(other.Get("SELECT count(*) FROM status, io, packages"), "0");
    EXPECT_EQ(other.Get("PRAGMA integrity_check"), "ok");
    EXPECT_EQ(other.Do("BEGIN EXCLUSIVE; COMMIT"), "") << "a lock is still held";
  }

  Laboratory& laboratory_;
  const bool write_;
  Scratch steady_;
  int descriptors_ = 0;
};

// Blocks that each such failure deliberately leaves behind: the list of interfaces, when an address
// cannot be written as text.
long DeliberateLeak(Call call) { return call == Call::kGetnameinfo ? 1 : 0; }

// Every n until nothing fails; what grows each time that the same call fails is a leak.
template <class Subject>
void Campaign(Subject* subject, Call call, Extent extent) {
  constexpr int kAttempts = 4;
  bool struck = true;
  unsigned long failures = 0;
  for (unsigned long nth = 1; struck && !testing::Test::HasFailure(); ++nth) {
    SCOPED_TRACE(testing::Message() << "call " << nth);
    long growth = 0;
    for (int attempt = 0; attempt == 0 || (attempt < kAttempts && growth != 0); ++attempt) {
      const long before = interposed::g_allocations.Live;
      struck = subject->Fail(call, nth, extent);
      growth = interposed::g_allocations.Live - before - (struck ? DeliberateLeak(call) : 0);
    }
    if (interposed::kCountsBlocks && !testing::Test::HasFailure()) {
      EXPECT_EQ(growth, 0) << "blocks of memory, each time";
    }
    failures += struck ? 1 : 0;
  }
  EXPECT_GT(failures, 0U) << "no call was there to fail, so that nothing was tried";
}

class EveryFailureOfACycle : public testing::TestWithParam<Parameter> {};

TEST_P(EveryFailureOfACycle, LeavesNothingBehindAndTheNextCycleIsWhole) {
  SANDBOX_NEEDS_DEVICES();
  const auto [call, extent, write_ahead] = GetParam();
  Laboratory laboratory;
  WarmCycle cycle(&laboratory, write_ahead);
  Campaign(&cycle, call, extent);
}

INSTANTIATE_TEST_SUITE_P(
    Reliability, EveryFailureOfACycle,
    testing::Combine(testing::Values(Call::kMemory, Call::kOpen, Call::kRead, Call::kIoctl,
                                     Call::kSocket, Call::kGetifaddrs, Call::kGetnameinfo,
                                     Call::kFileStatus, Call::kStatfs, Call::kSysinfo,
                                     Call::kSqlSet, Call::kSqlPrepare, Call::kSqlStep,
                                     Call::kSqlReset, Call::kSqlFinalize),
                     testing::Values(Extent::kOnce, Extent::kFromThenOn), testing::Bool()),
    [](const auto& test) { return NameOf(test.param, "InWriteAheadMode", "InRollbackMode"); });

class EveryFailureOfALife : public testing::TestWithParam<Parameter> {};

TEST_P(EveryFailureOfALife, LeavesNothingBehindAndTheNextCollectorIsWhole) {
  SANDBOX_NEEDS_DEVICES();
  const auto [call, extent, writes] = GetParam();
  Laboratory laboratory;
  WholeLife life(&laboratory, writes);
  Campaign(&life, call, extent);
}

INSTANTIATE_TEST_SUITE_P(
    Reliability, EveryFailureOfALife,
    testing::Combine(testing::Values(Call::kMemory, Call::kOpen, Call::kRead, Call::kWrite,
                                     Call::kFileStatus, Call::kSqlOpen, Call::kSqlSet,
                                     Call::kSqlPrepare, Call::kSqlStep, Call::kSqlReset,
                                     Call::kSqlFinalize, Call::kSqlClose),
                     testing::Values(Extent::kOnce, Extent::kFromThenOn), testing::Bool()),
    [](const auto& test) { return NameOf(test.param, "Creating", "Reading"); });

// Writing of a document, which hosts do after a cycle.
class WrittenDocument {
 public:
  WrittenDocument() {
    status_.Outputs.Add(new QtSts::CTravex6Output);
    status_.Sensors.Add(new QtSts::CCANTempSensor);
    written_ = QtSts::WriteDocument(status_);
  }

  bool Fail(Call call, unsigned long nth, Extent extent) {
    std::string written = written_;
    {
      const Failure failure(call, nth, extent);
      try {
        written = QtSts::WriteDocument(status_);
      } catch (const std::bad_alloc&) {
        // The only other way out.
      }
    }
    EXPECT_EQ(FirstDifference(written, written_), "");
    return interposed::Struck();
  }

 private:
  QtSts::CStatus status_;
  std::string written_;
};

TEST(EveryFailureOfWriting, LeavesNothingBehindAndNeverHalfADocument) {
  for (const Extent extent : {Extent::kOnce, Extent::kFromThenOn}) {
    WrittenDocument document;
    Campaign(&document, Call::kMemory, extent);
  }
}

// Whether reading `written` with a failure gave the whole document, a reason, or no memory.
bool ReadsWholeOrNot(const std::string& written, unsigned long nth, Extent extent) {
  // libxml2 itself forgets some blocks when it runs out of memory while it reads.
  const interposed::LeaksAllowed libxml2;
  QtSts::XmlError error;
  std::unique_ptr<QtSts::CStatus> read;
  try {
    const Failure failure(Call::kMemory, nth, extent);
    read = QtSts::ReadDocument(written, &error);
  } catch (const std::bad_alloc&) {
    return true;
  }
  return read != nullptr ? QtSts::WriteDocument(*read) == written : !error.Message.empty();
}

TEST(EveryFailureOfReading, NeverGivesHalfADocument) {
  QtSts::CStatus status;
  const std::string written = QtSts::WriteDocument(status);
  for (const Extent extent : {Extent::kOnce, Extent::kFromThenOn}) {
    unsigned long nth = 0;
    do {
      ASSERT_TRUE(ReadsWholeOrNot(written, ++nth, extent)) << "call " << nth;
    } while (interposed::Struck());
    EXPECT_GT(nth, 50U);
  }
}

// The functions that can be made to fail.
constexpr const char* kFunctions[] = {"malloc",
                                      "calloc",
                                      "realloc",
                                      "open",
                                      "open64",
                                      "openat",
                                      "read",
                                      "pread64",
                                      "pwrite64",
                                      "ftruncate64",
                                      "ioctl",
                                      "socket",
                                      "getifaddrs",
                                      "getnameinfo",
                                      "stat",
                                      "lstat",
                                      "fstat",
                                      "readlinkat",
                                      "statfs",
                                      "sysinfo",
                                      "sqlite3_open_v2",
                                      "sqlite3_db_config",
                                      "sqlite3_busy_timeout",
                                      "sqlite3_exec",
                                      "sqlite3_file_control",
                                      "sqlite3_prepare_v2",
                                      "sqlite3_step",
                                      "sqlite3_reset",
                                      "sqlite3_finalize",
                                      "sqlite3_close"};

// A kind of failure has several functions: without one of them its campaigns would still find calls
// to fail.
TEST(EveryFunctionThatCanFail, IsCalledByACollector) {
  SANDBOX_NEEDS_DEVICES();
  constexpr unsigned long kNone = 0;
  Laboratory laboratory;
  for (const bool write_ahead : {true, false}) {
    EXPECT_FALSE(WarmCycle(&laboratory, write_ahead).Fail(Call::kMemory, kNone, Extent::kOnce));
  }
  for (const bool writes : {false, true}) {
    EXPECT_FALSE(WholeLife(&laboratory, writes).Fail(Call::kMemory, kNone, Extent::kOnce));
  }
  EXPECT_THAT(interposed::Called(), testing::UnorderedElementsAreArray(kFunctions));
}

}  // namespace
