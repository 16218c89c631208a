// What of a document needs attention.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <string>
#include <vector>

#include "model/beacons.h"
#include "model/codes.h"
#include "tests/insight/finding_cases.h"
#include "tests/insight/findings_fixture.h"

namespace {

using insight::FindFindings;
using insight::Finding;
using insight::Outcome;
using insight::Snapshot;
using insight::SourceState;
using testing::ElementsAre;
using testing::IsEmpty;
using namespace QtSts;

std::vector<DocumentCase> DocumentCases() {
  std::vector<DocumentCase> cases = DisplayCases();
  const std::vector<DocumentCase> others = SensorCases();
  cases.insert(cases.end(), others.begin(), others.end());
  return cases;
}

class FindingsOfDocuments : public testing::TestWithParam<DocumentCase> {};

TEST_P(FindingsOfDocuments, AreThereForTheOneAndNotForTheOther) {
  CStatus makes;
  GetParam().Makes(makes);
  const std::vector<Finding> findings = Findings(makes);
  ASSERT_THAT(Ids(findings), ElementsAre(GetParam().Id));
  EXPECT_EQ(findings.front().Message, GetParam().Message);
  EXPECT_EQ(findings.front().Level, GetParam().Level);
  EXPECT_NE(findings.front().Hint, "");
  EXPECT_NE(Healthy(makes).Document.Root().FindValue(findings.front().Path), nullptr)
      << findings.front().Path;

  CStatus misses;
  GetParam().JustMisses(misses);
  EXPECT_THAT(Ids(Findings(misses)), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(EachRule, FindingsOfDocuments, testing::ValuesIn(DocumentCases()),
                         [](const auto& tested) { return std::string(tested.param.Name); });

TEST(FindingTable, NamesEveryFindingThatTheRulesMakeAndNoOther) {
  std::set<std::string> made;
  for (const DocumentCase& row : DocumentCases()) {
    made.insert(row.Id);
  }
  for (const CycleCase& row : CycleCases()) {
    made.insert(row.Id);
  }
  std::set<std::string> listed;
  for (const insight::FindingInfo& info : insight::FindingTable()) {
    EXPECT_TRUE(listed.empty() || *listed.rbegin() < info.Id) << info.Id << " is out of order";
    listed.insert(info.Id);
  }
  EXPECT_EQ(made, listed);
}

TEST(Findings, AreNoneOfAFreshController) {
  CStatus status;
  AddOutput(status);
  AddBoard(status);
  EXPECT_THAT(Ids(Findings(status)), IsEmpty());
}

// "none" used to be a finding, for its letter e, then "face" and "fan_1".
TEST(Findings, TakeTheLettersOfWordsForNoErrorFlags) {
  for (const char* text : {"", "none", "no error", "0", "0x0", "0x", "00, 0x0000", "nil", "0xnone",
                           "e", "face", "fan_1", "bad fade", "fan_1 0x0"}) {
    CStatus status;
    status.ErrorFlags = text;
    EXPECT_THAT(Ids(Findings(status)), IsEmpty()) << text;
  }
  for (const char* text :
       {"1", "0x10", "0X00A0", "0xff", "00ff", "0x0000, 0x0010", "flags: 0x8", "0x0\n0x1"}) {
    CStatus status;
    status.ErrorFlags = text;
    EXPECT_THAT(Ids(Findings(status)), ElementsAre("error-flags")) << text;
  }
}

TEST(Findings, StandInOrderOfSeverityThenOfTheDocument) {
  CStatus status;
  status.ErrorFlags = "0x1";
  AddSensor<CCANTempSensor>(status).Celsius = 300;
  AddSensor<CCANTempSensor>(status).Celsius = 90;
  AddSensor<CCANTempSensor>(status).Celsius = 70;
  AddOutput(status).StatusFlags = kFlagPowerOff;
  Snapshot snapshot = Healthy(status);
  AddSource(snapshot, SourceState::kDenied);
  snapshot.Rows.push_back(MakeRow("GUIX", "", Outcome::kUnknownKey));
  EXPECT_THAT(Ids(FindFindings(snapshot, {})),
              ElementsAre("temperature", "power-off", "source-denied", "reading-impossible",
                          "error-flags", "temperature", "row-errors"));
}

// A sensor that is not connected reports zeros: one finding says it all.
TEST(Findings, TakeTheReadingsOfADisconnectedSensorForNothing) {
  CStatus status;
  AddSensor<CCANFanRpmSensor>(status).Connected = false;
  AddSensor<CCANIsolationBoardSensor>(status).Connected = false;
  auto& supply = AddSensor<CCANPsrbSensor>(status);
  supply.Connected = false;
  supply.InputVoltages = {0};
  supply.OutputVoltages = {24, 0};
  AddPoint<CPowerSupplyStatusRelayInputType>(status, false);
  static_cast<CCANDcioAndFanRpm*>(status.Sensors[3])->SetConnected(false);
  static_cast<CCANDcioAndFanRpm*>(status.Sensors[3])->FanRpms.Add(new FanRpm);
  auto& sensor = AddSensor<CCANTempSensor>(status);
  sensor.Connected = false;
  sensor.Celsius = 70;
  sensor.SyncLossCounter = 1000;
  auto& humid = AddSensor<CCANHumiditySensor>(status);
  humid.Connected = false;
  humid.Humidity = kInfinite;
  EXPECT_THAT(Ids(Findings(status)),
              testing::AllOf(testing::SizeIs(6), testing::Each("sensor-disconnected")));
}

TEST(Findings, SayNothingOfWhatIsNotReported) {
  CStatus status;
  status.MemoryFree = 1;
  Snapshot snapshot = Healthy(status);
  EXPECT_THAT(Ids(FindFindings(snapshot, {})), ElementsAre("memory-free"));
  snapshot.NotReported = {"MemoryFree"};
  EXPECT_THAT(Ids(FindFindings(snapshot, {})), IsEmpty());
}

TEST(Findings, SayWhereAFanIs) {
  CStatus status;
  COutput& output = AddOutput(status);
  auto& router = Add<CTravexRouterDisplayInterface>(output.DisplayInterfaces);
  router.Address = std::make_unique<std::uint16_t>(std::uint16_t{12});
  auto& board = Add<CCANDcioAndFanRpm>(router.Sensors);
  board.SetConnected(true);
  board.Address = 33;
  board.Face = std::make_unique<std::uint32_t>(2);
  board.FanRpms.Add(new FanRpm(0, 3, 0));
  const auto findings = Findings(status);
  ASSERT_THAT(Ids(findings), ElementsAre("fan-stopped"));
  EXPECT_EQ(findings[0].Where,
            "fan 3 of the I/O board 0 at address 33 on face 2 behind the router at address 12");
  EXPECT_EQ(findings[0].Path, "Outputs[0]/DisplayInterfaces[0]/Sensors[0]/FanRpms[0]/Rpm");
}

TEST(Findings, SayWhereOtherThingsAre) {
  CStatus status;
  AddSensor<CCANTempSensor>(status).Connected = false;
  AddPoint<CDoorSensorInputType>(status, true);
  static_cast<CCANDcioAndFanRpm*>(status.Sensors[1])->Points.Inputs->Points[0]->Label = "Hatch";
  AddNetworkDevice(status).Statistics.Second = 5000;
  AddDevice<CDoorSwitch>(status, 1).Address = std::make_unique<std::uint32_t>(64);
  AddInput(status, true);
  auto& interface = Add<CDisplayInterface>(AddOutput(status).DisplayInterfaces);
  Add<CCANBeacon>(interface.Sensors).RedLedErrorCount = 3;
  interface.Sensors[0]->Connected = true;
  std::vector<std::string> places;
  for (const Finding& finding : Findings(status)) {
    places.push_back(finding.Id + ": " + finding.Where);
  }
  EXPECT_THAT(
      places,
      ElementsAre("input-without-signal: DVI input",
                  "sensor-disconnected: temperature sensor 0 on the controller",
                  "door-open: input 1 \"Hatch\" of the I/O board 1 on the controller",
                  "link-errors: network device eth0", "door-open: door switch 0 at address 64",
                  "red-leds-failed: beacon 0 behind the display interface 0"));
}

// People were sent to fans and filters.
TEST(Findings, SayOfAnImpossibleReadingToLookAtTheSensor) {
  CStatus status;
  AddSensor<CCANTempSensor>(status).Celsius = -64;
  AddOutput(status).Dimming.DimmingLevel = -5;
  const std::vector<Finding> findings = Findings(status);
  ASSERT_THAT(Ids(findings), ElementsAre("reading-impossible", "reading-impossible"));
  EXPECT_THAT(findings[0].Hint, testing::StartsWith("the sensor: likely broken or unplugged;"));
  EXPECT_EQ(findings[1].Hint, "the program that writes the row");
}

// 62.5 % was called 6250 % of the half percent that was asked for.
TEST(Findings, SayNoShareOfABrightnessBelowOnePercent) {
  CStatus status;
  SetBrightness(status, 0.5F, 62.5F, kDimmingManual);
  EXPECT_EQ(Findings(status).front().Message, "brightness 62.5 %, though 0.5 % is asked for");
}

// 62.5 % was called 6250 % of the -5 % that were asked for.
TEST(Findings, CompareNothingWithAnImpossibleReading) {
  for (const float asked_for : {-5.0F, 500.0F, kInfinite, std::nanf("")}) {
    CStatus status;
    SetBrightness(status, asked_for, 62.5F, kDimmingManual);
    EXPECT_THAT(Ids(Findings(status)), ElementsAre("reading-impossible")) << asked_for;
  }
  CStatus status;
  for (const float volts : {18.0F, 24.0F, 24.0F, -1.0F, -1.0F}) {
    AddIsolation(status).OutputVoltage = volts;
  }
  EXPECT_THAT(Ids(Findings(status)),
              ElementsAre("reading-impossible", "reading-impossible", "output-voltage"));
}

// Light below 0 was said to be 0.
TEST(Findings, TakeLightBelowZeroForImpossibleAndNotForNone) {
  CStatus status;
  AddSensor<CCANLightSensor>(status).OneMinAverage = -5;
  AddSensor<CCANLightLuxSensor>(status).OneMinLuxAverage = 50;
  EXPECT_THAT(Ids(Findings(status)), ElementsAre("reading-impossible"));
}

// Each of them says the other.
TEST(Findings, SayOnceThatAnOutputWithoutPowerSendsNothing) {
  CStatus status;
  COutput& output = AddOutput(status);
  output.StatusFlags = kFlagPowerOff;
  output.Frequency.Vertical = 0;
  EXPECT_THAT(Ids(Findings(status)), ElementsAre("power-off"));
}

TEST(Findings, FollowTheLimitsThatAreGiven) {
  CStatus status;
  AddSensor<CCANTempSensor>(status).Celsius = 20;
  Snapshot snapshot = Healthy(status);
  snapshot.Database.Unchanged = std::chrono::seconds(3);
  insight::Limits limits;
  limits.Of("temperature").Warning = {.Least = 10, .Most = 30, .Excluded = true};
  limits.Of("database-age").Critical = {.Least = 0, .Most = 2};
  const auto findings = FindFindings(snapshot, limits);
  ASSERT_THAT(Ids(findings), ElementsAre("database-age", "temperature"));
  EXPECT_EQ(findings[0].Level, kCritical);
  EXPECT_EQ(findings[0].Value, 3);
  EXPECT_EQ(findings[1].Message, "temperature 20 °C, between 10 and 30 °C");
  EXPECT_EQ(findings[1].Value, 20);
}

}  // namespace
