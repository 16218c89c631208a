// The status document: one object that describes the whole controller.
#pragma once

#include <cstdint>
#include <string>

#include "model/dcio.h"
#include "model/inputs.h"
#include "model/network.h"
#include "model/outputs.h"
#include "model/sensors.h"

namespace QtSts {

class STATUS_API CSolarInfo : public CListedStatus {
 public:
  std::string CalculatedSunrise = "nil";  // verbatim from its row
  std::string CalculatedSunset = "nil";

  static const ClassInfo Class;
};

// The root. Scalars and texts keep their values from cycle to cycle until something overwrites
// them; only the lists are rebuilt. Written during a cycle, on its thread, without a lock.
class STATUS_API CStatus : public CListedStatus {
 public:
  CSensorList Sensors;  // on the controller's own buses
  CNetwork Network;
  CDCIO DCIO;
  CCompositorList Compositors;
  CInputList Inputs;
  COutputList Outputs;
  CSolarInfo SolarInfo;
  bool DaylightSaving = false;
  bool SecondFlag = false;
  std::string FirmwareVersion;
  std::string DisplayFirmwareVersion;
  std::string ErrorFlags = "0x0000000000000000";
  std::string LocalTime;  // "2026-11-15T10:22:15+01:00"
  std::string Uptime = "P0S";
  std::string ConfigurationTimestamp = "2000-01-01T00:00:00";
  std::string GUID;
  std::string Version = "1.0";
  // The resources deliberately start at 100000 kB, not at 0.
  std::int64_t MemoryTotal = 100000;
  std::int64_t MemoryFree = 100000;
  std::uint64_t StorageTotal = 100000;
  std::uint64_t StorageFree = 100000;
  std::int32_t HardwareID1 = 0;
  std::int32_t HardwareID2 = 0;
  std::int32_t HardwareID3 = 0;
  std::uint32_t SerialNumber = 0;
  std::int32_t ProductFamily = 1;
  std::uint32_t FurtherWord1 = 0;
  std::uint32_t FurtherWord2 = 0;
  std::uint32_t FurtherWord3 = 0;
  std::uint32_t FurtherWord4 = 0;
  std::uint32_t FurtherWord5 = 0;

  static const ClassInfo Class;
};

}  // namespace QtSts
