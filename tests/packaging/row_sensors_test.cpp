// docs/rows.md against the tables of sensors/ and what the sensor rows do.
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "collector/state/scratch.h"
#include "model/compare.h"
#include "model/dcio_boards.h"
#include "model/document.h"
#include "sensors/points.h"
#include "sensors/record_builder.h"
#include "sensors/sensor_keys.h"
#include "tests/packaging/markdown.h"
#include "tests/support/golden.h"

namespace {

using markdown::Cells;
using QtSts::CStatus;

const std::string& Page() {
  static const std::string page = test_support::ReadSource("docs/rows.md");
  return page;
}

void Feed(CStatus* status, const std::string& attribute, std::string value) {
  std::string key = "Sensor_00_" + attribute;
  Status_Sensor(status, value.data(), key.data());
}

std::vector<std::string> DocumentedNames(std::string_view heading) {
  std::vector<std::string> names;
  for (const Cells& row : markdown::Table(Page(), heading)) {
    names.push_back(markdown::Name(row[0]));
  }
  return names;
}

std::vector<std::string> NamesOf(std::span<const sensors::Attribute> attributes) {
  std::vector<std::string> names;
  for (const sensors::Attribute& attribute : attributes) {
    names.emplace_back(attribute.Name);
  }
  return names;
}

TEST(SensorRows, OnThePageAreTheAttributeTables) {
  EXPECT_EQ(DocumentedNames("Sensor attributes"), NamesOf(sensors::ExactAttributes()));
  EXPECT_EQ(DocumentedNames("Point families"), NamesOf(sensors::PointFamilies()));
  EXPECT_EQ(DocumentedNames("Attribute families"), NamesOf(sensors::AttributeFamilies()));
}

// Bytes of one number, wide enough for any destination.
using Bytes = std::array<unsigned char, sizeof(double)>;

template <class T>
Bytes BytesOf(T value) {
  Bytes bytes = {};
  std::memcpy(bytes.data(), &value, sizeof value);
  return bytes;
}

// What "-1.5" leaves where a number of the format is parked.
const std::map<std::string, Bytes> kFormats = {
    {"integer, 8 bits", BytesOf(std::uint8_t{0xFF})},
    {"integer, 16 bits", BytesOf(std::uint16_t{0xFFFF})},
    {"integer", BytesOf(std::uint32_t{0xFFFFFFFF})},
    {"integer, signed", BytesOf(std::int32_t{-1})},
    {"number", BytesOf(-1.5F)},
    {"whole number", BytesOf(-1.0)},
};

TEST(SensorRows, AreReadInTheFormatThatThePageTells) {
  CStatus status;
  for (const Cells& row : markdown::Table(Page(), "Sensor attributes")) {
    SCOPED_TRACE(row[0]);
    const auto format = kFormats.find(row[1]);
    if (format == kFormats.end()) {
      EXPECT_TRUE(row[1] == "word" || row[1] == "flag") << row[1];
      continue;
    }
    const auto attribute = std::ranges::find(sensors::ExactAttributes(), markdown::Name(row[0]),
                                             &sensors::Attribute::Name);
    ASSERT_NE(attribute, sensors::ExactAttributes().end());
    alignas(double) Bytes parked = {};
    attribute->Store({&status, attribute->Name.data(), "-1.5"}, parked.data());
    EXPECT_EQ(parked, format->second);
  }
}

TEST(SensorRows, OfFamiliesAreReadInTheFormatThatThePageTells) {
  CStatus status;
  for (const Cells& row : markdown::Table(Page(), "Attribute families")) {
    const std::string example = markdown::Name(row[1]);
    SCOPED_TRACE(example);
    const auto family = std::ranges::find(sensors::AttributeFamilies(), markdown::Name(row[0]),
                                          &sensors::Attribute::Name);
    ASSERT_NE(family, sensors::AttributeFamilies().end());
    ASSERT_TRUE(kFormats.contains(row[2])) << row[2];
    const sensors::Row fed{&status, example.c_str(), "-1.5"};
    alignas(double) Bytes parked = {};
    if (family->Name == "Fan_") {
      decltype(FanRpms) fans;
      family->Store(fed, &fans);
      ASSERT_EQ(fans.size(), 1U);
      parked = BytesOf(fans.begin()->second);
    } else if (family->Name.starts_with("PsrbV")) {
      std::vector<float> voltages;
      family->Store(fed, &voltages);
      ASSERT_EQ(voltages.size(), 1U);
      parked = BytesOf(voltages[0]);
    } else {
      family->Store(fed, parked.data());
    }
    EXPECT_EQ(parked, kFormats.at(row[2]));
  }
}

bool MakesAPoint(const std::string& family, int entry) {
  CStatus status;
  Feed(&status, family + "_" + std::to_string(entry) + "_Type", "0");
  bool made = false;
  for (DcioPoint& point : dcioInputs) {
    made = made || point.Present != 0;
    point = {};
  }
  for (DcioPoint& point : dcioOutputs) {
    made = made || point.Present != 0;
    point = {};
  }
  return made;
}

TEST(PointRows, HaveTheEntriesThatThePageTells) {
  for (const Cells& row : markdown::Table(Page(), "Point families")) {
    SCOPED_TRACE(row[0]);
    constexpr std::string_view kFrom = "0 to ";
    ASSERT_TRUE(row[1].starts_with(kFrom));
    const int last = std::stoi(row[1].substr(kFrom.size()));
    const std::string family = markdown::Name(row[0]);
    EXPECT_TRUE(MakesAPoint(family, 0));
    EXPECT_TRUE(MakesAPoint(family, last));
    EXPECT_FALSE(MakesAPoint(family, last + 1));
    EXPECT_FALSE(MakesAPoint(family, -1));
  }
}

TEST(PointRows, HaveTheParts) {
  EXPECT_EQ(DocumentedNames("Point parts"),
            (std::vector<std::string>{"Index", "Label", "State", "Type"}));
  CStatus status;
  for (const std::string& part : DocumentedNames("Point parts")) {
    Feed(&status, "Input_00_" + part, "7");
  }
  const DcioPoint point = dcioInputs[0];
  dcioInputs[0] = {};
  EXPECT_EQ(point.Present, 1);
  EXPECT_EQ(point.Type, 7U);
  EXPECT_EQ(point.Index, 7);
  EXPECT_EQ(point.State, 7);
  EXPECT_EQ(point.Label, "7");
}

// Element names by code, for the codes that name one.
using PointTypes = std::map<std::uint32_t, std::string>;

PointTypes DocumentedTypes(std::string_view heading) {
  PointTypes types;
  for (const Cells& row : markdown::Table(Page(), heading)) {
    types[static_cast<std::uint32_t>(std::stoul(row[0]))] = markdown::Name(row[1]);
  }
  return types;
}

constexpr std::uint32_t kCodesTried = 300;

TEST(PointRows, OfEveryTypeMakeTheElementOnThePageAndNoOtherDoes) {
  PointTypes inputs;
  PointTypes outputs;
  for (std::uint32_t code = 0; code < kCodesTried; ++code) {
    QtSts::CCANDcioAndFanRpm board;
    board.Points.Inputs = std::make_unique<QtSts::InputListType>();
    board.Points.Outputs = std::make_unique<QtSts::OutputListType>();
    dcioInputs[0] = {1, code, 1, 0, ""};
    dcioOutputs[0] = {1, code, 1, 0, ""};
    PopulateInputs(&board);
    PopulateOutputs(&board);
    for (const QtSts::BaseInputType* point : board.Points.Inputs->Points) {
      inputs[code] = QtSts::ClassOf(*point)->Name;
    }
    for (const QtSts::BaseOutputType* point : board.Points.Outputs->Points) {
      outputs[code] = QtSts::ClassOf(*point)->Name;
    }
  }
  EXPECT_EQ(DocumentedTypes("Input types"), inputs);
  EXPECT_EQ(DocumentedTypes("Output types"), outputs);
}

// Columns of the table of kinds.
enum KindColumn { kWord, kCode, kElement, kAttributes, kBehind };

TEST(SensorKinds, OnThePageAreTheKindTable) {
  const auto documented = markdown::Table(Page(), "Sensor kinds");
  const auto kinds = sensors::SensorKinds();
  ASSERT_EQ(documented.size(), kinds.size());
  for (std::size_t i = 0; i < kinds.size(); ++i) {
    SCOPED_TRACE(kinds[i].Text);
    EXPECT_EQ(markdown::Name(documented[i][kWord]), kinds[i].Text);
    EXPECT_EQ(documented[i][kCode], std::to_string(kinds[i].Code));
    EXPECT_EQ(markdown::Name(documented[i][kElement]), QtSts::ClassOf(*kinds[i].Make(false))->Name);
    EXPECT_EQ(documented[i][kBehind] == "yes", kinds[i].Accepted == sensors::Home::kAnywhere);
  }
}

// An attribute as a row writes it, with two values that differ in the document.
struct Sample {
  std::string Family;     // as the tables name it
  std::string Attribute;  // as a row spells it
  std::string Value = "7";
  std::string Before = "1";
};

// Every attribute but those that say where the sensor is and that complete it.
std::vector<Sample> Samples() {
  std::vector<Sample> samples;
  for (const std::string& name : DocumentedNames("Sensor attributes")) {
    if (name == "Connected") {
      samples.push_back({name, name, "true", "false"});
    } else if (name == "Locked") {
      samples.push_back({name, name, "locked_time", "locked_location"});
    } else if (name != "Type" && name != "Location" && !name.starts_with("DispInterface")) {
      samples.push_back({name, name});
    }
  }
  for (const Cells& row : markdown::Table(Page(), "Attribute families")) {
    samples.push_back({markdown::Name(row[0]), markdown::Name(row[1])});
  }
  samples.push_back({"Input", "Input_00_Type"});
  samples.push_back({"Output", "Output_00_Type"});
  return samples;
}

// The document of one sensor of this kind for which all rows but that of `changed` hold the first
// value.
void Collect(const std::string& kind, const Sample& changed, CStatus* status) {
  FanRpms.clear();
  f_Psrb_InputVoltages.clear();
  f_Psrb_OutputVoltages.clear();
  dcioInputs = {};
  dcioOutputs = {};
  Feed(status, "Location", "Local_CAN");
  Feed(status, "Input_00_Index", "1");
  Feed(status, "Output_00_Index", "1");
  for (const Sample& sample : Samples()) {
    const bool is_changed = sample.Family == changed.Family;
    Feed(status, sample.Attribute, is_changed ? sample.Value : sample.Before);
  }
  Feed(status, "Type", kind);
}

std::string UnitOf(const QtSts::ClassInfo* info, std::string_view field) {
  for (; info != nullptr; info = info->Base) {
    for (std::size_t i = 0; i < info->FieldCount; ++i) {
      if (info->Fields[i].Name == field) {
        return info->Fields[i].Unit;
      }
    }
  }
  return "";
}

std::map<std::string, std::string> DocumentedUnits() {
  std::map<std::string, std::string> units;
  for (const Cells& row : markdown::Table(Page(), "Sensor attributes")) {
    units[markdown::Name(row[0])] = row[2];
  }
  for (const Cells& row : markdown::Table(Page(), "Attribute families")) {
    units[markdown::Name(row[0])] = row[3];
  }
  return units;
}

TEST(SensorKinds, UseTheAttributesOnThePageAndNoOthersInItsUnits) {
  const std::map<std::string, std::string> units = DocumentedUnits();
  for (const Cells& row : markdown::Table(Page(), "Sensor kinds")) {
    const std::string kind = markdown::Name(row[kWord]);
    SCOPED_TRACE(kind);
    const auto own = markdown::Names(row[kAttributes]);
    std::set<std::string> documented(own.begin(), own.end());
    documented.insert({"Connected", "NumAttribute", "SyncLossCounter"});
    if (row[kBehind] == "yes") {
      documented.insert({"Address", "Bus", "Rev"});
    }
    CStatus before;
    Collect(kind, {}, &before);
    std::set<std::string> used;
    for (const Sample& sample : Samples()) {
      CStatus after;
      Collect(kind, sample, &after);
      const auto differences = QtSts::Compare(before, after);
      if (differences.empty()) {
        continue;
      }
      used.insert(sample.Family);
      const std::string& path = differences[0].Path;
      const QtSts::ClassInfo* const record =
          sample.Family == "Fan_" ? &QtSts::FanRpm::Class : QtSts::ClassOf(*before.Sensors[0]);
      if (units.contains(sample.Family)) {
        EXPECT_EQ(UnitOf(record, path.substr(path.rfind('/') + 1)), units.at(sample.Family))
            << sample.Family << " " << path;
      }
    }
    EXPECT_EQ(used, documented);
  }
}

TEST(SensorKinds, ThatAreBoardsHoldAsManyPointsAsThePageTells) {
  for (const Cells& row : markdown::Table(Page(), "Board capacities")) {
    SCOPED_TRACE(row[0]);
    CStatus status;
    Collect(markdown::Name(row[0]), {}, &status);
    const auto* const board = dynamic_cast<const QtSts::CCANDcio*>(status.Sensors[0]);
    ASSERT_NE(board, nullptr);
    EXPECT_EQ(std::to_string(board->Points.Inputs->MaximumIndex), row[1]);
    EXPECT_EQ(std::to_string(board->Points.Outputs->MaximumIndex), row[2]);
  }
}

}  // namespace
