// A snapshot against a plain cycle.
#include "insight/snapshot.h"

#include <gmock/gmock.h>
#include <pthread.h>

#include <new>
#include <stdexcept>
#include <utility>

#include "collector/observer.h"
#include "model/xml.h"
#include "sandbox/enter.h"
#include "sandbox/rows.h"
#include "sandbox/scenario.h"
#include "sandbox/testing.h"
#include "tests/collector/scratch_variables.h"
#include "tests/support/interposed/failure.h"

namespace {

using sandbox::Scenario;

std::string WithoutTime(QtSts::CStatus& status) {
  status.LocalTime.clear();
  status.Uptime.clear();
  return QtSts::WriteDocument(status);
}

TEST(Snapshot, HasTheDocumentThatAPlainCycleGives) {
  Scenario::Load(sandbox::SourcePath("scenarios/demo")).Apply();
  CStatusInterface collector;
  collector.InitDatabase(false);
  ASSERT_EQ(collector.QueryDatabase(), 0);
  ASSERT_EQ(collector.QueryDatabase(), 0);
  const std::string plain = WithoutTime(collector.m_Status);

  insight::Recorder recorder(collector);
  const insight::Snapshot snapshot = recorder.RunCycle();
  EXPECT_EQ(WithoutTime(collector.m_Status), plain);
  EXPECT_EQ(snapshot.Result, 0);
  EXPECT_EQ(snapshot.Rows.size(), snapshot.Database.Rows);
  EXPECT_GT(snapshot.Rows.size(), 100U);
}

TEST(Snapshot, LeavesTheObserverBeforeItInPlace) {
  CStatusInterface collector;
  insight::Recorder recorder(collector);
  recorder.RunCycle();
  EXPECT_EQ(observe::CurrentObserver(), nullptr);
}

// Runs a cycle of a recorder when the first row begins.
class Nested : public observe::Observer {
 public:
  explicit Nested(insight::Recorder& recorder)
      : recorder_(recorder), before_(observe::SetObserver(this)) {}
  Nested(const Nested&) = delete;
  Nested& operator=(const Nested&) = delete;
  ~Nested() override { observe::SetObserver(before_); }

  void See(const observe::Event& event) override {
    Rows += event.As<observe::RowBegins>() != nullptr ? 1 : 0;
    if (Rows == 1 && !Refused) {
      try {
        recorder_.RunCycle();
      } catch (const std::logic_error&) {
        Refused = true;
      }
    }
  }

  std::size_t Rows = 0;
  bool Refused = false;

 private:
  insight::Recorder& recorder_;
  observe::Observer* before_;
};

TEST(Snapshot, IsRefusedToAnObserverOfTheSameRecorderAndIsWhole) {
  Scenario::Load(sandbox::SourcePath("scenarios/demo")).Apply();
  CStatusInterface collector;
  collector.InitDatabase(false);
  insight::Recorder recorder(collector);
  Nested nested(recorder);
  const insight::Snapshot snapshot = recorder.RunCycle();
  EXPECT_TRUE(nested.Refused);
  EXPECT_GT(snapshot.Rows.size(), 100U);
  EXPECT_EQ(snapshot.Rows.size(), nested.Rows);
}

TEST(Snapshot, IsRefusedToAnObserverByAnotherRecorder) {
  Scenario::Load(sandbox::SourcePath("scenarios/demo")).Apply();
  CStatusInterface collector;
  collector.InitDatabase(false);
  CStatusInterface other;
  insight::Recorder recorder(collector);
  insight::Recorder of_other(other);
  Nested nested(of_other);
  EXPECT_GT(recorder.RunCycle().Rows.size(), 100U);
  EXPECT_TRUE(nested.Refused);
}

// Throws at the first row.
class Throwing : public observe::Observer {
 public:
  void See(const observe::Event& event) override {
    if (event.As<observe::RowBegins>() != nullptr) {
      throw std::runtime_error("an observer's own");
    }
  }
};

TEST(Snapshot, IsWholeWhenTheObserverBeforeItThrows) {
  Scenario::Load(sandbox::SourcePath("scenarios/demo")).Apply();
  CStatusInterface collector;
  collector.InitDatabase(false);
  Throwing throwing;
  observe::SetObserver(&throwing);
  const insight::Snapshot snapshot = insight::Recorder(collector).RunCycle();
  EXPECT_EQ(observe::SetObserver(nullptr), nullptr);
  EXPECT_GT(snapshot.Rows.size(), 100U);
}

// Cancels the thread at the first probe.
class Cancelling : public observe::Observer {
 public:
  void See(const observe::Event& event) override {
    if (event.As<observe::ProbeBegins>() != nullptr) {
      pthread_cancel(pthread_self());
      pthread_testcancel();
    }
  }
};

// The exception by which the C library cancels a thread must not be caught: it ended the process.
TEST(Snapshot, IsLeftByAThreadThatIsCancelled) {
  Scenario::Load(sandbox::SourcePath("scenarios/demo")).Apply();
  Cancelling cancelling;
  observe::SetObserver(&cancelling);
  pthread_t thread = {};
  const auto run = [](void*) -> void* {
    CStatusInterface collector;
    insight::Recorder(collector).RunCycle();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, nullptr, run, nullptr), 0);
  void* result = nullptr;
  ASSERT_EQ(pthread_join(thread, &result), 0);
  EXPECT_EQ(result, PTHREAD_CANCELED);
  EXPECT_EQ(observe::SetObserver(nullptr), &cancelling);
}

TEST(Snapshot, OfARecorderThatWasMovedKnowsTheEarlierCycles) {
  Scenario().Database().Row("DCIO_00_Address", "7").Row("DCIO_00_Type", "RunLED").Apply();
  CStatusInterface collector;
  collector.InitDatabase(false);
  insight::Recorder first(collector);
  first.RunCycle();
  insight::Recorder second(std::move(first));
  sandbox::SetRows({{"DCIO_00_Type", "RunLED"}});
  const insight::Snapshot snapshot = second.RunCycle();
  ASSERT_EQ(snapshot.Rows.size(), 1U);
  EXPECT_THAT(snapshot.Rows[0].Remarks[0].Text,
              testing::HasSubstr("Address from DCIO_00_Address of an earlier cycle"));
}

// It used to read through a null pointer.
TEST(Snapshot, IsNotMadeByARecorderThatWasMovedFrom) {
  CStatusInterface collector;
  insight::Recorder first(collector);
  const insight::Recorder second(std::move(first));
  EXPECT_THROW(first.RunCycle(), std::logic_error);  // NOLINT(bugprone-use-after-move)
  first = insight::Recorder(collector);
  EXPECT_EQ(first.RunCycle().Result, 1);
}

// The row of a cycle that was not seen to its end used to be passed over for an older one.
TEST(Snapshot, NamesNoOlderRowAfterACycleThatThrew) {
  Scenario().Database().Apply();
  CStatusInterface collector;
  collector.InitDatabase(false);
  int written = 0;
  bool struck = true;
  for (unsigned long nth = 1; struck; ++nth) {
    ClearScratch();
    insight::Recorder recorder(collector);
    sandbox::SetRows({{"DCIO_00_Address", "7"}, {"DCIO_00_Type", "RunLED"}});
    recorder.RunCycle();
    sandbox::SetRows({{"DCIO_05_Address", "8"}, {"DCIO_05_Type", "RunLED"}});
    bool threw = false;
    try {
      const interposed::Failure failure(interposed::Call::kMemory, nth);
      recorder.RunCycle();
    } catch (const std::bad_alloc&) {
      threw = true;
    }
    struck = interposed::Struck();
    sandbox::SetRows({{"DCIO_00_Type", "RunLED"}});
    const insight::Snapshot snapshot = recorder.RunCycle();
    if (threw && u32_DCIO_Address == 8) {
      ++written;
      ASSERT_THAT(snapshot.Rows[0].Remarks[0].Text, testing::HasSubstr("Address"));
      ASSERT_THAT(snapshot.Rows[0].Remarks[0].Text, testing::Not(testing::HasSubstr("DCIO_00")));
    }
  }
  EXPECT_GT(written, 5);
}

TEST(Snapshot, IsWholeOrThrowsWhicheverAllocationFails) {
  Scenario()
      .Database()
      .Row("DimmingMode", "Manual")
      .Row("Sensor_00_Address", "7")
      .Row("Sensor_00_Fan_03_Rpm", "900")
      .Row("Sensor_00_Input_00_Type", "9")
      .Row("Sensor_00_Type", "CANDcioAndFanRpm")
      .Row("Sensor_00_Type2", "CANTemp")
      .Row("sensor_01_Type", "CANTemp")
      .Apply();
  CStatusInterface collector;
  collector.InitDatabase(false);
  insight::Recorder recorder(collector);
  const auto problems = [](const insight::Snapshot& snapshot) {
    std::string text;
    ClearScratch();  // what a cycle that failed has left
    for (const insight::Row& row : snapshot.Rows) {
      text += row.Key + ' ' + row.Remarks[0].Text + '\n';
    }
    return text;
  };
  ClearScratch();
  static_cast<void>(problems(recorder.RunCycle()));
  const std::string expected = problems(recorder.RunCycle());
  int thrown = 0;
  int whole = 0;
  for (unsigned long nth = 1; whole < 40 && nth < 20000; nth += 7) {
    SCOPED_TRACE(nth);
    try {
      const interposed::Failure failure(interposed::Call::kMemory, nth);
      const insight::Snapshot snapshot = recorder.RunCycle();
      whole += interposed::Struck() ? 0 : 1;
      EXPECT_TRUE(snapshot.Result != 0 || problems(snapshot) == expected);
    } catch (const std::bad_alloc&) {
      ++thrown;
    }
    ClearScratch();
    ASSERT_EQ(observe::CurrentObserver(), nullptr);
    ASSERT_EQ(problems(recorder.RunCycle()), expected);
  }
  EXPECT_GT(thrown, 50);
  EXPECT_GT(whole, 0);
}

}  // namespace
