// Beacons and roundels: lamps on a CAN bus that report on themselves.
#pragma once

#include <cstdint>
#include <memory>

#include "model/sensors.h"

namespace QtSts {

// What beacons and roundels report alike. Revision, id type and hardware id are always present.
class STATUS_API CBeaconRecord : public CCANSensor {
 public:
  std::uint8_t RedDimLevel = 0;
  std::uint8_t AmberDimLevel = 0;
  std::uint8_t ErrorFlags = 0;
  std::uint16_t RedLedErrorCount = 0;
  std::uint16_t AmberLedErrorCount = 0;
  std::uint8_t StatusFlags = 0;
  std::uint8_t SyncControlStartBit = 0;
  std::uint16_t PerColorLedCount = 0;
  std::unique_ptr<std::uint16_t> TemperatureKelvin;  // kelvin
  std::unique_ptr<std::uint8_t> Humidity;            // percent

  void SetConnected(bool connected) override { Connected = connected; }

  static const ClassInfo Class;
};

class STATUS_API CCANBeacon : public CBeaconRecord {
 public:
  static const ClassInfo Class;
};

class STATUS_API CCANRoundel : public CBeaconRecord {
 public:
  static const ClassInfo Class;
};

// Every class of this header that has a listing.
inline constexpr const ClassInfo* kBeaconClasses[] = {
    &CBeaconRecord::Class,
    &CCANBeacon::Class,
    &CCANRoundel::Class,
};

}  // namespace QtSts
