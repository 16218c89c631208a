// What DCIO and power-supply boards take from the scratch state, and what they leave there.
#include <gmock/gmock.h>

#include "model/can_sensors.h"
#include "model/dcio_boards.h"
#include "tests/sensors/records_fixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::Pointee;

class Boards : public RecordTest {};

}  // namespace

TEST_F(Boards, AgreeInBothConnectedFlags) {
  for (const bool connected : {true, false}) {
    b_Connected = connected;
    for (const SensorType type : {kCanDcio16In3Out8Cfg, kCanDcio2In1Out, kCanDcioAndFanRpm}) {
      SCOPED_TRACE(type);
      for (const QtSts::CCANDcio* board :
           {&BuildOwn<QtSts::CCANDcio>(type), &BuildBehindRouter<QtSts::CCANDcio>(type)}) {
        EXPECT_EQ(board->Connected, connected);
        EXPECT_EQ(board->BoardConnected, connected);
      }
    }
  }
}

TEST_F(Boards, HaveClosedListsOfTheirCapacity) {
  constexpr struct {
    SensorType Type;
    std::uint32_t Inputs;
    std::uint32_t Outputs;
  } kBoards[] = {
      {kCanDcio16In3Out8Cfg, 24, 11}, {kCanDcio2In1Out, 2, 1}, {kCanDcioAndFanRpm, 16, 12}};
  for (const auto& row : kBoards) {
    SCOPED_TRACE(row.Type);
    for (const QtSts::CCANDcio* board :
         {&BuildOwn<QtSts::CCANDcio>(row.Type), &BuildBehindRouter<QtSts::CCANDcio>(row.Type)}) {
      ASSERT_NE(board->Points.Inputs, nullptr);
      ASSERT_NE(board->Points.Outputs, nullptr);
      EXPECT_EQ(board->Points.Inputs->MaximumIndex, row.Inputs);
      EXPECT_EQ(board->Points.Outputs->MaximumIndex, row.Outputs);
      EXPECT_FALSE(board->Points.Inputs->OpenEnded);
      EXPECT_FALSE(board->Points.Outputs->OpenEnded);
      EXPECT_THAT(board->Points.Inputs->Points, IsEmpty());
      EXPECT_THAT(board->Points.Outputs->Points, IsEmpty());
      EXPECT_EQ(board->PortStatus, 40U);
    }
  }
}

TEST_F(Boards, TakeTheStagedPointsUpToTheirCapacity) {
  constexpr struct {
    SensorType Type;
    std::size_t Inputs;
    std::size_t Outputs;
  } kBoards[] = {
      {kCanDcio16In3Out8Cfg, 24, 11}, {kCanDcio2In1Out, 2, 1}, {kCanDcioAndFanRpm, 16, 12}};
  for (const auto& row : kBoards) {
    SCOPED_TRACE(row.Type);
    for (std::size_t i = 0; i < dcioInputs.size(); ++i) {
      dcioInputs[i] = {1, 1, static_cast<int>(i) + 1, 1, "in"};
    }
    for (std::size_t i = 0; i < dcioOutputs.size(); ++i) {
      dcioOutputs[i] = {1, 1, static_cast<int>(i) + 1, 1, "out"};
    }
    const auto& board = BuildOwn<QtSts::CCANDcio>(row.Type);
    EXPECT_EQ(board.Points.Inputs->Points.size(), row.Inputs);
    EXPECT_EQ(board.Points.Outputs->Points.size(), row.Outputs);
    EXPECT_EQ(dcioInputs, decltype(dcioInputs)());
    EXPECT_EQ(dcioOutputs, decltype(dcioOutputs)());
  }
}

TEST_F(Boards, WithFansHoldTheFansInOrderOfTheirNumbersAndEmptyTheMap) {
  Send(0, {{"Fan_2_Rpm", "1200"},
           {"Fan_1_Rpm", "1100"},
           {"Fan_255_Rpm", "65535"},
           {"Type", "CANDcioAndFanRpm"}});
  const auto& fans = At<QtSts::CCANDcioAndFanRpm>(status_.Sensors, 0).FanRpms;
  ASSERT_EQ(fans.Count(), 3U);
  constexpr struct {
    int Number;
    int Rpm;
  } kFans[] = {{1, 1100}, {2, 1200}, {255, 65535}};
  for (unsigned int i = 0; i < 3; ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(fans[i]->Ordinal, i);
    EXPECT_EQ(fans[i]->FanNumber, kFans[i].Number);
    EXPECT_EQ(fans[i]->Rpm, kFans[i].Rpm);
  }
  EXPECT_THAT(FanRpms, IsEmpty());
}

TEST_F(Boards, WithoutFansLeaveTheFansToTheNextFanBoard) {
  FanRpms = {{1, 1100}};
  BuildOwn<QtSts::CCANDcio>(kCanDcio2In1Out);
  BuildOwn<QtSts::CCANDcio>(kCanDcio16In3Out8Cfg);
  BuildOwn<QtSts::CCANFanRpmSensor>(kCanFanRpm);
  EXPECT_THAT(FanRpms, ElementsAre(Pair(1, 1100)));
  EXPECT_EQ(BuildBehindRouter<QtSts::CCANDcioAndFanRpm>(kCanDcioAndFanRpm).FanRpms.Count(), 1U);
  EXPECT_THAT(FanRpms, IsEmpty());
}

TEST_F(Boards, OfPowerSuppliesTakeAllVoltagesSinceTheLastOne) {
  Send(0, {{"PsrbVin_0_Volts", "24.5"}, {"PsrbVout_0_Volts", "12"}, {"Type", "CANTemp"}});
  Send(1, {{"PsrbVin_1_Volts", "24.25"},
           {"Psrb_HwErrors", "6"},
           {"Type", "CANPowerSupplyRedundancyBoard"}});
  const auto& board = At<QtSts::CCANPsrbSensor>(status_.Sensors, 1);
  EXPECT_THAT(board.InputVoltages, ElementsAre(24.5F, 24.25F));
  EXPECT_THAT(board.OutputVoltages, ElementsAre(12.0F));
  EXPECT_THAT(board.HardwareErrors, Pointee(6));
  EXPECT_THAT(f_Psrb_InputVoltages, IsEmpty());
  EXPECT_THAT(f_Psrb_OutputVoltages, IsEmpty());
  // They are emptied but keep their room for the next cycle.
  EXPECT_GE(f_Psrb_InputVoltages.capacity(), 2U);
  EXPECT_GE(f_Psrb_OutputVoltages.capacity(), 1U);
  // The record holds a copy: what comes later does not reach it.
  Send(2, "PsrbVin_0_Volts", "1");
  EXPECT_THAT(board.InputVoltages, ElementsAre(24.5F, 24.25F));
}

TEST_F(Boards, TakeAsManyFansAndVoltagesAsCame) {
  constexpr unsigned int kVoltages = 1000;
  for (unsigned int i = 0; i < kVoltages; ++i) {
    Send(0, "PsrbVin_0_Volts", std::to_string(i));
    Send(0, "PsrbVout_0_Volts", "12");
    Send(0, "Fan_" + std::to_string(i) + "_Rpm", std::to_string(i));
  }
  const auto& fans = BuildOwn<QtSts::CCANDcioAndFanRpm>(kCanDcioAndFanRpm).FanRpms;
  // Numbers of fans have eight bits, and of each the first speed stays.
  ASSERT_EQ(fans.Count(), 256U);
  for (unsigned int i = 0; i < fans.Count(); ++i) {
    ASSERT_EQ(fans[i]->FanNumber, i);
    ASSERT_EQ(fans[i]->Rpm, i);
  }
  const auto& board = BuildOwn<QtSts::CCANPsrbSensor>(kCanPowerSupplyRedundancyBoard);
  ASSERT_EQ(board.InputVoltages.size(), kVoltages);
  EXPECT_EQ(board.InputVoltages.back(), static_cast<float>(kVoltages - 1));
  EXPECT_EQ(board.OutputVoltages.size(), kVoltages);
}
