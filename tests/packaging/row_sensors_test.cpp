// docs/rows.md against the tables of sensors/ and what the sensor rows do.
#include <gtest/gtest.h>

#include <algorithm>
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
#include "sensors/attributes.h"
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

std::vector<std::string> NamesOf(std::span<const rows::Attribute> attributes) {
  std::vector<std::string> names;
  for (const rows::Attribute& attribute : attributes) {
    names.emplace_back(attribute.Name);
  }
  return names;
}

TEST(SensorRows, OnThePageAreTheAttributeTables) {
  EXPECT_EQ(DocumentedNames("Sensor attributes"), NamesOf(sensors::ExactAttributes()));
  EXPECT_EQ(DocumentedNames("Point families"), NamesOf(sensors::PointFamilies()));
  EXPECT_EQ(DocumentedNames("Attribute families"), NamesOf(sensors::AttributeFamilies()));
}

// Bytes of one number, wide enough for any place.
using Bytes = std::array<unsigned char, sizeof(double)>;

template <class T>
Bytes BytesOf(T value) {
  Bytes bytes = {};
  std::memcpy(bytes.data(), &value, sizeof value);
  return bytes;
}

// A format of the page: how the tables name it, and what "-1.5" leaves where a number of it is
// parked.
struct Format {
  const char* Parser;
  rows::Type Type;
  std::size_t Size;
  Bytes Parked;
};
template <class T>
Format FormatOf(const char* parser, T parked) {
  return {parser, rows::TypeOf<T>(), sizeof parked, BytesOf(parked)};
}
const std::map<std::string, Format> kFormats = {
    {"integer, 8 bits", FormatOf("integer", std::uint8_t{0xFF})},
    {"integer, 16 bits", FormatOf("integer", std::uint16_t{0xFFFF})},
    {"integer", FormatOf("integer", std::uint32_t{0xFFFFFFFF})},
    {"integer, signed", FormatOf("integer", std::int32_t{-1})},
    {"number", FormatOf("number", -1.5F)},
    {"whole number", FormatOf("integer", -1.0)},
};

const rows::Attribute& Known(std::string_view spelling) {
  const rows::Attribute* const found = sensors::FindAttribute(std::string(spelling).c_str());
  if (found == nullptr) {
    throw std::runtime_error("no attribute " + std::string(spelling));
  }
  return *found;
}

void ExpectFormat(const rows::Attribute& attribute, const Format& format) {
  const std::string parser = attribute.Reader->Name;
  EXPECT_TRUE(parser == format.Parser || parser == std::string("unsigned ") + format.Parser)
      << parser;
  EXPECT_EQ(attribute.Where->Is, format.Type) << attribute.Where->Name;
}

TEST(SensorRows, AreReadInTheFormatOfThePage) {
  CStatus status;
  for (const Cells& row : markdown::Table(Page(), "Sensor attributes")) {
    SCOPED_TRACE(row[0]);
    const rows::Attribute& attribute = Known(markdown::Name(row[0]));
    const auto format = kFormats.find(row[1]);
    if (format == kFormats.end()) {
      EXPECT_EQ(row[1], attribute.Reader->Name);
      EXPECT_TRUE(row[1] == "word" || row[1] == "flag") << row[1];
      continue;
    }
    ExpectFormat(attribute, format->second);
    Feed(&status, std::string(attribute.Name), "-1.5");
    Bytes parked = {};
    std::memcpy(parked.data(), attribute.Where->Address, format->second.Size);
    EXPECT_EQ(parked, format->second.Parked);
  }
}

TEST(SensorRows, OfFamiliesAreReadInTheFormatOfThePage) {
  CStatus status;
  FanRpms.clear();
  f_Psrb_InputVoltages.clear();
  f_Psrb_OutputVoltages.clear();
  for (const Cells& row : markdown::Table(Page(), "Attribute families")) {
    const std::string example = markdown::Name(row[1]);
    SCOPED_TRACE(example);
    const rows::Attribute& family = Known(example);
    EXPECT_EQ(family.Name, markdown::Name(row[0]));
    ASSERT_TRUE(kFormats.contains(row[2])) << row[2];
    const Format& format = kFormats.at(row[2]);
    ExpectFormat(family, format);
    Feed(&status, example, "-1.5");
    Bytes parked = {};
    if (family.Where->Address == &FanRpms) {
      ASSERT_EQ(FanRpms.size(), 1U);
      parked = BytesOf(FanRpms.begin()->second);
    } else if (family.Where->IsContainer) {
      const auto& voltages = *static_cast<const std::vector<float>*>(family.Where->Address);
      ASSERT_EQ(voltages.size(), 1U);
      parked = BytesOf(voltages[0]);
    } else {
      std::memcpy(parked.data(), family.Where->Address, format.Size);
    }
    EXPECT_EQ(parked, format.Parked);
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

TEST(PointRows, HaveTheEntriesOfThePage) {
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
    EXPECT_EQ(markdown::Name(documented[i][kElement]), kinds[i].Class->Name);
    EXPECT_EQ(QtSts::ClassOf(*kinds[i].Make(sensors::Placement::kOwnBus)), kinds[i].Class);
    EXPECT_EQ(documented[i][kBehind] == "yes", kinds[i].IsCan);
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
  const QtSts::Field* const found = info == nullptr ? nullptr : QtSts::FieldNamed(*info, field);
  return found == nullptr ? "" : found->Unit;
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

// The same attributes as the kind table says on the document's own list, where most records have
// no face.
std::set<std::string> Asked(const std::string& text) {
  const auto kinds = sensors::SensorKinds();
  const auto kind = std::ranges::find(kinds, std::string_view(text), &sensors::SensorKind::Text);
  std::set<std::string> attributes;
  for (const Sample& sample : Samples()) {
    const rows::Attribute& attribute = Known(sample.Attribute);
    for (const elements::Taken& taken : kind->Takes) {
      if (taken.From == attribute.Where && !taken.OnlyBehindInterface) {
        attributes.insert(sample.Family);
      }
    }
  }
  return attributes;
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
    EXPECT_EQ(used, Asked(kind));
  }
}

TEST(SensorKinds, ThatAreBoardsHoldAsManyPointsAsThePageGives) {
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
