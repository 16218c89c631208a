// Sensors on a CAN bus that measure: temperature, light, humidity, fans, airflow, voltages, doors.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "model/codes.h"
#include "model/sensors.h"

namespace QtSts {

class STATUS_API CCANTempSensor : public CCANSensor {
 public:
  float Celsius = 0;  // degrees Celsius

  static const ClassInfo Class;
};

class STATUS_API CCANLightSensor : public CCANSensor {
 public:
  float OneMinAverage = 0;
  float TenMinAverage = 0;

  static const ClassInfo Class;
};

class STATUS_API CCANLightLuxSensor : public CCANSensor {
 public:
  float OneMinAverage = 0;
  float SpareAverage = 0;  // deliberately never filled: the place is kept for consumers
  float OneMinLuxAverage = 0;
  float TenMinAverage = 0;
  float TenMinLuxAverage = 0;

  static const ClassInfo Class;
};

class STATUS_API CCANMultiDirectionalSensor : public CCANSensor {
 public:
  float Ambient = 0;
  std::uint32_t Front = 0;
  std::uint32_t Back = 0;
  // A code of kLockStates. Who fills the record always overwrites the unknown of its start.
  std::uint32_t LockState = kLockUnknown;
  double Latitude = 0;   // whole degrees
  double Longitude = 0;  // whole degrees
  double Altitude = 0;
  std::uint32_t Compass = 0;

  void SetConnected(bool connected) override { Connected = connected; }

  static const ClassInfo Class;
};

class STATUS_API CCANDoorSensor : public CCANSensor {
 public:
  static const ClassInfo Class;
};

class STATUS_API CCANHumiditySensor : public CCANSensor {
 public:
  float Humidity = 0;  // percent, one-minute average

  static const ClassInfo Class;
};

class STATUS_API CCANFanRpmSensor : public CCANSensor {
 public:
  std::uint32_t AverageRpm = 0;
  std::uint32_t CurrentRpm = 0;

  static const ClassInfo Class;
};

class STATUS_API CCANAirflowSensor : public CCANSensor {
 public:
  std::uint32_t OneMinAverage = 0;
  std::uint32_t LongTermAverage = 0;

  static const ClassInfo Class;
};

class STATUS_API CCANIsolationBoardSensor : public CCANSensor {
 public:
  float InputVoltage = 0;   // volts
  float OutputVoltage = 0;  // volts
  float Celsius = 0;        // degrees Celsius

  static const ClassInfo Class;
};

// A power-supply redundancy board.
class STATUS_API CCANPsrbSensor : public CCANSensor {
 public:
  std::vector<float> InputVoltages;   // volts, in order of arrival
  std::vector<float> OutputVoltages;  // volts, in order of arrival
  std::unique_ptr<std::uint8_t> HardwareErrors;

  static const ClassInfo Class;
};

// Every class of this header that has a listing.
inline constexpr const ClassInfo* kCanSensorClasses[] = {
    &CCANTempSensor::Class,           &CCANLightSensor::Class,
    &CCANLightLuxSensor::Class,       &CCANMultiDirectionalSensor::Class,
    &CCANDoorSensor::Class,           &CCANHumiditySensor::Class,
    &CCANFanRpmSensor::Class,         &CCANAirflowSensor::Class,
    &CCANIsolationBoardSensor::Class, &CCANPsrbSensor::Class,
};

}  // namespace QtSts
