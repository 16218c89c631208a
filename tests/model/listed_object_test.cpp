// Walking any object by its listing, and values by their paths.
#include "model/listed_object.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <concepts>
#include <random>

#include "model/beacons.h"
#include "model/can_sensors.h"
#include "model/document.h"
#include "model/tree.h"
#include "tests/support/random_document.h"

namespace {

using QtSts::CStatus;
using QtSts::FindValue;
using QtSts::ListedField;
using QtSts::ListedObject;

// What cannot be asked: a field without its object, an object that is gone, a value of a type that
// no field has.
static_assert(!std::is_constructible_v<ListedField, const QtSts::Field&, const void*>);
template <class Field, class List, class Class>
concept TakesAnyObject = requires(const Field& field, const void* object) {
  field.read_(object);
}
|| requires(const Field& field, void* object) { field.make_(object); }
|| requires(const List& list, const void* object) { list.at_(object, std::size_t{0}); }
|| requires(const List& list, const void* object) { list.count_(object); }
|| requires(const List& list, void* object) { list.add_(object, nullptr); }
|| requires(const Class& info, void* object) { info.to_base_(object); }
|| requires(const Class& info, void* object) {
  VisitEveryField(info, object, [](const Field&, const void*) { return true; });
}
|| requires(const Class& info, void* object) {
  ListedObject::VisitParts(info, object, [](const Field&, const void*) { return true; });
};
static_assert(!TakesAnyObject<QtSts::Field, QtSts::ListAccess, QtSts::ClassInfo>);
static_assert(!std::is_constructible_v<ListedObject, const QtSts::ClassInfo*, const void*>);
static_assert(!std::is_constructible_v<ListedObject, CStatus>);
static_assert(std::is_constructible_v<ListedObject, const CStatus&>);
template <class Status>
concept MayBeAsked = requires(Status&& status) {
  FindValue(std::forward<Status>(status), "");
};
static_assert(MayBeAsked<const CStatus&> && MayBeAsked<CStatus&> && !MayBeAsked<CStatus>);

// A field's own access, which took any pointer, was open to all: the red dim level of a temperature
// sensor used to be a 0 that nobody had reported.
TEST(ListedObject, HasTheFieldsOfItsOwnClassAlone) {
  QtSts::CCANTempSensor sensor;
  sensor.Celsius = 21.5F;
  std::vector<std::string> names;
  ListedObject(sensor).VisitFields([&names](const ListedField& field) {
    names.emplace_back(field.Listed().Name);
    return true;
  });
  EXPECT_THAT(names, testing::Contains("Celsius"));
  EXPECT_THAT(names, testing::Not(testing::Contains("RedDimLevel")));
}

TEST(ListedField, GivesItsValueInItsOwnTypeAlone) {
  QtSts::CCANTempSensor sensor;
  sensor.Celsius = 21.5F;
  int seen = 0;
  ListedObject(sensor).VisitFields([&seen](const ListedField& field) {
    const std::string_view name = field.Listed().Name;
    if (name == "Celsius") {
      ++seen;
      EXPECT_EQ(*field.As<float>(), 21.5F);
      EXPECT_EQ(field.As<double>(), nullptr);
      EXPECT_EQ(field.As<std::uint32_t>(), nullptr);
      EXPECT_EQ(field.Written(), "21.5");
    } else if (name == "Face") {
      ++seen;
      EXPECT_FALSE(field.IsReported());
      EXPECT_EQ(field.As<std::uint32_t>(), nullptr);
      EXPECT_EQ(field.Written(), "");
    }
    return true;
  });
  EXPECT_EQ(seen, 2);
}

// Whatever is asked of a field that it is not answers with nothing.
TEST(ListedField, MayBeAskedForEverything) {
  CStatus status;
  status.Sensors.Add(new QtSts::CCANDoorSensor);
  EXPECT_TRUE(ListedObject::OfDocument(status).VisitFields([](const ListedField& field) {
    EXPECT_EQ(field.IsScalar() + field.IsRecord() + field.IsList(), 1) << field.Listed().Name;
    int elements = 0;
    EXPECT_TRUE(field.VisitElements([&elements](const ListedObject&) { return ++elements > 0; }));
    EXPECT_EQ(elements > 0, std::string_view(field.Listed().Name) == "Sensors");
    EXPECT_EQ(field.Record().Class() != nullptr, field.IsRecord());
    const std::string* const text = field.As<std::string>();
    EXPECT_EQ(field.Written().empty(), text != nullptr ? text->empty() : !field.IsScalar())
        << field.Listed().Name;
    return true;
  }));
}

TEST(ListedObject, EndsTheWalkWhenTheVisitorWantsNoMore) {
  QtSts::CArea area;
  int seen = 0;
  EXPECT_FALSE(ListedObject(area).VisitFields([&seen](const ListedField&) { return ++seen < 1; }));
  EXPECT_EQ(seen, 1);
}

TEST(ListedObject, OfAClassThatIsNotListedHasNoFields) {
  class COwnSensor : public QtSts::CSensor {};
  const COwnSensor sensor;
  EXPECT_EQ(ListedObject(sensor).Class(), nullptr);
  EXPECT_TRUE(ListedObject(sensor).VisitFields([](const ListedField&) { return false; }));
}

// A class that has CStatus as its second base used to be read from where its first one stands.
TEST(ListedObject, FindsTheDocumentInAClassOfTheHost) {
  struct Other {
    virtual ~Other() = default;
    std::uint64_t Words[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  };
  class COwnStatus : public Other, public CStatus {};
  COwnStatus status;
  status.GUID = "a";
  EXPECT_EQ(FindValue(status, "GUID")->Written(), "a");
}

TEST(FindValue, FindsEveryValueByThePathThatTheTreeWrites) {
  for (std::uint64_t seed = 0; seed < 50; ++seed) {
    SCOPED_TRACE(seed);
    const auto document = test_support::RandomDocument(test_support::SeededChoices(seed));
    const QtSts::DocumentTree tree(*document);
    for (const QtSts::TreeElement& element : tree.Elements()) {
      for (const QtSts::TreeValue& value : element.Values()) {
        const std::string path = element.PathOf(value);
        const auto found = FindValue(*document, path);
        ASSERT_TRUE(found) << path;
        ASSERT_EQ(found->Written(), value.Written()) << path;
        ASSERT_EQ(&found->Listed(), &value.Listed()) << path;
      }
      ASSERT_FALSE(FindValue(*document, element.Path())) << element.Path();
    }
  }
}

// Of damaged paths it finds nothing that the tree does not find.
TEST(FindValue, FindsNothingByAnyOtherPath) {
  const auto document = test_support::RandomDocument(test_support::SeededChoices(3));
  const QtSts::DocumentTree tree(*document);
  std::vector<std::string> paths;
  for (const QtSts::TreeElement& element : tree.Elements()) {
    for (const QtSts::TreeValue& value : element.Values()) {
      paths.push_back(element.PathOf(value));
    }
  }
  ASSERT_GT(paths.size(), 100U);
  std::mt19937 random(1);  // NOLINT(cert-msc51-cpp): the same damage on every machine
  for (int round = 0; round < 20000; ++round) {
    std::string path = paths[random() % paths.size()];
    constexpr std::string_view kBytes = "[]/0123456789-+ aS";
    if (const std::size_t place = random() % path.size(); random() % 2 == 0) {
      path[place] = kBytes[random() % kBytes.size()];
    } else {
      path.insert(place, 1, kBytes[random() % kBytes.size()]);
    }
    const auto found = FindValue(*document, path);
    const QtSts::TreeValue* const of_tree = tree.Root().FindValue(path);
    if (found) {
      ASSERT_NE(of_tree, nullptr) << path;
      ASSERT_EQ(found->Written(), of_tree->Written()) << path;
    }
  }
  for (const char* path : {"", "/", "GUID/", "Nothing", "Sensors", "Sensors[0]", "Sensors[-1]/Bus",
                           "Sensors[999]/Connected", "Sensors/Connected", "Network[0]/SpareWord",
                           "Sensors[]/Connected", "Sensors[0/Connected", "Network//SpareWord",
                           "Sensors[18446744073709551616]/Connected", "GUID[0]"}) {
    EXPECT_FALSE(FindValue(*document, path)) << path;
  }
}

}  // namespace
