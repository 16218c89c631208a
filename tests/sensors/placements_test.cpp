// Which list a record goes to, and when a sensor is refused.
#include "sensors/placements.h"

#include <gmock/gmock.h>

#include "model/can_sensors.h"
#include "model/dcio_boards.h"
#include "tests/sensors/sensor_test.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pointee;

class Placements : public SensorTest {
 protected:
  // Sets the sensor of the scratch state.
  static void Sensor(std::uint32_t number, std::uint32_t type, std::uint32_t address) {
    u32_SensorNumber = number;
    st_Type = static_cast<SensorType>(type);
    u32_Address = address;
  }

  // Something for every kind of board to take.
  static void StageSomething() {
    dcioInputs[0] = {1, 1, 1, 1, "in"};
    dcioOutputs[0] = {1, 1, 1, 1, "out"};
    FanRpms = {{1, 1100}};
    f_Psrb_InputVoltages = {24.5F};
    f_Psrb_OutputVoltages = {12.0F};
  }

  int VerifyBehind(std::uint32_t attachment) {
    return Status_VerifyDisplayInterfaceSensor(&status_, static_cast<AttachmentType>(attachment));
  }

  const QtSts::CSensorList& Behind(unsigned int position) {
    return InterfaceAt(status_, position).Sensors;
  }
};

// Every code that names no record on the own buses.
constexpr std::uint32_t kNoRecord[] = {12, 16, 18, 20, 21, 255, 0x80000000U, 0xFFFFFFFFU};

}  // namespace

TEST_F(Placements, OfSensorZeroTwiceAddItOnce) {
  Sensor(0, kCanTemp, 5);
  EXPECT_EQ(Status_VerifySensor(&status_), 0);
  Sensor(0, kCanDoor, 6);
  EXPECT_EQ(Status_VerifySensor(&status_), 0);
  // The first record stays as it was.
  EXPECT_THAT(Addresses(status_.Sensors), ElementsAre(5));
  EXPECT_NE(dynamic_cast<QtSts::CCANTempSensor*>(status_.Sensors[0]), nullptr);
}

TEST_F(Placements, RefuseANumberThatTheListReachesAndTakeTheNext) {
  for (std::uint32_t n = 0; n < 3; ++n) {
    Sensor(n, kCanTemp, n);
    Status_VerifySensor(&status_);
  }
  Sensor(2, kCanTemp, 77);
  EXPECT_EQ(Status_VerifySensor(&status_), 0);
  EXPECT_THAT(Addresses(status_.Sensors), ElementsAre(0, 1, 2));
  Sensor(3, kCanTemp, 78);
  EXPECT_EQ(Status_VerifySensor(&status_), 0);
  EXPECT_THAT(Addresses(status_.Sensors), ElementsAre(0, 1, 2, 78));
}

TEST_F(Placements, AppendANumberBeyondTheEndEachTimeItComes) {
  Sensor(4294967295, kCanTemp, 5);
  Status_VerifySensor(&status_);
  Status_VerifySensor(&status_);
  EXPECT_THAT(Addresses(status_.Sensors), ElementsAre(5, 5));
}

TEST_F(Placements, MakeNothingOfACodeWithoutARecordAndTakeNothing) {
  StageSomething();
  for (const std::uint32_t type : kNoRecord) {
    SCOPED_TRACE(type);
    Sensor(0, type, 5);
    const Scratch before = SaveScratch();
    EXPECT_EQ(Status_VerifySensor(&status_), 0);
    EXPECT_EQ(status_.Sensors.Count(), 0U);
    EXPECT_EQ(VerifyBehind(kRouterCan), 0);
    EXPECT_EQ(Behind(0).Count(), 0U);
    EXPECT_EQ(SaveScratch(), before);
  }
}

TEST_F(Placements, TakeNothingForASensorThatIsThereAlready) {
  for (const SensorType type :
       {kCanDcio16In3Out8Cfg, kCanDcio2In1Out, kCanDcioAndFanRpm, kCanPowerSupplyRedundancyBoard}) {
    SCOPED_TRACE(type);
    Status_ClearLists(&status_);
    Sensor(0, kCanTemp, 5);
    Status_VerifySensor(&status_);
    VerifyBehind(kRouterCan);
    StageSomething();
    Sensor(0, type, 5);
    const Scratch before = SaveScratch();
    EXPECT_EQ(Status_VerifySensor(&status_), 0);
    EXPECT_EQ(VerifyBehind(kRouterCan), 0);
    EXPECT_EQ(SaveScratch(), before);
  }
}

TEST_F(Placements, MakeOnboardSensorsOnTheOwnBusesOnly) {
  for (const SensorType type : {kOnboardTemp, kOnboardCabinetFanControl}) {
    SCOPED_TRACE(type);
    Status_ClearLists(&status_);
    Sensor(0, type, 5);
    EXPECT_EQ(VerifyBehind(kRouterCan), 0);
    EXPECT_EQ(Behind(0).Count(), 0U);
    EXPECT_EQ(status_.Sensors.Count(), 0U);
    EXPECT_EQ(Status_VerifySensor(&status_), 0);
    EXPECT_EQ(status_.Sensors.Count(), 1U);
  }
}

TEST_F(Placements, BehindAnInterfaceMakeOutputAndInterfaceFirst) {
  Sensor(0, kUnknownSensor, 5);
  u32_DispInterfaceNumAttribute = 6;
  EXPECT_EQ(VerifyBehind(kControlBoardCan), 0);
  ASSERT_EQ(status_.Outputs.Count(), 1U);
  EXPECT_EQ(InterfaceAt(status_, 0).NumberOfAttributes, 6U);
  EXPECT_EQ(Behind(0).Count(), 0U);
}

TEST_F(Placements, BehindAnInterfaceUseTheOutputThatIsThere) {
  Status_VerifyOutput(&status_, 0);
  const QtSts::COutput* const output = status_.Outputs[0];
  Sensor(0, kCanTemp, 5);
  EXPECT_EQ(VerifyBehind(kRouterCan), 0);
  EXPECT_EQ(status_.Outputs.Count(), 1U);
  EXPECT_EQ(status_.Outputs[0], output);
  EXPECT_THAT(Addresses(Behind(0)), ElementsAre(5));
}

TEST_F(Placements, BehindAnInterfaceOfSensorZeroTwiceAddItOnce) {
  Sensor(0, kCanTemp, 5);
  EXPECT_EQ(VerifyBehind(kRouterCan), 0);
  Sensor(0, kCanTemp, 6);
  EXPECT_EQ(VerifyBehind(kRouterCan), 0);
  EXPECT_THAT(Addresses(Behind(0)), ElementsAre(5));
}

TEST_F(Placements, CountEachInterfacesSensorsOnTheirOwn) {
  for (const std::uint32_t interface : {2U, 3U}) {
    u32_DispInterfaceNumAttribute = interface;
    for (std::uint32_t n = 0; n < 2; ++n) {
      Sensor(n, kCanTemp, 10 * interface + n);
      EXPECT_EQ(VerifyBehind(kRouterCan), 0);
    }
  }
  EXPECT_THAT(Addresses(Behind(0)), ElementsAre(20, 21));
  EXPECT_THAT(Addresses(Behind(1)), ElementsAre(30, 31));
  // The document's own list is never touched.
  EXPECT_EQ(status_.Sensors.Count(), 0U);
}

TEST_F(Placements, PutAControlBoardsSensorOnTheRouterWithTheSameAttributeCount) {
  u32_DispInterfaceNumAttribute = 2;
  Sensor(0, kCanTemp, 5);
  EXPECT_EQ(VerifyBehind(kRouterCan), 0);
  Sensor(1, kCanTemp, 6);
  u16_DispInterfaceAddress = 99;
  EXPECT_EQ(VerifyBehind(kControlBoardCan), 0);
  ASSERT_EQ(status_.Outputs[0]->DisplayInterfaces.Count(), 1U);
  EXPECT_THAT(Addresses(Behind(0)), ElementsAre(5, 6));
  // The interface keeps the address that it was made with.
  EXPECT_THAT(InterfaceAt(status_, 0).Address, Pointee(0));
}

TEST_F(Placements, GiveNoAddressToARouterAt16384ButToAControlBoard) {
  u16_DispInterfaceAddress = 16384;
  Sensor(0, kCanTemp, 5);
  VerifyBehind(kRouterCan);
  u32_DispInterfaceNumAttribute = 1;
  VerifyBehind(kControlBoardCan);
  EXPECT_EQ(InterfaceAt(status_, 0).Address, nullptr);
  EXPECT_THAT(InterfaceAt(status_, 1).Address, Pointee(16384));
}

TEST_F(Placements, DoNothingWhereNoInterfaceIsMade) {
  StageSomething();
  for (const std::uint32_t attachment : {0U, 3U, 4U, 0xFFFFFFFFU}) {
    SCOPED_TRACE(attachment);
    Sensor(0, kCanDcioAndFanRpm, 5);
    const Scratch before = SaveScratch();
    EXPECT_EQ(VerifyBehind(attachment), 0);
    EXPECT_EQ(status_.Outputs.Count(), 1U);
    EXPECT_EQ(status_.Outputs[0]->DisplayInterfaces.Count(), 0U);
    EXPECT_EQ(status_.Sensors.Count(), 0U);
    EXPECT_EQ(SaveScratch(), before);
  }
}

TEST_F(Placements, FindAnInterfaceThatIsThereFromAnyAttachment) {
  Sensor(0, kCanTemp, 5);
  VerifyBehind(kRouterCan);
  Sensor(1, kCanTemp, 6);
  EXPECT_EQ(VerifyBehind(kLocalI2c), 0);
  EXPECT_THAT(Addresses(Behind(0)), ElementsAre(5, 6));
}

TEST_F(Placements, OfASmallBoardBehindAnInterfaceKeepItsTwoInputsAndOneOutput) {
  for (int i = 0; i < 3; ++i) {
    dcioInputs[static_cast<std::size_t>(i)] = {1, 1, i + 1, 0, ""};
    dcioOutputs[static_cast<std::size_t>(i)] = {1, 1, i + 1, 0, ""};
  }
  Sensor(0, kCanDcio2In1Out, 5);
  EXPECT_EQ(VerifyBehind(kControlBoardCan), 0);
  const auto& board = At<QtSts::CCANDcio2in1out>(Behind(0), 0);
  EXPECT_EQ(board.Points.Inputs->Points.size(), 2U);
  EXPECT_EQ(board.Points.Outputs->Points.size(), 1U);
}

TEST_F(Placements, LeaveTheControlBoardsOwnPointListsAlone) {
  dcioInputs[0] = {1, 1, 1, 0, ""};
  Sensor(0, kCanDcio2In1Out, 5);
  VerifyBehind(kControlBoardCan);
  const auto& board =
      dynamic_cast<QtSts::CSentrelControlBoardDisplayInterface&>(InterfaceAt(status_, 0));
  EXPECT_THAT(board.Inputs->Points, IsEmpty());
  EXPECT_THAT(board.Outputs->Points, IsEmpty());
}
