#include "tests/host/sample_documents.h"

#include <chrono>
#include <cstdint>
#include <limits>
#include <vector>

#include "model/beacons.h"
#include "model/can_sensors.h"
#include "model/codes.h"
#include "model/dcio_boards.h"
#include "model/onboard_sensors.h"

namespace sample {
namespace {

using namespace QtSts;

template <class T, class List>
T* Add(List& list) {
  auto* const element = new T;
  list.Add(element);
  return element;
}

template <class T>
T* AddSensor(CSensorList& list, std::uint64_t address, bool connected = true) {
  T* const sensor = Add<T>(list);
  sensor->Address = address;
  sensor->NumberOfAttributes = 9;
  sensor->SetConnected(connected);
  return sensor;
}

void FillRoot(CStatus& status) {
  status.GUID = "6f1c0d52-8a3e-4b7e-9d3f-2c51a0e4b7d8\n";
  status.SerialNumber = 0x12AF0;
  status.ProductFamily = 8;
  status.HardwareID1 = -1;
  status.HardwareID2 = 2;
  status.HardwareID3 = -1;
  status.FirmwareVersion = "7.3.1 \x1b[31mred\x1b[0m";
  status.ErrorFlags = "0x0000000000000010";
  status.LocalTime = "2026-11-15T10:22:15+05:30";
  status.Uptime = "P1DT2H3M4S";
  status.SolarInfo.CalculatedSunrise = "2026-11-15T07:21:00+05:30";
}

void FillNetwork(CNetwork& network) {
  CNetworkDevice* const device = Add<CNetworkDevice>(network.Devices);
  device->Name = "eth0";
  device->IPv4Address = "192.168.0.20";
  device->MACAddress = "00:1A:2B:3C:4D:5E";
  device->Statistics.First = -1;
  device->Statistics.Second = 8;
}

void FillInputs(CStatus& status) {
  CPlayerInput* const player = Add<CPlayerInput>(status.Inputs);
  player->SignalPresent = true;
  player->DetectedArea.Width = 1920;
  player->DetectedArea.Height = 1080;
  player->Frequency.Vertical = std::numeric_limits<float>::infinity();
  CDigitalInput* const dvi = Add<CDigitalInput>(status.Inputs);
  dvi->MultiplexerSelected = true;
}

void FillOutput(COutput& output) {
  output.StatusFlags = kFlagPowerOff | kFlagWatchdogEvent | kFlagTrackerActive |
                       kFlagTrackerBlanked | kFlagAmbientFailure | kFlagAmbientOverride | 1;
  output.Frequency.Vertical = 59.94F;
  output.Dimming.DimmingMode = 7;
  output.Dimming.DimmingLevel = 37.5F;
  output.Dimming.Content.First = 100;
  output.Dimming.Content.Second = 65535;
  output.Dimming.Content.Third = 4294967295;
  output.Fans.Override = 2;
  output.Title =
      "Anzeige S\xC3\xBC"
      "d \xE2\x82\xAC \xFF";
  CDevice* const node = Add<CDevice>(output.Devices);
  node->Node = 1;
  node->Value = -5;
}

void FillSensors(CSensorList& sensors) {
  AddSensor<CCANTempSensor>(sensors, 17, false)->Celsius = -40;
  AddSensor<CCANFanRpmSensor>(sensors, 18)->AverageRpm = 900;
  CCANPsrbSensor* const supply = AddSensor<CCANPsrbSensor>(sensors, 19);
  supply->Face = std::make_unique<std::uint32_t>(2);
  supply->InputVoltages = {230.4F, 0};
  supply->OutputVoltages = {24.05F, 0, 23.98F};
  supply->HardwareErrors = std::make_unique<std::uint8_t>(9);
  CCANIsolationBoardSensor* const isolation = AddSensor<CCANIsolationBoardSensor>(sensors, 20);
  isolation->Celsius = 21.6F;
  CCANBeacon* const beacon = AddSensor<CCANBeacon>(sensors, 21);
  beacon->Revision = std::make_unique<std::int32_t>(-1);
  beacon->ErrorFlags = 3;
  beacon->RedLedErrorCount = 4;
  beacon->AmberLedErrorCount = 5;
  beacon->PerColorLedCount = 96;
  beacon->TemperatureKelvin = std::make_unique<std::uint16_t>(std::uint16_t{300});
  Add<COnboardCabinetFanControlSensor>(sensors)->Connected = true;
}

void FillBoard(CCANDcioAndFanRpm& board) {
  board.Points.Inputs = std::make_unique<InputListType>(16);
  board.Points.Outputs = std::make_unique<OutputListType>(12);
  auto* const door = new CDoorSensorInputType;
  door->Index = 1;
  door->Label = "Service door behind the lowest cabinet, left of the ladder, second row";
  door->Set(true);
  board.Points.Add(door);
  auto* const heater = new CMaintHeaterOutputType;
  heater->Index = 3;
  heater->Set(true);
  board.Points.Add(heater);
  board.FanRpms.Add(new FanRpm(0, 1, 2180));
  board.FanRpms.Add(new FanRpm(1, 7, 0));
}

}  // namespace

std::unique_ptr<CStatus> Troubled() {
  auto status = std::make_unique<CStatus>();
  FillRoot(*status);
  FillNetwork(status->Network);
  FillInputs(*status);
  auto* const output = Add<CTravex6Output>(status->Outputs);
  FillOutput(*output);
  FillSensors(status->Sensors);
  auto* const interface = Add<CTravexRouterDisplayInterface>(output->DisplayInterfaces);
  FillBoard(*AddSensor<CCANDcioAndFanRpm>(interface->Sensors, 33));
  auto* const door = Add<CDoorSwitch>(status->DCIO.Devices);
  door->State = std::make_unique<std::uint32_t>(1);
  door->Address = std::make_unique<std::uint32_t>(64);
  Add<CRunLED>(status->DCIO.Devices);
  return status;
}

insight::Snapshot SnapshotOf(const QtSts::CStatus& status) {
  return {.Document = QtSts::DocumentTree(status), .Result = 0, .Began = {}, .BeganSteady = {}};
}

insight::Finding FindingOf(insight::Severity level, const std::string& message,
                           const std::string& path) {
  insight::Finding finding;
  finding.Level = level;
  finding.Message = message;
  finding.Path = path;
  return finding;
}

namespace {

constexpr const char* kBoard = "Outputs[0]/DisplayInterfaces[0]/Sensors[0]/";

void FillFindings(std::vector<insight::Finding>* findings) {
  using insight::Severity;
  findings->push_back(
      FindingOf(Severity::kCritical, "the display's power is off", "Outputs[0]/StatusFlags"));
  findings->back().Id = "power-off";
  findings->back().Hint = "main switch and fuses of the display";
  findings->push_back(
      FindingOf(Severity::kCritical, "fan 7 stands still", std::string(kBoard) + "FanRpms[1]/Rpm"));
  findings->back().Id = "fan-stopped";
  findings->back().Where = "I/O board 0 at address 33 behind the router at address 1";
  findings->back().Hint = "the fan, its plug, and what blocks it";
  findings->back().Key = "Sensor_00_FanRpm_7";
  findings->back().Value = 0;
  findings->push_back(FindingOf(Severity::kUnknown, "/dev/zetdisplay is missing"));
  findings->back().Id = "source-missing";
  findings->back().Hint = "the driver of the display, and the device node";
  findings->back().Source = "zetdisplay";
  findings->push_back(FindingOf(Severity::kWarning,
                                "door open: Service door behind the lowest cabinet",
                                std::string(kBoard) + "Points/Inputs/Points[0]/State"));
  findings->back().Id = "door-open";
  findings->back().Where = "I/O board 0 at address 33 behind the router at address 1";
  findings->back().Key = "Sensor_00_InputPoint_00_State";
  findings->push_back(
      FindingOf(Severity::kWarning, "the sensor is not connected", "Sensors[0]/Connected"));
  findings->back().Id = "sensor-lost";
  findings->back().Where = "temperature sensor at address 17";
  findings->back().Key = "Sensor_00_Connected";
}

void FillSources(insight::Snapshot* snapshot) {
  insight::Source display;
  display.Id = "zetdisplay";
  display.Name = "/dev/zetdisplay";
  display.State = insight::SourceState::kMissing;
  display.Required = true;
  display.Error = 2;
  display.Reason = "No such file or directory";
  display.Fields = {"HardwareID2", "Outputs[0]/StatusFlags"};
  display.Unfed = display.Fields;
  insight::Source diagnostics;
  diagnostics.Id = "diagnostics";
  diagnostics.Name = "/dev/diagnostics";
  diagnostics.Required = true;
  diagnostics.StoppedBy = "zetdisplay";
  insight::Source carrier;
  carrier.Id = "carrier:eth0";
  carrier.Name = "/sys/class/net/eth0/carrier";
  carrier.State = insight::SourceState::kOk;
  snapshot->Sources = {display, diagnostics, carrier};
  snapshot->NotReported = {"HardwareID2", "Outputs[0]/Ttable/Columns"};
}

void FillRows(insight::Snapshot* snapshot) {
  insight::Row row;
  row.Key = "Sensor_00_Connected";
  row.Value = "False\x1b[2J \xFF";
  row.Path = "Sensors[0]/Connected";
  row.Before = "true";
  row.After = "false";
  row.Remarks.emplace_back();
  row.Remarks.back().What = insight::Outcome::kUnknownWord;
  row.Remarks.back().Text = "no word of the list";
  row.Remarks.back().Part = insight::RowPart::kValue;
  row.Remarks.back().End = 5;
  insight::Row null;
  null.Key = "GUID";
  null.IsNull = true;
  null.Remarks.emplace_back();
  null.Remarks.back().What = insight::Outcome::kNull;
  snapshot->Rows = {row, null};
  snapshot->Database.Rows = 2;
  snapshot->Database.LastChanged = snapshot->Began - std::chrono::seconds(12);
  snapshot->Database.Unchanged = std::chrono::seconds(12);
}

}  // namespace

insight::Snapshot TroubledSnapshot() {
  insight::Snapshot snapshot = SnapshotOf(*Troubled());
  snapshot.Began = std::chrono::system_clock::from_time_t(1795595535);
  snapshot.Took = std::chrono::milliseconds(25);
  FillSources(&snapshot);
  FillRows(&snapshot);
  FillFindings(&snapshot.Findings);
  return snapshot;
}

}  // namespace sample
