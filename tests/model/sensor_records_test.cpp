// The sensor records as they are made, before anything fills them.
#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "model/beacons.h"
#include "model/can_sensors.h"
#include "model/dcio_boards.h"
#include "model/listed_object.h"
#include "model/onboard_sensors.h"

namespace {

using QtSts::CCANSensor;
using QtSts::CSensor;
using testing::ElementsAre;
using testing::IsEmpty;

template <class... Records>
std::vector<std::unique_ptr<CSensor>> MakeAll() {
  std::vector<std::unique_ptr<CSensor>> all;
  (all.push_back(std::make_unique<Records>()), ...);
  return all;
}

template <class Field>
struct Owner;
template <class C, class T>
struct Owner<T C::*> {
  using Type = T;
};

// Whether each of these members is a T.
template <class T, auto... kMembers>
constexpr bool kAre = (std::is_same_v<typename Owner<decltype(kMembers)>::Type, T> && ...);
template <class T, auto... kMembers>
constexpr bool kMayBe = kAre<std::unique_ptr<T>, kMembers...>;

// The widths of the fields.
static_assert(kAre<std::uint32_t, &CSensor::NumberOfAttributes, &CSensor::SyncLossCounter>);
static_assert(kAre<bool, &CSensor::Connected, &QtSts::CCANDcio::BoardConnected>);
static_assert(kAre<std::uint64_t, &CCANSensor::Address>);
static_assert(kAre<std::uint16_t, &CCANSensor::Bus>);
static_assert(kMayBe<std::uint32_t, &CCANSensor::Face>);
static_assert(kMayBe<std::int32_t, &CCANSensor::Revision>);
static_assert(kMayBe<std::uint16_t, &CCANSensor::IdType, &QtSts::CCANBeacon::TemperatureKelvin>);
static_assert(kMayBe<std::uint8_t, &CCANSensor::HardwareID, &QtSts::CCANBeacon::Humidity,
                     &QtSts::CCANPsrbSensor::HardwareErrors>);
static_assert(
    kAre<float, &QtSts::CCANTempSensor::Celsius, &QtSts::CCANLightSensor::OneMinAverage,
         &QtSts::CCANLightSensor::TenMinAverage, &QtSts::CCANLightLuxSensor::OneMinAverage,
         &QtSts::CCANLightLuxSensor::SpareAverage, &QtSts::CCANLightLuxSensor::OneMinLuxAverage,
         &QtSts::CCANLightLuxSensor::TenMinAverage, &QtSts::CCANLightLuxSensor::TenMinLuxAverage,
         &QtSts::CCANMultiDirectionalSensor::Ambient, &QtSts::CCANHumiditySensor::Humidity,
         &QtSts::CCANIsolationBoardSensor::InputVoltage,
         &QtSts::CCANIsolationBoardSensor::OutputVoltage, &QtSts::CCANIsolationBoardSensor::Celsius,
         &QtSts::COnboardTempSensor::Celsius>);
static_assert(
    kAre<std::uint32_t, &QtSts::CCANMultiDirectionalSensor::Front,
         &QtSts::CCANMultiDirectionalSensor::Back, &QtSts::CCANMultiDirectionalSensor::LockState,
         &QtSts::CCANMultiDirectionalSensor::Compass, &QtSts::CCANFanRpmSensor::AverageRpm,
         &QtSts::CCANFanRpmSensor::CurrentRpm, &QtSts::CCANAirflowSensor::OneMinAverage,
         &QtSts::CCANAirflowSensor::LongTermAverage, &QtSts::CCANDcio::PortStatus,
         &QtSts::COnboardCabinetFanControlSensor::FansEnabled>);
static_assert(kAre<double, &QtSts::CCANMultiDirectionalSensor::Latitude,
                   &QtSts::CCANMultiDirectionalSensor::Longitude,
                   &QtSts::CCANMultiDirectionalSensor::Altitude>);
static_assert(kAre<std::vector<float>, &QtSts::CCANPsrbSensor::InputVoltages,
                   &QtSts::CCANPsrbSensor::OutputVoltages>);
static_assert(kAre<std::uint8_t, &QtSts::CCANBeacon::RedDimLevel, &QtSts::CCANBeacon::AmberDimLevel,
                   &QtSts::CCANBeacon::ErrorFlags, &QtSts::CCANBeacon::StatusFlags,
                   &QtSts::CCANBeacon::SyncControlStartBit>);
static_assert(kAre<std::uint16_t, &QtSts::CCANBeacon::RedLedErrorCount,
                   &QtSts::CCANBeacon::AmberLedErrorCount, &QtSts::CCANBeacon::PerColorLedCount>);

// Boards, lamps and the multi-directional sensor set their connected flag themselves.
template <class Record, class Setter = decltype(&Record::SetConnected)>
constexpr bool kSetsItsOwn = !std::is_same_v<Setter, void (CCANSensor::*)(bool)>;
static_assert(kSetsItsOwn<QtSts::CCANMultiDirectionalSensor>);
static_assert(kSetsItsOwn<QtSts::CCANBeacon>);
static_assert(kSetsItsOwn<QtSts::CCANRoundel>);
static_assert(kSetsItsOwn<QtSts::CCANDcio2in1out>);
static_assert(!kSetsItsOwn<QtSts::CCANTempSensor>);

// One face cell: no record has a second one of its own.
static_assert(
    std::is_same_v<decltype(&QtSts::CCANAirflowSensor::Face), decltype(&CCANSensor::Face)>);
static_assert(std::is_same_v<decltype(&QtSts::CCANPsrbSensor::Face), decltype(&CCANSensor::Face)>);
static_assert(
    std::is_same_v<decltype(&QtSts::CCANDcioAndFanRpm::Face), decltype(&CCANSensor::Face)>);

// By type code.
std::vector<std::unique_ptr<CSensor>> EveryRecord() {
  return MakeAll<QtSts::CCANTempSensor, QtSts::CCANLightSensor, QtSts::CCANLightLuxSensor,
                 QtSts::CCANMultiDirectionalSensor, QtSts::CCANDoorSensor,
                 QtSts::CCANHumiditySensor, QtSts::CCANDcio16in3out8cfg, QtSts::CCANDcio2in1out,
                 QtSts::CCANDcioAndFanRpm, QtSts::CCANFanRpmSensor, QtSts::CCANAirflowSensor,
                 QtSts::CCANIsolationBoardSensor, QtSts::CCANPsrbSensor, QtSts::CCANBeacon,
                 QtSts::CCANRoundel, QtSts::COnboardTempSensor,
                 QtSts::COnboardCabinetFanControlSensor>();
}

// The scalars of one record that are not at zero, "false" or absent, as "Name=value". One that may
// be absent is listed at zero, too.
std::vector<std::string> NotAtZero(const CSensor& record) {
  std::vector<std::string> found;
  QtSts::ListedObject(record).VisitFields([&found](const QtSts::ListedField& field) {
    std::string text;
    if (field.Listed().Scalar != nullptr && field.IsReported()) {
      field.Format(&text);
    }
    const bool at_zero = text == "0" || text == "false";
    if (!text.empty() && (field.Listed().Optional || !at_zero)) {
      found.push_back(std::string(field.Listed().Name) + "=" + text);
    }
    return true;
  });
  return found;
}

}  // namespace

TEST(SensorRecord, StartsWithEveryFieldZeroOrAbsentButAnUnknownLock) {
  for (const auto& record : EveryRecord()) {
    ASSERT_NE(QtSts::ClassOf(*record), nullptr);
    SCOPED_TRACE(QtSts::ClassOf(*record)->Name);
    if (dynamic_cast<QtSts::CCANMultiDirectionalSensor*>(record.get()) != nullptr) {
      EXPECT_THAT(NotAtZero(*record), ElementsAre("LockState=3"));
    } else {
      EXPECT_THAT(NotAtZero(*record), IsEmpty());
    }
  }
}

TEST(SensorRecord, IsListedUnderItsClassNameWithoutALeadingC) {
  std::vector<std::string> names;
  for (const auto& record : EveryRecord()) {
    names.emplace_back(QtSts::ClassOf(*record)->Name);
  }
  EXPECT_THAT(names, ElementsAre("CANTempSensor", "CANLightSensor", "CANLightLuxSensor",
                                 "CANMultiDirectionalSensor", "CANDoorSensor", "CANHumiditySensor",
                                 "CANDcio16in3out8cfg", "CANDcio2in1out", "CANDcioAndFanRpm",
                                 "CANFanRpmSensor", "CANAirflowSensor", "CANIsolationBoardSensor",
                                 "CANPsrbSensor", "CANBeacon", "CANRoundel", "OnboardTempSensor",
                                 "OnboardCabinetFanControlSensor"));
}

TEST(SensorRecord, HasNoPointListsUntilItsMakerGivesThem) {
  const QtSts::CCANDcio16in3out8cfg board;
  EXPECT_EQ(board.Points.Inputs, nullptr);
  EXPECT_EQ(board.Points.Outputs, nullptr);
}

TEST(SensorRecord, StoresConnectedThroughTheCommonOperation) {
  for (const auto& record : EveryRecord()) {
    auto* const sensor = dynamic_cast<CCANSensor*>(record.get());
    if (sensor == nullptr) {
      continue;
    }
    SCOPED_TRACE(QtSts::ClassOf(*record)->Name);
    sensor->SetConnected(true);
    EXPECT_TRUE(sensor->Connected);
    sensor->SetConnected(false);
    EXPECT_FALSE(sensor->Connected);
  }
}

TEST(SensorRecord, OfTheControllerBoardIsNoCanSensor) {
  static_assert(std::is_base_of_v<CSensor, QtSts::COnboardTempSensor>);
  static_assert(!std::is_base_of_v<CCANSensor, QtSts::COnboardTempSensor>);
  static_assert(!std::is_base_of_v<CCANSensor, QtSts::COnboardCabinetFanControlSensor>);
  for (const QtSts::ClassInfo* info :
       {&QtSts::COnboardTempSensor::Class, &QtSts::COnboardCabinetFanControlSensor::Class}) {
    EXPECT_EQ(info->Base, &CSensor::Class);
    EXPECT_EQ(info->OwnFields().size(), 1U);
  }
}

TEST(SensorRecord, OfARoundelIsLaidOutLikeThatOfABeacon) {
  EXPECT_EQ(QtSts::CCANBeacon::Class.Base, &QtSts::CBeaconRecord::Class);
  EXPECT_EQ(QtSts::CCANRoundel::Class.Base, &QtSts::CBeaconRecord::Class);
  static_assert(sizeof(QtSts::CCANBeacon) == sizeof(QtSts::CCANRoundel));
}
