// DCIO boards: CAN sensors that carry input and output points. They are unrelated to the discrete
// I/O devices of model/dcio.h.
#pragma once

#include <cstdint>

#include "model/io_points.h"
#include "model/sensors.h"

namespace QtSts {

// What every DCIO board reports. Who makes a board gives it its two point lists.
class STATUS_API CCANDcio : public CCANSensor {
 public:
  IOList Points;
  bool BoardConnected = false;  // always agrees with Connected
  std::uint32_t PortStatus = 0;

  void SetConnected(bool connected) override {
    Connected = connected;
    BoardConnected = connected;
  }

  static const ClassInfo Class;
};

class STATUS_API CCANDcio16in3out8cfg : public CCANDcio {
 public:
  static const ClassInfo Class;
};

class STATUS_API CCANDcio2in1out : public CCANDcio {
 public:
  static const ClassInfo Class;
};

// The speed of one fan of a board.
class STATUS_API FanRpm : public CListedStatus {
 public:
  std::uint32_t Ordinal = 0;   // running number on the board, from 0
  std::uint8_t FanNumber = 0;  // from its row
  std::uint16_t Rpm = 0;       // revolutions per minute

  FanRpm() = default;
  FanRpm(std::uint32_t ordinal, std::uint8_t fan_number, std::uint16_t rpm)
      : Ordinal(ordinal), FanNumber(fan_number), Rpm(rpm) {}

  static const ClassInfo Class;
};

class STATUS_API FanRpmList : public COwningList<FanRpm> {
 public:
  // Appends `fan`, which belongs to the list from this call on; always true.
  bool Add(FanRpm* fan) {
    COwningList::Add(fan);
    return true;
  }
};

class STATUS_API CCANDcioAndFanRpm : public CCANDcio {
 public:
  FanRpmList FanRpms;

  static const ClassInfo Class;
};

}  // namespace QtSts
