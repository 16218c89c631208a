// From the staging tables onto a board.
#include "sensors/points.h"

#include <gmock/gmock.h>

#include <memory>

#include "handlers/handlers.h"
#include "tests/sensors/sensor_test.h"

namespace {

using QtSts::BaseInputType;
using QtSts::BaseOutputType;
using testing::ElementsAre;
using testing::IsEmpty;

class StagedPoints : public SensorTest {
 protected:
  StagedPoints() {
    board_.Points.Inputs = std::make_unique<QtSts::InputListType>(24);
    board_.Points.Outputs = std::make_unique<QtSts::OutputListType>(12);
  }

  const std::vector<BaseInputType*>& Inputs() const { return board_.Points.Inputs->Points; }
  const std::vector<BaseOutputType*>& Outputs() const { return board_.Points.Outputs->Points; }

  QtSts::CCANDcio board_;
};

// "DoorSensorInputType 1 on Door" and so on, in order of the list.
template <class Point>
std::vector<std::string> Texts(const std::vector<Point*>& points) {
  std::vector<std::string> texts;
  for (Point* const point : points) {
    texts.push_back(std::string(QtSts::ClassOf(*point)->Name) + " " + std::to_string(point->Index) +
                    (point->Get() ? " on " : " off ") + point->Label);
  }
  return texts;
}

}  // namespace

TEST_F(StagedPoints, AreNoneInAFreshProcess) {
  PopulateInputs(&board_);
  PopulateOutputs(&board_);
  EXPECT_THAT(Inputs(), IsEmpty());
  EXPECT_THAT(Outputs(), IsEmpty());
  EXPECT_EQ(SaveScratch(), Scratch());
}

TEST_F(StagedPoints, ComeFromRowsOfSensorsAloneAndNotOfDcioDevices) {
  for (const char* const attribute :
       {"State", "ErrCnt", "NumAttribute", "Address", "Input_1_Type", "Output_1_Label", "Type"}) {
    std::string key = std::string("DCIO_1_") + attribute;
    std::string value = std::string(attribute) == "Type" ? "GenericInput" : "1";
    EXPECT_EQ(Status_DCIO(&status_, value.data(), key.data()), 0) << key;
  }
  EXPECT_EQ(status_.DCIO.Devices.Count(), 1U);
  Scratch device;
  device.u32_DCIO_SensorNumber = 1;
  device.u32_DCIO_State = 1;
  device.u32_DCIO_ErrCntr = 1;
  device.u32_DCIO_NumAttr = 1;
  device.u32_DCIO_Address = 1;
  device.st_DCIO_Type = kGenericInput;
  EXPECT_EQ(SaveScratch(), device);
}

TEST_F(StagedPoints, OfInputsBecomeTheClassOfTheirCode) {
  for (std::uint32_t code = 0; code < 12; ++code) {
    dcioInputs[code] = {1, code, static_cast<int>(code) + 1, 0, ""};
  }
  PopulateInputs(&board_);
  EXPECT_THAT(
      Texts(Inputs()),
      ElementsAre("BaseInputType 1 off ", "GeneralPurposeInputType 2 off ",
                  "AirflowSensorInputType 3 off ", "DoorSensorInputType 4 off ",
                  "SurgeSuppressorInputType 5 off ", "IntakeFanStatusRelayInputType 6 off ",
                  "FrontFanStatusRelayInputType 7 off ", "PixelFanStatusRelayInputType 8 off ",
                  "FanPowerSenseInputType 9 off ", "PowerSupplyStatusRelayInputType 10 off ",
                  "MaintHeaterStatusRelayInputType 11 off ", "HeaterStatusRelayInputType 12 off "));
  EXPECT_EQ(dynamic_cast<QtSts::CDoorSensorInputType&>(*Inputs()[3]).SpareWord, 1U);
}

TEST_F(StagedPoints, OfOutputsBecomeTheClassOfTheirCodeWithAHoleAtFour) {
  for (std::uint32_t code = 0; code < 11; ++code) {
    dcioOutputs[code] = {1, code, static_cast<int>(code) + 1, 0, ""};
  }
  PopulateOutputs(&board_);
  EXPECT_THAT(Texts(Outputs()),
              ElementsAre("BaseOutputType 1 off ", "IntakeFanOutputType 2 off ",
                          "PixelFanOutputType 3 off ", "FrontFanOutputType 4 off ",
                          "MaintenanceHeaterOutputType 6 off ", "HeaterOutputType 7 off ",
                          "GeneralPurposeOutputType 8 off ", "AuxiliaryOutputType 9 off ",
                          "FaultOkLedOutputType 10 off ", "CurrentMessageOutputType 11 off "));
  EXPECT_EQ(SaveScratch(), Scratch());
}

TEST_F(StagedPoints, WithoutAClassAreEmptiedAndAddNothing) {
  for (const std::uint32_t code : {12U, 13U, 255U, 0x80000000U, 0xFFFFFFFFU}) {
    SCOPED_TRACE(code);
    dcioInputs[0] = {1, code, 1, 1, "Door"};
    PopulateInputs(&board_);
    EXPECT_EQ(dcioInputs[0], DcioPoint());
    EXPECT_THAT(Inputs(), IsEmpty());
  }
  for (const std::uint32_t code : {4U, 11U, 255U, 0x80000000U, 0xFFFFFFFFU}) {
    SCOPED_TRACE(code);
    dcioOutputs[11] = {1, code, 1, 1, "Fan"};
    PopulateOutputs(&board_);
    EXPECT_EQ(dcioOutputs[11], DcioPoint());
    EXPECT_THAT(Outputs(), IsEmpty());
  }
}

TEST_F(StagedPoints, AreOnOnlyInStateOne) {
  constexpr struct {
    std::int32_t State;
    bool On;
  } kRows[] = {{1, true}, {0, false}, {2, false}, {-1, false}, {257, false}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.State);
    dcioInputs[0] = {1, 3, 1, row.State, ""};
    dcioOutputs[0] = {1, 1, 1, row.State, ""};
    PopulateInputs(&board_);
    PopulateOutputs(&board_);
    // Inputs store their state, outputs its inverse.
    EXPECT_EQ(Inputs().back()->Get(), row.On);
    EXPECT_EQ(Inputs().back()->State, row.On ? 1U : 0U);
    EXPECT_EQ(Outputs().back()->Get(), row.On);
    EXPECT_EQ(Outputs().back()->StoredState, row.On ? 0U : 1U);
  }
}

TEST_F(StagedPoints, AreEmptiedWhenTheBoardRefusesThemAndTheRestStillComes) {
  constexpr int kBeyond[] = {0, -1, 25, 2147483647};
  for (std::size_t i = 0; i < std::size(kBeyond); ++i) {
    dcioInputs[i] = {1, 3, kBeyond[i], 1, "refused"};
  }
  dcioInputs[4] = {1, 3, 24, 1, "taken"};
  PopulateInputs(&board_);
  EXPECT_THAT(Texts(Inputs()), ElementsAre("DoorSensorInputType 24 on taken"));
  EXPECT_EQ(SaveScratch(), Scratch());
}

TEST_F(StagedPoints, OfASmallBoardAreRefusedFromItsThirdOn) {
  board_.Points.Inputs = std::make_unique<QtSts::InputListType>(2);
  board_.Points.Outputs = std::make_unique<QtSts::OutputListType>(1);
  for (int i = 0; i < 3; ++i) {
    dcioInputs[static_cast<std::size_t>(i)] = {1, 1, 3 - i, 0, ""};
    dcioOutputs[static_cast<std::size_t>(i)] = {1, 1, 3 - i, 0, ""};
  }
  PopulateInputs(&board_);
  PopulateOutputs(&board_);
  EXPECT_THAT(Texts(Inputs()),
              ElementsAre("GeneralPurposeInputType 2 off ", "GeneralPurposeInputType 1 off "));
  EXPECT_THAT(Texts(Outputs()), ElementsAre("IntakeFanOutputType 1 off "));
  EXPECT_EQ(SaveScratch(), Scratch());
}

TEST_F(StagedPoints, ComeInTheOrderOfTheirEntries) {
  dcioInputs[0] = {1, 1, 9, 0, "a"};
  dcioInputs[5] = {1, 1, 3, 1, "b"};
  dcioInputs[23] = {1, 1, 6, 0, "c"};
  PopulateInputs(&board_);
  EXPECT_THAT(Texts(Inputs()),
              ElementsAre("GeneralPurposeInputType 9 off a", "GeneralPurposeInputType 3 on b",
                          "GeneralPurposeInputType 6 off c"));
}

TEST_F(StagedPoints, WithTheSameIndexBothComeAndTheEarlierIsFound) {
  dcioOutputs[2] = {1, 1, 7, 0, "earlier"};
  dcioOutputs[3] = {1, 6, 7, 0, "later"};
  PopulateOutputs(&board_);
  ASSERT_EQ(Outputs().size(), 2U);
  BaseOutputType* found = nullptr;
  EXPECT_TRUE(board_.Points.Get(7, &found));
  EXPECT_EQ(found->Label, "earlier");
}

TEST_F(StagedPoints, WithoutTheirFlagStayAsTheyAre) {
  dcioInputs[1] = {0, 3, 5, 1, "waiting"};
  dcioOutputs[1] = {0, 4, 6, 1, "waiting too"};
  const Scratch before = SaveScratch();
  PopulateInputs(&board_);
  PopulateOutputs(&board_);
  EXPECT_EQ(SaveScratch(), before);
  EXPECT_THAT(Inputs(), IsEmpty());
  EXPECT_THAT(Outputs(), IsEmpty());
}

TEST_F(StagedPoints, ArePresentWithAnyFlagButZero) {
  dcioInputs[0] = {255, 0, 1, 0, ""};
  PopulateInputs(&board_);
  EXPECT_THAT(Texts(Inputs()), ElementsAre("BaseInputType 1 off "));
}

TEST_F(StagedPoints, AreTakenOnce) {
  dcioInputs[0] = {1, 1, 1, 0, ""};
  dcioOutputs[0] = {1, 1, 1, 0, ""};
  for (int i = 0; i < 2; ++i) {
    PopulateInputs(&board_);
    PopulateOutputs(&board_);
    EXPECT_EQ(Inputs().size(), 1U);
    EXPECT_EQ(Outputs().size(), 1U);
  }
}

TEST_F(StagedPoints, OfOneKindLeaveTheOtherAlone) {
  dcioInputs[0] = {1, 1, 1, 0, ""};
  dcioOutputs[0] = {1, 1, 1, 0, ""};
  PopulateInputs(&board_);
  EXPECT_EQ(dcioOutputs[0].Present, 1);
  EXPECT_THAT(Outputs(), IsEmpty());
  PopulateOutputs(&board_);
  EXPECT_EQ(Outputs().size(), 1U);
}

TEST_F(StagedPoints, PassThroughTheBoardsOwnOperations) {
  // A list that takes everything: the board's list decides, not its capacity.
  class Generous : public QtSts::InputListType {
   public:
    bool IsValid(BaseInputType* /*point*/) const override { return true; }
  };
  board_.Points.Inputs = std::make_unique<Generous>();
  dcioInputs[0] = {1, 1, -5, 0, ""};
  PopulateInputs(&board_);
  EXPECT_THAT(Texts(Inputs()), ElementsAre("GeneralPurposeInputType -5 off "));
}
