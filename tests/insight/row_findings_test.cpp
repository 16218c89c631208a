// What findings say of the rows that they come from.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "model/beacons.h"
#include "model/codes.h"
#include "tests/insight/findings_fixture.h"

namespace {

using insight::FindFindings;
using insight::Finding;
using insight::Outcome;
using insight::Snapshot;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using namespace QtSts;

// A node that does not answer sets all bits of the flags.
TEST(Findings, TakeFlagsThatAreNotReportedForNothingUnlessARowHasSetThem) {
  CStatus status;
  AddOutput(status).StatusFlags = 0xFFFFFFFF;
  Snapshot snapshot = Healthy(status);
  snapshot.NotReported = {"Outputs[0]/StatusFlags"};
  snapshot.Rows.push_back(
      MakeRow("MdlsAmbientOverride", "Outputs[0]/StatusFlags", Outcome::kMarkUnset));
  EXPECT_THAT(Ids(FindFindings(snapshot, {})), IsEmpty());
  snapshot.Rows.push_back(MakeRow("MdlsAmbientFailure", "Outputs[0]/StatusFlags"));
  EXPECT_THAT(Ids(FindFindings(snapshot, {})), ElementsAre("ambient-failed"));
}

TEST(Findings, NameTheRowThatTheValueCameFrom) {
  CStatus status;
  AddSensor<CCANFanRpmSensor>(status);
  Snapshot snapshot = Healthy(status);
  snapshot.Rows.push_back(MakeRow("Sensor_13_Address", "Sensors[0]/Address"));
  snapshot.Rows.push_back(MakeRow("Sensor_13_Type", "Sensors[0]"));
  EXPECT_EQ(FindFindings(snapshot, {}).front().Key, "Sensor_13_Type") << "completed its element";
  snapshot.Rows.push_back(MakeRow("Sensor_13_CurrentRpm", "Sensors[0]/CurrentRpm"));
  EXPECT_EQ(FindFindings(snapshot, {}).front().Key, "Sensor_13_CurrentRpm");
  EXPECT_EQ(FindFindings(snapshot, {}).front().Source, "database");
}

TEST(Findings, CompareNothingWithWhatNoRowOrAWrongRowGave) {
  CStatus status;
  SetBrightness(status, 0, 62.5F, kDimmingManual);
  const std::string path = "Outputs[0]/Dimming/DimmingLevel";
  Snapshot snapshot = Healthy(status);
  EXPECT_THAT(Ids(FindFindings(snapshot, {})), ElementsAre("brightness"));
  snapshot.NotReported = {path};
  EXPECT_THAT(Ids(FindFindings(snapshot, {})), IsEmpty());
  snapshot.NotReported = {};
  snapshot.Rows.push_back(WrongRow("DimmingLevel", path, Outcome::kNoNumber));
  EXPECT_THAT(Ids(FindFindings(snapshot, {})), ElementsAre("row-errors"));
}

// People looked for a plug, or at the fan, where a row is wrong.
TEST(Findings, LeadWithTheMistakeOfTheRowThatTheyComeFrom) {
  CStatus status;
  AddSensor<CCANTempSensor>(status).Connected = false;
  Snapshot snapshot = Healthy(status);
  const std::string path = "Sensors[0]/Connected";
  snapshot.Rows.push_back(WrongRow("Sensor_13_Connected", path, Outcome::kLooksTrue));
  const Finding finding = FindFindings(snapshot, {}).front();
  EXPECT_EQ(finding.Message,
            "row Sensor_13_Connected is wrong: \"x\" is wrong; so sensor is not connected");
  EXPECT_EQ(finding.Hint,
            "the program that writes the row: write true for a flag, 1 for a mark, and nothing "
            "else");
  // A remark on the key, or a notice that leaves the value what it says, changes nothing.
  for (const Outcome other : {Outcome::kLongerName, Outcome::kBlanksAfterNumber}) {
    snapshot.Rows.back() = WrongRow("Sensor_13_Connected", path, other);
    EXPECT_EQ(FindFindings(snapshot, {}).front().Message, "sensor is not connected");
  }
}

// 70000 rpm were 4464 rpm, and all was well.
TEST(Findings, SayOfANumberThatDoesNotFitThatItIsNotWhatItsRowSays) {
  CStatus status;
  AddFans(status, {4464});
  AddSensor<CCANBeacon>(status).TemperatureKelvin = std::make_unique<std::uint16_t>(4464);
  Snapshot snapshot = Healthy(status);
  snapshot.Rows.push_back(WrongRow("A", "Sensors[0]/FanRpms[0]/Rpm", Outcome::kWrapped));
  snapshot.Rows.push_back(WrongRow("B", "Sensors[0]/Revision", Outcome::kWrapped));
  snapshot.Rows.push_back(WrongRow("C", "Sensors[1]/TemperatureKelvin", Outcome::kWrapped));
  const std::vector<Finding> findings = FindFindings(snapshot, {});
  ASSERT_THAT(Ids(findings), ElementsAre("reading-impossible", "reading-impossible"));
  EXPECT_EQ(findings[0].Message,
            "row A is wrong: \"x\" is wrong; so the document is wrong: fan speed 4464 rpm");
  EXPECT_THAT(findings[1].Message, HasSubstr("so temperature 4464 K is not possible"));
}

TEST(Findings, NameTheRowThatAloneHasAnErrorUnlessOneHasNamedIt) {
  CStatus status;
  Snapshot snapshot = Healthy(status);
  snapshot.Rows.push_back(WrongRow("Title", "Title", Outcome::kUnknownWord));
  EXPECT_EQ(FindFindings(snapshot, {}).back().Message, "row Title is wrong: \"x\" is wrong");
  EXPECT_EQ(FindFindings(snapshot, {}).back().Where, "");
  status.ErrorFlags = "0x1";
  snapshot.Document = DocumentTree(status);
  snapshot.Rows.back() = WrongRow("ErrorFlags", "ErrorFlags", Outcome::kUnknownWord);
  EXPECT_EQ(FindFindings(snapshot, {}).back().Message, "a row has an error");
  snapshot.Rows.push_back(WrongRow("Title", "Title", Outcome::kUnknownWord));
  EXPECT_EQ(FindFindings(snapshot, {}).back().Message, "2 rows have errors");
}

// People looked for a plug where a row is missing.
TEST(Findings, SayOfASensorWithoutARowConnectedThatItIsMissing) {
  CStatus status;
  AddSensor<CCANTempSensor>(status).Connected = false;
  Snapshot snapshot = Healthy(status);
  snapshot.Rows.push_back(MakeRow("Sensor_13_Type", "Sensors[0]"));
  snapshot.NotReported = {"Sensors[0]/Connected"};
  ASSERT_FALSE(FindFindings(snapshot, {}).empty());
  EXPECT_EQ(FindFindings(snapshot, {}).front().Message,
            "sensor counts as not connected: no row of it says that it is");
  snapshot.Rows.push_back(MakeRow("Sensor_13_Connected", "Sensors[0]/Connected"));
  EXPECT_EQ(FindFindings(snapshot, {}).front().Message, "sensor is not connected");
}

TEST(Findings, NameTheRowThatFilledTheFieldWithOthers) {
  CStatus status;
  AddSupply(status).OutputVoltages = {24, 0};
  Snapshot snapshot = Healthy(status);
  snapshot.Rows.push_back(MakeRow("Sensor_06_Type", "Sensors[0]"));
  snapshot.Rows.push_back(MakeRow("Sensor_06_PsrbVout_01_Volts"));
  snapshot.Rows.back().Changes.emplace_back().Path = "Sensors[0]/OutputVoltages";
  EXPECT_EQ(FindFindings(snapshot, {}).front().Key, "Sensor_06_PsrbVout_01_Volts");
}

// Rows and drivers set bits of the same field.
TEST(Findings, NameNoRowForAFlagThatADriverHasSet) {
  CStatus status;
  AddOutput(status).StatusFlags = kFlagPowerOff | kFlagAmbientFailure;
  Snapshot snapshot = Healthy(status);
  snapshot.Rows.push_back(MakeRow("MdlsAmbientFailure", "Outputs[0]/StatusFlags"));
  const auto findings = FindFindings(snapshot, {});
  ASSERT_THAT(Ids(findings), ElementsAre("power-off", "ambient-failed"));
  EXPECT_EQ(findings[0].Key, "");
  EXPECT_EQ(findings[1].Key, "MdlsAmbientFailure");
}

TEST(Findings, NameTheRowOfTheVoltageThatIsWrong) {
  CStatus status;
  AddSupply(status).InputVoltages = {230, 0, 229};
  Snapshot snapshot = Healthy(status);
  for (const char* key :
       {"Sensor_06_PsrbVin_00_Volts", "Sensor_06_PsrbVin_01_Volts", "Sensor_06_PsrbVin_02_Volts"}) {
    snapshot.Rows.push_back(MakeRow(key, "Sensors[0]/InputVoltages"));
  }
  EXPECT_EQ(FindFindings(snapshot, {}).front().Key, "Sensor_06_PsrbVin_01_Volts");
}

// The voltage that is 0 is another finding.
TEST(Findings, NameTheRowOfTheVoltageThatIsLowBesideOneThatIsZero) {
  CStatus status;
  AddSupply(status).OutputVoltages = {24, 0, 18};
  Snapshot snapshot = Healthy(status);
  for (const char* key : {"Sensor_06_PsrbVout_00_Volts", "Sensor_06_PsrbVout_01_Volts",
                          "Sensor_06_PsrbVout_02_Volts"}) {
    snapshot.Rows.push_back(MakeRow(key, "Sensors[0]/OutputVoltages"));
  }
  const auto findings = FindFindings(snapshot, {});
  ASSERT_THAT(Ids(findings), ElementsAre("power-supply-output", "output-voltage"));
  EXPECT_EQ(findings[0].Key, "Sensor_06_PsrbVout_01_Volts");
  EXPECT_EQ(findings[1].Key, "Sensor_06_PsrbVout_02_Volts");
}

}  // namespace
