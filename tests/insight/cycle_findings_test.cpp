// What of a cycle, its sources and its database needs attention.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <iterator>
#include <string>
#include <vector>

#include "model/can_sensors.h"
#include "tests/insight/finding_cases.h"
#include "tests/insight/findings_fixture.h"

namespace {

using insight::FindFindings;
using insight::Finding;
using insight::Outcome;
using insight::Row;
using insight::Snapshot;
using insight::SourceState;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using namespace QtSts;

template <SourceState kState>
void Required(Snapshot& snapshot) {
  AddSource(snapshot, kState);
}

template <SourceState kState>
void Optional(Snapshot& snapshot) {
  AddSource(snapshot, kState, false);
}

const CycleCase kCycleCases[] = {
    {"Missing", "source-missing", kUnknown, "/dev/travex is missing: because",
     &Required<SourceState::kMissing>, &Optional<SourceState::kMissing>},
    {"Denied", "source-denied", kUnknown, "/dev/travex may not be read by this user: because",
     &Required<SourceState::kDenied>, &Optional<SourceState::kDenied>},
    {"Silent", "source-silent", kUnknown, "/dev/travex does not answer: because",
     &Required<SourceState::kNoAnswer>, &Optional<SourceState::kNoAnswer>},
    {"Empty", "source-empty", kUnknown, "/dev/travex is empty: because",
     &Required<SourceState::kEmpty>, &Optional<SourceState::kEmpty>},
    {"Malformed", "source-malformed", kUnknown,
     "/dev/travex does not hold what is looked for: because", &Required<SourceState::kMalformed>,
     &Optional<SourceState::kMalformed>},
    {"Locked", "source-locked", kUnknown, "/dev/travex is locked by another program: because",
     &Required<SourceState::kLocked>, &Optional<SourceState::kLocked>},
    {"Failed", "source-failed", kUnknown, "/dev/travex cannot be read: because",
     &Required<SourceState::kFailed>, &Required<SourceState::kOk>},
    {"NotAsked", "source-not-asked", kUnknown, "/dev/travex was not asked: because",
     &Required<SourceState::kNotAsked>, &Optional<SourceState::kNotAsked>},

    {"NoLink", "link-lost", kWarning, "network device eth0 has an address but no link",
     [](Snapshot& snapshot) { AddCarrier(snapshot, SourceState::kOk, "no link"); },
     [](Snapshot& snapshot) { AddCarrier(snapshot, SourceState::kOk, ""); }},
    {"SwitchedOff", "link-lost", kWarning, "network device eth0 has an address but is switched off",
     [](Snapshot& snapshot) { AddCarrier(snapshot, SourceState::kNotAsked, "switched off"); },
     [](Snapshot& snapshot) { AddCarrier(snapshot, SourceState::kDenied, "Permission denied"); }},
    {"NoNetwork", "no-network", kWarning, "no network device is in use",
     [](Snapshot& snapshot) { AddNamed(snapshot, "interfaces", ""); },
     [](Snapshot& snapshot) { AddNamed(snapshot, "other", ""); }},
    {"NoGateway", "no-gateway", kWarning, "no network device has a default gateway",
     [](Snapshot& snapshot) { AddNamed(snapshot, "routes", "no default route"); },
     [](Snapshot& snapshot) { AddNamed(snapshot, "routes", ""); }},
    {"DeviceGone", "device-gone", kWarning, "network device eth0 is gone; there is eth1",
     [](Snapshot& snapshot) {
       CStatus status;
       CNetworkDevice& device = AddNetworkDevice(status);
       device.Name = "eth1";
       device.IPv4Address = "10.50.0.1";
       snapshot.Document = DocumentTree(status);
       AddNamed(snapshot, "interfaces", "no device eth0");
       AddNamed(snapshot, "routes", "no default route");
     },
     [](Snapshot& snapshot) {
       CStatus status;
       AddNetworkDevice(status).Name = "eth1";
       snapshot.Document = DocumentTree(status);
       AddNamed(snapshot, "interfaces", "");
     }},
    {"NoGatewayOfADevice", "no-gateway", kWarning,
     "no network device has a default gateway; in use: eth0 without an IPv4 address, eth1",
     [](Snapshot& snapshot) {
       CStatus status;
       AddNetworkDevice(status);
       AddNetworkDevice(status).Name = "eth1";
       status.Network.Devices[1]->IPv4Address = "10.50.0.1";
       snapshot.Document = DocumentTree(status);
       AddNamed(snapshot, "routes", "no default route");
     },
     [](Snapshot&) {}},
    {"NoSensors", "no-sensors", kWarning, "no row reports a sensor of the display",
     [](Snapshot& snapshot) {
       AddDisplay(snapshot);
       std::erase_if(snapshot.Rows, [](const Row& row) { return row.Key.starts_with("Sensor_"); });
     },
     &AddDisplay},
    {"ReadingMissing", "reading-missing", kWarning, "no row reports temperature",
     [](Snapshot& snapshot) {
       CStatus status;
       AddSensor<CCANTempSensor>(status);
       snapshot = Healthy(status);
       snapshot.NotReported = {"Sensors[0]/Celsius"};
     },
     [](Snapshot& snapshot) {
       CStatus status;
       AddSensor<CCANTempSensor>(status);
       snapshot = Healthy(status);
       snapshot.NotReported = {"Sensors[0]/Address", "Sensors[0]/SyncLossCounter"};
     }},
    {"NoBrightness", "no-brightness", kWarning,
     "no row says how bright the display is: ActualDimmingLevel missing",
     [](Snapshot& snapshot) {
       AddDisplay(snapshot);
       snapshot.NotReported = {"Outputs[0]/Dimming/ActualDimmingLevel"};
     },
     [](Snapshot& snapshot) {
       AddDisplay(snapshot);
       snapshot.NotReported = {"Outputs[0]/Dimming/DimmingLevel"};
     }},
    {"NoTtable", "ttable-missing", kWarning,
     "no row says how large the display is: TtableColumns, TtableRows, TtableModWidth, "
     "TtableModHeight, TtableFaceCnt missing",
     [](Snapshot& snapshot) {
       AddDisplay(snapshot);
       snapshot.NotReported = {"Outputs[0]/Ttable/Columns", "Outputs[0]/Ttable/FaceCount",
                               "Outputs[0]/Ttable/ModuleHeight", "Outputs[0]/Ttable/ModuleWidth",
                               "Outputs[0]/Ttable/Rows"};
     },
     [](Snapshot& snapshot) {
       snapshot.NotReported = {"Outputs[0]/Ttable/Columns"};  // there is no output
     }},
    {"NoColumns", "ttable-missing", kWarning,
     "no row says how large the display is: TtableColumns missing",
     [](Snapshot& snapshot) {
       AddDisplay(snapshot);
       snapshot.NotReported = {"Outputs[0]/Ttable/Columns"};
     },
     [](Snapshot& snapshot) {
       AddDisplay(snapshot);
       snapshot.NotReported = {"Outputs[0]/Ttable/PixelPitch"};
     }},
    {"NoRows", "no-rows", kUnknown, "the database has no rows",
     [](Snapshot& snapshot) { snapshot.Rows.clear(); }, [](Snapshot&) {}},
    {"FailedCycle", "cycle-failed", kUnknown, "not all rows of the database were read",
     [](Snapshot& snapshot) {
       snapshot.Result = 1;
       snapshot.Rows.clear();
     },
     [](Snapshot& snapshot) { snapshot.Result = 0; }},
    {"OldRows", "database-age", kUnknown, "the database has not changed for 3 d 1 h",
     [](Snapshot& snapshot) {
       snapshot.Database.Unchanged = std::chrono::hours(73) + std::chrono::seconds(59);
     },
     [](Snapshot& snapshot) { snapshot.Database.Unchanged = std::chrono::hours(24); }},
    {"RowsOfYesterday", "database-age", kUnknown, "the database has not changed for 1 d 1 s",
     [](Snapshot& snapshot) { snapshot.Database.Unchanged = std::chrono::seconds(86401); },
     [](Snapshot& snapshot) { snapshot.Database.Unchanged = std::nullopt; }},
    {"Writable", "database-writable", kWarning, "every user may write the database",
     [](Snapshot& snapshot) { snapshot.Database.EveryoneMayWrite = true; },
     [](Snapshot& snapshot) { snapshot.Database.EveryoneMayWrite = false; }},
    {"RowError", "row-errors", kWarning, "a row has an error",
     [](Snapshot& snapshot) { snapshot.Rows.push_back(MakeRow("GUIX", "", Outcome::kUnknownKey)); },
     [](Snapshot& snapshot) {
       snapshot.Rows.push_back(MakeRow("GUIDX", "GUID", Outcome::kLongerName));
     }},
    {"RowErrors", "row-errors", kWarning, "2 rows have errors",
     [](Snapshot& snapshot) {
       snapshot.Rows.push_back(MakeRow("GUIX", "", Outcome::kUnknownKey));
       snapshot.Rows.push_back(MakeRow("Sensor_", "", Outcome::kNoAttribute));
     },
     [](Snapshot& snapshot) { snapshot.Rows.push_back(MakeRow("ThermalScaler")); }},
};

}  // namespace

std::vector<CycleCase> CycleCases() { return {std::begin(kCycleCases), std::end(kCycleCases)}; }

namespace {

class FindingsOfCycles : public testing::TestWithParam<CycleCase> {};

TEST_P(FindingsOfCycles, AreThereForTheOneAndNotForTheOther) {
  const CStatus status;
  Snapshot makes = Healthy(status);
  GetParam().Makes(makes);
  const std::vector<Finding> findings = FindFindings(makes, {});
  ASSERT_THAT(Ids(findings), ElementsAre(GetParam().Id));
  EXPECT_EQ(findings.front().Message, GetParam().Message);
  EXPECT_EQ(findings.front().Level, GetParam().Level);
  EXPECT_NE(findings.front().Hint, "");
  EXPECT_NE(findings.front().Source, "");

  Snapshot misses = Healthy(status);
  GetParam().JustMisses(misses);
  EXPECT_THAT(Ids(FindFindings(misses, {})), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(EachRule, FindingsOfCycles, testing::ValuesIn(CycleCases()),
                         [](const auto& tested) { return std::string(tested.param.Name); });

TEST(Findings, SayOnceThatADatabaseThatFailsHasNoSensors) {
  Snapshot snapshot = Healthy(CStatus());
  AddDisplay(snapshot);
  snapshot.Rows.resize(1);
  snapshot.NotReported = {"Outputs[0]/Ttable/Columns"};
  snapshot.Result = 1;
  EXPECT_THAT(Ids(FindFindings(snapshot, {})), ElementsAre("cycle-failed"));
}

// The row of the ambient light was said to be missing.
TEST(Findings, SayOnceOfAReadingThatASourceSpoilsThatItDoesNotAnswer) {
  CStatus status;
  AddSensor<CCANMultiDirectionalSensor>(status);
  Snapshot snapshot = Healthy(status);
  snapshot.NotReported = {"Sensors[0]/Ambient"};
  EXPECT_THAT(Ids(FindFindings(snapshot, {})), ElementsAre("reading-missing"));
  AddSource(snapshot, SourceState::kNoAnswer);
  snapshot.Sources.back().Unfed = {"Sensors[0]/Ambient"};
  EXPECT_THAT(Ids(FindFindings(snapshot, {})), ElementsAre("source-silent"));
}

TEST(Findings, NameTheSourceThatAloneFeedsTheField) {
  CStatus status;
  status.MemoryFree = 1;
  Snapshot snapshot = Healthy(status);
  AddSource(snapshot, SourceState::kOk);
  snapshot.Sources[0].Fields = {"MemoryFree"};
  EXPECT_EQ(FindFindings(snapshot, {}).front().Source, "travex");
  snapshot.Sources.push_back(snapshot.Sources[0]);
  EXPECT_EQ(FindFindings(snapshot, {}).front().Source, "");
}

TEST(Findings, NameTheSourceThatFeedsTheListOfTheField) {
  CStatus status;
  AddNetworkDevice(status).Statistics.Second = 5000;
  Snapshot snapshot = Healthy(status);
  AddSource(snapshot, SourceState::kOk);
  snapshot.Sources[0].Fields = {"Network/Devices"};
  EXPECT_EQ(FindFindings(snapshot, {}).front().Source, "travex");
}

TEST(Findings, AreOneForASourceAndAllThatItKeptFromBeingAsked) {
  Snapshot snapshot = Healthy(CStatus());
  AddSource(snapshot, SourceState::kDenied);
  for (const char* name : {"registers", "counters"}) {
    AddSource(snapshot, SourceState::kNotAsked);
    snapshot.Sources.back().Id = name;
    snapshot.Sources.back().Name = name;
    snapshot.Sources.back().StoppedBy = snapshot.Sources[snapshot.Sources.size() - 2].Id;
  }
  auto findings = FindFindings(snapshot, {});
  ASSERT_THAT(Ids(findings), ElementsAre("source-denied"));
  EXPECT_THAT(findings[0].Message, testing::EndsWith("; therefore not asked: registers, counters"));
  snapshot.Sources[0].Required = false;
  findings = FindFindings(snapshot, {});
  EXPECT_THAT(Ids(findings), ElementsAre("source-not-asked")) << "nothing else says it";
}

TEST(Findings, AreOneForADatabaseThatFailed) {
  Snapshot snapshot = Healthy(CStatus());
  snapshot.Result = 1;
  AddSource(snapshot, SourceState::kMissing);
  snapshot.Sources[0].Id = "database";
  EXPECT_THAT(Ids(FindFindings(snapshot, {})), ElementsAre("source-missing"));
}

TEST(Findings, AreOneForADatabaseWithoutRows) {
  Snapshot snapshot = Healthy(CStatus());
  snapshot.Rows.clear();
  AddSource(snapshot, SourceState::kEmpty);
  snapshot.Sources[0].Id = "database";
  EXPECT_THAT(Ids(FindFindings(snapshot, {})), ElementsAre("no-rows"));
}

TEST(Findings, SayOnceThatADeviceWithoutLinkIsNotInUse) {
  Snapshot snapshot = Healthy(CStatus());
  AddNamed(snapshot, "interfaces", "");
  AddNamed(snapshot, "routes", "no default route");
  AddCarrier(snapshot, SourceState::kOk, "no link");
  EXPECT_THAT(Ids(FindFindings(snapshot, {})), ElementsAre("link-lost"));
}

TEST(Findings, SayOfAFileThatNoDriverMakesWhoDoes) {
  Snapshot snapshot = Healthy(CStatus());
  AddSource(snapshot, SourceState::kEmpty);
  const std::string driver = FindFindings(snapshot, {}).front().Hint;
  snapshot.Sources[0].Id = "resolver";
  EXPECT_THAT(FindFindings(snapshot, {}).front().Hint, HasSubstr("name server"));
  EXPECT_THAT(driver, HasSubstr("driver"));
}

// Of a node that is there the reason says more: its device is missing.
TEST(Findings, SayOnceThatASourceIsMissing) {
  constexpr struct {
    int Error;
    const char* Reason;
    const char* Message;
  } kRows[] = {
      {ENOENT, "No such file or directory", "/dev/travex is missing"},
      {ENXIO, "No such device or address", "/dev/travex is missing: No such device or address"}};
  for (const auto& row : kRows) {
    Snapshot snapshot = Healthy(CStatus());
    AddSource(snapshot, SourceState::kMissing);
    snapshot.Sources.back().Error = row.Error;
    snapshot.Sources.back().Reason = row.Reason;
    EXPECT_EQ(FindFindings(snapshot, {}).front().Message, row.Message);
  }
}

// A technician knows no "getifaddrs".
TEST(Findings, NameSystemCallsInWords) {
  Snapshot snapshot = Healthy(CStatus());
  AddSource(snapshot, SourceState::kEmpty);
  snapshot.Sources[0].Id = "interfaces";
  snapshot.Sources[0].Name = "getifaddrs";
  EXPECT_EQ(FindFindings(snapshot, {}).front().Message,
            "the list of network interfaces (getifaddrs) is empty: because");
}

}  // namespace
