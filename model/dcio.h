// Discrete I/O devices, from "DCIO_" rows. They are unrelated to the DCIO sensor boards.
#pragma once

#include <cstdint>
#include <memory>

#include "model/listing.h"
#include "model/owning_list.h"

namespace QtSts {

// A null value is one that the device does not report. No device stores its own number.
class STATUS_API CDCIODevice : public CListedStatus {
 public:
  std::uint32_t NumberOfAttributes = 0;
  std::unique_ptr<std::uint32_t> State;  // 1 or 0
  std::unique_ptr<std::uint32_t> ErrorCounter;
  std::unique_ptr<std::uint32_t> Address;

  static const ClassInfo Class;
};

class STATUS_API CDoorSwitch : public CDCIODevice {
 public:
  static const ClassInfo Class;
};

class STATUS_API CPowerMonitor : public CDCIODevice {
 public:
  static const ClassInfo Class;
};

class STATUS_API CRunLED : public CDCIODevice {
 public:
  static const ClassInfo Class;
};

class STATUS_API CGenericInput : public CDCIODevice {
 public:
  static const ClassInfo Class;
};

class STATUS_API CGenericOutput : public CDCIODevice {
 public:
  static const ClassInfo Class;
};

class STATUS_API CDCIODeviceList : public COwningList<CDCIODevice> {};

class STATUS_API CDCIO : public CListedStatus {
 public:
  CDCIODeviceList Devices;

  static const ClassInfo Class;
};

}  // namespace QtSts
