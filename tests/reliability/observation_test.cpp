// Whether a cycle is observed or not, it does the same.
#include <gmock/gmock.h>
#include <sys/mman.h>
#include <unistd.h>

#include <stdexcept>

#include "collector/observer.h"
#include "sandbox/system_log.h"
#include "sandbox/testing.h"
#include "tests/collector/scratch_variables.h"
#include "tests/reliability/controller.h"
#include "tests/reliability/random_controller.h"

namespace {

using reliability::Document;
using sandbox::Scenario;

// Looks at everything, and spoils what the collector might rely on.
class Looking : public observe::Observer {
 public:
  Looking() { observe::SetObserver(this); }
  Looking(const Looking&) = delete;
  Looking& operator=(const Looking&) = delete;
  ~Looking() override { observe::SetObserver(nullptr); }

  void See(const observe::Event& event) override {
    ++Events;
    held_ = std::string(Events % 1000, 'x');
    if (const auto* row = event.As<observe::RowBegins>()) {
      held_ += std::to_string(row->StoredBytes(0) + row->StoredBytes(1));
    }
    errno = EINTR;
    if (Events == ThrowsAt) {
      throw std::runtime_error("of the observer");
    }
  }

  std::size_t Events = 0;
  std::size_t ThrowsAt = 0;

 private:
  std::string held_;
};

// All that a cycle leaves and reports.
struct Traces {
  int Result;
  std::string Document;
  std::string Scratch;
  std::string Output;
  std::string Errors;
  std::vector<std::string> Log;
};

class Observation : public testing::Test {
 protected:
  // Two cycles on this controller from the same state, both observed by `observer` if it is given.
  std::vector<Traces> TracesOf(const std::function<void(const std::function<void()>&)>& around) {
    ClearScratch();
    reliability::ForgetTrackerReports();
    std::vector<Traces> all;
    CStatusInterface collector;
    around([&] {
      for (int cycle = 0; cycle < 2; ++cycle) {
        Traces traces;
        traces.Errors = Caught(STDERR_FILENO, [&] {
          traces.Output = Caught(STDOUT_FILENO, [&] {
            if (cycle == 0) {
              collector.InitDatabase(false);
            }
            traces.Result = collector.QueryDatabase();
          });
        });
        traces.Document = Document(&collector.m_Status);
        traces.Scratch = ScratchText();
        for (const auto& message : log_.Read()) {
          traces.Log.push_back(message.Text);
        }
        all.push_back(std::move(traces));
      }
    });
    return all;
  }

  std::vector<Traces> Unobserved() {
    return TracesOf([](const std::function<void()>& run) { run(); });
  }

  // Returns how many events there were.
  std::size_t ExpectTheSame(const std::vector<Traces>& expected, std::size_t throws_at = 0) {
    std::size_t events = 0;
    const std::vector<Traces> observed = TracesOf([&](const std::function<void()>& run) {
      Looking observer;
      observer.ThrowsAt = throws_at;
      run();
      events = observer.Events;
      EXPECT_EQ(observe::CurrentObserver() == nullptr, throws_at != 0);
    });
    for (std::size_t cycle = 0; cycle < expected.size(); ++cycle) {
      EXPECT_EQ(observed[cycle].Result, expected[cycle].Result);
      EXPECT_EQ(reliability::FirstDifference(observed[cycle].Document, expected[cycle].Document),
                "");
      EXPECT_EQ(reliability::FirstDifference(observed[cycle].Scratch, expected[cycle].Scratch), "");
      EXPECT_EQ(observed[cycle].Output, expected[cycle].Output);
      EXPECT_EQ(observed[cycle].Errors, expected[cycle].Errors);
      EXPECT_EQ(observed[cycle].Log, expected[cycle].Log);
    }
    return events;
  }

 private:
  static std::string Caught(int descriptor, const std::function<void()>& action) {
    std::fflush(nullptr);
    const int before = dup(descriptor);
    const int file = memfd_create("caught", MFD_CLOEXEC);
    dup2(file, descriptor);
    action();
    std::fflush(nullptr);
    dup2(before, descriptor);
    close(before);
    std::string text(static_cast<std::size_t>(lseek(file, 0, SEEK_END)), '\0');
    EXPECT_EQ(pread(file, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
    close(file);
    return text;
  }

  sandbox::SystemLog log_;
};

// One of each: a source that is there and one that is not, rows that are stored, completed, refused
// and unknown.
Scenario SmallController() {
  return Scenario()
      .File("/home/Zet/.settings/uuid", "abc\n")
      .File("/proc/meminfo", "MemTotal: 100 kB\n")
      .Row("DCIO_1_State", "1")
      .Row("DCIO_1_Type", "DoorSwitch")
      .Row("DimmingLevel", "62,5")
      .Row("DimmingMode", "Manual")
      .Row("Sensor_0_Celsius", "20.5")
      .Row("Sensor_0_Fan_1_Rpm", "1200")
      .Row("Sensor_0_Input_1_Index", "1")
      .Row("Sensor_0_Input_1_Type", "1")
      .Row("Sensor_0_Input_2_Index", "99")
      .Row("Sensor_0_Input_2_Type", "99")
      .Row("Sensor_0_PsrbVin_0_Volts", "5")
      .Row("Sensor_0_Type", "CANDcioAndFanRpm")
      .Row("Sensor_1_Location", "TXR_CAN")
      .Row("Sensor_1_Type", "CANTemp")
      .Row("Sensor_2_Type", "OnboardTemp")
      .Row("TtableDeviceNode_1", "7")
      .Row("TtableTitle", nullptr)
      .Row("Zzz", "");
}

}  // namespace

TEST_F(Observation, ChangesNothingOnRandomControllers) {
  const unsigned count = static_cast<unsigned>(reliability::Repetitions(60, 2000));
  for (unsigned seed = 1; seed <= count && !HasFailure(); ++seed) {
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    reliability::RandomController(seed).Apply();
    const std::vector<Traces> expected = Unobserved();
    EXPECT_GT(ExpectTheSame(expected), 100U);
  }
}

TEST_F(Observation, ChangesNothingOnABusyController) {
  SANDBOX_NEEDS_DEVICES();
  reliability::BusyController().Apply();
  const std::vector<Traces> expected = Unobserved();
  EXPECT_THAT(expected[0].Log, testing::Not(testing::IsEmpty()));
  EXPECT_NE(expected[0].Output, "");
  ExpectTheSame(expected);
}

TEST_F(Observation, ThatThrowsAtAnyEventEndsAndTheCyclesGoOn) {
  SmallController().Apply();
  const std::vector<Traces> expected = Unobserved();
  EXPECT_EQ(expected[1].Result, 0);
  const std::size_t events = ExpectTheSame(expected);
  EXPECT_GT(events, 200U);
  for (std::size_t nth = 1; nth <= events && !HasFailure(); ++nth) {
    SCOPED_TRACE(testing::Message() << "event " << nth);
    EXPECT_EQ(ExpectTheSame(expected, nth), nth);
  }
}
