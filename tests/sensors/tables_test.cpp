// What programs find when they look into the tables of attributes and kinds.
#include <gmock/gmock.h>

#include <memory>
#include <set>

#include "handlers/fields.h"
#include "model/field_access.h"
#include "model/lookup/kinds.h"
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

// The name of the field of `element` whose value stands at `address`.
std::string FieldAt(const QtSts::CBaseStatus& element, const void* address) {
  std::string name;
  void* const object = const_cast<void*>(dynamic_cast<const void*>(&element));
  QtSts::FieldAccess::Visit(
      *QtSts::ClassOf(element), object, [&](const QtSts::Field& field, const void* part) {
        name = QtSts::FieldAccess::Read(field, part) == address ? field.Name : "";
        return name.empty();
      });
  return name;
}

// "variable > field" of everything that `element`, which is of this kind, takes.
std::vector<std::string> TakenBy(std::span<const elements::Taken> takes,
                                 const QtSts::CBaseStatus& element) {
  std::vector<std::string> taken;
  for (const elements::Taken& row : takes) {
    taken.push_back(std::string(row.From->Name) + " > " + FieldAt(element, row.Member(element)));
  }
  return taken;
}

std::vector<std::string> TakenBy(const sensors::SensorKind& kind) {
  return TakenBy(kind.Takes, *kind.Make(sensors::Placement::kBehindInterface));
}

template <class Code, class Element>
std::vector<std::string> TakenBy(const elements::Kind<Code, Element>& kind) {
  return TakenBy(kind.Takes, *kind.Make());
}

// What the kinds of all elements take.
std::vector<std::span<const elements::Taken>> AllKinds() {
  std::vector<std::span<const elements::Taken>> all;
  const auto add = [&all](const auto& kinds) {
    for (const auto& kind : kinds) {
      all.push_back(kind.Takes);
    }
  };
  add(sensors::SensorKinds());
  add(elements::DcioKinds());
  add(elements::InterfaceKinds());
  return all;
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

TEST_F(Tables, SayWhatADcioDeviceTakes) {
  const std::vector<std::string> without_state = {"u32_DCIO_NumAttr > NumberOfAttributes",
                                                  "u32_DCIO_Address > Address"};
  std::vector<std::string> with_state = without_state;
  with_state.insert(with_state.end(),
                    {"u32_DCIO_State > State", "u32_DCIO_ErrCntr > ErrorCounter"});
  std::vector<std::string> names;
  for (const elements::DcioKind& kind : elements::DcioKinds()) {
    names.emplace_back(kind.Class->Name);
    const bool has_state = kind.Is != kRunLed && kind.Is != kGenericOutput;
    EXPECT_EQ(TakenBy(kind), has_state ? with_state : without_state) << kind.Class->Name;
    EXPECT_EQ(QtSts::ClassOf(*kind.Make()), kind.Class);
  }
  EXPECT_THAT(names,
              ElementsAre("DoorSwitch", "PowerMonitor", "RunLED", "GenericInput", "GenericOutput"));
}

TEST_F(Tables, SayWhatADisplayInterfaceTakes) {
  u16_DispInterfaceAddress = 7;
  std::vector<std::string> names;
  for (const elements::InterfaceKind& kind : elements::InterfaceKinds()) {
    names.emplace_back(kind.Class->Name);
    EXPECT_THAT(TakenBy(kind), ElementsAre("u32_DispInterfaceNumAttribute > NumberOfAttributes",
                                           "u16_DispInterfaceAddress > Address"));
    EXPECT_EQ(QtSts::ClassOf(*kind.Make()), kind.Class);
  }
  EXPECT_THAT(names,
              ElementsAre("TravexRouterDisplayInterface", "SentrelControlBoardDisplayInterface"));
}

TEST_F(Tables, KnowTheAttributesThatNoElementTakes) {
  std::set<std::string> for_nobody;
  const auto look_for = [&for_nobody](const std::string& name, const rows::Place& place) {
    bool taken = false;
    for (const auto& takes : AllKinds()) {
      taken = taken || elements::Takes(takes, place);
    }
    if (!taken) {
      for_nobody.insert(name);
    }
  };
  for (const std::string& name : AllAttributes()) {
    look_for(name, *sensors::FindAttribute(name.c_str())->Where);
  }
  for (const rows::Attribute& attribute : handlers::DcioAttributes()) {
    look_for("DCIO " + std::string(attribute.Name), *attribute.Where);
  }
  // No element uses HumidityTenMin; the others say where an element goes and what it is.
  EXPECT_THAT(for_nobody, ElementsAre("DCIO Type", "HumidityTenMin", "Location", "Type"));
}

TEST_F(Tables, SayThatNoSensorTakesTheAddressOfItsInterface) {
  const rows::Place& address = *sensors::FindAttribute("DispInterfaceAddress")->Where;
  for (const sensors::SensorKind& kind : sensors::SensorKinds()) {
    EXPECT_FALSE(sensors::Takes(kind, address)) << kind.Text;
  }
  EXPECT_TRUE(sensors::Takes(KindOf("OnboardTemp"), *sensors::FindAttribute("Celsius")->Where));
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
