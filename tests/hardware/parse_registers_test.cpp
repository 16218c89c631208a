#include "hardware/parse_registers.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "tests/hardware/exact.h"

namespace {

using hardware::FindRegister;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

// The player's input after the dump was parsed.
QtSts::CPlayerInput* Parse(QtSts::CPlayerInput* input, const char* dump) {
  hardware::ParsePlayerInput(ExactText(dump), input);
  return input;
}

QtSts::CDigitalInput* Parse(QtSts::CDigitalInput* input, const char* dump) {
  hardware::ParseDviInput(ExactText(dump), input);
  return input;
}

TEST(Register, IsFoundAnywhereAndReadFromTheEndOfItsLabel) {
  EXPECT_EQ(FindRegister("a: 0x1\nb: 0x2\n", "b: "), 2U);
  EXPECT_EQ(FindRegister("xb: 0x2 b: 0x3", "b: "), 2U);
  EXPECT_EQ(FindRegister("a: 0x1", "a: "), 1U);
  EXPECT_EQ(FindRegister("a: 1f\n", "a: "), 0x1FU);
  EXPECT_EQ(FindRegister("a: ", "a: "), 0U);
  EXPECT_EQ(FindRegister("a:0x1", "a: "), std::nullopt);
  EXPECT_EQ(FindRegister("", "a: "), std::nullopt);
}

TEST(Register, WithoutPrefixTakesTheNextPrefixedValueOfTheDump) {
  EXPECT_EQ(FindRegister("a: 780\nb: 0x438\n", "a: "), 0x438U);
}

TEST(PlayerInput, TakesItsRegisters) {
  QtSts::CPlayerInput input;
  Parse(&input,
        "dss_detected_vsync: 0x682\n"
        "dss_detected_hsync: 0x5dc\n"
        "dss_detected_columns: 0x780\n"
        "dss_detected_rows: 0x438\n"
        "scale_input_height: 0x123\n"
        "scale_input_width: 0x456\n");
  EXPECT_EQ(input.Frequency.Vertical, 60.02401F) << "rounded once, to the field's precision";
  EXPECT_EQ(input.Frequency.Horizontal, 66666.664F);
  EXPECT_EQ(input.DetectedArea.Width, 1920U);
  EXPECT_EQ(input.DetectedArea.Height, 1080U);
  EXPECT_EQ(input.ScalerInputArea.Height, 0x123U);
  EXPECT_EQ(input.ScalerInputArea.Width, 0x456U);
  EXPECT_EQ(input.Frequency.PixelClock, 1080.0F * 1920.0F * input.Frequency.Vertical);
  EXPECT_TRUE(input.SignalPresent);
}

TEST(PlayerInput, PixelClockIsThePictureTimesItsRateWithoutBlanking) {
  QtSts::CPlayerInput input;
  input.Frequency.Vertical = 60;
  Parse(&input, "dss_detected_columns: 0x780\ndss_detected_rows: 0x438\n");
  EXPECT_EQ(input.Frequency.PixelClock, 124416000.0F);
}

// In double precision it would be 1.00801939e9.
TEST(PlayerInput, PixelClockIsMultipliedInSinglePrecision) {
  QtSts::CPlayerInput input;
  Parse(&input,
        "dss_detected_vsync: 0x682\ndss_detected_columns: 0x1001\ndss_detected_rows: 0x1003\n");
  EXPECT_EQ(input.Frequency.PixelClock, 1.00801946e9F);
}

TEST(PlayerInput, PixelClockComesFromWhateverTheFieldsHold) {
  QtSts::CPlayerInput input;
  input.Frequency.Vertical = 50;
  input.DetectedArea.Width = 720;
  input.DetectedArea.Height = 576;
  Parse(&input, "");
  EXPECT_EQ(input.Frequency.PixelClock, 720.0F * 576.0F * 50.0F);
}

TEST(PlayerInput, StoppedClockIsInfiniteAndItsPixelClockNotANumber) {
  QtSts::CPlayerInput input;
  Parse(&input, "dss_detected_vsync: 0x0\ndss_detected_hsync: 0x0\n");
  EXPECT_EQ(input.Frequency.Vertical, kInfinity);
  EXPECT_EQ(input.Frequency.Horizontal, kInfinity);
  EXPECT_TRUE(std::isnan(input.Frequency.PixelClock));
}

TEST(PlayerInput, HasASignalFrom600By480On) {
  struct {
    const char* Dump;
    bool Present;
  } const kRows[] = {
      {"dss_detected_columns: 0x280\ndss_detected_rows: 0x1E0\n", true},   // 640 x 480
      {"dss_detected_columns: 0x258\ndss_detected_rows: 0x1E0\n", true},   // 600 x 480
      {"dss_detected_columns: 0x257\ndss_detected_rows: 0x438\n", false},  // 599 x 1080
      {"dss_detected_columns: 0x780\ndss_detected_rows: 0x1DF\n", false},  // 1920 x 479
      {"", false},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.Dump);
    QtSts::CPlayerInput input;
    input.SignalPresent = !row.Present;
    EXPECT_EQ(Parse(&input, row.Dump)->SignalPresent, row.Present);
  }
}

TEST(PlayerInput, KeepsFieldsOfAbsentRegisters) {
  QtSts::CPlayerInput input;
  input.DetectedArea.Width = 1;
  input.DetectedArea.Height = 2;
  input.ScalerInputArea.Width = 3;
  input.ScalerInputArea.Height = 4;
  input.Frequency.Vertical = 5;
  input.Frequency.Horizontal = 6;
  Parse(&input, "dvi_detected_rows: 0x438\ndvi_los_count: 0x9\n");
  EXPECT_EQ(input.DetectedArea.Width, 1U);
  EXPECT_EQ(input.DetectedArea.Height, 2U);
  EXPECT_EQ(input.ScalerInputArea.Width, 3U);
  EXPECT_EQ(input.ScalerInputArea.Height, 4U);
  EXPECT_EQ(input.Frequency.Vertical, 5.0F);
  EXPECT_EQ(input.Frequency.Horizontal, 6.0F);
  EXPECT_EQ(input.Statistics.First, 0);
  EXPECT_EQ(input.Statistics.Second, 0);
}

TEST(PlayerInput, KeepsTheLow32BitsOfALongerValue) {
  QtSts::CPlayerInput input;
  EXPECT_EQ(Parse(&input, "dss_detected_rows: 0x500000438\n")->DetectedArea.Height, 0x438U);
}

TEST(DviInput, TakesItsRegisters) {
  QtSts::CDigitalInput input;
  Parse(&input,
        "dvi_detected_vsync: 0x682\n"
        "dvi_detected_hsync: 0x5dc\n"
        "dvi_freq_detect: 0x5cd\n"
        "dvi_detected_columns: 0x780\n"
        "dvi_detected_rows: 0x438\n"
        "scale_input_height: 0x123\n"
        "scale_input_width: 0x456\n"
        "dvi_los_count: 0x7\n"
        "dvi_not_valid_count: 0xFFFFFFFE\n");
  EXPECT_EQ(input.Frequency.Vertical, 60.02401F) << "rounded once, to the field's precision";
  EXPECT_EQ(input.Frequency.Horizontal, 66666.664F);
  EXPECT_EQ(input.Frequency.PixelClock, 148500000.0F);
  EXPECT_EQ(input.DetectedArea.Width, 1920U);
  EXPECT_EQ(input.DetectedArea.Height, 1080U);
  EXPECT_EQ(input.ScalerInputArea.Height, 0x123U);
  EXPECT_EQ(input.ScalerInputArea.Width, 0x456U);
  EXPECT_EQ(input.Statistics.Number, 0);
  EXPECT_EQ(input.Statistics.First, 7);
  EXPECT_EQ(input.Statistics.Second, -2);
}

// A number that no float holds; in double precision its clock would be 1.67772186e12.
TEST(DviInput, PixelClockComesFromItsRegisterAsAFloat) {
  QtSts::CDigitalInput input;
  Parse(&input, "dvi_freq_detect: 0x1000003\n");
  EXPECT_EQ(input.Frequency.PixelClock, 1.67772199e12F);
}

TEST(DviInput, NeverJudgesTheSignalByItsPicture) {
  QtSts::CDigitalInput input;
  Parse(&input, "dvi_detected_columns: 0x780\ndvi_detected_rows: 0x438\n");
  EXPECT_FALSE(input.SignalPresent);
  EXPECT_EQ(input.Frequency.PixelClock, 0.0F);
}

TEST(DviInput, KeepsFieldsOfAbsentRegisters) {
  QtSts::CDigitalInput input;
  input.Frequency.PixelClock = 5;
  input.Statistics.First = 6;
  Parse(&input, "dss_detected_rows: 0x438\ndss_detected_vsync: 0x682\n");
  EXPECT_EQ(input.Frequency.PixelClock, 5.0F);
  EXPECT_EQ(input.Statistics.First, 6);
  EXPECT_EQ(input.DetectedArea.Height, 0U);
  EXPECT_EQ(input.Frequency.Vertical, 0.0F);
}

TEST(DviInput, StoppedClockIsInfinite) {
  QtSts::CDigitalInput input;
  EXPECT_EQ(Parse(&input, "dvi_detected_vsync: 0x0\n")->Frequency.Vertical, kInfinity);
}

TEST(VideoMux, RoutesTheDviSourceWhileBit2IsSet) {
  EXPECT_EQ(hardware::ParseRoutesDvi("video mux status register: 0x4\n"), true);
  EXPECT_EQ(hardware::ParseRoutesDvi("video mux status register:0xFF\n"), true);
  EXPECT_EQ(hardware::ParseRoutesDvi("video mux status register: 0x0\n"), false);
  EXPECT_EQ(hardware::ParseRoutesDvi("video mux status register: 0xFB\n"), false);
  EXPECT_EQ(hardware::ParseRoutesDvi("video mux control register: 0x4\n"), std::nullopt);
  EXPECT_EQ(hardware::ParseRoutesDvi(""), std::nullopt);
}

TEST(VideoMux, ValueWithoutPrefixAfterABlankReadsAsZero) {
  EXPECT_EQ(hardware::ParseRoutesDvi("video mux status register: 4\n"), false);
}

TEST(Tracker, IsLeftOutOnlyWhenEnabledAndNotReported) {
  constexpr int kNoAnswer = -1;
  struct {
    int Enable;
    int Tracker;
    std::uint32_t Flags;
  } const kRows[] = {
      {1, 0x00, 0},      {1, 0xEF, 0},         {1, 0x10, 0x1800},         {0, 0x00, 0x1800},
      {0, 0x10, 0x1800}, {kNoAnswer, 0x00, 0}, {kNoAnswer, 0x10, 0x1800}, {1, kNoAnswer, 0x1800},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.Enable << ", " << row.Tracker);
    EXPECT_EQ(hardware::TrackerFlags(row.Enable, row.Tracker, "pixel_tracker_bits: 0x8\n"),
              row.Flags);
  }
}

TEST(Tracker, ReportsABlankedOutputByBit3) {
  const auto flags = [](const char* dump) { return hardware::TrackerFlags(0, 0, dump); };
  EXPECT_EQ(flags("pixel_tracker_bits: 0x8\n"), 0x1800U);
  EXPECT_EQ(flags("pixel_tracker_bits: 0xF\n"), 0x1800U);
  EXPECT_EQ(flags("pixel_tracker_bits: 0x7\n"), 0x800U);
  EXPECT_EQ(flags("pixel_tracker_bits: 0xF7\n"), 0x800U);
  EXPECT_EQ(flags("pixel_tracker_count: 0x8\n"), 0x800U);
  EXPECT_EQ(flags(""), 0x800U);
}

TEST(TrackerLines, AreThoseThatNameTheTrackerInOrder) {
  EXPECT_THAT(hardware::TrackerLines(ExactView("pixel_tracker_bits: 0x8\n"
                                               "scale_output_width: 0x780\n"
                                               "the pixel_tracker_count: 0x2\r\n"
                                               "\n"
                                               "last_pixel_tracker")),
              ElementsAre("pixel_tracker_bits: 0x8", "the pixel_tracker_count: 0x2\r",
                          "last_pixel_tracker"));
  EXPECT_THAT(hardware::TrackerLines("pixel_\ntracker\n"), IsEmpty());
  EXPECT_THAT(hardware::TrackerLines(""), IsEmpty());
}

TEST(TrackerLines, MayBeOfAnyLength) {
  const std::string line = std::string(10000, 'x') + "pixel_tracker" + std::string(10000, 'y');
  EXPECT_THAT(hardware::TrackerLines(ExactView("\n" + line + "\n")), ElementsAre(line));
}

}  // namespace
