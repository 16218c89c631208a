// Each rule of the findings: a controller that makes it, and one that just misses it.
#include "insight/findings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <functional>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include "model/beacons.h"
#include "model/can_sensors.h"
#include "model/codes.h"
#include "model/dcio_boards.h"
#include "model/document.h"
#include "model/onboard_sensors.h"

namespace {

using insight::FindFindings;
using insight::Finding;
using insight::Outcome;
using insight::Row;
using insight::Severity;
using insight::Snapshot;
using insight::Source;
using insight::SourceState;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using namespace QtSts;

Row MakeRow(const std::string& key, const std::string& path = "",
            Outcome outcome = Outcome::kStored) {
  Row row;
  row.Key = key;
  row.Path = path;
  row.Remarks.emplace_back().What = outcome;
  return row;
}

// A cycle of `status` with two rows, all of whose sources answered.
Snapshot Healthy(const CStatus& status) {
  Snapshot snapshot{.Document = DocumentTree(status), .Began = {}, .BeganSteady = {}};
  snapshot.Rows.push_back(MakeRow("GUID"));
  snapshot.Rows.push_back(MakeRow("Sensor_90_Address"));
  return snapshot;
}

std::vector<Finding> Findings(const CStatus& status) { return FindFindings(Healthy(status), {}); }

std::vector<std::string> Ids(const std::vector<Finding>& findings) {
  std::vector<std::string> ids;
  for (const Finding& finding : findings) {
    ids.push_back(finding.Id);
  }
  return ids;
}

template <class T, class List>
T& Add(List& list) {
  auto* const element = new T;
  list.Add(element);
  return *element;
}

template <class T>
T& AddSensor(CStatus& status) {
  T& sensor = Add<T>(status.Sensors);
  sensor.SetConnected(true);
  return sensor;
}

template <>
COnboardTempSensor& AddSensor(CStatus& status) {
  auto& sensor = Add<COnboardTempSensor>(status.Sensors);
  sensor.Connected = true;
  return sensor;
}

COutput& AddOutput(CStatus& status) {
  COutput& output = Add<CTravex6Output>(status.Outputs);
  output.Frequency.Vertical = 60;
  output.Fans.Enabled = true;
  output.ScalerOutputArea.Width = output.ScalerOutputArea.Height = 16;
  output.Ttable.Columns = output.Ttable.Rows = output.Ttable.FaceCount = 2;
  output.Ttable.ModuleWidth = output.Ttable.ModuleHeight = 8;
  return output;
}

CInput& AddInput(CStatus& status, bool selected, bool signal = false) {
  auto& input = Add<CDigitalInput>(status.Inputs);
  input.MultiplexerSelected = selected;
  input.SignalPresent = signal;
  return input;
}

CCANDcioAndFanRpm& AddBoard(CStatus& status) {
  auto& board = AddSensor<CCANDcioAndFanRpm>(status);
  board.Points.Inputs = std::make_unique<InputListType>(16);
  board.Points.Outputs = std::make_unique<OutputListType>(12);
  return board;
}

void AddFans(CStatus& status, const std::vector<std::uint16_t>& speeds) {
  CCANDcioAndFanRpm& board = AddBoard(status);
  for (const std::uint16_t speed : speeds) {
    const auto ordinal = static_cast<std::uint8_t>(board.FanRpms.Count());
    board.FanRpms.Add(new FanRpm(ordinal, ordinal, speed));
  }
}

void AddFanSensor(CStatus& status, std::uint32_t speed) {
  auto& sensor = AddSensor<CCANFanRpmSensor>(status);
  sensor.CurrentRpm = speed;
  sensor.AverageRpm = 2000;
}

template <class Point>
void AddPoint(CStatus& status, bool active) {
  auto* const point = new Point;
  point->Index = 1;
  point->Set(active);
  AddBoard(status).Points.Add(point);
}

template <class Point>
void AddOutputPoint(CStatus& status) {
  auto* const point = new Point;
  point->Index = 1;
  AddBoard(status).Points.Add(point);
}

void AddFanControl(CStatus& status, std::uint32_t enabled) {
  auto& control = Add<COnboardCabinetFanControlSensor>(status.Sensors);
  control.Connected = true;
  control.FansEnabled = enabled;
}

// On a display whose fans are enabled, or not.
template <class Point>
void AddFanPoint(CStatus& status, bool enabled, bool active) {
  AddPoint<Point>(status, active);
  AddOutput(status).Fans.Enabled = enabled;
}

template <class Output, class Relay = CHeaterStatusRelayInputType>
void AddHeater(CStatus& status, bool on, bool active) {
  CCANDcioAndFanRpm& board = AddBoard(status);
  auto* const output = new Output;
  output->Index = 1;
  output->Set(on);
  board.Points.Add(output);
  auto* const relay = new Relay;
  relay->Index = 1;
  relay->Set(active);
  board.Points.Add(relay);
}

void AddAirflow(CStatus& status, std::uint32_t now, std::uint32_t usual) {
  auto& sensor = AddSensor<CCANAirflowSensor>(status);
  sensor.OneMinAverage = now;
  sensor.LongTermAverage = usual;
}

CCANPsrbSensor& AddSupply(CStatus& status) {
  auto& supply = AddSensor<CCANPsrbSensor>(status);
  supply.InputVoltages = {230, 229};
  supply.OutputVoltages = {24, 24};
  supply.HardwareErrors = std::make_unique<std::uint8_t>(std::uint8_t{0});
  return supply;
}

CCANIsolationBoardSensor& AddIsolation(CStatus& status) {
  auto& board = AddSensor<CCANIsolationBoardSensor>(status);
  board.InputVoltage = 24;
  board.OutputVoltage = 24;
  return board;
}

// With three more of 24 V behind the same interface.
void AddIsolations(CStatus& status, float input, float output) {
  for (int others = 3; others > 0; --others) {
    AddIsolation(status);
  }
  CCANIsolationBoardSensor& board = AddIsolation(status);
  board.InputVoltage = input;
  board.OutputVoltage = output;
}

template <class Device>
Device& AddDevice(CStatus& status, std::uint32_t state) {
  auto& device = Add<Device>(status.DCIO.Devices);
  device.State = std::make_unique<std::uint32_t>(state);
  return device;
}

CNetworkDevice& AddNetworkDevice(CStatus& status) {
  auto& device = Add<CNetworkDevice>(status.Network.Devices);
  device.Name = "eth0";
  return device;
}

// With the times of a summer day in the zone of -06:00.
void SetTimes(CStatus& status, const char* local_time) {
  status.LocalTime = local_time;
  status.SolarInfo.CalculatedSunrise = "2026-06-19T05:31:00-06:00";
  status.SolarInfo.CalculatedSunset = "2026-06-19T20:58:00-06:00";
}

void SetBrightness(CStatus& status, float asked_for, float in_force, std::uint32_t mode) {
  CDimming& dimming = AddOutput(status).Dimming;
  dimming.DimmingLevel = asked_for;
  dimming.ActualDimmingLevel = in_force;
  dimming.DimmingMode = mode;
}

constexpr const char* kBlind = "light sensor sees nothing, though it is day: all it reads is 0";

using Change = void (*)(CStatus& status);

struct DocumentCase {
  const char* Name;
  const char* Id;
  Severity Level;
  const char* Message;
  Change Makes;
  Change JustMisses;
};

std::ostream& operator<<(std::ostream& out, const DocumentCase& row) { return out << row.Name; }

constexpr Severity kCritical = Severity::kCritical;
constexpr Severity kUnknown = Severity::kUnknown;
constexpr Severity kWarning = Severity::kWarning;
constexpr float kInfinite = std::numeric_limits<float>::infinity();

const DocumentCase kCases[] = {
    {"ErrorFlags", "error-flags", kWarning, "error flags 0x0000000000000010 are set",
     [](CStatus& status) { status.ErrorFlags = "0x0000000000000010"; },
     [](CStatus& status) { status.ErrorFlags = "0x0000000000000000"; }},
    {"PowerOff", "power-off", kCritical, "display power is off",
     [](CStatus& status) { AddOutput(status).StatusFlags = kFlagPowerOff; },
     [](CStatus& status) { AddOutput(status).StatusFlags = kFlagTrackerActive | 1; }},
    {"OutputBlanked", "output-blanked", kCritical, "output blanked by the pixel tracker",
     [](CStatus& status) { AddOutput(status).StatusFlags = kFlagTrackerBlanked; },
     [](CStatus& status) { AddOutput(status).StatusFlags = kFlagTrackerActive; }},
    {"NoPictures", "output-stopped", kCritical, "the output sends no pictures: frame rate 0 Hz",
     [](CStatus& status) { AddOutput(status).Frequency.Vertical = 0; },
     [](CStatus& status) { AddOutput(status).Frequency.Vertical = 0.001F; }},
    {"NoScaledPicture", "output-stopped", kCritical, "the scaler gives no picture: width 0 px",
     [](CStatus& status) { AddOutput(status).ScalerOutputArea.Width = 0; },
     [](CStatus& status) { AddOutput(status).ScalerOutputArea.Width = 1; }},
    {"FlatScaledPicture", "output-stopped", kCritical, "the scaler gives no picture: height 0 px",
     [](CStatus& status) { AddOutput(status).ScalerOutputArea.Height = 0; },
     [](CStatus& status) { AddOutput(status).ScalerOutputArea.Height = 1; }},
    {"WatchdogEvent", "watchdog-event", kWarning, "watchdog event recorded since the start",
     [](CStatus& status) { AddOutput(status).StatusFlags = kFlagWatchdogEvent; },
     [](CStatus& status) { AddOutput(status).StatusFlags = kFlagTrackerActive; }},
    {"AmbientFailed", "ambient-failed", kWarning, "ambient light sensor failed",
     [](CStatus& status) { AddOutput(status).StatusFlags = kFlagAmbientFailure; },
     [](CStatus& status) { AddOutput(status).StatusFlags = kFlagTrackerActive; }},
    {"AmbientOverride", "ambient-override", kWarning, "ambient light is overridden",
     [](CStatus& status) { AddOutput(status).StatusFlags = kFlagAmbientOverride; },
     [](CStatus& status) { AddOutput(status).StatusFlags = kFlagTrackerActive; }},
    {"DimmingOverride", "dimming-override", kWarning, "brightness is overridden",
     [](CStatus& status) { AddOutput(status).Dimming.DimmingMode = 6; },
     [](CStatus& status) { AddOutput(status).Dimming.DimmingMode = kDimmingManual; }},
    {"DisplayDark", "display-dark", kWarning, "brightness in force is 0 %",
     [](CStatus& status) { AddOutput(status).Dimming.ActualDimmingLevel = 0; },
     [](CStatus& status) {
       CDimming& dimming = AddOutput(status).Dimming;
       dimming.ActualDimmingLevel = 0;
       dimming.DimmingMode = 2;  // schedule
     }},
    {"DisplayNearlyDark", "display-dark", kWarning, "brightness in force is 0 %",
     [](CStatus& status) { AddOutput(status).Dimming.ActualDimmingLevel = 0; },
     [](CStatus& status) { AddOutput(status).Dimming.ActualDimmingLevel = 0.5F; }},
    {"RouterDark", "display-dark", kWarning, "output level of the router is 0",
     [](CStatus& status) { AddOutput(status).Dimming.OutputLevel = 0; },
     [](CStatus& status) { AddOutput(status).Dimming.OutputLevel = 1; }},
    {"NoColumns", "ttable-empty", kWarning, "the T-table has no modules: 0 columns",
     [](CStatus& status) { AddOutput(status).Ttable.Columns = 0; },
     [](CStatus& status) { AddOutput(status).Ttable.Columns = 1; }},
    {"NoLines", "ttable-empty", kWarning, "the T-table has no modules: 0 rows",
     [](CStatus& status) { AddOutput(status).Ttable.Rows = 0; },
     [](CStatus& status) { AddOutput(status).Ttable.Rows = 1; }},
    {"NoFaces", "ttable-empty", kWarning, "the T-table has no modules: 0 faces",
     [](CStatus& status) { AddOutput(status).Ttable.FaceCount = 0; },
     [](CStatus& status) { AddOutput(status).Ttable.FaceCount = 1; }},
    {"NoWidth", "ttable-empty", kWarning, "the modules of the T-table have no pixels: width 0 px",
     [](CStatus& status) { AddOutput(status).Ttable.ModuleWidth = 0; },
     [](CStatus& status) { AddOutput(status).Ttable.ModuleWidth = 1; }},
    {"NoHeight", "ttable-empty", kWarning, "the modules of the T-table have no pixels: height 0 px",
     [](CStatus& status) { AddOutput(status).Ttable.ModuleHeight = 0; },
     [](CStatus& status) { AddOutput(status).Ttable.ModuleHeight = 1; }},
    {"FansOverride", "fans-override", kWarning, "fans are overridden: thermal",
     [](CStatus& status) { AddOutput(status).Fans.Override = 2; },
     [](CStatus& status) { AddOutput(status).Fans.Override = 0; }},
    {"FansDisabled", "fans-disabled", kWarning, "fans are disabled",
     [](CStatus& status) {
       AddOutput(status).Fans.Enabled = false;
       AddFanSensor(status, 2000);
     },
     [](CStatus& status) {
       AddOutput(status).Fans.Enabled = true;
       AddFanSensor(status, 2000);
     }},
    {"FansOfAnOutputDisabled", "fans-disabled", kWarning, "fans are disabled",
     [](CStatus& status) {
       AddOutput(status).Fans.Enabled = false;
       AddOutputPoint<CPixelFanOutputType>(status);
     },
     [](CStatus& status) {
       AddOutput(status).Fans.Enabled = false;
       AddOutputPoint<CHeaterOutputType>(status);
     }},
    {"CabinetFansDisabled", "fans-disabled", kWarning, "cabinet fans are disabled",
     [](CStatus& status) { AddFanControl(status, 0); },
     [](CStatus& status) { AddFanControl(status, 2); }},
    {"InputWithoutSignal", "input-without-signal", kCritical, "selected input has no signal",
     [](CStatus& status) { AddInput(status, true); },
     [](CStatus& status) { AddInput(status, false); }},
    {"SignalLosses", "signal-losses", kWarning, "signal losses 101, above the limit of 100",
     [](CStatus& status) { AddInput(status, true, true).Statistics.First = 101; },
     [](CStatus& status) { AddInput(status, true, true).Statistics.First = 100; }},
    {"NothingPluggedIn", "signal-losses", kWarning,
     "pictures that were not valid 65535, above the limit of 100",
     [](CStatus& status) { AddInput(status, false, true).Statistics.Second = 65535; },
     [](CStatus& status) { AddInput(status, false).Statistics.Second = 65535; }},
    {"DoorSwitch", "door-open", kWarning, "door open",
     [](CStatus& status) { AddDevice<CDoorSwitch>(status, 1); },
     [](CStatus& status) { AddDevice<CDoorSwitch>(status, 0); }},
    {"OtherSwitch", "door-open", kWarning, "door open",
     [](CStatus& status) { AddDevice<CDoorSwitch>(status, 1); },
     [](CStatus& status) { AddDevice<CGenericInput>(status, 1); }},
    {"DoorContact", "door-open", kWarning, "door open",
     [](CStatus& status) { AddPoint<CDoorSensorInputType>(status, true); },
     [](CStatus& status) { AddPoint<CDoorSensorInputType>(status, false); }},
    {"PowerMonitor", "power-monitor-inactive", kWarning, "power monitor reports no power",
     [](CStatus& status) { AddDevice<CPowerMonitor>(status, 0); },
     [](CStatus& status) { AddDevice<CPowerMonitor>(status, 1); }},
    {"Disconnected", "sensor-disconnected", kWarning, "sensor is not connected",
     [](CStatus& status) { AddSensor<CCANTempSensor>(status).Connected = false; },
     [](CStatus& status) { AddSensor<CCANTempSensor>(status).Connected = true; }},
    {"FanSensor", "fan-stopped", kWarning, "fan stands still",
     [](CStatus& status) { AddSensor<CCANFanRpmSensor>(status).CurrentRpm = 0; },
     [](CStatus& status) { AddSensor<CCANFanRpmSensor>(status).CurrentRpm = 1; }},
    {"FanOfBoard", "fan-stopped", kWarning, "fan stands still",
     [](CStatus& status) { AddBoard(status).FanRpms.Add(new FanRpm(0, 3, 0)); },
     [](CStatus& status) { AddBoard(status).FanRpms.Add(new FanRpm(0, 3, 1)); }},
    {"SlowFanOfBoard", "fan-speed", kWarning,
     "fan speed 200 rpm is 10 % of that of the board's other fans, below the limit of 25 %",
     [](CStatus& status) {
       AddFans(status, {2000, 2200, 200, 1900});
     },
     [](CStatus& status) {
       AddFans(status, {2000, 2200, 500, 1900});
     }},
    {"SlowOfTwo", "fan-speed", kWarning,
     "fan speed 200 rpm is 10 % of that of the board's other fans, below the limit of 25 %",
     [](CStatus& status) {
       AddFans(status, {2000, 2000, 200});
     },
     [](CStatus& status) {
       AddFans(status, {2000, 200});
     }},
    {"SlowFanSensor", "fan-speed", kWarning,
     "fan speed 499 rpm is 24.95 % of its average, below the limit of 25 %",
     [](CStatus& status) { AddFanSensor(status, 499); },
     [](CStatus& status) { AddFanSensor(status, 500); }},
    {"ClockOf1970", "clock-wrong", kWarning,
     "the clock of the controller is wrong: 2019-12-31T23:59:59+00:00",
     [](CStatus& status) { status.LocalTime = "2019-12-31T23:59:59+00:00"; },
     [](CStatus& status) { status.LocalTime = "2020-01-01T00:00:00+00:00"; }},
    {"PowerRelay", "power-supply-relay", kWarning, "the status relay of a power supply is inactive",
     [](CStatus& status) { AddPoint<CPowerSupplyStatusRelayInputType>(status, false); },
     [](CStatus& status) { AddPoint<CPowerSupplyStatusRelayInputType>(status, true); }},
    {"OtherRelay", "power-supply-relay", kWarning, "the status relay of a power supply is inactive",
     [](CStatus& status) { AddPoint<CPowerSupplyStatusRelayInputType>(status, false); },
     [](CStatus& status) { AddPoint<CHeaterStatusRelayInputType>(status, false); }},
    {"IntakeFanRelay", "fan-relay", kWarning,
     "intake fans are enabled, but their status relay is not active",
     [](CStatus& status) { AddFanPoint<CIntakeFanStatusRelayInputType>(status, true, false); },
     [](CStatus& status) { AddFanPoint<CIntakeFanStatusRelayInputType>(status, true, true); }},
    {"FrontFanRelay", "fan-relay", kWarning,
     "front fans are enabled, but their status relay is not active",
     [](CStatus& status) { AddFanPoint<CFrontFanStatusRelayInputType>(status, true, false); },
     [](CStatus& status) { AddFanPoint<CFrontFanStatusRelayInputType>(status, true, true); }},
    {"PixelFanRelay", "fan-relay", kWarning,
     "pixel fans are enabled, but their status relay is not active",
     [](CStatus& status) { AddFanPoint<CPixelFanStatusRelayInputType>(status, true, false); },
     [](CStatus& status) { AddPoint<CPixelFanStatusRelayInputType>(status, false); }},
    {"FanPower", "fan-power", kWarning, "fans are enabled, but have no power",
     [](CStatus& status) { AddFanPoint<CFanPowerSenseInputType>(status, true, false); },
     [](CStatus& status) { AddFanPoint<CFanPowerSenseInputType>(status, true, true); }},
    {"AirflowContact", "airflow-lost", kWarning,
     "fans are enabled, but an airflow sensor reports none",
     [](CStatus& status) { AddFanPoint<AirflowSensorInputType>(status, true, false); },
     [](CStatus& status) { AddFanPoint<AirflowSensorInputType>(status, false, false); }},
    {"Airflow", "airflow", kWarning,
     "airflow 240 is 24 % of its long-term average, below the limit of 25 %",
     [](CStatus& status) { AddAirflow(status, 240, 1000); },
     [](CStatus& status) { AddAirflow(status, 250, 1000); }},
    {"NoAirflow", "airflow", kWarning,
     "airflow 0 is 0 % of its long-term average, below the limit of 25 %",
     [](CStatus& status) { AddAirflow(status, 0, 1); },
     [](CStatus& status) { AddAirflow(status, 0, 0); }},
    {"NoAirflowAtAll", "airflow-lost", kWarning,
     "fans are enabled, but the airflow sensor reads 0, also over the long term",
     [](CStatus& status) {
       AddAirflow(status, 0, 0);
       AddOutput(status);
     },
     [](CStatus& status) {
       AddAirflow(status, 1, 0);
       AddOutput(status);
     }},
    {"Dry", "humidity", kWarning, "humidity 0 %, below the limit of 1 %",
     [](CStatus& status) { AddSensor<CCANHumiditySensor>(status).Humidity = 0; },
     [](CStatus& status) { AddSensor<CCANHumiditySensor>(status).Humidity = 1; }},
    {"Heater", "heater-relay", kWarning, "heater is on, but its status relay is not active",
     [](CStatus& status) { AddHeater<CHeaterOutputType>(status, true, false); },
     [](CStatus& status) { AddHeater<CHeaterOutputType>(status, true, true); }},
    {"OtherHeater", "heater-relay", kWarning, "heater is on, but its status relay is not active",
     [](CStatus& status) { AddHeater<CHeaterOutputType>(status, true, false); },
     [](CStatus& status) { AddHeater<CMaintHeaterOutputType>(status, true, false); }},
    {"MaintenanceHeater", "heater-relay", kWarning,
     "maintenance heater is on, but its status relay is not active",
     [](CStatus& status) {
       AddHeater<CMaintHeaterOutputType, CMaintHeaterStatusRelayInputType>(status, true, false);
     },
     [](CStatus& status) {
       AddHeater<CMaintHeaterOutputType, CMaintHeaterStatusRelayInputType>(status, false, false);
     }},
    {"PositionNotLocked", "position-not-locked", kWarning, "light sensor does not know where it is",
     [](CStatus& status) { AddSensor<CCANMultiDirectionalSensor>(status).LockState = 2; },
     [](CStatus& status) { AddSensor<CCANMultiDirectionalSensor>(status).LockState = 1; }},
    {"SurgeSuppressor", "surge-suppressor", kWarning, "surge suppressor is not active",
     [](CStatus& status) { AddPoint<SurgeSuppressorInputType>(status, false); },
     [](CStatus& status) { AddPoint<SurgeSuppressorInputType>(status, true); }},
    {"SupplyErrors", "power-supply-errors", kWarning, "power supply hardware errors 0x1f",
     [](CStatus& status) { *AddSupply(status).HardwareErrors = 0x1F; },
     [](CStatus& status) { AddSupply(status); }},
    {"SupplyInput", "power-supply-input", kWarning, "power supply input at 0 V: 230, 0 V",
     [](CStatus& status) {
       AddSupply(status).InputVoltages = {230, 0};
     },
     [](CStatus& status) {
       AddSupply(status).InputVoltages = {230, 229.5F};
     }},
    {"SupplyOutput", "power-supply-output", kCritical, "power supply output at 0 V: 0, 24 V",
     [](CStatus& status) {
       AddSupply(status).OutputVoltages = {0, 24};
     },
     [](CStatus& status) { AddSupply(status).OutputVoltages = {}; }},
    {"SupplyOutputLow", "output-voltage", kWarning,
     "output voltage 24, 18 V: the lowest above 0 is 75 % of the highest, below the limit of 90 %",
     [](CStatus& status) {
       AddSupply(status).OutputVoltages = {24, 18};
     },
     [](CStatus& status) {
       AddSupply(status).OutputVoltages = {20, 18};
     }},
    {"SupplyOutputGone", "output-voltage", kCritical,
     "output voltage 20, 1, 20 V: the lowest above 0 is 5 % of the highest, below the limit of 50 "
     "%",
     [](CStatus& status) {
       AddSupply(status).OutputVoltages = {20, 1, 20};
     },
     [](CStatus& status) { AddSupply(status).OutputVoltages = {20}; }},
    {"SupplyInputLow", "input-voltage", kWarning,
     "input voltage 115, 230 V: the lowest above 0 is 50 % of the highest, below the limit of 75 %",
     [](CStatus& status) {
       AddSupply(status).InputVoltages = {115, 230};
     },
     [](CStatus& status) {
       AddSupply(status).InputVoltages = {180, 230};
     }},
    {"IsolationOutputLow", "output-voltage", kWarning,
     "output voltage 18 V is 75 % of that of the other isolation boards, below the limit of 90 %",
     [](CStatus& status) { AddIsolations(status, 24, 18); },
     [](CStatus& status) { AddIsolations(status, 24, 23); }},
    {"IsolationInputLow", "input-voltage", kWarning,
     "input voltage 12 V is 50 % of that of the other isolation boards, below the limit of 75 %",
     [](CStatus& status) { AddIsolations(status, 12, 24); },
     [](CStatus& status) {
       AddIsolation(status).InputVoltage = 12;  // of two it is not known which one is wrong
       AddIsolation(status);
     }},
    {"IsolationInput", "isolation-input", kWarning, "isolation board input at 0 V",
     [](CStatus& status) { AddIsolation(status).InputVoltage = 0; },
     [](CStatus& status) { AddIsolation(status).InputVoltage = 4.5F; }},
    {"IsolationOutput", "isolation-output", kCritical, "isolation board output at 0 V",
     [](CStatus& status) { AddIsolation(status).OutputVoltage = 0; },
     [](CStatus& status) { AddIsolation(status).OutputVoltage = 4.5F; }},
    // They deviate from nothing, and used to be well.
    {"AllSupplyOutputsLow", "supply-volts", kWarning,
     "highest output voltage of the board 12.1 V, below the limit of 20 V",
     [](CStatus& status) {
       AddSupply(status).OutputVoltages = {12, 12.1F, 12};
     },
     [](CStatus& status) {
       AddSupply(status).OutputVoltages = {20, 19.9F, 20};
     }},
    {"LoneIsolationOutputLow", "isolation-volts", kCritical,
     "output voltage 2.1 V, below the limit of 3 V",
     [](CStatus& status) { AddIsolation(status).OutputVoltage = 2.1F; },
     [](CStatus& status) { AddIsolation(status).OutputVoltage = 5; }},
    {"LoneIsolationInputLow", "isolation-volts", kWarning,
     "input voltage 4.4 V, below the limit of 4.5 V",
     [](CStatus& status) { AddIsolation(status).InputVoltage = 4.4F; },
     [](CStatus& status) { AddIsolation(status).InputVoltage = 4.5F; }},
    {"BlindByDay", "light-lost", kWarning, kBlind,
     [](CStatus& status) {
       AddSensor<CCANLightSensor>(status);
       SetTimes(status, "2026-06-20T22:00:00+00:00");  // 16:00 where the sun times are from
     },
     [](CStatus& status) {
       AddSensor<CCANLightSensor>(status).OneMinAverage = 1;
       SetTimes(status, "2026-06-20T22:00:00+00:00");
     }},
    {"BlindAtNight", "light-lost", kWarning, kBlind,
     [](CStatus& status) {
       AddSensor<CCANLightLuxSensor>(status);
       SetTimes(status, "2026-06-20T12:31:00+00:00");  // an hour after sunrise
     },
     [](CStatus& status) {
       AddSensor<CCANLightLuxSensor>(status);
       SetTimes(status, "2026-06-20T12:30:59+00:00");
     }},
    {"BlindWithoutSunTimes", "light-lost", kWarning, kBlind,
     [](CStatus& status) {
       AddSensor<CCANMultiDirectionalSensor>(status).Ambient = 201;  // overridden
       status.LocalTime = "2026-06-20T14:59:59-06:00";
     },
     [](CStatus& status) {
       AddSensor<CCANMultiDirectionalSensor>(status);
       status.LocalTime = "2026-06-20T15:00:00-06:00";
     }},
    {"BlindBesideOneThatSees", "light-lost", kWarning, kBlind,
     [](CStatus& status) {
       AddSensor<CCANLightSensor>(status);
       AddSensor<CCANLightLuxSensor>(status).OneMinLuxAverage = 50;
     },
     [](CStatus& status) {
       AddSensor<CCANLightSensor>(status);
       AddSensor<CCANLightLuxSensor>(status).OneMinLuxAverage = 49;
     }},
    {"BlindWhileConnected", "light-lost", kWarning, kBlind,
     [](CStatus& status) {
       AddSensor<CCANLightSensor>(status);
       AddSensor<CCANMultiDirectionalSensor>(status).Back = 143;
     },
     [](CStatus& status) { AddSensor<CCANMultiDirectionalSensor>(status).Back = 143; }},
    {"MuchDarkerThanAskedFor", "brightness", kWarning,
     "brightness 5 % is 5 % of the one asked for, below the limit of 25 %",
     [](CStatus& status) { SetBrightness(status, 100, 5, kDimmingManual); },
     [](CStatus& status) { SetBrightness(status, 100, 25, kDimmingManual); }},
    {"MuchBrighterThanAskedFor", "brightness", kWarning,
     "brightness 100 % is 2000 % of the one asked for, above the limit of 400 %",
     [](CStatus& status) { SetBrightness(status, 5, 100, kDimmingManual); },
     [](CStatus& status) { SetBrightness(status, 1, 20, kDimmingManual); }},
    {"BrightThoughNoneIsAskedFor", "brightness", kWarning,
     "brightness 20 %, though 0 % is asked for",
     [](CStatus& status) { SetBrightness(status, 0, 20, kDimmingManual); },
     [](CStatus& status) { SetBrightness(status, 0, 19, kDimmingManual); }},
    {"DarkerThanAScheduleSays", "brightness", kWarning,
     "brightness 5 % is 5 % of the one asked for, below the limit of 25 %",
     [](CStatus& status) { SetBrightness(status, 100, 5, 4); },   // vmax
     [](CStatus& status) { SetBrightness(status, 100, 5, 2); }},  // schedule
    {"DarkerByDay", "brightness", kWarning,
     "brightness 5 % is 5 % of the one asked for, below the limit of 25 %",
     [](CStatus& status) {
       SetBrightness(status, 100, 5, 0);  // auto
       AddSensor<CCANLightSensor>(status).TenMinAverage = 50;
     },
     [](CStatus& status) {
       SetBrightness(status, 100, 5, 0);
       AddSensor<CCANLightSensor>(status).TenMinAverage = 49;
     }},
    {"LampErrors", "lamp-errors", kWarning, "lamp reports errors 0x80",
     [](CStatus& status) { AddSensor<CCANBeacon>(status).ErrorFlags = 0x80; },
     [](CStatus& status) { AddSensor<CCANBeacon>(status).StatusFlags = 0x80; }},
    {"RedLeds", "red-leds-failed", kWarning, "red LEDs failed: 1",
     [](CStatus& status) { AddSensor<CCANRoundel>(status).RedLedErrorCount = 1; },
     [](CStatus& status) { AddSensor<CCANRoundel>(status).RedLedErrorCount = 0; }},
    {"AmberLeds", "amber-leds-failed", kWarning, "amber LEDs failed: 12",
     [](CStatus& status) { AddSensor<CCANRoundel>(status).AmberLedErrorCount = 12; },
     [](CStatus& status) { AddSensor<CCANRoundel>(status).PerColorLedCount = 12; }},

    {"Hot", "temperature", kWarning, "temperature 65.5 °C, above the limit of 65 °C",
     [](CStatus& status) { AddSensor<CCANTempSensor>(status).Celsius = 65.5F; },
     [](CStatus& status) { AddSensor<CCANTempSensor>(status).Celsius = 65; }},
    {"TooHot", "temperature", kCritical, "temperature 80.25 °C, above the limit of 80 °C",
     [](CStatus& status) { AddSensor<COnboardTempSensor>(status).Celsius = 80.25F; },
     [](CStatus& status) { AddSensor<COnboardTempSensor>(status).Celsius = 65; }},
    {"Cold", "temperature", kWarning, "temperature -30.5 °C, below the limit of -30 °C",
     [](CStatus& status) { AddIsolation(status).Celsius = -30.5F; },
     [](CStatus& status) { AddIsolation(status).Celsius = -30; }},
    {"HotLamp", "temperature", kWarning, "temperature 65.85 °C, above the limit of 65 °C",
     [](CStatus& status) {
       AddSensor<CCANBeacon>(status).TemperatureKelvin = std::make_unique<std::uint16_t>(339);
     },
     [](CStatus& status) {
       AddSensor<CCANBeacon>(status).TemperatureKelvin = std::make_unique<std::uint16_t>(338);
     }},
    {"MemoryLow", "memory-free", kWarning,
     "free memory 9990 kB is 9.99 % of all, below the limit of 10 %",
     [](CStatus& status) { status.MemoryFree = 9990; },
     [](CStatus& status) { status.MemoryFree = 10000; }},
    {"MemoryGone", "memory-free", kCritical,
     "free memory 4990 kB is 4.99 % of all, below the limit of 5 %",
     [](CStatus& status) { status.MemoryFree = 4990; },
     [](CStatus& status) { status.MemoryTotal = 0; }},
    {"StorageLow", "storage-free", kWarning,
     "free storage 9000 kB is 9 % of all, below the limit of 10 %",
     [](CStatus& status) { status.StorageFree = 9000; },
     [](CStatus& status) { status.StorageFree = 10000; }},
    {"LinkErrors", "link-errors", kWarning, "link errors 1001, above the limit of 1000",
     [](CStatus& status) { AddNetworkDevice(status).Statistics.Second = 1001; },
     [](CStatus& status) { AddNetworkDevice(status).Statistics.Second = 1000; }},
    {"LinkTransitions", "link-transitions", kWarning,
     "link transitions 101, above the limit of 100",
     [](CStatus& status) { AddNetworkDevice(status).Statistics.First = 101; },
     [](CStatus& status) { AddNetworkDevice(status).Statistics.First = 100; }},
    {"NoLinkCounter", "link-transitions", kWarning, "link transitions 101, above the limit of 100",
     [](CStatus& status) { AddNetworkDevice(status).Statistics.First = 101; },
     [](CStatus& status) { AddNetworkDevice(status).Statistics.First = -1; }},
    {"SyncLosses", "sync-losses", kWarning, "synchronisation losses 101, above the limit of 100",
     [](CStatus& status) { AddSensor<CCANDoorSensor>(status).SyncLossCounter = 101; },
     [](CStatus& status) { AddSensor<CCANDoorSensor>(status).SyncLossCounter = 100; }},
    {"DeviceErrors", "device-errors", kWarning, "device errors 101, above the limit of 100",
     [](CStatus& status) {
       AddDevice<CGenericInput>(status, 1).ErrorCounter = std::make_unique<std::uint32_t>(101);
     },
     [](CStatus& status) {
       AddDevice<CGenericInput>(status, 1).ErrorCounter = std::make_unique<std::uint32_t>(100);
     }},

    {"ImpossiblyHot", "reading-impossible", kUnknown,
     "temperature 150.5 °C is not possible: outside of -60 to 150 °C",
     [](CStatus& status) { AddSensor<CCANTempSensor>(status).Celsius = 150.5F; },
     [](CStatus& status) { AddSensor<CCANTempSensor>(status).Celsius = 60; }},
    {"ImpossiblyCold", "reading-impossible", kUnknown,
     "temperature -60.5 °C is not possible: outside of -60 to 150 °C",
     [](CStatus& status) { AddSensor<COnboardTempSensor>(status).Celsius = -60.5F; },
     [](CStatus& status) { AddSensor<COnboardTempSensor>(status).Celsius = -20; }},
    {"ImpossiblyColdLamp", "reading-impossible", kUnknown,
     "temperature 0 K is not possible: outside of 213 to 423 K",
     [](CStatus& status) {
       AddSensor<CCANBeacon>(status).TemperatureKelvin = std::make_unique<std::uint16_t>(0);
     },
     [](CStatus& status) { AddSensor<CCANBeacon>(status).TemperatureKelvin = nullptr; }},
    {"ImpossiblyWet", "reading-impossible", kUnknown,
     "humidity 100.5 % is not possible: outside of 0 to 100 %",
     [](CStatus& status) { AddSensor<CCANHumiditySensor>(status).Humidity = 100.5F; },
     [](CStatus& status) { AddSensor<CCANHumiditySensor>(status).Humidity = 100; }},
    {"ImpossiblyWetLamp", "reading-impossible", kUnknown,
     "humidity 101 % is not possible: outside of 0 to 100 %",
     [](CStatus& status) {
       AddSensor<CCANRoundel>(status).Humidity = std::make_unique<std::uint8_t>(101);
     },
     [](CStatus& status) {
       AddSensor<CCANRoundel>(status).Humidity = std::make_unique<std::uint8_t>(100);
     }},
    {"ImpossiblyBright", "reading-impossible", kUnknown,
     "brightness 101 % is not possible: outside of 0 to 100 %",
     [](CStatus& status) { AddOutput(status).Dimming.ActualDimmingLevel = 101; },
     [](CStatus& status) { AddOutput(status).Dimming.ActualDimmingLevel = 100; }},
    {"ImpossiblyBrightWanted", "reading-impossible", kUnknown,
     "brightness that is asked for -1 % is not possible: outside of 0 to 100 %",
     [](CStatus& status) { AddOutput(status).Dimming.DimmingLevel = -1; },
     [](CStatus& status) { AddOutput(status).Dimming.DimmingLevel = 0; }},
    {"NoSuchLatitude", "reading-impossible", kUnknown,
     "latitude -91 ° is not possible: outside of -90 to 90 °",
     [](CStatus& status) { AddSensor<CCANMultiDirectionalSensor>(status).Latitude = -91; },
     [](CStatus& status) { AddSensor<CCANMultiDirectionalSensor>(status).Latitude = -90; }},
    {"NoSuchLongitude", "reading-impossible", kUnknown,
     "longitude 181 ° is not possible: outside of -180 to 180 °",
     [](CStatus& status) { AddSensor<CCANMultiDirectionalSensor>(status).Longitude = 181; },
     [](CStatus& status) { AddSensor<CCANMultiDirectionalSensor>(status).Longitude = 180; }},
    {"VoltageBelowZero", "reading-impossible", kUnknown,
     "output voltage 24, -0.5 V is not possible: below 0 V",
     [](CStatus& status) {
       AddSupply(status).OutputVoltages = {24, -0.5F};
     },
     [](CStatus& status) {
       AddSupply(status).OutputVoltages = {24, 22};
     }},
    {"IsolationBelowZero", "reading-impossible", kUnknown,
     "input voltage -1 V is not possible: below 0 V",
     [](CStatus& status) { AddIsolation(status).InputVoltage = -1; },
     [](CStatus& status) { AddIsolation(status).InputVoltage = 5; }},
    {"NoNumber", "reading-impossible", kUnknown,
     "temperature NaN °C is not possible: no finite number",
     [](CStatus& status) { AddSensor<CCANTempSensor>(status).Celsius = std::nanf(""); },
     [](CStatus& status) { AddSensor<CCANTempSensor>(status).Celsius = -0.0F; }},
    {"Infinite", "reading-impossible", kUnknown,
     "light averaged over one minute INF is not possible: no finite number",
     [](CStatus& status) { AddSensor<CCANLightSensor>(status).OneMinAverage = kInfinite; },
     [](CStatus& status) { AddSensor<CCANLightSensor>(status).OneMinAverage = 1e30F; }},
    {"InfiniteVoltage", "reading-impossible", kUnknown,
     "output voltage 24, INF V is not possible: no finite number",
     [](CStatus& status) {
       AddSupply(status).OutputVoltages = {24, kInfinite};
     },
     [](CStatus& status) {
       AddSupply(status).OutputVoltages = {1e30F, 1e30F};
     }},
    {"StandingClock", "reading-impossible", kUnknown,
     "vertical frequency INF Hz is not possible: no finite number",
     [](CStatus& status) { AddOutput(status).Frequency.Vertical = kInfinite; },
     [](CStatus& status) {
       AddInput(status, false);
       status.Inputs[0]->Frequency.Vertical = kInfinite;  // it has no signal
     }},
};

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

INSTANTIATE_TEST_SUITE_P(EachRule, FindingsOfDocuments, testing::ValuesIn(kCases),
                         [](const auto& tested) { return std::string(tested.param.Name); });

// What the cycle itself, its sources, its database and its rows say.
struct CycleCase {
  const char* Name;
  const char* Id;
  Severity Level;
  const char* Message;
  void (*Makes)(Snapshot& snapshot);
  void (*JustMisses)(Snapshot& snapshot);
};

std::ostream& operator<<(std::ostream& out, const CycleCase& row) { return out << row.Name; }

void AddSource(Snapshot& snapshot, SourceState state, bool required = true) {
  Source source;
  source.Id = "travex";
  source.Name = "/dev/travex";
  source.State = state;
  source.Required = required;
  source.Reason = "because";
  snapshot.Sources.push_back(source);
}

template <SourceState kState>
void Required(Snapshot& snapshot) {
  AddSource(snapshot, kState);
}

template <SourceState kState>
void Optional(Snapshot& snapshot) {
  AddSource(snapshot, kState, false);
}

void AddNamed(Snapshot& snapshot, const char* id, const char* reason) {
  AddSource(snapshot, SourceState::kOk);
  snapshot.Sources.back().Id = id;
  snapshot.Sources.back().Reason = reason;
}

void AddCarrier(Snapshot& snapshot, SourceState state, const char* reason) {
  AddSource(snapshot, state, false);
  snapshot.Sources.back().Id = "carrier:eth0";
  snapshot.Sources.back().Reason = reason;
}

void AddDisplay(Snapshot& snapshot) {
  CStatus status;
  AddOutput(status);
  snapshot.Document = DocumentTree(status);
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

INSTANTIATE_TEST_SUITE_P(EachRule, FindingsOfCycles, testing::ValuesIn(kCycleCases),
                         [](const auto& tested) { return std::string(tested.param.Name); });

TEST(FindingTable, NamesEveryFindingThatTheRulesMakeAndNoOther) {
  std::set<std::string> made;
  for (const DocumentCase& row : kCases) {
    made.insert(row.Id);
  }
  for (const CycleCase& row : kCycleCases) {
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

TEST(Findings, SayOnceThatADatabaseThatFailsHasNoSensors) {
  Snapshot snapshot = Healthy(CStatus());
  AddDisplay(snapshot);
  snapshot.Rows.resize(1);
  snapshot.NotReported = {"Outputs[0]/Ttable/Columns"};
  snapshot.Result = 1;
  EXPECT_THAT(Ids(FindFindings(snapshot, {})), ElementsAre("cycle-failed"));
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

// A row at `path` whose value became something else.
Row WrongRow(const std::string& key, const std::string& path, Outcome outcome) {
  Row row = MakeRow(key, path, outcome);
  row.Value = "x";
  row.Remarks.front().Text = "\"x\" is wrong";
  row.Remarks.front().Part = insight::RowPart::kValue;
  row.Remarks.front().End = 1;
  return row;
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

// Light below 0 was said to be 0.
TEST(Findings, TakeLightBelowZeroForImpossibleAndNotForNone) {
  CStatus status;
  AddSensor<CCANLightSensor>(status).OneMinAverage = -5;
  AddSensor<CCANLightLuxSensor>(status).OneMinLuxAverage = 50;
  EXPECT_THAT(Ids(Findings(status)), ElementsAre("reading-impossible"));
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

// Each of them says the other.
TEST(Findings, SayOnceThatAnOutputWithoutPowerSendsNothing) {
  CStatus status;
  COutput& output = AddOutput(status);
  output.StatusFlags = kFlagPowerOff;
  output.Frequency.Vertical = 0;
  EXPECT_THAT(Ids(Findings(status)), ElementsAre("power-off"));
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
