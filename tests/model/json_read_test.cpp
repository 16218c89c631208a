// Reading of JSON, against the XML of the same documents and against another JSON library.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <limits>
#include <memory>
#include <nlohmann/json.hpp>
#include <random>
#include <string>

#include "model/can_sensors.h"
#include "model/compare.h"
#include "model/dcio_boards.h"
#include "model/json.h"
#include "model/json_text.h"
#include "model/tree.h"
#include "model/xml.h"
#include "tests/support/comma_locale.h"
#include "tests/support/golden.h"
#include "tests/support/random_document.h"

namespace {

using nlohmann::json;
using QtSts::CStatus;
using QtSts::JsonError;
using QtSts::ReadJson;
using QtSts::WriteDocument;
using QtSts::WriteJson;
using testing::HasSubstr;
using testing::StartsWith;

// A document with an output and two sensors.
std::unique_ptr<CStatus> Sample() {
  auto status = std::make_unique<CStatus>();
  status->GUID = "a";
  status->Outputs.Add(new QtSts::CTravex6Output);
  status->Sensors.Add(new QtSts::CCANTempSensor);
  auto* const board = new QtSts::CCANPsrbSensor;
  board->InputVoltages = {24.1F, -0.0F};
  status->Sensors.Add(board);
  return status;
}

// What reading `text` reports; empty when it is a document.
std::string Refusal(const std::string& text) {
  JsonError error;
  const bool refused = ReadJson(text, &error) == nullptr;
  EXPECT_EQ(refused, !error.Message.empty());
  return error.Text();
}

// The sample with `before` replaced by `after`, once.
std::string With(const std::string& before, const std::string& after) {
  std::string text = WriteJson(*Sample());
  const std::size_t place = text.find(before);
  EXPECT_NE(place, std::string::npos) << before;
  return text.replace(place, before.size(), after);
}

TEST(ReadJson, GivesBackEveryDocument) {
  for (std::uint64_t seed = 0; seed < 300; ++seed) {
    SCOPED_TRACE(seed);
    const auto document = test_support::RandomDocument(test_support::SeededChoices(seed));
    JsonError error;
    const auto read = ReadJson(WriteJson(*document), &error);
    ASSERT_NE(read, nullptr) << error.Text();
    ASSERT_EQ(WriteDocument(*read), WriteDocument(*document));
    ASSERT_EQ(WriteJson(*read), WriteJson(*document));
  }
}

TEST(ReadJson, SaysWhatTheXmlSaysOfEveryRecordedDocument) {
  int count = 0;
  for (const char* name : {"bare", "demo", "faults", "minimal", "mistakes"}) {
    for (const char* cycle : {"-1.xml", "-3.xml"}) {
      const std::string path = std::string("tests/golden/") + name + cycle;
      SCOPED_TRACE(path);
      QtSts::XmlError xml_error;
      std::string xml = test_support::ReadSource(path);
      constexpr std::string_view kVolatile = "StorageFree=\"*\"";  // a recorded one has no number
      xml.replace(xml.find(kVolatile), kVolatile.size(), "StorageFree=\"5\"");
      const auto of_xml = QtSts::ReadDocument(xml, &xml_error);
      ASSERT_NE(of_xml, nullptr) << xml_error.Text();
      JsonError error;
      const auto of_json = ReadJson(WriteJson(*of_xml), &error);
      ASSERT_NE(of_json, nullptr) << error.Text();
      EXPECT_EQ(WriteDocument(*of_json), WriteDocument(*of_xml));
      ++count;
    }
  }
  EXPECT_EQ(count, 10);
}

TEST(ReadJson, ReadsTheSameUnderALocaleWithDecimalComma) {
  const std::string text = WriteJson(*Sample());
  const test_support::CommaLocale locale;
  JsonError error;
  const auto read = ReadJson(text, &error);
  ASSERT_NE(read, nullptr) << error.Text();
  EXPECT_EQ(WriteJson(*read), text);
}

// Another library writes members in another order, without blanks, and all but ASCII escaped.
TEST(ReadJson, ReadsWhatAnotherLibraryWrites) {
  for (std::uint64_t seed = 0; seed < 100; ++seed) {
    SCOPED_TRACE(seed);
    const auto document = test_support::RandomDocument(test_support::SeededChoices(seed));
    const json parsed = json::parse(WriteJson(*document));
    for (const std::string& text : {parsed.dump(), parsed.dump(1, '\t', true)}) {
      JsonError error;
      const auto read = ReadJson(text, &error);
      ASSERT_NE(read, nullptr) << error.Text();
      ASSERT_EQ(WriteDocument(*read), WriteDocument(*document));
    }
  }
}

// Of any damage, the text is JSON for this library only if it is for the other one.
TEST(ReadJson, TakesNothingForJsonThatIsNone) {
  const std::string text = WriteJson(*Sample());
  std::mt19937 random(1);  // NOLINT(cert-msc51-cpp): the same damage on every machine
  int read = 0;
  for (int round = 0; round < 20000; ++round) {
    std::string damaged = text;
    for (std::size_t changes = 1 + random() % 3; changes > 0; --changes) {
      constexpr std::string_view kBytes =
          "{}[]\",:\\ut0123456789-+.eE \n\t\x01\x80\xff"
          "nullfalse";
      damaged[random() % damaged.size()] = kBytes[random() % kBytes.size()];
    }
    JsonError error;
    if (ReadJson(damaged, &error) != nullptr) {
      ++read;
      EXPECT_TRUE(json::accept(damaged)) << damaged;
    } else {
      EXPECT_FALSE(error.Message.empty());
    }
  }
  EXPECT_GT(read, 100);
  EXPECT_LT(read, 15000);
}

TEST(ReadJson, ReadsNoPartOfADocument) {
  std::string text = WriteJson(*Sample());
  text.pop_back();  // the end of the line
  for (std::size_t size = 0; size < text.size(); ++size) {
    ASSERT_NE(Refusal(text.substr(0, size)), "") << size;
  }
  EXPECT_EQ(Refusal(text), "");
}

TEST(ReadJson, NamesWhatIsWrongAndWhere) {
  const struct {
    const char* Before;
    const char* After;
    const char* Text;
  } rows[] = {
      {"\"GUID\": \"a\"", "\"GUID\": 5", "GUID: not a value that it can hold"},
      {"\"GUID\": \"a\"", "\"Guid\": \"a\"", "Guid: unknown member"},
      {"\"GUID\": \"a\",", "", "GUID: member is missing"},
      {"\"GUID\": \"a\"", "\"GUID\": \"a\", \"GUID\": \"a\"", "GUID: member stands twice"},
      {"\"GUID\": \"a\"", "\"GUID\": null", "GUID: not a value that it can hold"},
      {"\"GUID\": \"a\"", "\"GUID\": [\"a\"]", "GUID: not a value that it can hold"},
      {"\"Celsius\": 0", "\"Celsius\": \"0\"", "Sensors[0]/Celsius: not a value that it can hold"},
      {"\"Celsius\": 0", "\"Celsius\": 1e99", "Sensors[0]/Celsius: not a value that it can hold"},
      {"\"Celsius\": 0", "\"Celsius\": true", "Sensors[0]/Celsius: not a value that it can hold"},
      {"\"Connected\": false", "\"Connected\": 0",
       "Sensors[0]/Connected: not a value that it can hold"},
      {"\"Connected\": false", "\"Connected\": \"false\"",
       "Sensors[0]/Connected: not a value that it can hold"},
      {"\"Bus\": 0", "\"Bus\": 65536", "Sensors[0]/Bus: not a value that it can hold"},
      {"\"Bus\": 0", "\"Bus\": -1", "Sensors[0]/Bus: not a value that it can hold"},
      {"\"Bus\": 0", "\"Bus\": 1.0", "Sensors[0]/Bus: not a value that it can hold"},
      {"\"Bus\": 0", "\"Bus\": {}", "Sensors[0]/Bus: not a value that it can hold"},
      {"24.1", "\"24.1\"", "Sensors[1]/InputVoltages: not a value that it can hold"},
      {"24.1", "[24.1]", "Sensors[1]/InputVoltages: not a value that it can hold"},
      {"\"CANTempSensor\"", "\"PlayerInput\"", "Sensors[0]/Class: not an element of this list"},
      {"\"CANTempSensor\"", "\"Nothing\"", "Sensors[0]/Class: not an element of this list"},
      {"\"CANTempSensor\"", "1", "Sensors[0]/Class: not an element of this list"},
      {"\"Class\": \"CANTempSensor\",", "", "Sensors[0]/Class: member is missing"},
      {"\"Class\": \"CANTempSensor\",",
       "\"Class\": \"CANTempSensor\", \"Class\": \"CANTempSensor\",",
       "Sensors[0]/Class: member stands twice"},
      {"\"Compositors\": []", "\"Compositors\": {}", "Compositors: not a value that it can hold"},
      {"\"Compositors\": []", "\"Compositors\": [1]",
       "Compositors[0]: not a value that it can hold"},
      {"\"Compositors\": []", "\"Compositors\": [], \"Class\": \"Status\"",
       "Class: unknown member"},
      {"\"Compositors\": []", "\"Compositors\": [], \"\": 1", "unknown member"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.After);
    EXPECT_THAT(Refusal(With(row.Before, row.After)), HasSubstr(row.Text));
  }
}

TEST(ReadJson, RefusesWhatTheXmlRefusesOfListsAndBoards) {
  CStatus status;
  auto* const board = new QtSts::CCANDcio2in1out;
  board->SetConnected(true);
  board->Points.Inputs = std::make_unique<QtSts::InputListType>(2);
  auto* const door = new QtSts::CDoorSensorInputType;
  door->Index = 2;
  ASSERT_TRUE(board->Points.Add(door));
  status.Sensors.Add(board);
  const std::string text = WriteJson(status);
  EXPECT_EQ(Refusal(text), "");
  const auto changed = [&text](const std::string& before, const std::string& after) {
    return std::string(text).replace(text.find(before), before.size(), after);
  };
  EXPECT_THAT(Refusal(changed("\"Index\": 2", "\"Index\": 3")),
              HasSubstr("Sensors[0]/Points/Inputs/Points[0]/Index: 3 is refused"));
  EXPECT_THAT(Refusal(changed("\"BoardConnected\": true", "\"BoardConnected\": false")),
              HasSubstr("Sensors[0]/BoardConnected: contradicts Connected"));
}

TEST(ReadJson, PointsIntoTheText) {
  const std::string text = WriteJson(*Sample());
  const std::size_t place = text.find("\"Celsius\": 0");
  const auto line = 1 + std::count(text.begin(), text.begin() + static_cast<long>(place), '\n');
  JsonError error;
  EXPECT_EQ(ReadJson(With("\"Celsius\": 0", "\"Celsius\": {}"), &error), nullptr);
  EXPECT_EQ(error.Line, line);
  EXPECT_EQ(error.Path, "Sensors[0]/Celsius");
  EXPECT_EQ(error.Text(),
            "line " + std::to_string(line) + ": Sensors[0]/Celsius: " + error.Message);
}

TEST(ReadJson, RefusesWhatIsNotJson) {
  const std::string whole = WriteJson(*Sample());
  for (const std::string& text : {std::string(),
                                  std::string(" "),
                                  std::string("{"),
                                  std::string("{}}"),
                                  std::string("[]"),
                                  std::string("null"),
                                  std::string("\xEF\xBB\xBF") + whole,
                                  whole + whole,
                                  whole + "x",
                                  whole + std::string(1, '\0'),
                                  "// comment\n" + whole,
                                  std::string("{\"a\" 1}"),
                                  With("\"GUID\": \"a\"", "'GUID': 'a'"),
                                  With("\"GUID\": \"a\"", "GUID: \"a\""),
                                  With("\"Bus\": 0", "\"Bus\": 00"),
                                  With("\"Bus\": 0", "\"Bus\": +0"),
                                  With("\"Bus\": 0", "\"Bus\": 0x0"),
                                  With("\"Celsius\": 0", "\"Celsius\": .5"),
                                  With("\"Celsius\": 0", "\"Celsius\": 5."),
                                  With("\"Celsius\": 0", "\"Celsius\": 5e"),
                                  With("\"Celsius\": 0", "\"Celsius\": NaN"),
                                  With("\"Celsius\": 0", "\"Celsius\": -"),
                                  With("24.1", "24.1,,"),
                                  With("\"GUID\": \"a\"", "\"GUID\": \"\\x\""),
                                  With("\"GUID\": \"a\"", "\"GUID\": \"\\u12g4\""),
                                  With("\"GUID\": \"a\"", "\"GUID\": \"\\ud800\""),
                                  With("\"GUID\": \"a\"", "\"GUID\": \"\\ud800\\u0041\""),
                                  With("\"GUID\": \"a\"", "\"GUID\": \"\\udc00\""),
                                  With("\"GUID\": \"a\"", "\"GUID\": \"a\nb\""),
                                  With("\"GUID\": \"a\"", "\"GUID\": \"a")}) {
    SCOPED_TRACE(text.substr(0, 300));
    EXPECT_NE(Refusal(text), "");
  }
}

// XML cannot say them either.
TEST(ReadJson, RefusesTextsThatNoDocumentHolds) {
  for (const char* text : {"\\u0000", "\\u0001", "\\b", "\\ufffe", "\\uffff", "\xff",
                           "\xed\xa0\x80", "\xc3", "\xf4\x90\x80\x80"}) {
    SCOPED_TRACE(text);
    EXPECT_THAT(Refusal(With("\"GUID\": \"a\"", "\"GUID\": \"" + std::string(text) + "\"")),
                HasSubstr("no document can hold"));
  }
}

TEST(ReadJson, ReplacesEveryEscape) {
  JsonError error;
  const auto read = ReadJson(
      With("\"GUID\": \"a\"", R"("GUID": "\"\\\/\n\r\t\u0041\u00e4\u00E4\u20ac\ud83d\udca1")"),
      &error);
  ASSERT_NE(read, nullptr) << error.Text();
  EXPECT_EQ(read->GUID, "\"\\/\n\r\tA\xc3\xa4\xc3\xa4\xe2\x82\xac\xf0\x9f\x92\xa1");
}

// A value that went through a wider type, or through text of fewer digits, is another one.
TEST(ReadJson, ReadsNumbersExactly) {
  for (const float number :
       {21.6F, 0.1F, 16777217.0F, std::numeric_limits<float>::max(), 1e-45F, -0.0F,
        std::numeric_limits<float>::lowest(), std::numeric_limits<float>::infinity()}) {
    CStatus status;
    auto* const sensor = new QtSts::CCANTempSensor;
    sensor->Celsius = number;
    status.Sensors.Add(sensor);
    status.StorageTotal = std::numeric_limits<std::uint64_t>::max();
    status.MemoryFree = std::numeric_limits<std::int64_t>::min();
    JsonError error;
    const auto read = ReadJson(WriteJson(status), &error);
    ASSERT_NE(read, nullptr) << error.Text();
    const auto* const of_read = dynamic_cast<const QtSts::CCANTempSensor*>(read->Sensors[0]);
    ASSERT_NE(of_read, nullptr);
    EXPECT_EQ(of_read->Celsius, number);
    EXPECT_EQ(std::signbit(of_read->Celsius), std::signbit(number));
    EXPECT_EQ(read->StorageTotal, status.StorageTotal);
    EXPECT_EQ(read->MemoryFree, status.MemoryFree);
  }
  // Halfway between two floats, and a little more: read as a double first, it would go down.
  JsonError error;
  const auto read = ReadJson(With("24.1", "1.00000005960464477540"), &error);
  ASSERT_NE(read, nullptr) << error.Text();
  const auto* const board = dynamic_cast<const QtSts::CCANPsrbSensor*>(read->Sensors[1]);
  ASSERT_NE(board, nullptr);
  EXPECT_EQ(board->InputVoltages[0], std::nextafter(1.0F, 2.0F));
}

TEST(ReadJson, PassesOverWhatTheHostAddsToTheRoot) {
  const std::string with = WriteJson(QtSts::DocumentTree(*Sample()), [](QtSts::JsonText* text) {
    text->Member("Insight");
    text->Open('{');
    text->Member("Rows");
    text->Literal("[1, {\"a\": null}]");
    text->Close('}');
  });
  EXPECT_THAT(with, HasSubstr(",\n  \"Insight\": {\n    \"Rows\": [1, {\"a\": null}]\n  }\n}\n"));
  JsonError error;
  const auto read = ReadJson(with, &error);
  ASSERT_NE(read, nullptr) << error.Text();
  EXPECT_EQ(WriteJson(*read), WriteJson(*Sample()));
  EXPECT_THAT(Refusal(With("\"Celsius\": 0", "\"Celsius\": 0, \"Insight\": 0")),
              HasSubstr("Sensors[0]/Insight: unknown member"));
}

// A reader that calls itself for each level used to be where such a text ended in a crash.
TEST(ReadJson, RefusesWhatIsNestedWithoutEnd) {
  for (const char* bracket : {"[", "{\"a\":", "{\"Insight\":", "{\"Sensors\":[", "{\"Network\":"}) {
    std::string text;
    while (text.size() < std::size_t{4} << 20) {
      text += bracket;
    }
    SCOPED_TRACE(bracket);
    EXPECT_NE(Refusal(text), "");
    EXPECT_NE(Refusal("{\"Insight\": " + text), "");
  }
  EXPECT_EQ(Refusal(With("\"GUID\"", "\"Insight\": {\"A\": [[[[[[[]]]]]]]}, \"GUID\"")), "");
}

// They used to be "not JSON".
TEST(ReadJson, SaysOfAnotherValueThatItIsNoObject) {
  for (const char* text : {"[]", "null", "5", "\"text\"", " [{}] "}) {
    EXPECT_EQ(Refusal(text), "line 1: JSON, but not an object") << text;
  }
  for (const char* text : {"", "[", "[] []", "nothing"}) {
    EXPECT_THAT(Refusal(text), HasSubstr("not JSON")) << text;
  }
}

TEST(ReadJson, RefusesATextThatIsTooLarge) {
  const std::string text(QtSts::kMaximumDocumentSize + 1, ' ');
  EXPECT_THAT(Refusal(text), StartsWith("not a document: larger than "));
}

// It used to be read, and then could not be read from the XML of the same document.
TEST(ReadJson, RefusesAValueThatIsTooLongForTheXml) {
  const std::string longest(9'999'999, 'a');
  EXPECT_EQ(Refusal(With("\"GUID\": \"a\"", "\"GUID\": \"" + longest + "\"")), "");
  EXPECT_THAT(Refusal(With("\"GUID\": \"a\"", "\"GUID\": \"" + longest + "a\"")),
              HasSubstr("GUID: ten million bytes or more"));
}

// Class names that stand last make the reader look ahead; it must not do so from every level.
TEST(ReadJson, ReadsManyElementsWhereverTheirClassStands) {
  CStatus status;
  for (int count = 0; count < 3000; ++count) {
    status.Sensors.Add(new QtSts::CCANTempSensor);
  }
  std::string text = WriteJson(status);
  const std::string first = "      \"Class\": \"CANTempSensor\",\n";
  const std::string last = "\"Celsius\": 0\n";
  for (std::size_t place = text.find(first); place != std::string::npos;
       place = text.find(first, place)) {
    text.erase(place, first.size());
    place = text.find(last, place);
    text.replace(place, last.size(), "\"Celsius\": 0, \"Class\": \"CANTempSensor\"\n");
  }
  JsonError error;
  const auto read = ReadJson(text, &error);
  ASSERT_NE(read, nullptr) << error.Text();
  EXPECT_EQ(read->Sensors.size(), 3000U);
}

}  // namespace
