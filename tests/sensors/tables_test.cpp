// What programs find when they look into the tables of attributes and kinds.
#include <gmock/gmock.h>

#include <set>

#include "sensors/attributes.h"
#include "sensors/record_builder.h"
#include "tests/sensors/records_fixture.h"

namespace {

using testing::ElementsAre;

class Tables : public RecordTest {};

const sensors::SensorKind& KindOf(std::string_view text) {
  for (const sensors::SensorKind& kind : sensors::SensorKinds()) {
    if (kind.Text == text) {
      return kind;
    }
  }
  throw std::logic_error("no kind " + std::string(text));
}

std::string PlaceOf(const char* attribute) {
  const rows::Attribute* const found = sensors::FindAttribute(attribute);
  return found == nullptr ? "nowhere" : found->Where->Name;
}

// The name of the field of `record` whose value stands at `address`.
std::string FieldAt(const QtSts::CSensor& record, const void* address) {
  std::string name;
  void* const object = const_cast<void*>(dynamic_cast<const void*>(&record));
  QtSts::VisitEveryField(*QtSts::ClassOf(record), object,
                         [&](const QtSts::Field& field, const void* part) {
                           name = field.Read(part) == address ? field.Name : "";
                           return name.empty();
                         });
  return name;
}

// "variable > field" of everything that a record of this kind takes behind an interface.
std::vector<std::string> TakenBy(const sensors::SensorKind& kind) {
  const auto record = kind.Make(sensors::Placement::kBehindInterface);
  std::vector<std::string> taken;
  for (const elements::Taken& row : kind.Takes) {
    taken.push_back(std::string(row.From->Name) + " > " + FieldAt(*record, row.Member(*record)));
  }
  return taken;
}

// Names of all attributes, as rows may spell them.
std::vector<std::string> AllAttributes() {
  std::vector<std::string> names;
  for (const auto attributes :
       {sensors::ExactAttributes(), sensors::PointFamilies(), sensors::AttributeFamilies()}) {
    for (const rows::Attribute& attribute : attributes) {
      names.emplace_back(attribute.Name);
    }
  }
  return names;
}

}  // namespace

TEST_F(Tables, SayWhereAnAttributeGoes) {
  EXPECT_EQ(PlaceOf("Celsius"), "f_celsius");
  EXPECT_EQ(PlaceOf("Humidity"), "beaconRoundel.Humidity");
  EXPECT_EQ(PlaceOf("HUMIDITYx"), "beaconRoundel.Humidity");
  EXPECT_EQ(PlaceOf("HumidityOneMin"), "f_Humidity_OneMinAverage");
  EXPECT_EQ(PlaceOf("Fan_3_Rpm"), "FanRpms");
  EXPECT_EQ(PlaceOf("Input_3_Label"), "dcioInputs");
  EXPECT_EQ(PlaceOf("celsius"), "nowhere");
  EXPECT_EQ(PlaceOf(""), "nowhere");
}

TEST_F(Tables, FindEveryAttributeByItsNameWithAParserOrPartsOfItsOwn) {
  for (const std::string& name : AllAttributes()) {
    SCOPED_TRACE(name);
    const rows::Attribute* const found = sensors::FindAttribute(name.c_str());
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->Name, name);
    EXPECT_EQ(found->Reader == nullptr, found->Where->Is == rows::Type::kPoint);
  }
}

TEST_F(Tables, SayWhatAKindTakes) {
  EXPECT_THAT(TakenBy(KindOf("CANHumidity")),
              ElementsAre("u32_NumAttribute > NumberOfAttributes",
                          "uiSyncLossCounter > SyncLossCounter", "b_Connected > Connected",
                          "u32_Address > Address", "u32_Bus > Bus", "s32_Revision > Revision",
                          "u32_Face > Face", "f_Humidity_OneMinAverage > Humidity"));
  EXPECT_THAT(
      TakenBy(KindOf("OnboardTemp")),
      ElementsAre("u32_NumAttribute > NumberOfAttributes", "uiSyncLossCounter > SyncLossCounter",
                  "b_Connected > Connected", "f_celsius > Celsius"));
}

TEST_F(Tables, NameAFieldOfTheRecordForEverythingThatIsTaken) {
  for (const sensors::SensorKind& kind : sensors::SensorKinds()) {
    SCOPED_TRACE(kind.Text);
    for (const std::string& taken : TakenBy(kind)) {
      EXPECT_FALSE(taken.ends_with(" ")) << taken;
    }
  }
}

TEST_F(Tables, KnowTheAttributesThatNoKindTakes) {
  std::set<std::string> for_nobody;
  for (const std::string& name : AllAttributes()) {
    const rows::Place& place = *sensors::FindAttribute(name.c_str())->Where;
    bool taken = false;
    for (const sensors::SensorKind& kind : sensors::SensorKinds()) {
      taken = taken || sensors::Takes(kind, place);
    }
    if (!taken) {
      for_nobody.insert(name);
    }
  }
  // No record uses HumidityTenMin; the others say where a record goes and what it is.
  EXPECT_THAT(for_nobody, ElementsAre("DispInterfaceAddress", "DispInterfaceNumber",
                                      "HumidityTenMin", "Location", "Type"));
}

TEST_F(Tables, PutCanSensorsAloneBehindInterfaces) {
  for (const sensors::SensorKind& kind : sensors::SensorKinds()) {
    SCOPED_TRACE(kind.Text);
    EXPECT_EQ(kind.IsCan, QtSts::IsA(*kind.Class, QtSts::CCANSensor::Class));
  }
}

TEST_F(Tables, HaveThePartsOfAPointByName) {
  std::vector<std::string> parts;
  for (const rows::Field<DcioPoint>& part : sensors::PointParts()) {
    parts.emplace_back(part.Name);
  }
  EXPECT_THAT(parts, ElementsAre("Index", "Label", "State", "Type", "Type"));
}
