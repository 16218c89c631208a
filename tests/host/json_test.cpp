#include "host/json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <charconv>
#include <limits>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "model/can_sensors.h"
#include "model/json.h"
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

std::string Json(const QtSts::CStatus& status) { return QtSts::WriteJson(status); }

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

TEST(WriteJson, SaysTheSameAsTheTreeFieldByField) {
  for (std::uint64_t seed = 0; seed < 100; ++seed) {
    SCOPED_TRACE(seed);
    const auto document = test_support::RandomDocument(test_support::SeededChoices(seed));
    const QtSts::DocumentTree tree(*document);
    ExpectSame(tree.Root(), json::parse(QtSts::WriteJson(tree)), false);
  }
}

TEST(WriteJson, ShowsAControllerInTrouble) {
  EXPECT_TRUE(
      test_support::MatchesGolden(Json(*sample::Troubled()), "tests/host/golden/troubled.json"));
}

TEST(WriteJson, ShowsTheSameUnderALocaleWithDecimalComma) {
  const test_support::CommaLocale locale;
  EXPECT_TRUE(
      test_support::MatchesGolden(Json(*sample::Troubled()), "tests/host/golden/troubled.json"));
}

TEST(WriteJson, WritesNumbersInTheShortestFormOfTheirType) {
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

TEST(WriteJson, WritesNotANumberAndInfinitiesAsStrings) {
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

TEST(WriteJson, LeavesOutWhatIsNotReported) {
  QtSts::CStatus status;
  status.Sensors.Add(new QtSts::CCANTempSensor);
  EXPECT_THAT(Json(status), Not(HasSubstr("\"Face\"")));
}

// U+FFFF used to mark numbers on their way through a JSON library.
TEST(WriteJson, TakesNoTextForANumber) {
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
TEST(WriteJson, EscapesWhatSteersATerminal) {
  QtSts::CStatus status;
  status.GUID =
      "\x7f\xC2\x9B"
      "31m\xE2\x80\xAE\xD8\x9C\\\xC3\xA4";
  const std::string text = Json(status);
  EXPECT_THAT(text, HasSubstr("\"GUID\": \"\\u007F\\u009B31m\\u202E\\u061C\\\\\xC3\xA4\",\n"));
  EXPECT_EQ(json::parse(text)["GUID"], status.GUID);
}

TEST(WriteJson, KeepsTheNameClassForTheClass) {
  EXPECT_GT(QtSts::Classes().size(), 50U);
  for (const QtSts::ClassInfo* const info : QtSts::Classes()) {
    EXPECT_EQ(QtSts::FieldNamed(*info, "Class"), nullptr) << info->Name;
  }
}

// ---- What a snapshot says beside its document

json Insight() { return json::parse(host::RenderJson(sample::TroubledSnapshot()))["Insight"]; }

TEST(RenderJsonWithInsight, AddsOneMemberAtTheEndOfTheDocument) {
  const insight::Snapshot snapshot = sample::TroubledSnapshot();
  const std::string plain = QtSts::WriteJson(snapshot.Document);
  const std::string with = host::RenderJson(snapshot);
  const std::string before = plain.substr(0, plain.rfind("\n}"));
  EXPECT_EQ(with.substr(0, before.size()), before);
  EXPECT_EQ(with.substr(before.size(), 17), ",\n  \"Insight\": {\n");
  json document = json::parse(with);
  document.erase("Insight");
  EXPECT_EQ(document, json::parse(plain));
}

TEST(RenderJsonWithInsight, HasTheCycleAndTheDatabase) {
  const json insight = Insight();
  EXPECT_EQ(insight["Result"], 0);
  EXPECT_EQ(insight["Began"], "2026-11-25T08:32:15Z");
  EXPECT_EQ(insight["Seconds"], 0.025);
  EXPECT_EQ(insight["Database"], json::parse(R"({"Rows": 2, "LastChanged": "2026-11-25T08:32:03Z",
      "UnchangedSeconds": 12, "EveryoneMayWrite": false})"));
  EXPECT_EQ(insight["NotReported"], json::parse(R"(["HardwareID2", "Outputs[0]/Ttable/Columns"])"));
}

TEST(RenderJsonWithInsight, HasSources) {
  const json sources = Insight()["Sources"];
  ASSERT_EQ(sources.size(), 3U);
  EXPECT_EQ(sources[0], json::parse(R"({"Id": "zetdisplay", "Name": "/dev/zetdisplay",
      "State": "missing", "Required": true, "Errno": 2, "Reason": "No such file or directory",
      "Fields": ["HardwareID2", "Outputs[0]/StatusFlags"],
      "Unfed": ["HardwareID2", "Outputs[0]/StatusFlags"]})"));
  EXPECT_EQ(sources[1]["State"], "not asked");
  EXPECT_EQ(sources[1]["StoppedBy"], "zetdisplay");
}

TEST(RenderJsonWithInsight, HasRows) {
  const json rows = Insight()["Rows"];
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_EQ(rows[0]["Key"], "Sensor_00_Connected");
  EXPECT_EQ(rows[0]["Value"], "False\xEF\xBF\xBD[2J \xEF\xBF\xBD");
  EXPECT_EQ(rows[0]["Path"], "Sensors[0]/Connected");
  EXPECT_EQ(rows[0]["Before"], "true");
  EXPECT_EQ(rows[0]["After"], "false");
  const json remark = rows[0]["Remarks"][0];
  EXPECT_EQ(remark["Outcome"], "unknown-word");
  EXPECT_EQ(remark["Class"], "error");
  EXPECT_EQ(remark["Part"], "value");
  EXPECT_EQ(remark["Begin"], 0);
  EXPECT_EQ(remark["End"], 5);
  EXPECT_TRUE(rows[1]["Value"].is_null());
  EXPECT_FALSE(rows[1].contains("Path"));
}

TEST(RenderJsonWithInsight, HasFindings) {
  const json findings = Insight()["Findings"];
  ASSERT_EQ(findings.size(), 5U);
  EXPECT_EQ(findings[1], json::parse(R"({"Id": "fan-stopped", "Severity": "critical",
      "Message": "fan 7 stands still",
      "Where": "I/O board 0 at address 33 behind the router at address 1",
      "Hint": "the fan, its plug, and what blocks it",
      "Path": "Outputs[0]/DisplayInterfaces[0]/Sensors[0]/FanRpms[1]/Rpm",
      "Key": "Sensor_00_FanRpm_7", "Value": 0})"));
  EXPECT_EQ(findings[2]["Source"], "zetdisplay");
}

TEST(RenderJsonWithInsight, StaysJsonWhateverNumbersAndTextsThereAre) {
  insight::Snapshot snapshot = sample::TroubledSnapshot();
  snapshot.Findings[0].Value = std::numeric_limits<double>::quiet_NaN();
  snapshot.Findings[1].Value = -std::numeric_limits<double>::infinity();
  snapshot.Findings[2].Message = "\x1b]0;\xC2\x9B\xE2\x80\xAE\xFF\"\\\n";
  const std::string text = host::RenderJson(snapshot);
  const json findings = json::parse(text)["Insight"]["Findings"];
  EXPECT_EQ(findings[0]["Value"], "NaN");
  EXPECT_EQ(findings[1]["Value"], "-INF");
  EXPECT_EQ(findings[2]["Message"], "\xEF\xBF\xBD]0;\xC2\x9B\xE2\x80\xAE\xEF\xBF\xBD\"\\\n");
  EXPECT_THAT(text, HasSubstr("\\u009B\\u202E"));
}

}  // namespace
