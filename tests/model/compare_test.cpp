#include "model/compare.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "model/can_sensors.h"
#include "model/dcio_boards.h"
#include "model/document.h"
#include "model/field_access.h"
#include "tests/support/comma_locale.h"
#include "tests/support/random_document.h"

namespace {

using QtSts::CStatus;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> Texts(const QtSts::CBaseStatus& before, const QtSts::CBaseStatus& after) {
  std::vector<std::string> texts;
  for (const QtSts::Difference& difference : QtSts::Compare(before, after)) {
    texts.push_back(difference.Text());
  }
  return texts;
}

QtSts::CCANTempSensor* AddSensorBehindInterface(CStatus& status) {
  auto* const output = new QtSts::CTravex6Output;
  status.Outputs.Add(output);
  output->DisplayInterfaces.Add(new QtSts::CTravexRouterDisplayInterface);
  auto* const interface = new QtSts::CTravexRouterDisplayInterface;
  output->DisplayInterfaces.Add(interface);
  for (int i = 0; i < 3; ++i) {
    interface->Sensors.Add(new QtSts::CCANTempSensor);
  }
  auto* const sensor = new QtSts::CCANTempSensor;
  interface->Sensors.Add(sensor);
  return sensor;
}

TEST(Compare, FindsNothingBetweenADocumentAndItself) {
  for (std::uint64_t seed = 0; seed < 50; ++seed) {
    SCOPED_TRACE(seed);
    const auto before = test_support::RandomDocument(test_support::SeededChoices(seed));
    const auto after = test_support::RandomDocument(test_support::SeededChoices(seed));
    EXPECT_THAT(Texts(*before, *after), IsEmpty());
  }
}

TEST(Compare, LeadsToTheValueByPath) {
  CStatus before;
  CStatus after;
  AddSensorBehindInterface(before)->Celsius = 21.5F;
  AddSensorBehindInterface(after)->Celsius = 22;
  EXPECT_THAT(Texts(before, after),
              ElementsAre("Outputs[0]/DisplayInterfaces[1]/Sensors[3]/Celsius: 21.5 -> 22"));
}

TEST(Compare, WritesNumbersWithAPointWhateverTheLocale) {
  const test_support::CommaLocale locale;
  CStatus before;
  CStatus after;
  AddSensorBehindInterface(before)->Celsius = 1234.5F;
  AddSensorBehindInterface(after);
  EXPECT_THAT(Texts(before, after),
              ElementsAre("Outputs[0]/DisplayInterfaces[1]/Sensors[3]/Celsius: 1234.5 -> 0"));
}

TEST(Compare, ListsEveryDifferenceInOrderOfTheFields) {
  CStatus before;
  CStatus after;
  after.MemoryFree = 1;
  after.Network.SpareWord = 2;
  after.DaylightSaving = true;
  EXPECT_THAT(Texts(before, after),
              ElementsAre("Network/SpareWord: 0 -> 2", "DaylightSaving: false -> true",
                          "MemoryFree: 100000 -> 1"));
}

TEST(Compare, HandsTheSameDifferencesToAVisitor) {
  const auto before = test_support::RandomDocument(test_support::SeededChoices(1));
  const auto after = test_support::RandomDocument(test_support::SeededChoices(2));
  std::vector<std::string> visited;
  QtSts::Compare(*before, *after, [&visited](const QtSts::Difference& difference) {
    visited.push_back(difference.Text());
  });
  EXPECT_GT(visited.size(), 10U);
  EXPECT_EQ(visited, Texts(*before, *after));
}

TEST(Compare, PutsTextsBetweenQuotes) {
  CStatus before;
  CStatus after;
  before.GUID = "absent";
  after.GUID = "a \"b\\c\"\n\t\r";
  EXPECT_THAT(Texts(before, after), ElementsAre(R"(GUID: "absent" -> "a \"b\\c\"\n\t\r")"));
}

TEST(Compare, SeparatesAbsentFromPresent) {
  CStatus before;
  CStatus after;
  AddSensorBehindInterface(before);
  AddSensorBehindInterface(after)->Face = std::make_unique<std::uint32_t>(0);
  EXPECT_THAT(Texts(before, after),
              ElementsAre("Outputs[0]/DisplayInterfaces[1]/Sensors[3]/Face: absent -> 0"));
  EXPECT_THAT(Texts(after, before),
              ElementsAre("Outputs[0]/DisplayInterfaces[1]/Sensors[3]/Face: 0 -> absent"));
}

TEST(Compare, NamesAnAbsentRecordByItsClass) {
  QtSts::CCANDcio before;
  QtSts::CCANDcio after;
  after.Points.Inputs = std::make_unique<QtSts::InputListType>(2);
  EXPECT_THAT(Texts(before, after), ElementsAre("Points/Inputs: absent -> InputListType"));
}

TEST(Compare, NamesExtraElementsByTheirClass) {
  CStatus before;
  CStatus after;
  after.Sensors.Add(new QtSts::CCANTempSensor);
  after.Sensors.Add(new QtSts::CCANDoorSensor);
  EXPECT_THAT(Texts(before, after), ElementsAre("Sensors[0]: absent -> CANTempSensor",
                                                "Sensors[1]: absent -> CANDoorSensor"));
  EXPECT_THAT(Texts(after, before), ElementsAre("Sensors[0]: CANTempSensor -> absent",
                                                "Sensors[1]: CANDoorSensor -> absent"));
}

TEST(Compare, NamesElementsOfAnotherClassByBothClasses) {
  CStatus before;
  CStatus after;
  auto* const sensor = new QtSts::CCANTempSensor;
  sensor->Celsius = 5;
  before.Sensors.Add(sensor);
  after.Sensors.Add(new QtSts::CCANDoorSensor);
  EXPECT_THAT(Texts(before, after), ElementsAre("Sensors[0]: CANTempSensor -> CANDoorSensor"));
}

TEST(Compare, TakesNotANumberForEqualToItself) {
  QtSts::CFrequency before;
  QtSts::CFrequency after;
  before.Vertical = std::numeric_limits<float>::quiet_NaN();
  after.Vertical = -std::numeric_limits<float>::quiet_NaN();
  EXPECT_THAT(Texts(before, after), IsEmpty());
  after.Vertical = std::numeric_limits<float>::infinity();
  EXPECT_THAT(Texts(before, after), ElementsAre("Vertical: NaN -> INF"));
}

TEST(Compare, TakesTextsForEqualThatAreTheSameInTheDocument) {
  CStatus before;
  CStatus after;
  before.GUID = "\xff";
  after.GUID = "\x01";
  EXPECT_THAT(Texts(before, after), IsEmpty());
}

TEST(Compare, WritesTheNamesOfCodesWhereThatIsAskedFor) {
  QtSts::CTravex6Output before;
  QtSts::CTravex6Output after;
  before.Dimming.DimmingMode = 6;
  after.Dimming.DimmingMode = 7;  // has no name
  const auto compare = [&](QtSts::CodeText codes) {
    std::vector<std::string> texts;
    QtSts::Compare(
        QtSts::DocumentTree(before), QtSts::DocumentTree(after), codes,
        [&texts](const QtSts::Difference& difference) { texts.push_back(difference.Text()); });
    return texts;
  };
  EXPECT_THAT(compare(QtSts::CodeText::kNumber), ElementsAre("Dimming/DimmingMode: 6 -> 7"));
  EXPECT_THAT(compare(QtSts::CodeText::kNumberAndName),
              ElementsAre("Dimming/DimmingMode: 6 (override) -> 7"));
}

TEST(Compare, NamesTwoClassesAtTheTop) {
  EXPECT_THAT(Texts(QtSts::CArea(), QtSts::CStat()), ElementsAre(".: Area -> Stat"));
}

TEST(Compare, PassesOverElementsOfUnlistedClasses) {
  class CForeign : public QtSts::CCANSensor {};
  CStatus before;
  CStatus after;
  before.Sensors.Add(new CForeign);
  EXPECT_THAT(Texts(before, after), IsEmpty());
  EXPECT_THAT(Texts(CForeign(), CForeign()), IsEmpty());
}

// Every scalar of every class, changed alone, is exactly one difference.
TEST(Compare, SeesEveryFieldOfEveryClass) {
  int fields = 0;
  for (const QtSts::ClassInfo* const info : QtSts::Classes()) {
    if (info->Create == nullptr) {
      continue;
    }
    for (const QtSts::Field& field : info->OwnFields()) {
      if (field.Scalar == nullptr) {
        continue;
      }
      SCOPED_TRACE(std::string(info->Name) + "/" + field.Name);
      const std::unique_ptr<QtSts::CBaseStatus> before(info->Create());
      const std::unique_ptr<QtSts::CBaseStatus> after(info->Create());
      void* const value = QtSts::FieldAccess::Make(field, dynamic_cast<void*>(after.get()));
      ASSERT_TRUE(
          field.Scalar->Parse(field.Scalar == &QtSts::listing::kBool ? "true" : "7", value));
      EXPECT_EQ(Texts(*before, *after).size(), 1U);
      ++fields;
    }
  }
  EXPECT_GT(fields, 150);
}

}  // namespace
