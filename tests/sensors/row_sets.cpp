#include "tests/sensors/row_sets.h"

#include <gmock/gmock.h>

#include <memory>

#include "model/dcio_boards.h"

namespace {

using QtSts::CStatus;
using testing::ElementsAre;
using testing::IsEmpty;

// A: unpadded numbers: "10" sorts before "1_", and a list with an element at a number's position
// has that sensor already, so 1, 2 and 3 are lost.
Rows UnpaddedNumbers() {
  Rows rows;
  for (int n = 0; n <= 12; ++n) {
    AddSensor(
        &rows, std::to_string(n),
        {{"Address", std::to_string(100 + n)}, {"Location", "Local_CAN"}, {"Type", "CANTemp"}});
  }
  return rows;
}

void ExpectTheFirstThreeLost(const CStatus& status, int /*cycle*/) {
  EXPECT_THAT(Addresses(status.Sensors),
              ElementsAre(100, 110, 111, 112, 104, 105, 106, 107, 108, 109));
}

// B: interfaces are found by their attribute count alone and their address is never updated; a
// refused sensor leaves an empty interface.
Rows SensorsBehindInterfaces() {
  Rows rows;
  AddSensor(&rows, "0", {{"Address", "5"}, {"Location", "Local_CAN"}, {"Type", "CANTemp"}});
  AddSensor(&rows, "10",
            {{"Address", "20"},
             {"DispInterfaceNumber", "2"},
             {"Location", "TXR_CAN"},
             {"Type", "CANTemp"}});
  AddSensor(&rows, "1",
            {{"Address", "11"},
             {"DispInterfaceNumber", "2"},
             {"Location", "TXR_CAN"},
             {"Type", "CANTemp"}});
  AddSensor(&rows, "2",
            {{"Address", "12"},
             {"DispInterfaceNumber", "2"},
             {"Location", "SCBII_CAN"},
             {"Type", "CANTemp"}});
  AddSensor(&rows, "3",
            {{"Address", "13"},
             {"DispInterfaceNumber", "3"},
             {"DispInterfaceAddress", "16384"},
             {"Location", "SCBII_CAN"},
             {"Type", "CANDoor"}});
  AddSensor(&rows, "4",
            {{"Address", "14"},
             {"DispInterfaceNumber", "4"},
             {"Location", "TXR_CAN"},
             {"Type", "OnboardTemp"}});
  return rows;
}

template <class Interface>
const Interface& TypedInterface(const CStatus& status, unsigned int position) {
  return dynamic_cast<const Interface&>(InterfaceAt(status, position));
}

void ExpectThreeInterfaces(const CStatus& status, int cycle) {
  using Router = QtSts::CTravexRouterDisplayInterface;
  using ControlBoard = QtSts::CSentrelControlBoardDisplayInterface;
  EXPECT_THAT(Addresses(status.Sensors), ElementsAre(5));
  ASSERT_NE(status.Outputs[0], nullptr);
  ASSERT_EQ(status.Outputs[0]->DisplayInterfaces.Count(), 3U);

  const auto& router = TypedInterface<Router>(status, 0);
  EXPECT_EQ(router.NumberOfAttributes, 2U);
  EXPECT_THAT(Addresses(router.Sensors), ElementsAre(20, 11, 12));
  if (cycle == 1) {
    ASSERT_NE(router.Address, nullptr);
    EXPECT_EQ(*router.Address, 0);
  } else {
    // The control board's address is left over from the cycle before.
    EXPECT_EQ(router.Address, nullptr);
  }

  const auto& board = TypedInterface<ControlBoard>(status, 1);
  EXPECT_EQ(board.NumberOfAttributes, 3U);
  EXPECT_THAT(Addresses(board.Sensors), ElementsAre(13));
  ASSERT_NE(board.Address, nullptr);
  EXPECT_EQ(*board.Address, 16384);

  const auto& empty = TypedInterface<Router>(status, 2);
  EXPECT_EQ(empty.NumberOfAttributes, 4U);
  EXPECT_EQ(empty.Sensors.Count(), 0U);
}

// C: a board that is refused takes nothing: its points go to the next board that is built, which
// overwrites what its own rows say and inherits the rest.
Rows ARefusedBoard() {
  Rows rows;
  for (int n = 0; n <= 10; ++n) {
    AddSensor(&rows, std::to_string(n), {{"Type", "CANTemp"}});
  }
  AddSensor(&rows, "1",
            {{"Input_0_Index", "1"},
             {"Input_0_Label", "A"},
             {"Input_0_State", "1"},
             {"Input_0_Type", "1"},
             {"Input_1_Index", "2"},
             {"Input_1_Label", "B"},
             {"Input_1_State", "1"},
             {"Input_1_Type", "2"},
             {"Type", "CANDcio2in1out"}});
  AddSensor(&rows, "2",
            {{"Input_0_Index", "1"},
             {"Input_0_State", "0"},
             {"Input_0_Type", "3"},
             {"Type", "CANDcio2in1out"}});
  return rows;
}

void ExpectItsPointsOnTheNextBoard(const CStatus& status, int /*cycle*/) {
  // 0, 10, then 1 is refused, then board 2.
  ASSERT_EQ(status.Sensors.Count(), 10U);
  const auto& board = At<QtSts::CCANDcio2in1out>(status.Sensors, 2);
  ASSERT_NE(board.Points.Inputs, nullptr);
  const auto& inputs = board.Points.Inputs->Points;
  ASSERT_EQ(inputs.size(), 2U);
  EXPECT_NE(dynamic_cast<QtSts::CDoorSensorInputType*>(inputs[0]), nullptr);
  EXPECT_EQ(inputs[0]->Index, 1);
  EXPECT_FALSE(inputs[0]->Get());
  EXPECT_EQ(inputs[0]->Label, "A");
  EXPECT_NE(dynamic_cast<QtSts::AirflowSensorInputType*>(inputs[1]), nullptr);
  EXPECT_EQ(inputs[1]->Index, 2);
  EXPECT_TRUE(inputs[1]->Get());
  EXPECT_EQ(inputs[1]->Label, "B");
  EXPECT_EQ(dcioInputs, decltype(dcioInputs)());
}

// D: fans spelt in lower case sort after their board's type and go to the next board.
Rows LateFans() {
  Rows rows;
  AddSensor(&rows, "0", {{"Type", "CANDcioAndFanRpm"}, {"fan_1_Rpm", "1000"}});
  AddSensor(&rows, "1", {{"Type", "CANDcioAndFanRpm"}, {"fan_1_Rpm", "2000"}});
  return rows;
}

std::vector<int> Speeds(const CStatus& status, unsigned int position) {
  const auto& fans = At<QtSts::CCANDcioAndFanRpm>(status.Sensors, position).FanRpms;
  std::vector<int> speeds;
  for (unsigned int i = 0; i < fans.Count(); ++i) {
    EXPECT_EQ(fans[i]->Ordinal, i);
    EXPECT_EQ(fans[i]->FanNumber, 1);
    speeds.push_back(fans[i]->Rpm);
  }
  return speeds;
}

void ExpectEachBoardToHaveTheFansBefore(const CStatus& status, int cycle) {
  ASSERT_EQ(status.Sensors.Count(), 2U);
  if (cycle == 1) {
    EXPECT_THAT(Speeds(status, 0), IsEmpty());
  } else {
    EXPECT_THAT(Speeds(status, 0), ElementsAre(2000));
  }
  EXPECT_THAT(Speeds(status, 1), ElementsAre(1000));
}

// E: a sensor without a location has that of the sensor before, also across cycles.
Rows AMissingLocation() {
  Rows rows;
  AddSensor(&rows, "0", {{"Address", "5"}, {"Type", "CANTemp"}});
  AddSensor(&rows, "1",
            {{"Address", "11"},
             {"DispInterfaceNumber", "2"},
             {"Location", "TXR_CAN"},
             {"Type", "CANTemp"}});
  return rows;
}

void ExpectTheLocationBefore(const CStatus& status, int cycle) {
  ASSERT_NE(status.Outputs[0], nullptr);
  ASSERT_EQ(status.Outputs[0]->DisplayInterfaces.Count(), 1U);
  const QtSts::CDisplayInterface& router = InterfaceAt(status, 0);
  EXPECT_EQ(router.NumberOfAttributes, 2U);
  if (cycle == 1) {
    EXPECT_THAT(Addresses(status.Sensors), ElementsAre(5));
    EXPECT_THAT(Addresses(router.Sensors), ElementsAre(11));
  } else {
    EXPECT_EQ(status.Sensors.Count(), 0U);
    EXPECT_THAT(Addresses(router.Sensors), ElementsAre(5, 11));
  }
}

}  // namespace

const RowSet kRowSets[5] = {
    {"UnpaddedNumbersLoseTheFirstSensors", UnpaddedNumbers, ExpectTheFirstThreeLost},
    {"InterfacesAreFoundByTheirAttributeCount", SensorsBehindInterfaces, ExpectThreeInterfaces},
    {"ARefusedBoardLeavesItsPointsToTheNext", ARefusedBoard, ExpectItsPointsOnTheNextBoard},
    {"LateFansFeedTheNextBoard", LateFans, ExpectEachBoardToHaveTheFansBefore},
    {"AMissingLocationIsThatOfTheSensorBefore", AMissingLocation, ExpectTheLocationBefore},
};
