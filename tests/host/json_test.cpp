#include "host/json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <charconv>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "model/can_sensors.h"
#include "model/listing.h"
#include "model/tree.h"
#include "tests/host/sample_documents.h"
#include "tests/support/comma_locale.h"
#include "tests/support/golden.h"
#include "tests/support/random_document.h"

namespace {

using nlohmann::json;
using QtSts::TreeElement;
using testing::HasSubstr;
using testing::Not;
namespace listing = QtSts::listing;

std::string Json(QtSts::CStatus& status) { return host::RenderJson(QtSts::DocumentTree(status)); }

// What the JSON value says, written as the XML and the tree write it.
std::string AsXml(const json& value, const QtSts::ScalarType& type) {
  if (&type == &listing::kFloats) {
    std::string text;
    for (const json& number : value) {
      text += (text.empty() ? "" : " ") + AsXml(number, listing::kFloat);
    }
    return text;
  }
  if (value.is_string() || value.is_boolean() || value.is_number_integer()) {
    const bool real = &type == &listing::kFloat || &type == &listing::kDouble;
    if (!real || value.is_string()) {
      return value.is_string() ? value.get<std::string>() : value.dump();
    }
  }
  std::string text;
  if (&type == &listing::kFloat) {
    const auto number = value.get<float>();
    type.Format(&number, &text);
  } else {
    const auto number = value.get<double>();
    type.Format(&number, &text);
  }
  return text;
}

bool HasTypeOf(const json& value, const QtSts::ScalarType& type) {
  if (&type == &listing::kText) {
    return value.is_string();
  }
  if (&type == &listing::kBool) {
    return value.is_boolean();
  }
  if (&type == &listing::kFloats) {
    return value.is_array();
  }
  if (&type == &listing::kFloat || &type == &listing::kDouble) {
    return value.is_number() || value == "NaN" || value == "INF" || value == "-INF";
  }
  return value.is_number_integer();
}

// NOLINTNEXTLINE(misc-no-recursion): the document's depth is that of its classes
void ExpectSame(const TreeElement& element, const json& object, bool in_list) {
  ASSERT_TRUE(object.is_object());
  std::size_t members = element.Values().size();
  if (in_list) {
    EXPECT_EQ(object.at("Class"), element.Class()->Name);
    ++members;
  }
  for (const QtSts::TreeValue& value : element.Values()) {
    const QtSts::Field& field = value.Listed();
    SCOPED_TRACE(field.Name);
    ASSERT_TRUE(object.contains(field.Name));
    const json& member = object.at(field.Name);
    EXPECT_TRUE(HasTypeOf(member, *field.Scalar)) << member;
    EXPECT_EQ(AsXml(member, *field.Scalar), value.Written());
  }
  for (const TreeElement& child : element.Children()) {
    SCOPED_TRACE(child.Name());
    ++members;
    const json& member = object.at(child.Name());
    if (!child.IsList()) {
      ExpectSame(child, member, false);
      continue;
    }
    ASSERT_TRUE(member.is_array());
    std::size_t position = 0;
    for (const TreeElement& each : child.Children()) {
      SCOPED_TRACE(position);
      ASSERT_LT(position, member.size());
      ExpectSame(each, member[position++], true);
    }
    EXPECT_EQ(member.size(), position);
  }
  EXPECT_EQ(object.size(), members) << "has members that the tree lacks";
}

TEST(RenderJson, SaysTheSameAsTheTreeFieldByField) {
  for (std::uint64_t seed = 0; seed < 100; ++seed) {
    SCOPED_TRACE(seed);
    const auto document = test_support::RandomDocument(test_support::SeededChoices(seed));
    const QtSts::DocumentTree tree(*document);
    ExpectSame(tree.Root(), json::parse(host::RenderJson(tree)), false);
  }
}

TEST(RenderJson, ShowsAControllerInTrouble) {
  EXPECT_TRUE(
      test_support::MatchesGolden(Json(*sample::Troubled()), "tests/host/golden/troubled.json"));
}

TEST(RenderJson, ShowsTheSameUnderALocaleWithDecimalComma) {
  const test_support::CommaLocale locale;
  EXPECT_TRUE(
      test_support::MatchesGolden(Json(*sample::Troubled()), "tests/host/golden/troubled.json"));
}

TEST(RenderJson, WritesNumbersInTheShortestFormOfTheirType) {
  const struct {
    float Celsius;
    const char* Text;
  } rows[] = {
      {21.6F, "21.6"}, {20.025366F, "20.025366"}, {100, "100"}, {-0.0F, "-0.0"}, {1e20F, "1e+20"},
  };
  QtSts::CStatus status;
  auto* const sensor = new QtSts::CCANTempSensor;
  status.Sensors.Add(sensor);
  status.StorageTotal = 18446744073709551615U;
  status.MemoryFree = -9223372036854775807 - 1;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.Text);
    sensor->Celsius = row.Celsius;
    EXPECT_THAT(Json(status), HasSubstr(std::string("\"Celsius\": ") + row.Text + "\n"));
  }
  EXPECT_THAT(Json(status), HasSubstr("\"StorageTotal\": 18446744073709551615,"));
  EXPECT_THAT(Json(status), HasSubstr("\"MemoryFree\": -9223372036854775808,"));
}

TEST(RenderJson, WritesNotANumberAndInfinitiesAsStrings) {
  QtSts::CStatus status;
  auto* const sensor = new QtSts::CCANPsrbSensor;
  status.Sensors.Add(sensor);
  sensor->InputVoltages = {1.5F, std::numeric_limits<float>::quiet_NaN(),
                           std::numeric_limits<float>::infinity(),
                           -std::numeric_limits<float>::infinity()};
  const json document = json::parse(Json(status));
  EXPECT_EQ(document["Sensors"][0]["InputVoltages"].dump(), R"([1.5,"NaN","INF","-INF"])");
  EXPECT_EQ(document["Sensors"][0]["OutputVoltages"].dump(), "[]");
}

TEST(RenderJson, LeavesOutWhatIsNotReported) {
  QtSts::CStatus status;
  status.Sensors.Add(new QtSts::CCANTempSensor);
  EXPECT_THAT(Json(status), Not(HasSubstr("\"Face\"")));
}

// U+FFFF used to mark numbers on their way through a JSON library.
TEST(RenderJson, TakesNoTextForANumber) {
  QtSts::CStatus status;
  status.GUID =
      "\xEF\xBF\xBF"
      "21.6";
  const json document = json::parse(Json(status));
  EXPECT_EQ(document["GUID"],
            "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"
            "21.6");
}

// Such characters used to stand in the text as they are, and steered the terminal that showed it.
TEST(RenderJson, EscapesWhatSteersATerminal) {
  QtSts::CStatus status;
  status.GUID =
      "\x7f\xC2\x9B"
      "31m\xE2\x80\xAE\xD8\x9C\\\xC3\xA4";
  const std::string text = Json(status);
  EXPECT_THAT(text, HasSubstr("\"GUID\": \"\\u007F\\u009B31m\\u202E\\u061C\\\\\xC3\xA4\",\n"));
  EXPECT_EQ(json::parse(text)["GUID"], status.GUID);
}

TEST(RenderJson, KeepsTheNameClassForTheClass) {
  EXPECT_GT(QtSts::Classes().size(), 50U);
  for (const QtSts::ClassInfo* const info : QtSts::Classes()) {
    EXPECT_EQ(QtSts::FieldNamed(*info, "Class"), nullptr) << info->Name;
  }
}

}  // namespace
