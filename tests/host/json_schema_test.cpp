// The schema of the JSON, asked with a validator of others.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "host/json.h"
#include "model/can_sensors.h"
#include "model/json.h"
#include "model/schema.h"
#include "model/xml.h"
#include "tests/host/sample_documents.h"
#include "tests/support/golden.h"
#include "tests/support/paths.h"
#include "tests/support/random_document.h"
#include "tests/support/run_program.h"
#include "tests/support/temporary_folder.h"

namespace {

using nlohmann::json;
using test_support::HostProgram;
using test_support::ProgramResult;
using test_support::RunProgram;
using test_support::SourceTree;
using testing::Each;
using testing::HasSubstr;
using testing::StartsWith;

std::string Json(const QtSts::CStatus& status) { return QtSts::WriteJson(status); }

// What the validator says of each of these documents, asked once.
std::vector<std::string> Verdicts(const std::vector<std::string>& documents) {
  const test_support::TemporaryFolder folder;
  const std::string schema = folder.Path() + "/schema.json";
  const ProgramResult printed = RunProgram({HostProgram(), "schema", "--format", "json"});
  EXPECT_EQ(printed.ExitCode, 0) << printed.Errors;
  std::ofstream(schema) << printed.Output;
  std::vector<std::string> command = {SourceTree() + "/tests/host/validate_json", schema};
  for (const std::string& document : documents) {
    command.push_back(folder.Path() + "/" + std::to_string(command.size()) + ".json");
    std::ofstream(command.back()) << document;
  }
  const ProgramResult validated = RunProgram(command);
  EXPECT_EQ(validated.ExitCode, 0) << validated.Errors;
  std::vector<std::string> verdicts;
  std::istringstream lines(validated.Output);
  for (std::string line; std::getline(lines, line);) {
    verdicts.push_back(line);
  }
  EXPECT_EQ(verdicts.size(), documents.size());
  verdicts.resize(documents.size());
  return verdicts;
}

TEST(JsonSchema, IsWhatTheLibraryWrites) {
  EXPECT_EQ(RunProgram({HostProgram(), "schema", "--format", "json"}).Output,
            QtSts::WriteJsonSchema());
  EXPECT_EQ(RunProgram({HostProgram(), "schema", "--format", "xsd"}).Output, QtSts::WriteSchema());
  EXPECT_EQ(RunProgram({HostProgram(), "schema"}).Output, QtSts::WriteSchema());
}

// The golden documents have '*' for what differs from run to run, a number among it.
TEST(JsonSchema, AcceptsEveryGoldenDocument) {
  std::vector<std::string> documents;
  for (const auto& file : std::filesystem::directory_iterator(SourceTree() + "/tests/golden")) {
    const std::string name = file.path().filename();
    const std::string xml =
        std::regex_replace(test_support::ReadSource("tests/golden/" + name),
                           std::regex("StorageFree=\"\\*\""), "StorageFree=\"1\"");
    QtSts::XmlError error;
    const auto status = QtSts::ReadDocument(xml, &error);
    ASSERT_NE(status, nullptr) << name << ": " << error.Text();
    documents.push_back(Json(*status));
  }
  EXPECT_GE(documents.size(), 10U);
  documents.push_back(test_support::ReadSource("tests/host/golden/troubled.json"));
  EXPECT_THAT(Verdicts(documents), Each("valid"));
}

TEST(JsonSchema, AcceptsDocumentsOfAnyContents) {
  std::vector<std::string> documents;
  for (std::uint64_t seed = 0; seed < 40; ++seed) {
    documents.push_back(Json(*test_support::RandomDocument(test_support::SeededChoices(seed))));
  }
  EXPECT_THAT(Verdicts(documents), Each("valid"));
}

TEST(JsonSchema, AcceptsADocumentWithInsight) {
  EXPECT_THAT(Verdicts({host::RenderJson(sample::TroubledSnapshot())}), Each("valid"));
}

// A document with a sensor of voltages, one of temperature, and what each refused one changes.
class ChangedJson : public testing::Test {
 protected:
  using Change = std::function<void(json& document)>;
  struct Row {
    const char* What;
    Change Make;
  };

  static json Document() {
    QtSts::CStatus status;
    auto* const board = new QtSts::CCANPsrbSensor;
    board->InputVoltages = {230, 231};
    status.Sensors.Add(board);
    status.Sensors.Add(new QtSts::CCANTempSensor);
    status.Outputs.Add(new QtSts::CTravex6Output);
    return json::parse(Json(status));
  }

  static std::vector<std::string> VerdictsOn(const std::vector<Row>& rows) {
    std::vector<std::string> documents;
    for (const Row& row : rows) {
      json document = Document();
      row.Make(document);
      EXPECT_NE(document, Document()) << row.What << " changes nothing";
      documents.push_back(document.dump());
    }
    return Verdicts(documents);
  }
};

TEST_F(ChangedJson, IsRefusedWhereTheDocumentCannotBeSo) {
  const std::vector<Row> rows = {
      {"value missing", [](json& d) { d.erase("MemoryTotal"); }},
      {"text for a number", [](json& d) { d["MemoryTotal"] = "many"; }},
      {"number as text", [](json& d) { d["MemoryTotal"] = "1"; }},
      {"fraction", [](json& d) { d["MemoryTotal"] = 1.5; }},
      {"null", [](json& d) { d["MemoryTotal"] = nullptr; }},
      {"negative unsigned", [](json& d) { d["SerialNumber"] = -1; }},
      {"33 bits", [](json& d) { d["SerialNumber"] = 4294967296; }},
      {"65 bits", [](json& d) { d["StorageTotal"] = 18446744073709551616.0; }},
      {"17 bits", [](json& d) { d["Sensors"][1]["Bus"] = 65536; }},
      {"signed beyond", [](json& d) { d["HardwareID1"] = 2147483648; }},
      {"flag as text", [](json& d) { d["DaylightSaving"] = "true"; }},
      {"flag as number", [](json& d) { d["DaylightSaving"] = 1; }},
      {"number for a text", [](json& d) { d["GUID"] = 5; }},
      {"unknown member", [](json& d) { d["Colour"] = "red"; }},
      {"unknown member of a record", [](json& d) { d["Network"]["Colour"] = 1; }},
      {"unknown member of an element", [](json& d) { d["Sensors"][1]["Colour"] = 1; }},
      {"member of another class", [](json& d) { d["Sensors"][1]["Humidity"] = 1; }},
      {"list missing", [](json& d) { d.erase("Compositors"); }},
      {"object for a list", [](json& d) { d["Compositors"] = json::object(); }},
      {"list for a record", [](json& d) { d["Network"] = json::array(); }},
      {"record missing", [](json& d) { d["Outputs"][0].erase("Dimming"); }},
      {"value of a base missing", [](json& d) { d["Sensors"][1].erase("Connected"); }},
      {"value of its own missing", [](json& d) { d["Sensors"][1].erase("Celsius"); }},
      {"element without a class", [](json& d) { d["Sensors"][1].erase("Class"); }},
      {"element of an unknown class", [](json& d) { d["Sensors"][1]["Class"] = "CANThing"; }},
      {"element of another list", [](json& d) { d["Sensors"][0] = d["Outputs"][0]; }},
      {"element of a class without its members",
       [](json& d) { d["Sensors"][1]["Class"] = "CANHumiditySensor"; }},
      {"record with a class", [](json& d) { d["Network"]["Class"] = "Network"; }},
      {"number for an element", [](json& d) { d["Sensors"][1] = 1; }},
      {"other word for a float", [](json& d) { d["Sensors"][1]["Celsius"] = "inf"; }},
      {"float as text", [](json& d) { d["Sensors"][1]["Celsius"] = "21.5"; }},
      {"float beyond", [](json& d) { d["Sensors"][1]["Celsius"] = 1e39; }},
      {"text among numbers", [](json& d) { d["Sensors"][0]["InputVoltages"][1] = "high"; }},
      {"text for numbers", [](json& d) { d["Sensors"][0]["InputVoltages"] = "230 231"; }},
      {"optional value of another type", [](json& d) { d["Sensors"][1]["Face"] = true; }},
      {"insight that is no object", [](json& d) { d["Insight"] = 1; }},
      {"array", [](json& d) { d = json::array({d}); }},
  };
  const std::vector<std::string> verdicts = VerdictsOn(rows);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_THAT(verdicts[i], StartsWith("invalid: ")) << rows[i].What;
  }
}

TEST_F(ChangedJson, IsAcceptedWhereTheDocumentCanBeSo) {
  const std::vector<Row> rows = {
      {"not a number", [](json& d) { d["Sensors"][1]["Celsius"] = "NaN"; }},
      {"infinity", [](json& d) { d["Sensors"][1]["Celsius"] = "INF"; }},
      {"minus infinity", [](json& d) { d["Sensors"][0]["InputVoltages"][0] = "-INF"; }},
      {"optional value", [](json& d) { d["Sensors"][1]["Face"] = 4294967295; }},
      {"code without a name", [](json& d) { d["ProductFamily"] = 99; }},
      {"no elements", [](json& d) { d["Sensors"] = json::array(); }},
      {"largest", [](json& d) { d["StorageTotal"] = 18446744073709551615U; }},
      {"insight",
       [](json& d) {
         d["Insight"] = {{"Anything", 1}};
       }},
  };
  EXPECT_THAT(VerdictsOn(rows), Each("valid"));
}

// The table "Reader and schemas" of docs/document.md: each row of it is a row here.
TEST_F(ChangedJson, IsReadWhereThePageSaysSo) {
  const std::string whole = Document().dump();
  const struct {
    const char* Old;
    const char* New;
    bool IsValid;
    bool IsRead;
  } rows[] = {
      {"\"MemoryTotal\":100000", "\"MemoryTotal\":1e5", true, false},
      {"\"MemoryTotal\":100000", "\"MemoryTotal\":100000.0", true, false},
      {"\"SerialNumber\":0", "\"SerialNumber\":-0", true, false},
      {"[230,231]", "[1e-60,231]", true, false},
      {"[230,231]", "[3.40282356e38,231]", false, true},
      {"\"MemoryTotal\":100000", "\"MemoryTotal\":1,\"MemoryTotal\":1", true, false},
      {"\"GUID\":\"\"", "\"GUID\":\"\\u0001\"", true, false},
      {"\"GUID\":\"\"", "\"GUID\":\"\\ud800\"", true, false},
      {"\"GUID\":\"\"", "\"GUID\":\"\",\"Insight\":[]", false, false},
  };
  std::vector<std::string> documents;
  for (const auto& row : rows) {
    std::string& changed = documents.emplace_back(whole);
    ASSERT_NE(whole.find(row.Old), std::string::npos) << row.Old;
    changed.replace(whole.find(row.Old), std::string(row.Old).size(), row.New);
  }
  const std::vector<std::string> verdicts = Verdicts(documents);
  for (std::size_t i = 0; i < documents.size(); ++i) {
    SCOPED_TRACE(rows[i].New);
    EXPECT_EQ(verdicts[i] == "valid", rows[i].IsValid) << verdicts[i];
    QtSts::JsonError error;
    EXPECT_EQ(QtSts::ReadJson(documents[i], &error) != nullptr, rows[i].IsRead) << error.Text();
  }
}

TEST(Schemas, SayAlikeWhatReadersMustPassOver) {
  for (const std::string& schema : {QtSts::WriteSchema(), QtSts::WriteJsonSchema()}) {
    EXPECT_THAT(schema, HasSubstr("Later releases add fields and classes, which a schema refuses "
                                  "and a reader passes over, and codes."));
  }
  EXPECT_THAT(test_support::ReadSource("docs/document.md"),
              HasSubstr("it refuses fields and classes that a later one adds"));
}

}  // namespace
