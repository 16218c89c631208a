// Sensor records.
#pragma once

#include <cstdint>
#include <memory>

#include "model/listing.h"
#include "model/owning_list.h"

namespace QtSts {

// What every sensor reports. No record stores the sensor's number.
class STATUS_API CSensor : public CListedStatus {
 public:
  std::uint32_t NumberOfAttributes = 0;
  bool Connected = false;
  std::uint32_t SyncLossCounter = 0;

  static const ClassInfo Class;
};

class STATUS_API CSensorList : public COwningList<CSensor> {};

// A sensor on a CAN bus. A null value is one that the sensor does not report.
class STATUS_API CCANSensor : public CSensor {
 public:
  std::uint64_t Address = 0;  // bus address, upper half 0
  std::uint16_t Bus = 0;
  std::unique_ptr<std::uint32_t> Face;
  std::unique_ptr<std::int32_t> Revision;
  std::unique_ptr<std::uint16_t> IdType;
  std::unique_ptr<std::uint8_t> HardwareID;

  // Records that keep the flag elsewhere too override it; lamps and multi-directional sensors do
  // so deliberately with the same effect.
  virtual void SetConnected(bool connected) { Connected = connected; }

  static const ClassInfo Class;
};

}  // namespace QtSts
