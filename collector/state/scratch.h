// The scratch state of a collection cycle: where row handlers park one attribute after another
// until a "Type" row turns what is parked into a record.
//
// Process-wide, exported, all zero at load. Every cycle clears u32_TTableNumAttribute, and a record
// the fans, voltages and staged points that it takes; all else keeps the value of the last row that
// wrote it, across sensors, boards and cycles. This carry-over is deliberate: a sensor that lacks
// an attribute row inherits that attribute from the sensor read before it. Nothing here is locked:
// one cycle at a time in a process.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "collector/state/codes.h"
#include "collector/state/export.h"

// State of a beacon or roundel; 65535 K and 255 % stand for "no reading".
struct BeaconRoundel {
  std::uint8_t RedDimLevel;
  std::uint8_t AmberDimLevel;
  std::uint8_t ErrorFlags;
  std::uint16_t RedLedErrorCount;
  std::uint16_t AmberLedErrorCount;
  std::uint8_t StatusFlags;
  std::uint8_t SyncControlStartBit;
  std::uint16_t PerColorLedCount;
  std::uint16_t TemperatureKelvin;
  std::uint8_t Humidity;
};

// One input or output point of a DCIO board, staged until its board is built.
struct DcioPoint {
  std::uint8_t Present = 0;  // 0: empty, skipped when a board takes its points
  std::uint32_t Type = 0;    // which point class is made
  std::int32_t Index = 0;    // 1-based number of the point on its board
  std::int32_t State = 0;    // 1: active; anything else: inactive
  std::string Label;
};

inline constexpr std::size_t kStagedInputs = 24;
inline constexpr std::size_t kStagedOutputs = 12;

// Attributes of the sensor being read.
COLLECTOR_API extern std::uint32_t u32_SensorNumber;
COLLECTOR_API extern std::uint32_t u32_Address;
COLLECTOR_API extern std::uint32_t u32_Bus;
COLLECTOR_API extern bool b_Connected;
COLLECTOR_API extern AttachmentType at_Type;
COLLECTOR_API extern SensorType st_Type;
COLLECTOR_API extern std::uint32_t u32_NumAttribute;
COLLECTOR_API extern std::uint32_t uiSyncLossCounter;
COLLECTOR_API extern std::uint32_t u32_DispInterfaceNumAttribute;
COLLECTOR_API extern std::uint16_t u16_DispInterfaceAddress;
COLLECTOR_API extern std::uint32_t u32_Face;
COLLECTOR_API extern std::int32_t s32_Revision;
COLLECTOR_API extern std::uint16_t u16_IdType;
COLLECTOR_API extern std::uint8_t u8_HardwareID;
COLLECTOR_API extern float f_celsius;  // degrees Celsius
COLLECTOR_API extern std::uint16_t u16_OneMinAverage;
COLLECTOR_API extern std::uint16_t u16_TenMinAverage;
COLLECTOR_API extern std::uint16_t u16_OneMinLuxAverage;  // lux
COLLECTOR_API extern std::uint16_t u16_TenMinLuxAverage;  // lux
COLLECTOR_API extern std::uint16_t u16_LongTermAverage;
COLLECTOR_API extern float f_Humidity_OneMinAverage;
COLLECTOR_API extern float f_Humidity_TenMinAverage;
COLLECTOR_API extern std::uint16_t u16_AverageRpm;
COLLECTOR_API extern std::uint16_t u16_CurrentRpm;
COLLECTOR_API extern float f_inputVoltage;
COLLECTOR_API extern float f_outputVoltage;
COLLECTOR_API extern float f_celsiusTemperature;  // isolation board, degrees Celsius
COLLECTOR_API extern std::uint32_t u32_PortStatus;
COLLECTOR_API extern std::uint16_t u16_Ambient;
COLLECTOR_API extern std::uint32_t u32_Front;
COLLECTOR_API extern std::uint32_t u32_Back;
COLLECTOR_API extern LockState Locked;
COLLECTOR_API extern double dLatitude;
COLLECTOR_API extern double dLongitude;
COLLECTOR_API extern double dAltitude;
COLLECTOR_API extern std::uint32_t uiCompass;
COLLECTOR_API extern std::uint32_t u32_FansEnabled;
COLLECTOR_API extern std::map<std::uint8_t, std::uint16_t> FanRpms;  // fan number to rpm
COLLECTOR_API extern std::vector<float> f_Psrb_InputVoltages;        // in arrival order
COLLECTOR_API extern std::vector<float> f_Psrb_OutputVoltages;       // in arrival order
COLLECTOR_API extern std::uint8_t u8_Psrb_HardwareErrors;
COLLECTOR_API extern BeaconRoundel beaconRoundel;

// Attributes of the DCIO device being read.
COLLECTOR_API extern std::uint32_t u32_DCIO_SensorNumber;
COLLECTOR_API extern std::uint32_t u32_DCIO_State;
COLLECTOR_API extern std::uint32_t u32_DCIO_ErrCntr;
COLLECTOR_API extern std::uint32_t u32_DCIO_NumAttr;
COLLECTOR_API extern std::uint32_t u32_DCIO_Address;
COLLECTOR_API extern DcioType st_DCIO_Type;

// Points of the DCIO board being read; a board empties the entries that it takes.
COLLECTOR_API extern std::array<DcioPoint, kStagedInputs> dcioInputs;
COLLECTOR_API extern std::array<DcioPoint, kStagedOutputs> dcioOutputs;

// T-table device nodes accepted so far in this cycle: the running number of the next one.
COLLECTOR_API extern std::uint32_t u32_TTableNumAttribute;

// Sets u32_TTableNumAttribute to 0 and nothing else; called once per cycle, before the rows.
COLLECTOR_API void Reset_Globals();
