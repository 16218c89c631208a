#include "sensors/record_builder.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>
#include <type_traits>

#include "collector/state/element_rows.h"
#include "collector/state/report.h"
#include "model/beacons.h"
#include "model/can_sensors.h"
#include "model/dcio_boards.h"
#include "model/onboard_sensors.h"
#include "sensors/points.h"

namespace sensors {
namespace {

// Values that stand for one that is not reported.
constexpr std::int32_t kNoRevision = -1;
constexpr std::uint16_t kNoKelvin = 65535;
constexpr std::uint8_t kNoHumidity = 255;

using elements::From;
using elements::Joined;
using elements::kTakenOnce;
using elements::Rows;
using elements::Taken;
using elements::Unless;
using elements::UsedUp;
using QtSts::CBeaconRecord;
using QtSts::CCANAirflowSensor;
using QtSts::CCANDcio;
using QtSts::CCANFanRpmSensor;
using QtSts::CCANIsolationBoardSensor;
using QtSts::CCANLightLuxSensor;
using QtSts::CCANLightSensor;
using QtSts::CCANMultiDirectionalSensor;
using QtSts::CCANPsrbSensor;
using QtSts::CCANSensor;
using QtSts::CSensor;

// What records of all kinds take.
using Header = Rows<From<&CSensor::NumberOfAttributes, &u32_NumAttribute>,
                    From<&CSensor::SyncLossCounter, &uiSyncLossCounter>>;

// Classes that keep the flag elsewhere too do so in SetConnected.
struct ConnectedByCall {
  static void Fill(CCANSensor& record) { record.SetConnected(b_Connected); }
  static void Release() {}
  static constexpr auto kTaken = kTakenOnce<&CSensor::Connected, &b_Connected>;
};
using CanHeader = Rows<ConnectedByCall, From<&CCANSensor::Address, &u32_Address>,
                       From<&CCANSensor::Bus, &u32_Bus>,
                       Unless<&CCANSensor::Revision, &s32_Revision, kNoRevision>>;
using OnboardHeader = Rows<From<&CSensor::Connected, &b_Connected>>;

// Deliberate: behind an interface every record reports its face; on the own buses only the kinds
// that have this row do.
using Face = From<&CCANSensor::Face, &u32_Face>;
constexpr Taken kFaceBehindInterface = {&rows::kPlace<&u32_Face>,
                                        &elements::MemberIn<&CCANSensor::Face>, true};

// The staged points, on lists for so many inputs and outputs.
template <std::uint32_t kInputs, std::uint32_t kOutputs>
struct Points {
  static void Fill(CCANDcio& board) {
    board.Points.Inputs = std::make_unique<QtSts::InputListType>(kInputs);
    board.Points.Outputs = std::make_unique<QtSts::OutputListType>(kOutputs);
    PopulateInputs(&board);
    PopulateOutputs(&board);
  }
  static void Release() {}  // each entry is emptied when it is taken
  static constexpr auto kTaken = Joined(kTakenOnce<&CCANDcio::Points, &dcioInputs>,
                                        kTakenOnce<&CCANDcio::Points, &dcioOutputs>);
};
using PortStatus = From<&CCANDcio::PortStatus, &u32_PortStatus>;

void ReportFan(std::uint8_t number, const QtSts::FanRpm& fan) {
  observe::Report([&] {
    observe::Point event;
    event.Where = observe::PointPlace::kFan;
    event.Entry = number;
    event.Element = &fan;
    return event;
  });
}

struct Fans {
  static void Fill(QtSts::CCANDcioAndFanRpm& board) {
    std::uint32_t ordinal = 0;
    for (const auto& [fan_number, rpm] : FanRpms) {
      auto* const fan = new QtSts::FanRpm(ordinal, fan_number, rpm);
      board.FanRpms.Add(fan);
      ReportFan(fan_number, *fan);
      ++ordinal;
    }
  }
  static void Release() { FanRpms.clear(); }
  static constexpr auto kTaken = kTakenOnce<&QtSts::CCANDcioAndFanRpm::FanRpms, &FanRpms>;
};

// Beacons and roundels. Deliberately their revision is present whatever its value.
using Beacon =
    Rows<From<&CCANSensor::Revision, &s32_Revision>, From<&CCANSensor::IdType, &u16_IdType>,
         From<&CCANSensor::HardwareID, &u8_HardwareID>,
         From<&CBeaconRecord::RedDimLevel, &BeaconRoundel::RedDimLevel>,
         From<&CBeaconRecord::AmberDimLevel, &BeaconRoundel::AmberDimLevel>,
         From<&CBeaconRecord::ErrorFlags, &BeaconRoundel::ErrorFlags>,
         From<&CBeaconRecord::RedLedErrorCount, &BeaconRoundel::RedLedErrorCount>,
         From<&CBeaconRecord::AmberLedErrorCount, &BeaconRoundel::AmberLedErrorCount>,
         From<&CBeaconRecord::StatusFlags, &BeaconRoundel::StatusFlags>,
         From<&CBeaconRecord::SyncControlStartBit, &BeaconRoundel::SyncControlStartBit>,
         From<&CBeaconRecord::PerColorLedCount, &BeaconRoundel::PerColorLedCount>,
         Unless<&CBeaconRecord::TemperatureKelvin, &BeaconRoundel::TemperatureKelvin, kNoKelvin>,
         Unless<&CBeaconRecord::Humidity, &BeaconRoundel::Humidity, kNoHumidity>>;

// Only CAN sensors may stand behind an interface.
template <class Record>
constexpr bool kIsCan = std::is_base_of_v<CCANSensor, Record>;

template <class Record, class Own>
std::unique_ptr<CSensor> Make(Placement placement) {
  auto record = std::make_unique<Record>();
  Header::Fill(static_cast<CSensor&>(*record));
  if constexpr (kIsCan<Record>) {
    CanHeader::Fill(static_cast<CCANSensor&>(*record));
    if (placement == Placement::kBehindInterface) {
      Face::Fill(*record);
    }
  } else {
    OnboardHeader::Fill(static_cast<CSensor&>(*record));
  }
  Own::Fill(*record);
  Own::Release();
  return record;
}

template <class Record, class Own>
consteval auto TakenBy() {
  if constexpr (kIsCan<Record>) {
    return Joined(Header::kTaken, CanHeader::kTaken, std::array{kFaceBehindInterface}, Own::kTaken);
  } else {
    return Joined(Header::kTaken, OnboardHeader::kTaken, Own::kTaken);
  }
}
template <class Record, class Own>
constexpr auto kTakenBy = TakenBy<Record, Own>();

template <class Record, class... Row>
constexpr SensorKind Kind(SensorType code, const char* text) {
  using Own = Rows<Row...>;
  return {code, kIsCan<Record>, text, &Record::Class, kTakenBy<Record, Own>, &Make<Record, Own>};
}

// Capacities are the boards' own and deliberately not what the name says.
constexpr SensorKind kKinds[] = {
    Kind<QtSts::CCANTempSensor,  //
         From<&QtSts::CCANTempSensor::Celsius, &f_celsius>>(kCanTemp, "CANTemp"),
    Kind<CCANLightSensor,  //
         From<&CCANLightSensor::OneMinAverage, &u16_OneMinAverage>,
         From<&CCANLightSensor::TenMinAverage, &u16_TenMinAverage>>(kCanLight, "CANLight"),
    Kind<CCANLightLuxSensor,  //
         From<&CCANLightLuxSensor::OneMinAverage, &u16_OneMinAverage>,
         From<&CCANLightLuxSensor::OneMinLuxAverage, &u16_OneMinLuxAverage>,
         From<&CCANLightLuxSensor::TenMinAverage, &u16_TenMinAverage>,
         From<&CCANLightLuxSensor::TenMinLuxAverage, &u16_TenMinLuxAverage>>(kCanLightLux,
                                                                             "CANLightLux"),
    // Deliberately the lock state always: without a row yet it is 0, not unknown.
    Kind<CCANMultiDirectionalSensor,  //
         From<&CCANMultiDirectionalSensor::Ambient, &u16_Ambient>,
         From<&CCANMultiDirectionalSensor::Front, &u32_Front>,
         From<&CCANMultiDirectionalSensor::Back, &u32_Back>,
         From<&CCANMultiDirectionalSensor::LockState, &Locked>,
         From<&CCANMultiDirectionalSensor::Latitude, &dLatitude>,
         From<&CCANMultiDirectionalSensor::Longitude, &dLongitude>,
         From<&CCANMultiDirectionalSensor::Altitude, &dAltitude>,
         From<&CCANMultiDirectionalSensor::Compass, &uiCompass>>(kCanMultiDirectional,
                                                                 "CANMultiDirectional"),
    Kind<QtSts::CCANDoorSensor>(kCanDoor, "CANDoor"),
    Kind<QtSts::CCANHumiditySensor,
         From<&QtSts::CCANHumiditySensor::Humidity, &f_Humidity_OneMinAverage>>(kCanHumidity,
                                                                                "CANHumidity"),
    Kind<QtSts::CCANDcio16in3out8cfg, Points<24, 11>, PortStatus>(kCanDcio16In3Out8Cfg,
                                                                  "CANDcio16in3out8cfg"),
    Kind<QtSts::CCANDcio2in1out, Points<2, 1>, PortStatus>(kCanDcio2In1Out, "CANDcio2in1out"),
    Kind<QtSts::CCANDcioAndFanRpm, Face, Points<16, 12>, PortStatus, Fans>(kCanDcioAndFanRpm,
                                                                           "CANDcioAndFanRpm"),
    Kind<CCANFanRpmSensor,  //
         From<&CCANFanRpmSensor::AverageRpm, &u16_AverageRpm>,
         From<&CCANFanRpmSensor::CurrentRpm, &u16_CurrentRpm>>(kCanFanRpm, "CANFanRpm"),
    Kind<CCANAirflowSensor, Face,  //
         From<&CCANAirflowSensor::OneMinAverage, &u16_OneMinAverage>,
         From<&CCANAirflowSensor::LongTermAverage, &u16_LongTermAverage>>(kCanAirFlow,
                                                                          "CANAirFlow"),
    Kind<CCANIsolationBoardSensor,  //
         From<&CCANIsolationBoardSensor::InputVoltage, &f_inputVoltage>,
         From<&CCANIsolationBoardSensor::OutputVoltage, &f_outputVoltage>,
         From<&CCANIsolationBoardSensor::Celsius, &f_celsiusTemperature>>(kCanIsolationBoard,
                                                                          "CANIsolationBoard"),
    Kind<CCANPsrbSensor, Face,  //
         From<&CCANPsrbSensor::HardwareErrors, &u8_Psrb_HardwareErrors>,
         UsedUp<&CCANPsrbSensor::InputVoltages, &f_Psrb_InputVoltages>,
         UsedUp<&CCANPsrbSensor::OutputVoltages, &f_Psrb_OutputVoltages>>(
        kCanPowerSupplyRedundancyBoard, "CANPowerSupplyRedundancyBoard"),
    Kind<QtSts::CCANBeacon, Beacon>(kCanBeacon, "CANBeacon"),
    Kind<QtSts::CCANRoundel, Beacon>(kCanRoundel, "CANRoundel"),
    Kind<QtSts::COnboardTempSensor,  //
         From<&QtSts::COnboardTempSensor::Celsius, &f_celsius>>(kOnboardTemp, "OnboardTemp"),
    Kind<QtSts::COnboardCabinetFanControlSensor,
         From<&QtSts::COnboardCabinetFanControlSensor::FansEnabled, &u32_FansEnabled>>(
        kOnboardCabinetFanControl, "OnboardCabinetFanControl"),
};

constexpr bool IsFree(std::uint32_t code) {
  return code == kUnknownSensor ||
         std::ranges::find(kFreeSensorTypes, code) != std::end(kFreeSensorTypes);
}

consteval bool EveryCodeHasItsRowInOrder() {
  const SensorKind* kind = std::begin(kKinds);
  for (std::uint32_t code = 0; code < kUnknownSensor || kind != std::end(kKinds); ++code) {
    if (IsFree(code)) {
      continue;
    }
    if (kind == std::end(kKinds) || kind->Code != code) {
      return false;
    }
    ++kind;
  }
  return true;
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

static_assert(std::ranges::all_of(kKinds, [](const SensorKind& kind) {
  return kind.Takes.size() <= elements::kMostTaken;
}));

// The texts as words of a parser.
constexpr auto kTypeWords = [] {
  std::array<rows::Word, std::size(kKinds)> words = {};
  std::ranges::transform(kKinds, words.begin(), [](const SensorKind& kind) {
    return rows::Word{kind.Text, kind.Code};
  });
  return words;
}();

}  // namespace

constinit const rows::Parser kSensorTypeParser = rows::WordsOr(kTypeWords, kUnknownSensor);

std::span<const SensorKind> SensorKinds() { return kKinds; }

bool Takes(const SensorKind& kind, const rows::Place& place) {
  return elements::Takes(kind.Takes, place);
}

std::unique_ptr<CSensor> BuildRecord(Placement placement) {
  const auto kind = std::ranges::find(kKinds, st_Type, &SensorKind::Code);
  if (kind == std::end(kKinds) || (placement == Placement::kBehindInterface && !kind->IsCan)) {
    return nullptr;
  }
  return kind->Make(placement);
}

}  // namespace sensors
