#include <gmock/gmock.h>
#include <syslog.h>

#include <ctime>
#include <system_error>

#include "hardware/rate_limit.h"
#include "sandbox/system_log.h"
#include "sandbox/testing.h"
#include "tests/hardware/output_port_fixture.h"
#include "tests/support/interposed/system_calls.h"

namespace {

using interposed::Opens;
using sandbox::Scenario;
using sandbox::SetAnswer;
using testing::ElementsAre;
using testing::IsEmpty;

// The pixel tracker reports a blanked output.
Scenario Blanked() {
  return Healthy()
      .Answer("travex", kTrackerEnable, 0)
      .File(kFrameControl,
            "pixel_tracker_bits: 0x8\nscale_output_width: 0x180\nthe pixel_tracker_count: 0x2\n");
}

constexpr char kBlankedLine[] = "Tracker Pixel: output blanked!\n";

class Tracker : public OutputPortTest {
 protected:
  static std::vector<std::string> Logged(sandbox::SystemLog* log) {
    std::vector<std::string> texts;
    for (const sandbox::SystemLog::Message& message : log->Read()) {
      EXPECT_EQ(message.Priority, LOG_INFO) << message.Text;
      EXPECT_EQ(message.Facility, LOG_USER) << message.Text;
      texts.push_back(message.Text);
    }
    return texts;
  }
};

TEST_F(Tracker, IsSkippedOnlyWhenEnabledAndNotReported) {
  SANDBOX_NEEDS_DEVICES();
  struct {
    int Enable;
    int Tracker;
    std::uint32_t Flags;
  } const kRows[] = {{1, 0x00, 0}, {1, 0x10, 0x800}, {0, 0x00, 0x800},  {0, 0x10, 0x800},
                     {1, 0xEF, 0}, {-1, 0x00, 0},    {-1, 0x10, 0x800}, {1, -1, 0x800}};
  Healthy().File(kFrameControl, "pixel_tracker_bits: 0x7\n").Apply();
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.Enable << ", " << row.Tracker);
    SetAnswer("travex", kTrackerEnable, row.Enable);
    SetAnswer("zetdisplay", kTracker, row.Tracker);
    probe_.OutputPort(0);
    EXPECT_EQ(Output()->StatusFlags, row.Flags);
  }
}

TEST_F(Tracker, ThatIsSkippedIgnoresTheRegisters) {
  SANDBOX_NEEDS_DEVICES();
  Blanked().Answer("travex", kTrackerEnable, 1).Apply();
  sandbox::SystemLog log;
  probe_.OutputPort(0);
  EXPECT_EQ(Output()->StatusFlags, 0U);
  EXPECT_THAT(Logged(&log), IsEmpty());
}

TEST_F(Tracker, BlankedOutputIsReportedWithEveryTrackerLineOnceAnHour) {
  SANDBOX_NEEDS_DEVICES();
  Blanked().Apply();
  sandbox::SystemLog log;
  EXPECT_EQ(probe_.OutputPort(0), 0);
  EXPECT_EQ(Output()->StatusFlags, 0x1800U);
  EXPECT_THAT(Logged(&log), ElementsAre(kBlankedLine, "pixel_tracker_bits: 0x8\n",
                                        "the pixel_tracker_count: 0x2\n"));
  for (int cycle = 0; cycle < 2; ++cycle) {
    status_.Outputs.Clear();
    probe_.OutputPort(0);
    EXPECT_EQ(Output()->StatusFlags, 0x1800U);
    EXPECT_THAT(Logged(&log), IsEmpty());
  }
  rs.begin = static_cast<std::uint32_t>(time(nullptr)) - 3601;
  probe_.OutputPort(0);
  EXPECT_THAT(Logged(&log),
              ElementsAre("OutputPort: 2 callbacks suppressed\n", kBlankedLine,
                          "pixel_tracker_bits: 0x8\n", "the pixel_tracker_count: 0x2\n"));
}

TEST_F(Tracker, BlankedOutputThrowsASystemErrorWhenTheLimiterCannotLock) {
  SANDBOX_NEEDS_DEVICES();
  Blanked().Apply();
  rs.lock.native_handle()->__data.__kind = 0x7F;  // no kind of mutex
  EXPECT_THROW(probe_.OutputPort(0), std::system_error);
  rs.lock.native_handle()->__data.__kind = 0;
}

TEST_F(Tracker, BlankedOutputIsNotReportedWhenTheHostWantsNoReports) {
  SANDBOX_NEEDS_DEVICES();
  Blanked().Apply();
  sandbox::SystemLog log;
  probe_.m_bLogTrackerPixel = false;
  probe_.OutputPort(0);
  EXPECT_EQ(Output()->StatusFlags, 0x1800U);
  EXPECT_THAT(Logged(&log), IsEmpty());
  EXPECT_EQ(rs.begin, 0U) << "the limiter must not be asked";
  EXPECT_EQ(rs.printed, 0);
}

TEST_F(Tracker, LimiterIsNotAskedUnlessTheOutputIsBlanked) {
  SANDBOX_NEEDS_DEVICES();
  Blanked().File(kFrameControl, "pixel_tracker_bits: 0x7\n").Apply();
  sandbox::SystemLog log;
  probe_.OutputPort(0);
  EXPECT_EQ(Output()->StatusFlags, 0x800U);
  EXPECT_THAT(Logged(&log), IsEmpty());
  EXPECT_EQ(rs.begin, 0U);
  EXPECT_EQ(rs.printed, 0);
}

TEST_F(Tracker, ReportIsOneLineWhenTheDumpCannotBeOpenedAgain) {
  SANDBOX_NEEDS_DEVICES();
  Blanked().Apply();
  sandbox::SystemLog log;
  Opens opens;
  opens.Refuse(kFrameControl, 2);
  EXPECT_EQ(probe_.OutputPort(0), 0);
  EXPECT_EQ(Output()->StatusFlags, 0x1800U);
  EXPECT_THAT(Logged(&log), ElementsAre(kBlankedLine));
}

TEST_F(Tracker, ReportHasLinesOfAnyLengthAndThoseBeyondTheReadLimit) {
  SANDBOX_NEEDS_DEVICES();
  const std::string long_line = "pixel_tracker " + std::string(9000, 'x') + " %s%n";
  Blanked()
      .File(kFrameControl, "pixel_tracker_bits: 0x8\n" + long_line + "\r\npixel_tracker end")
      .Apply();
  sandbox::SystemLog log;
  probe_.OutputPort(0);
  EXPECT_THAT(Logged(&log), ElementsAre(kBlankedLine, "pixel_tracker_bits: 0x8\n",
                                        long_line + "\r\n", "pixel_tracker end\n"));
}

}  // namespace
