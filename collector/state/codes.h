// The codes that rows, scratch state and records share. Every enumeration has a fixed 32-bit
// unsigned type: any stored number is a well-defined value, also one that no name stands for.
#pragma once

#include <cstdint>

#include "model/codes.h"

// Where a sensor is attached, from its "Location" row.
enum AttachmentType : std::uint32_t {
  kLocalCan = 0,
  kRouterCan = 1,        // behind the video router
  kControlBoardCan = 2,  // behind the control board
  kLocalI2c = 3,
};
inline constexpr QtSts::Code kAttachments[] = {
    {kLocalCan, "Local_CAN"},
    {kRouterCan, "TXR_CAN"},
    {kControlBoardCan, "SCBII_CAN"},
    {kLocalI2c, "Local_I2C"},
};

// Kind of a sensor, from its "Type" row.
enum SensorType : std::uint32_t {
  kCanTemp = 0,
  kCanLight = 1,
  kCanLightLux = 2,
  kCanMultiDirectional = 3,
  kCanDoor = 4,
  kCanHumidity = 5,
  kCanDcio16In3Out8Cfg = 6,
  kCanDcio2In1Out = 7,
  kCanDcioAndFanRpm = 8,
  kCanFanRpm = 9,
  kCanAirFlow = 10,
  kCanIsolationBoard = 11,
  kCanPowerSupplyRedundancyBoard = 13,
  kCanBeacon = 14,
  kCanRoundel = 15,
  kOnboardTemp = 17,
  kOnboardCabinetFanControl = 19,
  kUnknownSensor = 20,
};
// Between those codes there are these, which deliberately are no kind.
inline constexpr std::uint32_t kFreeSensorTypes[] = {12, 16, 18};

// Kind of a DCIO device, from its "Type" row.
enum DcioType : std::uint32_t {
  kDoorSwitch = 0,
  kPowerMonitor = 1,
  kRunLed = 2,
  kGenericInput = 3,
  kGenericOutput = 4,
};
inline constexpr QtSts::Code kDcioTypes[] = {
    {kPowerMonitor, "PowerMonitor"},   {kDoorSwitch, "DoorSwitch"}, {kGenericInput, "GenericInput"},
    {kGenericOutput, "GenericOutput"}, {kRunLed, "RunLED"},
};

// Position lock of a multi-directional sensor, from its "Locked" row; the names of the codes are
// the document's (QtSts::kLockStates).
enum LockState : std::uint32_t {};
