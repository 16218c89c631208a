#include "model/schema.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <regex>
#include <set>
#include <string>

#include "model/can_sensors.h"
#include "model/dcio_boards.h"
#include "model/document.h"
#include "model/listing.h"
#include "model/xml.h"
#include "tests/support/golden.h"
#include "tests/support/paths.h"
#include "tests/support/schema_policy.h"
#include "tests/support/validate.h"

namespace {

using test_support::BrokenPromises;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::string Schema() { return QtSts::WriteSchema(); }

std::string Replaced(std::string text, const std::string& old_text, const std::string& new_text) {
  const std::size_t position = text.find(old_text);
  EXPECT_NE(position, std::string::npos) << old_text;
  return text.replace(position, old_text.size(), new_text);
}

TEST(Schema, IsTheOneThatIsCheckedIn) {
  EXPECT_TRUE(test_support::MatchesGolden(Schema(), "docs/status.xsd"));
}

// The versions that CHANGELOG.md calls released: "## 1.0.0, 2027-01-31" gives "1.0".
std::set<std::string> Releases(const std::string& changes) {
  static const std::regex heading("(?:^|\n)## (\\d+\\.\\d+)\\.\\d+, \\d{4}-\\d\\d-\\d\\d\n");
  std::set<std::string> releases;
  for (std::sregex_iterator match(changes.begin(), changes.end(), heading), end; match != end;
       ++match) {
    releases.insert((*match)[1]);
  }
  return releases;
}

TEST(Releases, AreTheVersionsWithADate) {
  EXPECT_THAT(Releases("# Changes\n\n## 1.2.0, unreleased\n\nMore.\n\n## 1.1.1, 2027-02-01\n\n"
                       "## 1.1.0, 2027-01-31\n\n## 1.0.0, 2026-12-01\n"),
              ElementsAre("1.0", "1.1"));
}

// There used to be one of version 1.0, which nobody has released.
TEST(Schema, IsKeptOfEveryReleaseAndOfNothingElse) {
  std::set<std::string> kept;
  const std::filesystem::path folder = test_support::SourceTree() + "/docs/released";
  if (std::filesystem::exists(folder)) {
    for (const auto& file : std::filesystem::directory_iterator(folder)) {
      kept.insert(file.path().filename());
    }
  }
  std::set<std::string> expected;
  for (const std::string& release : Releases(test_support::ReadSource("CHANGELOG.md"))) {
    expected.insert("status-" + release + ".xsd");
  }
  EXPECT_EQ(kept, expected);
}

TEST(Schema, KeepsThePromisesOfEveryRelease) {
  for (const std::string& release : Releases(test_support::ReadSource("CHANGELOG.md"))) {
    SCOPED_TRACE(release);
    const std::string released =
        test_support::ReadSource("docs/released/status-" + release + ".xsd");
    ASSERT_THAT(released, HasSubstr("<xs:schema"));
    EXPECT_THAT(BrokenPromises(released, Schema()), IsEmpty());
  }
}

// The proof above is worth nothing if it cannot fail, and before the first release it has nothing
// to prove.
TEST(BrokenPromises, NamesEveryKindOfBreach) {
  const struct {
    const char* Old;
    const char* New;
    const char* Breach;
  } rows[] = {
      {"name=\"SerialNumber\"", "name=\"SerialNo\"", "/Status/@SerialNumber is gone"},
      {"name=\"MemoryTotal\" type=\"xs:long\"", "name=\"MemoryTotal\" type=\"xs:int\"",
       "/Status/@MemoryTotal was xs:long, required and is xs:int, required"},
      {"name=\"MemoryTotal\" type=\"xs:long\" use=\"required\"",
       "name=\"MemoryTotal\" type=\"xs:long\" use=\"optional\"",
       "/Status/@MemoryTotal was xs:long, required and is xs:long, optional"},
      {"<xs:element name=\"Network\" type=\"Network\" minOccurs=\"1\">",
       "<xs:element name=\"Network\" type=\"DNS\" minOccurs=\"1\">",
       "/Status/Network was Network, at least 1 and is DNS, at least 1"},
      {"<xs:element name=\"CANDoorSensor\" type=\"CANDoorSensor\"/>", "",
       "/Status/Sensors//CANDoorSensor is gone"},
      {"<xs:extension base=\"Sensor\">", "<xs:extension base=\"Area\">",
       "/CANSensor extends was Sensor and is Area"},
      {"Memory. Unit: kB.", "Memory. Unit: MB.", "/Status/@MemoryTotal unit was kB and is MB"},
      {" Values: 0 none, 1 player,", " Values: 0 none,", "/Fans/@Override code 1 is gone"},
      {"1 player,", "1 user,", "/Fans/@Override code 1 was player and is user"},
      {"<xs:list itemType=\"xs:float\"/>", "<xs:list itemType=\"xs:double\"/>",
       "/floats lists was xs:float and is xs:double"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.New);
    EXPECT_THAT(BrokenPromises(Schema(), Replaced(Schema(), row.Old, row.New)),
                ElementsAre(row.Breach));
  }
}

TEST(BrokenPromises, AllowsAdditions) {
  const std::string added =
      Replaced(Schema(), "<xs:attribute name=\"MemoryTotal\"",
               "<xs:attribute name=\"New\" type=\"xs:int\" use=\"required\"/><xs:attribute "
               "name=\"MemoryTotal\"");
  EXPECT_THAT(BrokenPromises(Schema(), added), IsEmpty());
  EXPECT_THAT(BrokenPromises(Schema(), Replaced(Schema(), "4 brightness.", "4 brightness, 5 new.")),
              IsEmpty());
  EXPECT_THAT(BrokenPromises(added, Schema()), ElementsAre("/Status/@New is gone"));
}

TEST(Schema, GivesUnitCodesAndAbsenceOfAField) {
  EXPECT_THAT(Schema(), HasSubstr("<xs:documentation>Memory. Unit: kB.</xs:documentation>"));
  EXPECT_THAT(Schema(), HasSubstr("Values: 0 none, 1 player, 2 thermal, 3 sensor, 4 brightness."));
  EXPECT_THAT(Schema(), HasSubstr("Hardware revision. Absent when it is not reported."));
}

TEST(Schema, HasASentenceForEveryField) {
  const std::string schema = Schema();
  int fields = 0;
  for (const QtSts::ClassInfo* const info : QtSts::Classes()) {
    EXPECT_THAT(schema, HasSubstr(std::string("<xs:complexType name=\"") + info->Name + "\">"));
    for (const QtSts::Field& field : info->OwnFields()) {
      EXPECT_THAT(schema, HasSubstr(std::string(" name=\"") + field.Name + "\""));
      ++fields;
    }
  }
  EXPECT_GT(fields, 150);
}

TEST(Schema, RefusesWhatTheReaderRefuses) {
  QtSts::CStatus status;
  const std::string xml = QtSts::WriteDocument(status);
  ASSERT_TRUE(test_support::IsValidDocument(xml));
  const struct {
    const char* Old;
    const char* New;
  } rows[] = {
      {" MemoryTotal=\"100000\"", ""},
      {"MemoryTotal=\"100000\"", "MemoryTotal=\"many\""},
      {"<Status ", "<Status Colour=\"red\" "},
      {"<Compositors/>", ""},
      {"<Compositors/>", "<Compositors/><Compositors/>"},
      {"<Compositors/>", "<Compositors><Area Width=\"1\" Height=\"1\"/></Compositors>"},
      // What a later release may add.
      {"<Compositors/>", "<Compositors/><Lasers/>"},
      {"<Compositors/>", "<Compositors><Mixer/></Compositors>"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.New);
    const std::string changed = Replaced(xml, row.Old, row.New);
    EXPECT_FALSE(test_support::IsValidDocument(changed));
    QtSts::XmlError error;
    EXPECT_EQ(QtSts::ReadDocument(changed, &error), nullptr);
  }
}

// The table "Reader and schemas" of docs/document.md: each row of it is a row here.
TEST(Schema, DiffersFromTheReaderWhereThePageSaysSo) {
  QtSts::CStatus status;
  auto* const supply = new QtSts::CCANPsrbSensor;
  supply->InputVoltages = {230, 231};
  status.Sensors.Add(supply);
  auto* const board = new QtSts::CCANDcio2in1out;
  board->Points.Inputs = std::make_unique<QtSts::InputListType>(2);
  auto* const door = new QtSts::CDoorSensorInputType;
  door->Index = 1;
  ASSERT_TRUE(board->Points.Add(door));
  status.Sensors.Add(board);
  const std::string xml = QtSts::WriteDocument(status);
  const struct {
    const char* Old;
    const char* New;
    bool IsRead;
  } rows[] = {
      {"<Status ", "<!-- aside --><?aside?><Status ", true},
      {"  <Compositors/>\n  <Inputs/>\n", "  <Inputs/>\n  <Compositors/>\n", true},
      {"DaylightSaving=\"false\"", "DaylightSaving=\"0\"", false},
      {"MemoryTotal=\"100000\"", "MemoryTotal=\"+100000\"", false},
      {"\"230 231\"", "\"230  231\"", false},
      {"\"230 231\"", "\" 230 231\"", false},
      {"\"230 231\"", "\"1e39 231\"", false},
      {"\"230 231\"", "\"1e-60 231\"", false},
      {" Index=\"1\"", " Index=\"0\"", false},
      {" Index=\"1\"", " Index=\"3\"", false},
      {"BoardConnected=\"false\"", "BoardConnected=\"true\"", false},
      {"<Compositors/>", "<?aside?><Compositors/>", false},
      {"<Status ", "<!DOCTYPE Status><Status ", false},
      {"<Status ",
       "<Status xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
       "xsi:noNamespaceSchemaLocation=\"status.xsd\" ",
       false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.New);
    const std::string changed = Replaced(xml, row.Old, row.New);
    const bool reordered = std::string(row.New).starts_with("  <Inputs/>");
    EXPECT_EQ(static_cast<bool>(test_support::IsValidDocument(changed)), !reordered);
    QtSts::XmlError error;
    EXPECT_EQ(QtSts::ReadDocument(changed, &error) != nullptr, row.IsRead) << error.Text();
  }
}

}  // namespace
