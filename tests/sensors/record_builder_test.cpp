// What a record of each kind takes from the scratch state, in both placements.
#include "sensors/record_builder.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "model/beacons.h"
#include "model/can_sensors.h"
#include "model/dcio_boards.h"
#include "model/onboard_sensors.h"
#include "tests/sensors/records_fixture.h"

namespace {

using QtSts::CCANSensor;
using QtSts::CSensor;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pointee;

class Records : public RecordTest {};

std::vector<sensors::SensorKind> Kinds(bool (*wanted)(const sensors::SensorKind& kind)) {
  std::vector<sensors::SensorKind> kinds;
  std::ranges::copy_if(sensors::SensorKinds(), std::back_inserter(kinds), wanted);
  return kinds;
}

// The kinds that both placements accept.
std::vector<sensors::SensorKind> CanKinds() {
  return Kinds([](const sensors::SensorKind& kind) { return kind.Code <= kCanRoundel; });
}

bool IsBeacon(SensorType type) { return type == kCanBeacon || type == kCanRoundel; }

}  // namespace

TEST_F(Records, OfEveryCanKindHaveTheCommonHeaderInBothPlacements) {
  ASSERT_EQ(CanKinds().size(), 15U);
  for (const sensors::SensorKind& kind : CanKinds()) {
    SCOPED_TRACE(kind.Text);
    for (const CCANSensor* record :
         {&BuildOwn<CCANSensor>(kind.Code), &BuildBehindRouter<CCANSensor>(kind.Code)}) {
      EXPECT_EQ(record->NumberOfAttributes, 21U);
      EXPECT_TRUE(record->Connected);
      EXPECT_EQ(record->SyncLossCounter, 22U);
      EXPECT_EQ(record->Address, 0x00000000FFFFFFFFU);
      EXPECT_EQ(record->Bus, 1);
      EXPECT_THAT(record->Revision, Pointee(24));
      if (IsBeacon(kind.Code)) {
        EXPECT_THAT(record->IdType, Pointee(25));
        EXPECT_THAT(record->HardwareID, Pointee(26));
      } else {
        EXPECT_EQ(record->IdType, nullptr);
        EXPECT_EQ(record->HardwareID, nullptr);
      }
    }
  }
}

TEST_F(Records, ReportTheirFaceBehindAnInterfaceAndThreeKindsOnTheOwnBusesToo) {
  for (const sensors::SensorKind& kind : CanKinds()) {
    SCOPED_TRACE(kind.Text);
    const bool everywhere = kind.Code == kCanDcioAndFanRpm || kind.Code == kCanAirFlow ||
                            kind.Code == kCanPowerSupplyRedundancyBoard;
    const CCANSensor& own = BuildOwn<CCANSensor>(kind.Code);
    EXPECT_EQ(own.Face != nullptr, everywhere);
    if (own.Face != nullptr) {
      EXPECT_EQ(*own.Face, 23U);
    }
    EXPECT_THAT(BuildBehindRouter<CCANSensor>(kind.Code).Face, Pointee(23U));
  }
}

TEST_F(Records, ReportFaceZeroWhenNoFaceRowEverCame) {
  ClearScratch();
  EXPECT_THAT(BuildBehindRouter<CCANSensor>(kCanTemp).Face, Pointee(0U));
  EXPECT_THAT(BuildOwn<CCANSensor>(kCanAirFlow).Face, Pointee(0U));
}

TEST_F(Records, HaveNoRevisionAtMinusOneButOfABeaconOrRoundel) {
  s32_Revision = -1;
  for (const sensors::SensorKind& kind : CanKinds()) {
    SCOPED_TRACE(kind.Text);
    for (const CCANSensor* record :
         {&BuildOwn<CCANSensor>(kind.Code), &BuildBehindRouter<CCANSensor>(kind.Code)}) {
      if (IsBeacon(kind.Code)) {
        EXPECT_THAT(record->Revision, Pointee(-1));
      } else {
        EXPECT_EQ(record->Revision, nullptr);
      }
    }
  }
}

TEST_F(Records, HaveRevisionZeroInAFreshProcess) {
  ClearScratch();
  for (const sensors::SensorKind& kind : CanKinds()) {
    SCOPED_TRACE(kind.Text);
    EXPECT_THAT(BuildOwn<CCANSensor>(kind.Code).Revision, Pointee(0));
  }
}

TEST_F(Records, OfAnyOtherRevisionHaveIt) {
  for (const int revision : {-2, 1, 2147483647, -2147483647 - 1}) {
    s32_Revision = revision;
    EXPECT_THAT(BuildOwn<CCANSensor>(kCanDoor).Revision, Pointee(revision));
  }
}

TEST_F(Records, ReportThatTheyAreDisconnectedOnEveryKind) {
  b_Connected = false;
  for (const sensors::SensorKind& kind : sensors::SensorKinds()) {
    SCOPED_TRACE(kind.Text);
    EXPECT_FALSE(BuildOwn<CSensor>(kind.Code).Connected);
  }
}

TEST_F(Records, OfTemperatureHoldIt) {
  EXPECT_EQ(BuildOwn<QtSts::CCANTempSensor>(kCanTemp).Celsius, 27.5F);
}

TEST_F(Records, OfLightHoldTheirAveragesAsFloats) {
  const auto& light = BuildOwn<QtSts::CCANLightSensor>(kCanLight);
  EXPECT_EQ(light.OneMinAverage, 28.0F);
  EXPECT_EQ(light.TenMinAverage, 29.0F);
}

TEST_F(Records, OfLuxHoldFiveFloatsTheSecondLeftAtZero) {
  const auto& lux = BuildOwn<QtSts::CCANLightLuxSensor>(kCanLightLux);
  EXPECT_EQ(lux.OneMinAverage, 28.0F);
  EXPECT_EQ(lux.SpareAverage, 0.0F);
  EXPECT_EQ(lux.OneMinLuxAverage, 30.0F);
  EXPECT_EQ(lux.TenMinAverage, 29.0F);
  EXPECT_EQ(lux.TenMinLuxAverage, 31.0F);
  std::vector<std::string> names;
  for (const QtSts::Field& field : QtSts::CCANLightLuxSensor::Class.OwnFields()) {
    names.emplace_back(field.Name);
  }
  EXPECT_THAT(names, ElementsAre("OneMinAverage", "SpareAverage", "OneMinLuxAverage",
                                 "TenMinAverage", "TenMinLuxAverage"));
}

TEST_F(Records, OfAMultiDirectionalSensorHoldLightLockAndPosition) {
  const auto& record = BuildOwn<QtSts::CCANMultiDirectionalSensor>(kCanMultiDirectional);
  EXPECT_EQ(record.Ambient, 41.0F);
  EXPECT_EQ(record.Front, 42U);
  EXPECT_EQ(record.Back, 43U);
  EXPECT_EQ(record.LockState, 1U);
  EXPECT_EQ(record.Latitude, 44.0);
  EXPECT_EQ(record.Longitude, 45.0);
  EXPECT_EQ(record.Altitude, 46.0);
  EXPECT_EQ(record.Compass, 47U);
}

TEST_F(Records, OfAMultiDirectionalSensorLoseTheirUnknownLockInAFreshProcess) {
  // The record starts at 3, unknown, but the scratch state's 0 always overwrites it.
  ClearScratch();
  EXPECT_EQ(BuildOwn<QtSts::CCANMultiDirectionalSensor>(kCanMultiDirectional).LockState, 0U);
}

TEST_F(Records, OfHumidityHoldTheOneMinuteAverage) {
  EXPECT_EQ(BuildOwn<QtSts::CCANHumiditySensor>(kCanHumidity).Humidity, 33.5F);
}

TEST_F(Records, OfAFanSensorHoldItsSpeedsZeroExtended) {
  const auto& fan = BuildOwn<QtSts::CCANFanRpmSensor>(kCanFanRpm);
  EXPECT_EQ(fan.AverageRpm, 35U);
  EXPECT_EQ(fan.CurrentRpm, 65535U);
}

TEST_F(Records, OfAFanSensorInheritSpeedsOfASensorBefore) {
  Send(0, {{"AverageRpm", "1200"}, {"CurrentRpm", "1250"}, {"Type", "CANTemp"}});
  Send(1, "Type", "CANFanRpm");
  const auto& fan = At<QtSts::CCANFanRpmSensor>(status_.Sensors, 1);
  EXPECT_EQ(fan.AverageRpm, 1200U);
  EXPECT_EQ(fan.CurrentRpm, 1250U);
}

TEST_F(Records, OfAirflowHoldTheirAveragesZeroExtended) {
  u16_LongTermAverage = 65535;
  const auto& airflow = BuildOwn<QtSts::CCANAirflowSensor>(kCanAirFlow);
  EXPECT_EQ(airflow.OneMinAverage, 28U);
  EXPECT_EQ(airflow.LongTermAverage, 65535U);
}

TEST_F(Records, OfAnIsolationBoardHoldVoltagesAndTemperature) {
  const auto& board = BuildOwn<QtSts::CCANIsolationBoardSensor>(kCanIsolationBoard);
  EXPECT_EQ(board.InputVoltage, 37.5F);
  EXPECT_EQ(board.OutputVoltage, 38.5F);
  EXPECT_EQ(board.Celsius, 39.5F);
}

TEST_F(Records, OfBeaconsAndRoundelsHoldTheirBlock) {
  for (const SensorType type : {kCanBeacon, kCanRoundel}) {
    SCOPED_TRACE(type);
    const auto& record = BuildOwn<QtSts::CBeaconRecord>(type);
    EXPECT_EQ(dynamic_cast<const QtSts::CCANBeacon*>(&record) != nullptr, type == kCanBeacon);
    EXPECT_EQ(dynamic_cast<const QtSts::CCANRoundel*>(&record) != nullptr, type == kCanRoundel);
    EXPECT_EQ(record.RedDimLevel, 50);
    EXPECT_EQ(record.AmberDimLevel, 51);
    EXPECT_EQ(record.ErrorFlags, 52);
    EXPECT_EQ(record.RedLedErrorCount, 53);
    EXPECT_EQ(record.AmberLedErrorCount, 54);
    EXPECT_EQ(record.StatusFlags, 55);
    EXPECT_EQ(record.SyncControlStartBit, 56);
    EXPECT_EQ(record.PerColorLedCount, 57);
    EXPECT_THAT(record.TemperatureKelvin, Pointee(300));
    EXPECT_THAT(record.Humidity, Pointee(59));
  }
}

TEST_F(Records, OfBeaconsLeaveOutTheReadingsThatAreAllOnes) {
  constexpr struct {
    std::uint16_t Kelvin;
    std::uint8_t Humidity;
    bool HasKelvin;
    bool HasHumidity;
  } kRows[] = {{65535, 255, false, false},
               {65535, 0, false, true},
               {0, 255, true, false},
               {0, 0, true, true},
               {65534, 254, true, true}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.Kelvin << " K, " << int{row.Humidity} << " %");
    beaconRoundel.TemperatureKelvin = row.Kelvin;
    beaconRoundel.Humidity = row.Humidity;
    for (const QtSts::CBeaconRecord* record :
         {&BuildOwn<QtSts::CBeaconRecord>(kCanBeacon),
          &BuildBehindRouter<QtSts::CBeaconRecord>(kCanRoundel)}) {
      EXPECT_EQ(record->TemperatureKelvin != nullptr, row.HasKelvin);
      EXPECT_EQ(record->Humidity != nullptr, row.HasHumidity);
      if (row.HasKelvin) {
        EXPECT_THAT(record->TemperatureKelvin, Pointee(row.Kelvin));
      }
      if (row.HasHumidity) {
        EXPECT_THAT(record->Humidity, Pointee(row.Humidity));
      }
    }
  }
}

TEST_F(Records, OfBeaconsReportTheirReadingsOfZeroInAFreshProcess) {
  ClearScratch();
  const auto& beacon = BuildOwn<QtSts::CCANBeacon>(kCanBeacon);
  EXPECT_THAT(beacon.TemperatureKelvin, Pointee(0));
  EXPECT_THAT(beacon.Humidity, Pointee(0));
  EXPECT_THAT(beacon.IdType, Pointee(0));
  EXPECT_THAT(beacon.HardwareID, Pointee(0));
}

TEST_F(Records, OfTheControllerBoardHoldTheirFourValuesAlone) {
  const auto& temp = BuildOwn<QtSts::COnboardTempSensor>(kOnboardTemp);
  EXPECT_EQ(temp.NumberOfAttributes, 21U);
  EXPECT_TRUE(temp.Connected);
  EXPECT_EQ(temp.SyncLossCounter, 22U);
  EXPECT_EQ(temp.Celsius, 27.5F);
  const auto& fans = BuildOwn<QtSts::COnboardCabinetFanControlSensor>(kOnboardCabinetFanControl);
  EXPECT_EQ(fans.NumberOfAttributes, 21U);
  EXPECT_TRUE(fans.Connected);
  EXPECT_EQ(fans.SyncLossCounter, 22U);
  EXPECT_EQ(fans.FansEnabled, 48U);
  EXPECT_EQ(dynamic_cast<const CCANSensor*>(status_.Sensors[0]), nullptr);
}

TEST_F(Records, AreFilledAlikeInBothPlacements) {
  for (const sensors::SensorKind& kind : CanKinds()) {
    SCOPED_TRACE(kind.Text);
    dcioInputs[3] = {1, 2, 1, 1, "in"};
    dcioOutputs[4] = {1, 6, 1, 0, "out"};
    FanRpms = {{2, 900}};
    f_Psrb_InputVoltages = {24.5F};
    const Scratch before = SaveScratch();
    status_.Outputs.Clear();
    CCANSensor& own = BuildOwn<CCANSensor>(kind.Code);
    const Scratch after = SaveScratch();
    own.Face = std::make_unique<std::uint32_t>(u32_Face);
    RestoreScratch(before);
    CCANSensor& behind = BuildBehindRouter<CCANSensor>(kind.Code);
    EXPECT_EQ(SaveScratch(), after);
    EXPECT_THAT(DifferencesOf(own, behind), IsEmpty());
  }
}
