#include "bench/row_mix.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <stdexcept>

namespace bench {
namespace {

std::string Padded(std::size_t number) {
  char text[32];
  std::snprintf(text, sizeof text, "%06zu", number);
  return text;
}

// Points of the board that AddBoard makes.
constexpr std::size_t kInputs = 24;
constexpr std::size_t kOutputs = 11;

constexpr struct {
  const char* Key;
  const char* Value;
} kScalars[] = {
    {"ActualDimmingLevel", "62.5"},
    {"CalculatedSunrise", "2026-11-20T07:31:00-06:00"},
    {"CalculatedSunset", "2026-11-20T16:58:00-06:00"},
    {"ContentLevelAvg", "41"},
    {"DimmingLevel", "65"},
    {"DimmingMode", "auto"},
    {"ErrorFlags", "0x0000000000000000"},
    {"FansEnabled", "true"},
    {"FansOverride", "none"},
    {"GUID", "6f1c0d52-8a3e-4b7e-9d3f-2c51a0e4b7d8"},
    {"MdlsAmbientFailure", "0"},
    {"MdlsAmbientOverride", "0"},
    {"ProductFamily", "qtm3300 outdoor"},
    {"ThermalScaler", "100"},
    {"TtableColumns", "15"},
    {"TtableFaceCnt", "2"},
    {"TtableModHeight", "16"},
    {"TtableModWidth", "16"},
    {"TtablePixelPitch", "15.85"},
    {"TtableRows", "9"},
    {"TtableTitle", "North scoreboard"},
};

constexpr struct {
  const char* Attribute;
  const char* Value;
} kSensorHeader[] = {
    {"Address", "33"}, {"Bus", "1"}, {"Connected", "true"},  {"DispInterfaceAddress", "1"},
    {"Face", "1"},     {"Rev", "2"}, {"NumAttribute", "12"}, {"SyncLossCounter", "0"},
};

// The kinds of sensors with the attributes of their own.
const struct {
  const char* Type;
  const char* Location;
  std::vector<Row> Own;
} kSensors[] = {
    {"OnboardTemp", "Local_I2C", {{"Celsius", "41.5"}}},
    {"OnboardCabinetFanControl", "Local_I2C", {{"FansEnabled", "1"}}},
    {"CANTemp", "TXR_CAN", {{"Celsius", "28.75"}}},
    {"CANTemp", "SCBII_CAN", {{"Celsius", "29.25"}}},
    {"CANLight", "Local_CAN", {{"OneMin", "412"}, {"TenMin", "398"}}},
    {"CANLightLux",
     "Local_CAN",
     {{"OneMin", "402"}, {"OneMinLux", "10850"}, {"TenMin", "390"}, {"TenMinLux", "10420"}}},
    {"CANAirFlow", "TXR_CAN", {{"OneMin", "1870"}, {"LongTermAverage", "1905"}}},
    {"CANHumidity", "Local_CAN", {{"HumidityOneMin", "46.25"}, {"HumidityTenMin", "45.5"}}},
    {"CANFanRpm", "TXR_CAN", {{"AverageRpm", "2210"}, {"CurrentRpm", "2195"}}},
    {"CANIsolationBoard",
     "TXR_CAN",
     {{"IsoVin", "24.1"}, {"IsoVout", "5.02"}, {"IsoTemperature", "36.5"}}},
    {"CANMultiDirectional",
     "Local_CAN",
     {{"Ambient", "180"},
      {"Front", "205"},
      {"Back", "143"},
      {"Locked", "locked_location"},
      {"Latitude", "44"},
      {"Longitude", "-97"},
      {"Altitude", "497"},
      {"Compass", "270"}}},
    {"CANDoor", "SCBII_CAN", {}},
    {"CANPowerSupplyRedundancyBoard",
     "Local_CAN",
     {{"PsrbVin_00_Volts", "230.4"}, {"PsrbVout_00_Volts", "24.05"}, {"Psrb_HwErrors", "0"}}},
    {"CANBeacon",
     "SCBII_CAN",
     {{"RedDimLevel", "80"},
      {"AmberDimLevel", "75"},
      {"StatusFlags", "1"},
      {"TemperatureKelvin", "308"},
      {"Humidity", "41"}}},
    {"CANRoundel", "SCBII_CAN", {{"RedDimLevel", "80"}, {"TemperatureKelvin", "309"}}},
    {"CANDcio16in3out8cfg",
     "TXR_CAN",
     {{"Input_00_Index", "1"},
      {"Input_00_Label", "Service door"},
      {"Input_00_State", "0"},
      {"Input_00_Type", "3"},
      {"Output_00_Index", "1"},
      {"Output_00_Label", "Intake fans"},
      {"Output_00_State", "1"},
      {"Output_00_Type", "1"},
      {"PortStatus", "255"}}},
    {"CANDcioAndFanRpm",
     "SCBII_CAN",
     {{"Fan_01_Rpm", "2180"}, {"Fan_02_Rpm", "2205"}, {"PortStatus", "31"}}},
};

bool IsBehindInterface(std::string_view location) {
  return location == "TXR_CAN" || location == "SCBII_CAN";
}

std::string PrefixOf(std::size_t sensor) { return "Sensor_" + Padded(sensor) + "_"; }

void AddHeader(const std::string& prefix, std::vector<Row>* rows) {
  for (const auto& header : kSensorHeader) {
    rows->emplace_back(prefix + header.Attribute, header.Value);
  }
}

// Sensors of all kinds one after the other, spread over so many display interfaces.
class Sensors {
 public:
  explicit Sensors(std::size_t interfaces) : interfaces_(interfaces) {}

  void AddTo(std::vector<Row>* rows, bool complete) {
    const auto& sensor = kSensors[made_ % std::size(kSensors)];
    const std::string prefix = PrefixOf(made_++);
    AddHeader(prefix, rows);
    behind_ += IsBehindInterface(sensor.Location) ? 1 : 0;
    rows->emplace_back(prefix + "DispInterfaceNumber", std::to_string(2 + behind_ % interfaces_));
    rows->emplace_back(prefix + "Location", sensor.Location);
    if (complete) {
      for (const Row& own : sensor.Own) {
        rows->emplace_back(prefix + own.first, own.second);
      }
      rows->emplace_back(prefix + "Type", sensor.Type);
    }
  }

 private:
  std::size_t interfaces_;
  std::size_t made_ = 0;
  std::size_t behind_ = 0;  // of these, behind a display interface
};

// A board with as many labelled points as it takes.
void AddBoard(std::size_t number, std::vector<Row>* rows) {
  const std::string prefix = PrefixOf(number);
  const auto add = [&](const char* family, std::size_t count, const char* label) {
    for (std::size_t point = 0; point < count; ++point) {
      const std::string index = std::to_string(point + 1);
      const std::string name =
          prefix + family + (point < 10 ? "_0" : "_") + std::to_string(point) + "_";
      rows->emplace_back(name + "Index", index);
      rows->emplace_back(name + "Label", label + index);
      rows->emplace_back(name + "State", "1");
      rows->emplace_back(name + "Type", "1");
    }
  };
  AddHeader(prefix, rows);
  add("Input", kInputs, "Service door ");
  add("Output", kOutputs, "Intake fans ");
  rows->emplace_back(prefix + "Location", "Local_CAN");
  rows->emplace_back(prefix + "Type", "CANDcio16in3out8cfg");
}

void AddDcioDevice(std::size_t number, std::vector<Row>* rows) {
  constexpr const char* kTypes[] = {"DoorSwitch", "PowerMonitor", "RunLED", "GenericInput",
                                    "GenericOutput"};
  const std::string prefix = "DCIO_" + Padded(number) + "_";
  rows->emplace_back(prefix + "Address", std::to_string(64 + number));
  rows->emplace_back(prefix + "ErrCnt", "0");
  rows->emplace_back(prefix + "NumAttribute", "5");
  rows->emplace_back(prefix + "State", "1");
  rows->emplace_back(prefix + "Type", kTypes[number % std::size(kTypes)]);
}

void AddDeviceNode(std::size_t number, std::vector<Row>* rows) {
  rows->emplace_back("TtableDeviceNode_" + Padded(number), std::to_string(100 + number));
}

void AddDisplay(const Mix& mix, std::vector<Row>* rows) {
  for (const auto& scalar : kScalars) {
    rows->emplace_back(scalar.Key, scalar.Value);
  }
  // One device node in twenty rows, one DCIO device (five rows) in fifty.
  for (std::size_t node = 0; node < mix.Rows / 20; ++node) {
    AddDeviceNode(node, rows);
  }
  for (std::size_t device = 0; device < mix.Rows / 50; ++device) {
    AddDcioDevice(device, rows);
  }
  for (Sensors sensors(mix.Interfaces); rows->size() < mix.Rows;) {
    sensors.AddTo(rows, true);
  }
}

void AddParked(const Mix& mix, std::vector<Row>* rows) {
  for (Sensors sensors(mix.Interfaces); rows->size() < mix.Rows;) {
    sensors.AddTo(rows, false);
  }
}

template <void (*kAdd)(std::size_t number, std::vector<Row>* rows)>
void AddMany(const Mix& mix, std::vector<Row>* rows) {
  for (std::size_t number = 0; rows->size() < mix.Rows; ++number) {
    kAdd(number, rows);
  }
}

void AddUnknown(std::size_t number, std::vector<Row>* rows) {
  rows->emplace_back("Unknown_" + Padded(number), "1");
}

constexpr struct {
  std::string_view What;
  void (*Add)(const Mix& mix, std::vector<Row>* rows);
} kMixes[] = {
    {"display", &AddDisplay},          {"parked", &AddParked},
    {"points", &AddMany<AddBoard>},    {"nodes", &AddMany<AddDeviceNode>},
    {"unknown", &AddMany<AddUnknown>},
};

}  // namespace

std::vector<Row> MakeRows(const Mix& mix) {
  for (const auto& [what, add] : kMixes) {
    if (what == mix.What) {
      std::vector<Row> rows;
      add(mix, &rows);
      std::sort(rows.begin(), rows.end());
      return rows;
    }
  }
  throw std::invalid_argument("no such rows: " + std::string(mix.What));
}

}  // namespace bench
