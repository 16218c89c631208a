// Sensors on the controller board itself. They hang on no CAN bus, so they report neither address,
// bus nor revision.
#pragma once

#include <cstdint>

#include "model/sensors.h"

namespace QtSts {

class STATUS_API COnboardTempSensor : public CSensor {
 public:
  float Celsius = 0;  // degrees Celsius

  static const ClassInfo Class;
};

class STATUS_API COnboardCabinetFanControlSensor : public CSensor {
 public:
  std::uint32_t FansEnabled = 0;  // a word, not a flag

  static const ClassInfo Class;
};

// Every class of this header that has a listing.
inline constexpr const ClassInfo* kOnboardSensorClasses[] = {
    &COnboardTempSensor::Class,
    &COnboardCabinetFanControlSensor::Class,
};

}  // namespace QtSts
