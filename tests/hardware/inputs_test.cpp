#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "sandbox/scenario.h"
#include "sandbox/testing.h"
#include "tests/hardware/probe_fixture.h"
#include "tests/support/interposed/system_calls.h"

namespace {

using interposed::Opens;
using sandbox::Scenario;
using sandbox::SetAnswer;
using sandbox::WriteFile;
using testing::ElementsAre;

constexpr std::uint32_t kCompositorState = 0x8004DA5F;
constexpr std::uint32_t kDviSignal = 0x8004DA50;

class Compositor : public ProbeTest {};

TEST_F(Compositor, TakesTheDriversAnswerAsItsState) {
  SANDBOX_NEEDS_DEVICES();
  for (const int answer : {0, 5, 2147483647}) {
    SCOPED_TRACE(answer);
    status_.Compositors.Clear();
    Scenario().Answer("zetdisplay", kCompositorState, answer).Apply();
    sandbox::ClearDeviceLog();
    EXPECT_EQ(probe_.Compositor(), 0);
    ASSERT_EQ(status_.Compositors.Count(), 1U);
    EXPECT_EQ(status_.Compositors[0]->SpareWord, 0);
    EXPECT_EQ(status_.Compositors[0]->State, answer);
    EXPECT_THAT(sandbox::DeviceLog(),
                ElementsAre("zetdisplay open", "zetdisplay ioctl 0x8004DA5F", "zetdisplay close"));
  }
}

TEST_F(Compositor, IsTheOnlyOneHoweverOftenItIsAsked) {
  SANDBOX_NEEDS_DEVICES();
  Scenario().Answer("zetdisplay", kCompositorState, 5).Apply();
  EXPECT_EQ(probe_.Compositor(), 0);
  EXPECT_EQ(probe_.Compositor(), 0);
  EXPECT_EQ(status_.Compositors.Count(), 1U);
}

TEST_F(Compositor, IsNotThereWhenTheAnswerIsNegative) {
  SANDBOX_NEEDS_DEVICES();
  for (const int answer : {-1, -5000}) {
    SCOPED_TRACE(answer);
    Scenario().Answer("zetdisplay", kCompositorState, answer).Apply();
    EXPECT_EQ(probe_.Compositor(), 0);
    EXPECT_EQ(status_.Compositors.Count(), 0U);
  }
}

TEST_F(Compositor, IsNotThereWithoutDisplayDriver) {
  EXPECT_EQ(probe_.Compositor(), 1);
  EXPECT_EQ(status_.Compositors.Count(), 0U);
}

constexpr char kRegisters[] =
    "dss_detected_vsync: 0x682\n"
    "dss_detected_hsync: 0x5dc\n"
    "dss_detected_columns: 0x780\n"
    "dss_detected_rows: 0x438\n"
    "dvi_detected_vsync: 0x683\n"
    "dvi_detected_hsync: 0x5dd\n"
    "dvi_freq_detect: 0x5cd\n"
    "dvi_detected_columns: 0x500\n"
    "dvi_detected_rows: 0x2D0\n"
    "scale_input_height: 0x1E0\n"
    "scale_input_width: 0x280\n"
    "dvi_los_count: 0x3\n"
    "dvi_not_valid_count: 0x4\n";

Scenario Connected() {
  return Scenario()
      .File(kFrameControl, kRegisters)
      .File(kVideoMux, "video mux status register: 0x4\n")
      .Answer("zetdisplay", kDviSignal, 1);
}

class Inputs : public ProbeTest {
 protected:
  QtSts::CInput* Input(unsigned int position) { return status_.Inputs[position]; }
};

TEST_F(Inputs, TakeTheirRegistersAndPositions) {
  SANDBOX_NEEDS_DEVICES();
  Connected().Apply();
  EXPECT_EQ(probe_.InputGraphic(), 0);
  EXPECT_EQ(probe_.InputDVI(), 0);
  ASSERT_EQ(status_.Inputs.Count(), 2U);

  const QtSts::CInput* player = Input(0);
  EXPECT_NE(dynamic_cast<const QtSts::CPlayerInput*>(player), nullptr);
  EXPECT_EQ(player->Index, 0U);
  EXPECT_EQ(player->Frequency.Vertical, 60.02401F);
  EXPECT_EQ(player->Frequency.Horizontal, 66666.664F);
  EXPECT_EQ(player->Frequency.PixelClock, 1080.0F * 1920.0F * player->Frequency.Vertical);
  EXPECT_EQ(player->DetectedArea.Width, 1920U);
  EXPECT_EQ(player->DetectedArea.Height, 1080U);
  EXPECT_TRUE(player->SignalPresent);
  EXPECT_EQ(player->Statistics.First, 0) << "losses are counted for the DVI source only";
  EXPECT_EQ(player->Statistics.Second, 0);

  const QtSts::CInput* dvi = Input(1);
  EXPECT_NE(dynamic_cast<const QtSts::CDigitalInput*>(dvi), nullptr);
  EXPECT_EQ(dvi->Index, 1U);
  EXPECT_EQ(dvi->Frequency.Vertical, 59.988003F);
  EXPECT_EQ(dvi->Frequency.Horizontal, 66622.25F);
  EXPECT_EQ(dvi->Frequency.PixelClock, 148500000.0F);
  EXPECT_EQ(dvi->DetectedArea.Width, 1280U);
  EXPECT_EQ(dvi->DetectedArea.Height, 720U);
  EXPECT_TRUE(dvi->SignalPresent);
  EXPECT_EQ(dvi->Statistics.First, 3);
  EXPECT_EQ(dvi->Statistics.Second, 4);

  for (const QtSts::CInput* input : {player, dvi}) {
    EXPECT_EQ(input->ScalerInputArea.Width, 640U) << "one scaler for both";
    EXPECT_EQ(input->ScalerInputArea.Height, 480U);
  }
}

TEST_F(Inputs, OpenTheirSourcesInOrder) {
  SANDBOX_NEEDS_DEVICES();
  Connected().Apply();
  sandbox::ClearDeviceLog();
  const Opens opens;
  probe_.InputGraphic();
  EXPECT_THAT(opens.Paths(), ElementsAre(kFrameControl, kVideoMux));
  probe_.InputDVI();
  EXPECT_THAT(opens.Paths(),
              ElementsAre(kFrameControl, kVideoMux, kFrameControl, "/dev/zetdisplay", kVideoMux));
  EXPECT_THAT(sandbox::DeviceLog(),
              ElementsAre("zetdisplay open", "zetdisplay ioctl 0x8004DA50", "zetdisplay close"));
}

TEST_F(Inputs, AreNotThereWithoutRegisterDump) {
  SANDBOX_NEEDS_DEVICES();
  Connected().NoFile(kFrameControl).Apply();
  EXPECT_EQ(probe_.InputGraphic(), 1);
  EXPECT_EQ(probe_.InputDVI(), 1);
  EXPECT_EQ(status_.Inputs.Count(), 0U);
}

TEST_F(Inputs, OfAnEmptyDumpStayAtTheirInitialState) {
  SANDBOX_NEEDS_DEVICES();
  Connected().File(kFrameControl, "").Apply();
  EXPECT_EQ(probe_.InputGraphic(), 0);
  EXPECT_EQ(Input(0)->Frequency.Vertical, 0.0F);
  EXPECT_EQ(Input(0)->Frequency.PixelClock, 0.0F);
  EXPECT_FALSE(Input(0)->SignalPresent);
}

TEST_F(Inputs, ValueWithoutPrefixTakesTheNextPrefixedOne) {
  Scenario().File(kFrameControl, "dss_detected_columns: 780\ndss_detected_rows: 0x438\n").Apply();
  probe_.InputGraphic();
  EXPECT_EQ(Input(0)->DetectedArea.Width, 1080U);
  EXPECT_EQ(Input(0)->DetectedArea.Height, 1080U);
}

TEST_F(Inputs, PlayerHasASignalFrom600By480On) {
  struct {
    const char* Registers;
    bool Present;
  } const kRows[] = {
      {"dss_detected_columns: 0x280\ndss_detected_rows: 0x1E0\n", true},   // 640 x 480
      {"dss_detected_columns: 0x258\ndss_detected_rows: 0x1E0\n", true},   // 600 x 480
      {"dss_detected_columns: 0x257\ndss_detected_rows: 0x438\n", false},  // 599 x 1080
      {"dss_detected_columns: 0x780\ndss_detected_rows: 0x1DF\n", false},  // 1920 x 479
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.Registers);
    status_.Inputs.Clear();
    WriteFile(kFrameControl, row.Registers);
    probe_.InputGraphic();
    EXPECT_EQ(Input(0)->SignalPresent, row.Present);
  }
}

// The rates that a whole number of the clock's periods gives are seldom round: 50 Hz is.
TEST_F(Inputs, PlayersPixelClockIsItsPictureTimesItsRate) {
  WriteFile(kFrameControl,
            "dss_detected_vsync: 0x7D0\ndss_detected_columns: 0x780\ndss_detected_rows: 0x438\n");
  probe_.InputGraphic();
  EXPECT_EQ(Input(0)->Frequency.Vertical, 50.0F);
  EXPECT_EQ(Input(0)->Frequency.PixelClock, 103680000.0F);
}

TEST_F(Inputs, StoppedClocksAreStoredAsTheyAre) {
  Scenario().File(kFrameControl, "dss_detected_vsync: 0x0\ndss_detected_hsync: 0x0\n").Apply();
  probe_.InputGraphic();
  EXPECT_EQ(Input(0)->Frequency.Vertical, std::numeric_limits<float>::infinity());
  EXPECT_EQ(Input(0)->Frequency.Horizontal, std::numeric_limits<float>::infinity());
  EXPECT_TRUE(std::isnan(Input(0)->Frequency.PixelClock));
}

TEST_F(Inputs, MultiplexerRoutesOneOfThem) {
  SANDBOX_NEEDS_DEVICES();
  struct {
    const char* Multiplexer;
    bool Player;
    bool Dvi;
  } const kRows[] = {
      {"video mux status register: 0x4\n", false, true},
      {"video mux status register: 0x0\n", true, false},
      {"control: 0x4\nvideo mux status register:\t0xFB\n", true, false},
      {"video mux control register: 0x4\n", false, false},
      {"", false, false},
  };
  Connected().Apply();
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.Multiplexer);
    status_.Inputs.Clear();
    WriteFile(kVideoMux, row.Multiplexer);
    EXPECT_EQ(probe_.InputGraphic(), 0);
    EXPECT_EQ(probe_.InputDVI(), 0);
    EXPECT_EQ(Input(0)->MultiplexerSelected, row.Player);
    EXPECT_EQ(Input(1)->MultiplexerSelected, row.Dvi);
  }
}

TEST_F(Inputs, WithoutMultiplexerKeepTheirRegisters) {
  SANDBOX_NEEDS_DEVICES();
  Connected().NoFile(kVideoMux).Apply();
  EXPECT_EQ(probe_.InputGraphic(), 1);
  EXPECT_EQ(probe_.InputDVI(), 1);
  EXPECT_EQ(Input(0)->DetectedArea.Width, 1920U);
  EXPECT_TRUE(Input(0)->SignalPresent);
  EXPECT_FALSE(Input(0)->MultiplexerSelected);
  EXPECT_EQ(Input(1)->DetectedArea.Width, 1280U);
  EXPECT_TRUE(Input(1)->SignalPresent);
  EXPECT_FALSE(Input(1)->MultiplexerSelected);
}

TEST_F(Inputs, DviWithoutDisplayDriverKeepsItsRegisters) {
  Scenario()
      .File(kFrameControl, kRegisters)
      .File(kVideoMux, "video mux status register: 0x4\n")
      .Apply();
  EXPECT_EQ(probe_.InputDVI(), 1);
  EXPECT_EQ(Input(0)->DetectedArea.Width, 1280U);
  EXPECT_EQ(Input(0)->Statistics.First, 3);
  EXPECT_FALSE(Input(0)->SignalPresent);
  EXPECT_FALSE(Input(0)->MultiplexerSelected);
}

TEST_F(Inputs, DviHasASignalUnlessTheDriverAnswersZero) {
  SANDBOX_NEEDS_DEVICES();
  Connected().Apply();
  for (const int answer : {0, 1, 2, -1, -5000}) {
    SCOPED_TRACE(answer);
    SetAnswer("zetdisplay", kDviSignal, answer);
    probe_.InputDVI();
    EXPECT_EQ(Input(0)->SignalPresent, answer != 0);
  }
}

TEST_F(Inputs, RegistersBeyondTheReadLimitAreNotSeen) {
  SANDBOX_NEEDS_DEVICES();
  constexpr std::size_t kLimit = 2662;
  const std::string rows = "dss_detected_rows: 0x438";
  const std::string mux = "video mux status register: 0x4";
  Connected()
      .File(kFrameControl, Padded(kLimit - rows.size(), rows + "0\ndss_detected_columns: 0x780\n"))
      .File(kVideoMux, Padded(kLimit, "video mux status register: 0x0"))
      .Apply();
  EXPECT_EQ(probe_.InputGraphic(), 0);
  EXPECT_EQ(Input(0)->DetectedArea.Height, 1080U);
  EXPECT_EQ(Input(0)->DetectedArea.Width, 0U);
  EXPECT_FALSE(Input(0)->MultiplexerSelected) << "the multiplexer is silent";
  WriteFile(kVideoMux, Padded(kLimit, mux));
  EXPECT_EQ(probe_.InputDVI(), 0);
  EXPECT_FALSE(Input(1)->MultiplexerSelected);

  WriteFile(kVideoMux, Padded(kLimit - mux.size(), mux + "00"));
  EXPECT_EQ(probe_.InputDVI(), 0);
  EXPECT_TRUE(Input(1)->MultiplexerSelected);
}

}  // namespace
