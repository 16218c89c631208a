#include "sensors/record_builder.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <type_traits>

#include "collector/state/numbers.h"
#include "collector/state/scratch.h"
#include "model/beacons.h"
#include "model/can_sensors.h"
#include "model/dcio_boards.h"
#include "model/onboard_sensors.h"
#include "sensors/points.h"

namespace sensors {
namespace {

// What no reading looks like on a beacon or roundel.
constexpr std::uint16_t kNoKelvin = 65535;
constexpr std::uint8_t kNoHumidity = 255;
// What an unreported revision looks like.
constexpr std::int32_t kNoRevision = -1;

void FillHeader(QtSts::CSensor& record) {
  record.NumberOfAttributes = u32_NumAttribute;
  record.SyncLossCounter = uiSyncLossCounter;
}

void FillCanHeader(QtSts::CCANSensor& record, bool with_face) {
  record.SetConnected(b_Connected);
  record.Address = u32_Address;
  record.Bus = numbers::Narrow<std::uint16_t>(u32_Bus);
  if (with_face) {
    record.Face = std::make_unique<std::uint32_t>(u32_Face);
  }
  if (s32_Revision != kNoRevision) {
    record.Revision = std::make_unique<std::int32_t>(s32_Revision);
  }
}

// Fill: the values of its own that a record of each class takes from the scratch state.

void Fill(QtSts::CCANTempSensor& record) { record.Celsius = f_celsius; }

void Fill(QtSts::CCANLightSensor& record) {
  record.OneMinAverage = u16_OneMinAverage;
  record.TenMinAverage = u16_TenMinAverage;
}

void Fill(QtSts::CCANLightLuxSensor& record) {
  record.OneMinAverage = u16_OneMinAverage;
  record.OneMinLuxAverage = u16_OneMinLuxAverage;
  record.TenMinAverage = u16_TenMinAverage;
  record.TenMinLuxAverage = u16_TenMinLuxAverage;
}

void Fill(QtSts::CCANMultiDirectionalSensor& record) {
  record.Ambient = u16_Ambient;
  record.Front = u32_Front;
  record.Back = u32_Back;
  record.LockState = Locked;  // deliberately always: without a row yet it is 0, not unknown
  record.Latitude = dLatitude;
  record.Longitude = dLongitude;
  record.Altitude = dAltitude;
  record.Compass = uiCompass;
}

void Fill(QtSts::CCANDoorSensor& /*record*/) {}

void Fill(QtSts::CCANHumiditySensor& record) { record.Humidity = f_Humidity_OneMinAverage; }

void FillBoard(QtSts::CCANDcio& board, std::uint32_t inputs, std::uint32_t outputs) {
  board.Points.Inputs = std::make_unique<QtSts::InputListType>(inputs);
  board.Points.Outputs = std::make_unique<QtSts::OutputListType>(outputs);
  board.PortStatus = u32_PortStatus;
  PopulateInputs(&board);
  PopulateOutputs(&board);
}

// The capacities are the boards' own and deliberately not what the name says.
void Fill(QtSts::CCANDcio16in3out8cfg& board) { FillBoard(board, 24, 11); }

void Fill(QtSts::CCANDcio2in1out& board) { FillBoard(board, 2, 1); }

void Fill(QtSts::CCANDcioAndFanRpm& board) {
  FillBoard(board, 16, 12);
  std::uint32_t ordinal = 0;
  for (const auto& [fan_number, rpm] : FanRpms) {
    board.FanRpms.Add(new QtSts::FanRpm(ordinal, fan_number, rpm));
    ++ordinal;
  }
  FanRpms.clear();
}

void Fill(QtSts::CCANFanRpmSensor& record) {
  record.AverageRpm = u16_AverageRpm;
  record.CurrentRpm = u16_CurrentRpm;
}

void Fill(QtSts::CCANAirflowSensor& record) {
  record.OneMinAverage = u16_OneMinAverage;
  record.LongTermAverage = u16_LongTermAverage;
}

void Fill(QtSts::CCANIsolationBoardSensor& record) {
  record.InputVoltage = f_inputVoltage;
  record.OutputVoltage = f_outputVoltage;
  record.Celsius = f_celsiusTemperature;
}

void Fill(QtSts::CCANPsrbSensor& record) {
  record.HardwareErrors = std::make_unique<std::uint8_t>(u8_Psrb_HardwareErrors);
  record.InputVoltages = f_Psrb_InputVoltages;
  record.OutputVoltages = f_Psrb_OutputVoltages;
  f_Psrb_InputVoltages.clear();
  f_Psrb_OutputVoltages.clear();
}

void Fill(QtSts::CBeaconRecord& record) {
  // Deliberately present whatever its value, unlike the revision of every other kind.
  record.Revision = std::make_unique<std::int32_t>(s32_Revision);
  record.IdType = std::make_unique<std::uint16_t>(u16_IdType);
  record.HardwareID = std::make_unique<std::uint8_t>(u8_HardwareID);
  record.RedDimLevel = beaconRoundel.RedDimLevel;
  record.AmberDimLevel = beaconRoundel.AmberDimLevel;
  record.ErrorFlags = beaconRoundel.ErrorFlags;
  record.RedLedErrorCount = beaconRoundel.RedLedErrorCount;
  record.AmberLedErrorCount = beaconRoundel.AmberLedErrorCount;
  record.StatusFlags = beaconRoundel.StatusFlags;
  record.SyncControlStartBit = beaconRoundel.SyncControlStartBit;
  record.PerColorLedCount = beaconRoundel.PerColorLedCount;
  if (beaconRoundel.TemperatureKelvin != kNoKelvin) {
    record.TemperatureKelvin = std::make_unique<std::uint16_t>(beaconRoundel.TemperatureKelvin);
  }
  if (beaconRoundel.Humidity != kNoHumidity) {
    record.Humidity = std::make_unique<std::uint8_t>(beaconRoundel.Humidity);
  }
}

void Fill(QtSts::COnboardTempSensor& record) { record.Celsius = f_celsius; }

void Fill(QtSts::COnboardCabinetFanControlSensor& record) { record.FansEnabled = u32_FansEnabled; }

template <class Record>
std::unique_ptr<QtSts::CSensor> Make(bool with_face) {
  auto record = std::make_unique<Record>();
  FillHeader(*record);
  if constexpr (std::is_base_of_v<QtSts::CCANSensor, Record>) {
    FillCanHeader(*record, with_face);
  } else {
    record->Connected = b_Connected;
  }
  Fill(*record);
  return record;
}

template <class Record>
constexpr SensorKind Kind(SensorType code, const char* text, Home accepted = Home::kAnywhere,
                          FaceRule face = FaceRule::kBehindInterface) {
  return {code, text, accepted, face, &Make<Record>};
}

constexpr auto kAnywhere = Home::kAnywhere;
constexpr auto kOwnBusOnly = Home::kOwnBusOnly;
constexpr auto kWithFace = FaceRule::kEverywhere;

constexpr SensorKind kKinds[] = {
    Kind<QtSts::CCANTempSensor>(kCanTemp, "CANTemp"),
    Kind<QtSts::CCANLightSensor>(kCanLight, "CANLight"),
    Kind<QtSts::CCANLightLuxSensor>(kCanLightLux, "CANLightLux"),
    Kind<QtSts::CCANMultiDirectionalSensor>(kCanMultiDirectional, "CANMultiDirectional"),
    Kind<QtSts::CCANDoorSensor>(kCanDoor, "CANDoor"),
    Kind<QtSts::CCANHumiditySensor>(kCanHumidity, "CANHumidity"),
    Kind<QtSts::CCANDcio16in3out8cfg>(kCanDcio16In3Out8Cfg, "CANDcio16in3out8cfg"),
    Kind<QtSts::CCANDcio2in1out>(kCanDcio2In1Out, "CANDcio2in1out"),
    Kind<QtSts::CCANDcioAndFanRpm>(kCanDcioAndFanRpm, "CANDcioAndFanRpm", kAnywhere, kWithFace),
    Kind<QtSts::CCANFanRpmSensor>(kCanFanRpm, "CANFanRpm"),
    Kind<QtSts::CCANAirflowSensor>(kCanAirFlow, "CANAirFlow", kAnywhere, kWithFace),
    Kind<QtSts::CCANIsolationBoardSensor>(kCanIsolationBoard, "CANIsolationBoard"),
    Kind<QtSts::CCANPsrbSensor>(kCanPowerSupplyRedundancyBoard, "CANPowerSupplyRedundancyBoard",
                                kAnywhere, kWithFace),
    Kind<QtSts::CCANBeacon>(kCanBeacon, "CANBeacon"),
    Kind<QtSts::CCANRoundel>(kCanRoundel, "CANRoundel"),
    Kind<QtSts::COnboardTempSensor>(kOnboardTemp, "OnboardTemp", kOwnBusOnly),
    Kind<QtSts::COnboardCabinetFanControlSensor>(kOnboardCabinetFanControl,
                                                 "OnboardCabinetFanControl", kOwnBusOnly),
};

// Codes below kUnknownSensor that are deliberately no kind.
constexpr bool IsFree(std::uint32_t code) { return code == 12 || code == 16 || code == 18; }

consteval bool EveryCodeHasItsRowInOrder() {
  const SensorKind* kind = std::begin(kKinds);
  for (std::uint32_t code = 0; code < kUnknownSensor; ++code) {
    if (IsFree(code)) {
      continue;
    }
    if (kind == std::end(kKinds) || kind->Code != code) {
      return false;
    }
    ++kind;
  }
  return kind == std::end(kKinds);
}
static_assert(EveryCodeHasItsRowInOrder());

consteval bool EveryTextIsDistinct() {
  for (const SensorKind& kind : kKinds) {
    if (std::ranges::count(kKinds, std::string_view(kind.Text), &SensorKind::Text) != 1) {
      return false;
    }
  }
  return true;
}
static_assert(EveryTextIsDistinct());

// Behind an interface there are CAN sensors only.
static_assert(std::ranges::all_of(kKinds, [](const SensorKind& kind) {
  return (kind.Code <= kCanRoundel) == (kind.Accepted == kAnywhere);
}));

}  // namespace

std::span<const SensorKind> SensorKinds() { return kKinds; }

std::unique_ptr<QtSts::CSensor> BuildRecord(Placement placement) {
  const auto kind = std::ranges::find(kKinds, st_Type, &SensorKind::Code);
  const bool behind_interface = placement == Placement::kBehindInterface;
  if (kind == std::end(kKinds) || (behind_interface && kind->Accepted == Home::kOwnBusOnly)) {
    return nullptr;
  }
  // Deliberate: behind an interface every record tells its face, on the own buses three kinds do.
  return kind->Make(behind_interface || kind->Face == FaceRule::kEverywhere);
}

}  // namespace sensors
