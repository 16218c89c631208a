#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cerrno>

#include "sandbox/testing.h"
#include "tests/hardware/output_port_fixture.h"
#include "tests/support/interposed/system_calls.h"

namespace {

using interposed::Call;
using interposed::Failure;
using interposed::Opens;
using interposed::ShortReads;
using sandbox::Scenario;
using sandbox::SetAnswer;
using testing::ElementsAre;

class OutputPort : public OutputPortTest {};

TEST_F(OutputPort, FillsTheOutput) {
  SANDBOX_NEEDS_DEVICES();
  Healthy().Apply();
  EXPECT_EQ(probe_.OutputPort(0), 0);
  ASSERT_EQ(status_.Outputs.Count(), 1U);
  EXPECT_EQ(Output()->Frequency.Vertical, 59.94F);
  EXPECT_EQ(Output()->Dimming.OutputLevel, 75.0F);
  ASSERT_EQ(Output()->Statistics.Count(), 2U);
  for (int number = 0; number < 2; ++number) {
    SCOPED_TRACE(number);
    const QtSts::CStat* statistic = Output()->Statistics[static_cast<unsigned>(number)];
    EXPECT_EQ(statistic->Number, number);
    EXPECT_EQ(statistic->First, 1 + 2 * number);
    EXPECT_EQ(statistic->Second, 2 + 2 * number);
  }
  EXPECT_EQ(Output()->ScalerOutputArea.Width, 0x180U);
  EXPECT_EQ(Output()->ScalerOutputArea.Height, 0xC0U);
  EXPECT_EQ(Output()->Area.Width, 0U);
  EXPECT_EQ(Output()->StatusFlags, 0U);
}

TEST_F(OutputPort, AsksEachDeviceInOrderAndClosesItBeforeTheNext) {
  SANDBOX_NEEDS_DEVICES();
  Healthy().Apply();
  sandbox::ClearDeviceLog();
  const Opens opens;
  probe_.OutputPort(0);
  const std::vector<std::string> opened = opens.Paths();
  EXPECT_THAT(
      sandbox::DeviceLog(),
      ElementsAre("travex open", "travex ioctl 0x8004DA0C", "travex ioctl 0x8004DA55",
                  "travex ioctl 0x8004DA5E", "travex ioctl 0x8004DA5F", "travex ioctl 0x8004DA60",
                  "travex ioctl 0x8004DA61", "travex ioctl 0x8004DA1C", "travex close",
                  "zetdisplay open", "zetdisplay ioctl 0x8004DA65", "zetdisplay ioctl 0x8004DA1E",
                  "zetdisplay ioctl 0x8004DA70", "zetdisplay close", "diagnostics open",
                  "diagnostics ioctl 0x8004DB17", "diagnostics close"));
  EXPECT_THAT(opened,
              ElementsAre("/dev/travex", kFrameControl, "/dev/zetdisplay", "/dev/diagnostics"));
}

TEST_F(OutputPort, WithoutRouterMakesNoOutputAndOpensNothingElse) {
  SANDBOX_NEEDS_DEVICES();
  Healthy().NoDevice("travex").Apply();
  const Opens opens;
  EXPECT_EQ(probe_.OutputPort(0), 1);
  EXPECT_EQ(status_.Outputs.Count(), 0U);
  EXPECT_THAT(opens.Paths(), ElementsAre("/dev/travex"));
}

TEST_F(OutputPort, WhoseRouterCannotBeOpenedIsAsIfThereWereNone) {
  SANDBOX_NEEDS_DEVICES();
  Healthy().Apply();
  sandbox::SetOpenError("travex", EACCES);
  EXPECT_EQ(probe_.OutputPort(0), 1);
  EXPECT_EQ(status_.Outputs.Count(), 0U);
}

TEST_F(OutputPort, FrameRateIsAnsweredInThousandths) {
  SANDBOX_NEEDS_DEVICES();
  struct {
    int Answer;
    float Hertz;
  } const kRows[] = {
      {59940, 59.94F},
      {60000, 60.0F},
      {1, 0.001F},
      {0, 0.0F},
      {-1, 0.0F},
      {-5000, -5.0F},
      {2147483647, 2147483.647F},
      {16778125, 16778.123F},  // no float holds this answer: the next smaller one is divided
  };
  Healthy().Apply();
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.Answer);
    status_.Outputs.Clear();
    SetAnswer("travex", kFrameRate, row.Answer);
    probe_.OutputPort(0);
    EXPECT_EQ(Output()->Frequency.Vertical, row.Hertz);
  }
}

TEST_F(OutputPort, LevelWithoutAnswerStaysAt100) {
  SANDBOX_NEEDS_DEVICES();
  struct {
    int Answer;
    float Level;
  } const kRows[] = {{75, 75.0F}, {0, 0.0F}, {-1, 100.0F}, {-5000, -5000.0F}};
  Healthy().Apply();
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.Answer);
    status_.Outputs.Clear();
    SetAnswer("travex", kOutputLevel, row.Answer);
    probe_.OutputPort(0);
    EXPECT_EQ(Output()->Dimming.OutputLevel, row.Level);
  }
}

TEST_F(OutputPort, StatisticWithoutFirstValueKeepsTheSecond) {
  SANDBOX_NEEDS_DEVICES();
  Healthy().Answer("travex", kStatistics[0][0], -1).Answer("travex", kStatistics[0][1], 7).Apply();
  probe_.OutputPort(0);
  ASSERT_EQ(Output()->Statistics.Count(), 2U);
  EXPECT_EQ(Output()->Statistics[0]->First, 0);
  EXPECT_EQ(Output()->Statistics[0]->Second, 7);
}

TEST_F(OutputPort, SingleAnswerOfAllIsNotLost) {
  SANDBOX_NEEDS_DEVICES();
  Scenario().Answer("travex", kStatistics[0][1], 7).Apply();
  EXPECT_EQ(probe_.OutputPort(0), 1) << "there is no register dump";
  ASSERT_EQ(status_.Outputs.Count(), 1U);
  ASSERT_EQ(Output()->Statistics.Count(), 1U);
  EXPECT_EQ(Output()->Statistics[0]->Number, 0);
  EXPECT_EQ(Output()->Statistics[0]->First, 0);
  EXPECT_EQ(Output()->Statistics[0]->Second, 7);
}

// Each value asks for position 1 separately: the first one appends at position 0, finds nothing at
// position 1 and is dropped; the second one appends at position 1.
TEST_F(OutputPort, SecondStatisticWithoutTheFirstLosesItsFirstValue) {
  SANDBOX_NEEDS_DEVICES();
  Scenario().Answer("travex", kStatistics[1][0], 5).Apply();
  probe_.OutputPort(0);
  ASSERT_EQ(Output()->Statistics.Count(), 1U);
  EXPECT_EQ(Output()->Statistics[0]->Number, 1);
  EXPECT_EQ(Output()->Statistics[0]->First, 0);

  status_.Outputs.Clear();
  SetAnswer("travex", kStatistics[1][1], 6);
  probe_.OutputPort(0);
  ASSERT_EQ(Output()->Statistics.Count(), 2U);
  EXPECT_EQ(Output()->Statistics[0]->First, 0);
  EXPECT_EQ(Output()->Statistics[0]->Second, 0);
  EXPECT_EQ(Output()->Statistics[1]->Number, 1);
  EXPECT_EQ(Output()->Statistics[1]->First, 0);
  EXPECT_EQ(Output()->Statistics[1]->Second, 6);
}

TEST_F(OutputPort, WithoutAnyAnswerAppearsOnlyForItsFlags) {
  SANDBOX_NEEDS_DEVICES();
  Scenario().Device("travex").Apply();
  EXPECT_EQ(probe_.OutputPort(0), 1);
  EXPECT_EQ(status_.Outputs.Count(), 0U);

  Scenario()
      .Device("travex")
      .Device("zetdisplay")
      .Device("diagnostics")
      .File(kFrameControl, "")
      .Apply();
  EXPECT_EQ(probe_.OutputPort(0), 0);
  ASSERT_EQ(status_.Outputs.Count(), 1U);
  EXPECT_EQ(Output()->StatusFlags, 0xFFFFFFFF);
  EXPECT_EQ(Output()->Statistics.Count(), 0U);
}

TEST_F(OutputPort, WithoutRegisterDumpKeepsWhatTheRouterAnswered) {
  SANDBOX_NEEDS_DEVICES();
  Healthy().Answer("zetdisplay", kLevel, 3).NoFile(kFrameControl).Apply();
  const Opens opens;
  EXPECT_EQ(probe_.OutputPort(0), 1);
  EXPECT_EQ(Output()->Frequency.Vertical, 59.94F);
  EXPECT_EQ(Output()->StatusFlags, 0U);
  EXPECT_THAT(opens.Paths(), ElementsAre("/dev/travex", kFrameControl));
}

TEST_F(OutputPort, WithoutDisplayDriverKeepsTheScalerOutput) {
  SANDBOX_NEEDS_DEVICES();
  Healthy().Answer("diagnostics", kDiagnostics, 1).NoDevice("zetdisplay").Apply();
  const Opens opens;
  EXPECT_EQ(probe_.OutputPort(0), 1);
  EXPECT_EQ(Output()->ScalerOutputArea.Width, 0x180U);
  EXPECT_EQ(Output()->StatusFlags, 0U);
  EXPECT_THAT(opens.Paths(), ElementsAre("/dev/travex", kFrameControl, "/dev/zetdisplay"));
}

TEST_F(OutputPort, WithoutDiagnosticsHasNoFlags) {
  SANDBOX_NEEDS_DEVICES();
  Healthy().Answer("zetdisplay", kLevel, 3).NoDevice("diagnostics").Apply();
  EXPECT_EQ(probe_.OutputPort(0), 1);
  EXPECT_EQ(Output()->StatusFlags, 0U);
}

TEST_F(OutputPort, ScalerRegistersThatAreAbsentLeaveTheirSide) {
  SANDBOX_NEEDS_DEVICES();
  Healthy().File(kFrameControl, "scale_output_height: 0xC0\nscale_input_width: 0x5\n").Apply();
  probe_.OutputPort(0);
  EXPECT_EQ(Output()->ScalerOutputArea.Height, 0xC0U);
  EXPECT_EQ(Output()->ScalerOutputArea.Width, 0U);
}

TEST_F(OutputPort, FlagsAreMadeOfTheDriversAnswers) {
  SANDBOX_NEEDS_DEVICES();
  struct {
    int Level;
    int Power;
    int Diagnostics;
    std::uint32_t Flags;
  } const kRows[] = {
      {0, 1, 0, 0},           {0, 0, 0, 0x4},
      {0, 2, 0, 0x4},         {0, 3, 0, 0},
      {0, -1, 0, 0},          {0x12003, 1, 0, 0x12003},
      {-1, 1, 0, 0xFFFFFFFF}, {-5000, 1, 0, 0xFFFFEC78},
      {0, 1, 0x3, 0x30},      {0, 1, 0x10000001, 0x10},
      {0, 1, -1, 0xFFFFFFF0}, {0x1, 0, 0x1, 0x15},
  };
  Healthy().Apply();
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.Level << ", " << row.Power << ", " << row.Diagnostics);
    SetAnswer("zetdisplay", kLevel, row.Level);
    SetAnswer("zetdisplay", kPower, row.Power);
    SetAnswer("diagnostics", kDiagnostics, row.Diagnostics);
    EXPECT_EQ(probe_.OutputPort(0), 0);
    EXPECT_EQ(Output()->StatusFlags, row.Flags);
  }
}

TEST_F(OutputPort, FlagsOfAnEarlierCycleAreReplaced) {
  SANDBOX_NEEDS_DEVICES();
  Healthy().Apply();
  probe_.OutputPort(0);
  Output()->StatusFlags = 0x6000;
  probe_.OutputPort(0);
  EXPECT_EQ(Output()->StatusFlags, 0U);
}

TEST_F(OutputPort, WatchdogMarkerOfAnyKindIsAnEvent) {
  SANDBOX_NEEDS_DEVICES();
  constexpr char kMarker[] = "/var/run/wd_event";
  Healthy().File(kMarker, "").Apply();
  probe_.OutputPort(0);
  EXPECT_EQ(Output()->StatusFlags, 0x400U);
  Healthy().Folder(kMarker).Apply();
  probe_.OutputPort(0);
  EXPECT_EQ(Output()->StatusFlags, 0x400U);
  Healthy().Link(kMarker, "/nowhere").Apply();
  probe_.OutputPort(0);
  EXPECT_EQ(Output()->StatusFlags, 0U);
}

TEST_F(OutputPort, RegistersBeyondTheReadLimitAreNotSeen) {
  SANDBOX_NEEDS_DEVICES();
  const std::string scaler = "scale_output_width: 0x180";
  const std::size_t kLimit = 2662;
  struct {
    std::size_t Padding;
    std::uint32_t Width;
  } const kRows[] = {
      {kLimit - scaler.size(), 0x180},
      {kLimit - scaler.size() + 1, 0x18},  // the last digit is cut off
      {kLimit - scaler.size() + 5, 0},     // the value is
      {kLimit - scaler.size() + 6, 0},     // the label is
      {kLimit, 0},
      {3 * kLimit, 0},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.Padding);
    status_.Outputs.Clear();
    Healthy().File(kFrameControl, Padded(row.Padding, scaler + "\n")).Apply();
    probe_.OutputPort(0);
    EXPECT_EQ(Output()->ScalerOutputArea.Width, row.Width);
  }
}

TEST_F(OutputPort, DumpThatCannotBeReadIsEmpty) {
  SANDBOX_NEEDS_DEVICES();
  // A folder cannot be opened for writing; the first page of a process's memory cannot be read.
  Healthy().Link(kFrameControl, "/.proc/self/mem").Apply();
  EXPECT_EQ(probe_.OutputPort(0), 0);
  EXPECT_EQ(Output()->ScalerOutputArea.Width, 0U);
}

TEST_F(OutputPort, DumpIsReadAgainAfterASignal) {
  SANDBOX_NEEDS_DEVICES();
  Healthy().Apply();
  const Failure failure(Call::kRead, 1, interposed::Extent::kOnce, EINTR);
  EXPECT_EQ(probe_.OutputPort(0), 0);
  EXPECT_EQ(Output()->ScalerOutputArea.Width, 0x180U);
}

// What follows the first read is not seen, even when that was short.
TEST_F(OutputPort, DumpIsReadOnce) {
  SANDBOX_NEEDS_DEVICES();
  Healthy().File(kFrameControl, "scale_output_width: 0x180").Apply();
  const ShortReads reads(std::string_view("scale_output_width: 0x1").size());
  EXPECT_EQ(probe_.OutputPort(0), 0);
  EXPECT_EQ(Output()->ScalerOutputArea.Width, 0x1U);
}

// A pipe used to hold up the cycle until somebody wrote into it.
TEST_F(OutputPort, DumpIsNotWaitedForWhenItIsAPipe) {
  SANDBOX_NEEDS_DEVICES();
  Healthy().NoFile(kFrameControl).Folder("/proc/driver/frame_control").Apply();
  ASSERT_EQ(mkfifo(kFrameControl, 0600), 0);
  EXPECT_EQ(probe_.OutputPort(0), 0);
  EXPECT_EQ(Output()->ScalerOutputArea.Width, 0U);
}

TEST_F(OutputPort, BeyondTheNextFreeOneStoresNothing) {
  SANDBOX_NEEDS_DEVICES();
  Healthy().Apply();
  EXPECT_EQ(probe_.OutputPort(100), 0);
  ASSERT_GT(status_.Outputs.Count(), 0U) << "one more with each attempt";
  EXPECT_EQ(Output()->Frequency.Vertical, 0.0F);
  EXPECT_EQ(Output()->Statistics.Count(), 0U);
}

class ContentLimit : public OutputPortTest {};

TEST_F(ContentLimit, TakesEachAnswerIntoItsWidth) {
  SANDBOX_NEEDS_DEVICES();
  Scenario()
      .Answer("travex", 0x8004DA63, 0x12345)
      .Answer("travex", 0x8004DA65, 0x1FFFE)
      .Answer("travex", 0x8004DA64, 0x12345678)
      .Apply();
  sandbox::ClearDeviceLog();
  EXPECT_EQ(probe_.ContentLimit(0), 0);
  ASSERT_EQ(status_.Outputs.Count(), 1U);
  EXPECT_EQ(Output()->Dimming.Content.First, 0x2345);
  EXPECT_EQ(Output()->Dimming.Content.Second, 0xFFFE);
  EXPECT_EQ(Output()->Dimming.Content.Third, 0x12345678U);
  EXPECT_THAT(sandbox::DeviceLog(),
              ElementsAre("travex open", "travex ioctl 0x8004DA63", "travex ioctl 0x8004DA65",
                          "travex ioctl 0x8004DA64", "travex close"));
}

TEST_F(ContentLimit, WithoutAnswerHasAllBitsSet) {
  SANDBOX_NEEDS_DEVICES();
  Scenario().Device("travex").Apply();
  EXPECT_EQ(probe_.ContentLimit(0), 0);
  EXPECT_EQ(Output()->Dimming.Content.First, 65535);
  EXPECT_EQ(Output()->Dimming.Content.Second, 65535);
  EXPECT_EQ(Output()->Dimming.Content.Third, 0xFFFFFFFF);
}

TEST_F(ContentLimit, WithoutRouterMakesNoOutput) {
  EXPECT_EQ(probe_.ContentLimit(0), 1);
  EXPECT_EQ(status_.Outputs.Count(), 0U);
}

TEST_F(ContentLimit, IsReadAlsoWhenTheOutputPortFailed) {
  SANDBOX_NEEDS_DEVICES();
  Healthy().Answer("travex", 0x8004DA63, 11).NoDevice("zetdisplay").Apply();
  EXPECT_EQ(probe_.UpdateStatus(&status_), 0);
  EXPECT_EQ(Output()->Dimming.Content.First, 11);
}

TEST_F(ContentLimit, BeyondTheNextFreePortStoresNothing) {
  SANDBOX_NEEDS_DEVICES();
  Scenario().Device("travex").Apply();
  EXPECT_EQ(probe_.ContentLimit(100), 0);
  EXPECT_EQ(Output()->Dimming.Content.First, 0);
}

}  // namespace
