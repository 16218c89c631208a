#include "tests/insight/findings_fixture.h"

#include <memory>

using insight::FindFindings;
using insight::Finding;
using insight::Outcome;
using insight::Row;
using insight::Snapshot;
using insight::Source;
using insight::SourceState;
using namespace QtSts;

Row MakeRow(const std::string& key, const std::string& path, Outcome outcome) {
  Row row;
  row.Key = key;
  row.Path = path;
  row.Remarks.emplace_back().What = outcome;
  return row;
}

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

COutput& AddOutput(CStatus& status) {
  COutput& output = Add<CTravex6Output>(status.Outputs);
  output.Frequency.Vertical = 60;
  output.Fans.Enabled = true;
  output.ScalerOutputArea.Width = output.ScalerOutputArea.Height = 16;
  output.Ttable.Columns = output.Ttable.Rows = output.Ttable.FaceCount = 2;
  output.Ttable.ModuleWidth = output.Ttable.ModuleHeight = 8;
  return output;
}

CInput& AddInput(CStatus& status, bool selected, bool signal) {
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

CNetworkDevice& AddNetworkDevice(CStatus& status) {
  auto& device = Add<CNetworkDevice>(status.Network.Devices);
  device.Name = "eth0";
  return device;
}

void SetBrightness(CStatus& status, float asked_for, float in_force, std::uint32_t mode) {
  CDimming& dimming = AddOutput(status).Dimming;
  dimming.DimmingLevel = asked_for;
  dimming.ActualDimmingLevel = in_force;
  dimming.DimmingMode = mode;
}

Row WrongRow(const std::string& key, const std::string& path, Outcome outcome) {
  Row row = MakeRow(key, path, outcome);
  row.Value = "x";
  row.Remarks.front().Text = "\"x\" is wrong";
  row.Remarks.front().Part = insight::RowPart::kValue;
  row.Remarks.front().End = 1;
  return row;
}

void AddSource(Snapshot& snapshot, SourceState state, bool required) {
  Source source;
  source.Id = "travex";
  source.Name = "/dev/travex";
  source.State = state;
  source.Required = required;
  source.Reason = "because";
  snapshot.Sources.push_back(source);
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
