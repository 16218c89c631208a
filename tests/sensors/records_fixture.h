// A scratch state with a value of its own in every variable, and records built from it.
#pragma once

#include <gtest/gtest.h>

#include "sensors/placements.h"
#include "tests/sensors/sensor_test.h"

class RecordTest : public SensorTest {
 protected:
  // A value of its own in every variable, so that a mix-up shows.
  RecordTest() {
    u32_Address = 0xFFFFFFFF;
    u32_Bus = 65537;
    b_Connected = true;
    u32_NumAttribute = 21;
    uiSyncLossCounter = 22;
    u32_Face = 23;
    s32_Revision = 24;
    u16_IdType = 25;
    u8_HardwareID = 26;
    f_celsius = 27.5F;
    u16_OneMinAverage = 28;
    u16_TenMinAverage = 29;
    u16_OneMinLuxAverage = 30;
    u16_TenMinLuxAverage = 31;
    u16_LongTermAverage = 32;
    f_Humidity_OneMinAverage = 33.5F;
    f_Humidity_TenMinAverage = 34.5F;
    u16_AverageRpm = 35;
    u16_CurrentRpm = 65535;
    f_inputVoltage = 37.5F;
    f_outputVoltage = 38.5F;
    f_celsiusTemperature = 39.5F;
    u32_PortStatus = 40;
    u16_Ambient = 41;
    u32_Front = 42;
    u32_Back = 43;
    Locked = static_cast<LockState>(1);
    dLatitude = 44;
    dLongitude = 45;
    dAltitude = 46;
    uiCompass = 47;
    u32_FansEnabled = 48;
    u8_Psrb_HardwareErrors = 49;
    beaconRoundel = {50, 51, 52, 53, 54, 55, 56, 57, 300, 59};
  }

  // A new record of this kind in the document's own list.
  template <class Record>
  Record& BuildOwn(SensorType type) {
    status_.Sensors.Clear();
    u32_SensorNumber = 0;
    st_Type = type;
    EXPECT_EQ(Status_VerifySensor(&status_), 0);
    return At<Record>(status_.Sensors, 0);
  }

  // A new record of this kind behind the router.
  template <class Record>
  Record& BuildBehindRouter(SensorType type) {
    status_.Outputs.Clear();
    u32_SensorNumber = 0;
    st_Type = type;
    EXPECT_EQ(Status_VerifyDisplayInterfaceSensor(&status_, kRouterCan), 0);
    return At<Record>(InterfaceAt(status_, 0).Sensors, 0);
  }
};
