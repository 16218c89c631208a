#include "host/attention.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "model/can_sensors.h"
#include "model/dcio_boards.h"
#include "model/tree.h"
#include "tests/host/sample_documents.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> Notes(QtSts::CStatus& status) {
  const QtSts::DocumentTree document(status);
  std::vector<std::string> notes;
  for (const host::Note& note : host::FindNotes(document)) {
    notes.push_back(note.Where + ": " + note.What);
  }
  return notes;
}

TEST(FindNotes, FindsNothingInAFreshDocument) {
  QtSts::CStatus status;
  status.Outputs.Add(new QtSts::CTravex6Output);
  status.Inputs.Add(new QtSts::CDigitalInput);
  EXPECT_THAT(Notes(status), IsEmpty());
}

TEST(FindNotes, FindsEverythingThatNeedsAttention) {
  EXPECT_THAT(
      Notes(*sample::Troubled()),
      ElementsAre("ErrorFlags: Error flags 0x0000000000000010",
                  "Sensors[0]/Connected: CANTempSensor 0 is not connected",
                  "Sensors[1]/CurrentRpm: Fan stands still: CANFanRpmSensor 1",
                  "Sensors[2]/HardwareErrors: Power supply hardware errors 0x09",
                  "Sensors[2]/InputVoltages: Power supply input at 0 V",
                  "Sensors[2]/OutputVoltages: Power supply output at 0 V",
                  "Sensors[3]/InputVoltage: Isolation board input at 0 V",
                  "Sensors[3]/OutputVoltage: Isolation board output at 0 V",
                  "Sensors[4]/ErrorFlags: CANBeacon 4 reports errors 0x03",
                  "Sensors[4]/RedLedErrorCount: CANBeacon 4: 4 red LEDs failed",
                  "Sensors[4]/AmberLedErrorCount: CANBeacon 4: 5 amber LEDs failed",
                  "DCIO/Devices[0]/State: Door open: DoorSwitch 0",
                  "Inputs[1]/SignalPresent: DigitalInput is selected without a signal",
                  "Outputs[0]/StatusFlags: Display power is off",
                  "Outputs[0]/StatusFlags: Output blanked by the pixel tracker",
                  "Outputs[0]/StatusFlags: Ambient sensor failed",
                  "Outputs[0]/StatusFlags: Watchdog event recorded",
                  "Outputs[0]/DisplayInterfaces[0]/Sensors[0]/Points/Inputs/Points[0]/State: Door "
                  "open: Service "
                  "door behind the lowest cabinet, left of the ladder, second row",
                  "Outputs[0]/DisplayInterfaces[0]/Sensors[0]/FanRpms[1]/Rpm: Fan 7 stands still"));
}

TEST(FindNotes, FindsSomethingByEveryRuleInTheSample) {
  EXPECT_EQ(Notes(*sample::Troubled()).size(), host::NoteTemplates().size());
}

// A sensor that is not connected reports zeros: one note says it all. Those of fans and power
// supplies used to be noted.
TEST(FindNotes, TakesZerosOfADisconnectedSensorForNothing) {
  QtSts::CStatus status;
  status.Sensors.Add(new QtSts::CCANFanRpmSensor);
  status.Sensors.Add(new QtSts::CCANIsolationBoardSensor);
  auto* const supply = new QtSts::CCANPsrbSensor;
  supply->InputVoltages = {0};
  supply->OutputVoltages = {24, 0};
  status.Sensors.Add(supply);
  auto* const board = new QtSts::CCANDcioAndFanRpm;
  board->FanRpms.Add(new QtSts::FanRpm);
  status.Sensors.Add(board);
  EXPECT_THAT(Notes(status),
              ElementsAre("Sensors[0]/Connected: CANFanRpmSensor 0 is not connected",
                          "Sensors[1]/Connected: CANIsolationBoardSensor 1 is not connected",
                          "Sensors[2]/Connected: CANPsrbSensor 2 is not connected",
                          "Sensors[3]/Connected: CANDcioAndFanRpm 3 is not connected"));
}

TEST(FindNotes, PointsToTheValueThatIsTheCause) {
  auto status = sample::Troubled();
  const QtSts::DocumentTree document(*status);
  EXPECT_EQ(host::FindNotes(document).front().Cause, document.Root().FindValue("ErrorFlags"));
}

}  // namespace
