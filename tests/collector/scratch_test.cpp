#include "collector/state/scratch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <type_traits>

#include "hardware/rate_limit.h"
#include "model/dcio_boards.h"
#include "sensors/points.h"
#include "sensors/sensor_keys.h"
#include "tests/collector/scratch_variables.h"

namespace {

using testing::ElementsAre;

// Taken before any test runs.
const Scratch kAtLoad = SaveScratch();

class ScratchState : public testing::Test {
 protected:
  ~ScratchState() override { ClearScratch(); }
};

class ResetGlobals : public ScratchState {};

TEST_F(ScratchState, IsAllZeroAtLoad) { EXPECT_EQ(kAtLoad, Scratch()); }

TEST_F(ScratchState, HasItsAbsentMarksAtZeroToo) {
  EXPECT_EQ(u16_DispInterfaceAddress, 0);
  EXPECT_EQ(s32_Revision, 0);
  EXPECT_EQ(Locked, 0U);
  EXPECT_EQ(beaconRoundel.TemperatureKelvin, 0);
  EXPECT_EQ(beaconRoundel.Humidity, 0);
}

TEST_F(ScratchState, StagesTwentyFourInputsAndTwelveOutputsAllEmpty) {
  ASSERT_EQ(dcioInputs.size(), 24U);
  ASSERT_EQ(dcioOutputs.size(), 12U);
  for (const auto& points : {std::span<DcioPoint>(dcioInputs), std::span<DcioPoint>(dcioOutputs)}) {
    for (const DcioPoint& point : points) {
      EXPECT_EQ(point.Present, 0);
      EXPECT_EQ(point.Type, 0U);
      EXPECT_EQ(point.Index, 0);
      EXPECT_EQ(point.State, 0);
      EXPECT_EQ(point.Label, "");
    }
  }
}

TEST_F(ScratchState, MakesNoPointsInAFreshProcess) {
  QtSts::CCANDcio16in3out8cfg board;
  board.Points.Inputs = std::make_unique<QtSts::InputListType>();
  board.Points.Outputs = std::make_unique<QtSts::OutputListType>();
  PopulateInputs(&board);
  PopulateOutputs(&board);
  EXPECT_TRUE(board.Points.Inputs->Points.empty());
  EXPECT_TRUE(board.Points.Outputs->Points.empty());
}

// Every comparison of scratch states in the tests relies on this.
TEST_F(ScratchState, IsSavedComparedAndRestoredWhole) {
  EXPECT_GT(ScratchVariables().size(), 40U);
  for (const ScratchVariable& variable : ScratchVariables()) {
    ClearScratch();
    const Scratch clear = SaveScratch();
    EXPECT_EQ(clear, Scratch());
    variable.Fill();
    const std::string filled_text = variable.Text();
    const Scratch filled = SaveScratch();
    EXPECT_NE(filled, clear) << variable.Name;
    EXPECT_THAT(Differences(filled, clear), ElementsAre(variable.Name));
    RestoreScratch(clear);
    EXPECT_NE(variable.Text(), filled_text) << variable.Name;
    RestoreScratch(filled);
    EXPECT_EQ(variable.Text(), filled_text) << variable.Name;
  }
}

TEST_F(ScratchState, LimitsOneReportAnHourFromTheStart) {
  EXPECT_EQ(rs.interval, 3600);
  EXPECT_EQ(rs.burst, 1);
  EXPECT_EQ(rs.printed, 0);
  EXPECT_EQ(rs.missed, 0);
  EXPECT_EQ(rs.begin, 0U);
  EXPECT_TRUE(rs.lock.try_lock()) << "locked at load";
  rs.lock.unlock();
}

template <class Expected, class... Variables>
constexpr bool kAll = (std::is_same_v<Variables, Expected> && ...);

// The widths that rows are cut to.
static_assert(
    kAll<std::uint32_t, decltype(u32_SensorNumber), decltype(u32_Address), decltype(u32_Bus),
         decltype(u32_NumAttribute), decltype(uiSyncLossCounter),
         decltype(u32_DispInterfaceNumAttribute), decltype(u32_Face), decltype(u32_PortStatus),
         decltype(u32_Front), decltype(u32_Back), decltype(uiCompass), decltype(u32_FansEnabled),
         decltype(u32_DCIO_SensorNumber), decltype(u32_DCIO_State), decltype(u32_DCIO_ErrCntr),
         decltype(u32_DCIO_NumAttr), decltype(u32_DCIO_Address), decltype(u32_TTableNumAttribute)>);
static_assert(
    kAll<std::uint16_t, decltype(u16_DispInterfaceAddress), decltype(u16_IdType),
         decltype(u16_OneMinAverage), decltype(u16_TenMinAverage), decltype(u16_OneMinLuxAverage),
         decltype(u16_TenMinLuxAverage), decltype(u16_LongTermAverage), decltype(u16_AverageRpm),
         decltype(u16_CurrentRpm), decltype(u16_Ambient)>);
static_assert(kAll<std::uint8_t, decltype(u8_HardwareID), decltype(u8_Psrb_HardwareErrors)>);
static_assert(kAll<std::int32_t, decltype(s32_Revision)>);
static_assert(kAll<float, decltype(f_celsius), decltype(f_Humidity_OneMinAverage),
                   decltype(f_Humidity_TenMinAverage), decltype(f_inputVoltage),
                   decltype(f_outputVoltage), decltype(f_celsiusTemperature)>);
static_assert(kAll<double, decltype(dLatitude), decltype(dLongitude), decltype(dAltitude)>);
static_assert(kAll<std::map<std::uint8_t, std::uint16_t>, decltype(FanRpms)>);
static_assert(
    kAll<std::vector<float>, decltype(f_Psrb_InputVoltages), decltype(f_Psrb_OutputVoltages)>);
static_assert(sizeof b_Connected == 1);
static_assert(sizeof at_Type == 4);
static_assert(sizeof st_Type == 4);
static_assert(sizeof Locked == 4);
static_assert(sizeof st_DCIO_Type == 4);

// Codes hold any value of 32 bits.
static_assert(std::is_same_v<std::underlying_type_t<AttachmentType>, std::uint32_t>);
static_assert(std::is_same_v<std::underlying_type_t<SensorType>, std::uint32_t>);
static_assert(std::is_same_v<std::underlying_type_t<DcioType>, std::uint32_t>);
static_assert(std::is_same_v<std::underlying_type_t<LockState>, std::uint32_t>);
static_assert(std::is_same_v<std::underlying_type_t<QtSts::InputType>, std::uint32_t>);

TEST_F(ScratchState, KeepsABeaconInTenFieldsInTheirOrder) {
  beaconRoundel = {1, 2, 3, 65535, 65534, 4, 5, 65533, 65532, 6};
  EXPECT_EQ(beaconRoundel.RedDimLevel, 1);
  EXPECT_EQ(beaconRoundel.AmberDimLevel, 2);
  EXPECT_EQ(beaconRoundel.ErrorFlags, 3);
  EXPECT_EQ(beaconRoundel.RedLedErrorCount, 65535);
  EXPECT_EQ(beaconRoundel.AmberLedErrorCount, 65534);
  EXPECT_EQ(beaconRoundel.StatusFlags, 4);
  EXPECT_EQ(beaconRoundel.SyncControlStartBit, 5);
  EXPECT_EQ(beaconRoundel.PerColorLedCount, 65533);
  EXPECT_EQ(beaconRoundel.TemperatureKelvin, 65532);
  EXPECT_EQ(beaconRoundel.Humidity, 6);
  static_assert(
      kAll<std::uint8_t, decltype(BeaconRoundel::RedDimLevel),
           decltype(BeaconRoundel::AmberDimLevel), decltype(BeaconRoundel::ErrorFlags),
           decltype(BeaconRoundel::StatusFlags), decltype(BeaconRoundel::SyncControlStartBit),
           decltype(BeaconRoundel::Humidity)>);
  static_assert(
      kAll<std::uint16_t, decltype(BeaconRoundel::RedLedErrorCount),
           decltype(BeaconRoundel::AmberLedErrorCount), decltype(BeaconRoundel::PerColorLedCount),
           decltype(BeaconRoundel::TemperatureKelvin)>);
}

TEST_F(ScratchState, KeepsAStagedPointInFiveFieldsInTheirOrder) {
  const DcioPoint point = {1, 4294967295, -2, -3, "label"};
  EXPECT_EQ(point.Present, 1);
  EXPECT_EQ(point.Type, 4294967295U);
  EXPECT_EQ(point.Index, -2);
  EXPECT_EQ(point.State, -3);
  EXPECT_EQ(point.Label, "label");
  static_assert(sizeof point.Present == 1);
  static_assert(sizeof point.Type == 4);
  static_assert(sizeof point.Index == 4);
  static_assert(sizeof point.State == 4);
}

TEST_F(ResetGlobals, ClearsTheNodeCounterAndNothingElse) {
  FillScratch();
  const Scratch before = SaveScratch();
  EXPECT_EQ(Differences(before, kAtLoad).size(), ScratchVariables().size())
      << "not all were filled";
  rs.printed = 1;
  rs.missed = 2;
  rs.begin = 3;
  Reset_Globals();
  EXPECT_THAT(Differences(SaveScratch(), before), ElementsAre("u32_TTableNumAttribute"));
  EXPECT_EQ(u32_TTableNumAttribute, 0U);
  EXPECT_EQ(rs.interval, 3600);
  EXPECT_EQ(rs.burst, 1);
  EXPECT_EQ(rs.printed, 1);
  EXPECT_EQ(rs.missed, 2);
  EXPECT_EQ(rs.begin, 3U);
  rs.printed = 0;
  rs.missed = 0;
  rs.begin = 0;
}

int SensorRow(const char* attribute, const char* value) {
  static QtSts::CStatus status;
  std::string key = std::string("Sensor_01_") + attribute;
  std::string text = value;
  return Status_Sensor(&status, text.data(), key.data());
}

TEST_F(ScratchState, CutsRowsThatAreTooLargeForTheirVariable) {
  SensorRow("IdType", "65541");
  EXPECT_EQ(u16_IdType, 5);
  SensorRow("HardwareID", "261");
  EXPECT_EQ(u8_HardwareID, 5);
  SensorRow("Latitude", "16777217");
  EXPECT_EQ(dLatitude, 16777217.0) << "a float would hold 16777216";
}

TEST_F(ScratchState, KeepsTheFirstSpeedOfAFan) {
  SensorRow("Fan_3_Rpm", "1200");
  SensorRow("Fan_3_Rpm", "900");
  SensorRow("Fan_1_Rpm", "700");
  EXPECT_THAT(FanRpms, ElementsAre(std::pair(1, 700), std::pair(3, 1200)));
}

TEST_F(ScratchState, KeepsVoltagesInArrivalOrderAndTwice) {
  for (const char* value : {"24.5", "12", "24.5"}) {
    SensorRow("PsrbVin_1_Volts", value);
    SensorRow("PsrbVout_1_Volts", value);
  }
  EXPECT_THAT(f_Psrb_InputVoltages, ElementsAre(24.5F, 12.0F, 24.5F));
  EXPECT_THAT(f_Psrb_OutputVoltages, ElementsAre(24.5F, 12.0F, 24.5F));
}

}  // namespace
