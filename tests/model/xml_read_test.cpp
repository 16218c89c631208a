#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libxml/tree.h>

#include <fstream>
#include <string>

#include "model/can_sensors.h"
#include "model/compare.h"
#include "model/dcio_boards.h"
#include "model/xml.h"
#include "tests/support/comma_locale.h"
#include "tests/support/random_document.h"
#include "tests/support/temporary_folder.h"

namespace {

using QtSts::CStatus;
using QtSts::ReadDocument;
using QtSts::XmlError;
using testing::AllOf;
using testing::HasSubstr;

std::string Document() {
  CStatus status;
  status.Outputs.Add(new QtSts::CTravex6Output);
  status.Sensors.Add(new QtSts::CCANTempSensor);
  return QtSts::WriteDocument(status);
}

// The document with the first `old_text` replaced.
std::string With(const std::string& old_text, const std::string& new_text) {
  std::string document = Document();
  const std::size_t position = document.find(old_text);
  EXPECT_NE(position, std::string::npos) << old_text;
  return document.replace(position, old_text.size(), new_text);
}

std::string Refusal(const std::string& text) {
  XmlError error;
  EXPECT_EQ(ReadDocument(text, &error), nullptr);
  return error.Text();
}

testing::AssertionResult SaysTheSame(const QtSts::CBaseStatus& before,
                                     const QtSts::CBaseStatus& after) {
  const auto differences = QtSts::Compare(before, after);
  return differences.empty() ? testing::AssertionSuccess()
                             : testing::AssertionFailure() << differences.front().Text();
}

TEST(ReadDocument, GivesBackWhatWasWritten) {
  for (std::uint64_t seed = 0; seed < 200; ++seed) {
    SCOPED_TRACE(seed);
    const auto document = test_support::RandomDocument(test_support::SeededChoices(seed));
    const std::string xml = QtSts::WriteDocument(*document);
    XmlError error;
    const auto read = ReadDocument(xml, &error);
    ASSERT_NE(read, nullptr) << error.Text();
    EXPECT_TRUE(SaysTheSame(*document, *read));
    EXPECT_EQ(QtSts::WriteDocument(*read), xml);
  }
}

TEST(ReadDocument, GivesBackTheSameUnderALocaleWithDecimalComma) {
  const test_support::CommaLocale locale;
  const auto document = test_support::RandomDocument(test_support::SeededChoices(7));
  XmlError error;
  const auto read = ReadDocument(QtSts::WriteDocument(*document), &error);
  ASSERT_NE(read, nullptr) << error.Text();
  EXPECT_TRUE(SaysTheSame(*document, *read));
}

TEST(Parse, GivesBackWhatWriteLeftForEveryClass) {
  int classes = 0;
  for (const QtSts::ClassInfo* const info : QtSts::Classes()) {
    if (info->Create == nullptr) {
      continue;  // held by value or abstract: read and written with its holder or a derived class
    }
    ++classes;
    SCOPED_TRACE(info->Name);
    const std::unique_ptr<QtSts::CBaseStatus> object(info->Create());
    test_support::FillAtRandom(*info, dynamic_cast<void*>(object.get()),
                               test_support::SeededChoices(11));
    xmlNode* const node = xmlNewNode(nullptr, reinterpret_cast<const xmlChar*>(info->Name));
    EXPECT_TRUE(object->Write(node));
    const std::unique_ptr<QtSts::CBaseStatus> copy(info->Create());
    EXPECT_TRUE(copy->Parse(node));
    EXPECT_TRUE(SaysTheSame(*object, *copy));
    xmlFreeNode(node);
  }
  EXPECT_GT(classes, 50);
}

TEST(ReadDocument, NamesElementAttributeAndLineOfAFault) {
  const struct {
    const char* Old;
    const char* New;
    const char* Error;
  } rows[] = {
      {"MemoryTotal=\"100000\"", "MemoryTotal=\"many\"",
       "line 2: <Status> attribute MemoryTotal: not a value that it can hold"},
      {" MemoryTotal=\"100000\"", "",
       "line 2: <Status> attribute MemoryTotal: attribute is missing"},
      {"<Status ", "<Status Colour=\"red\" ",
       "line 2: <Status> attribute Colour: unknown attribute"},
      {"<Compositors/>", "", "line 2: <Status> element <Compositors> is missing"},
      {"<Compositors/>", "<Compositors/><Compositors/>", "<Compositors> element stands twice"},
      {"<Compositors/>", "<Compositors/><Surprise/>", "<Surprise> unknown element"},
      {"<Compositors/>", "<Compositors/>text", "<Status> text where only elements may stand"},
      {"<Compositors/>", "<Compositors>text</Compositors>",
       "<Compositors> text where only elements may stand"},
      {"<Compositors/>", "<?now do?><Compositors/>",
       "<Status> processing instruction where only elements may stand"},
      {"<Compositors/>", "<Compositors Count=\"1\"/>",
       "<Compositors> attribute Count: unknown attribute"},
      {"<Compositors/>", "<Compositors><Area Width=\"1\" Height=\"1\"/></Compositors>",
       "<Area> not an element of this list"},
      {"<Compositors/>", "<Compositors><Input/></Compositors>",
       "<Input> not an element of this list"},
      {"<Compositors/>", "<Compositors><Nothing/></Compositors>",
       "<Nothing> not an element of this list"},
      {"<CANTempSensor ", "<CANTempSensor Celsius=\"1,5\" ",
       "not a document: Attribute Celsius redefined"},
      {"Celsius=\"0\"", "Celsius=\"21,5\"", "<CANTempSensor> attribute Celsius: not a value"},
      {"Celsius=\"0\"", "Celsius=\" 21.5\"", "<CANTempSensor> attribute Celsius: not a value"},
      {"Celsius=\"0\"", "Celsius=\"inf\"", "<CANTempSensor> attribute Celsius: not a value"},
      {"Celsius=\"0\"", "Celsius=\"0x10\"", "<CANTempSensor> attribute Celsius: not a value"},
      {"Celsius=\"0\"", "Celsius=\"1e99\"", "<CANTempSensor> attribute Celsius: not a value"},
      {"Connected=\"false\"", "Connected=\"0\"", "attribute Connected: not a value"},
      {"Bus=\"0\"", "Bus=\"65536\"", "attribute Bus: not a value"},
      {"Bus=\"0\"", "Bus=\"-1\"", "attribute Bus: not a value"},
      {"Bus=\"0\"", "Bus=\"\"", "attribute Bus: not a value"},
      {"Bus=\"0\"", "Bus=\"0\" Face=\"x\"", "attribute Face: not a value"},
      {"<Compositors/>", "<x:Compositors xmlns:x=\"u\"/>", "<Compositors> unknown element"},
      {"<Status ", "<Status xmlns=\"u\" ", "<Status> unknown element"},
      {"Bus=\"0\"", "Bus=\"0\" xmlns:x=\"u\" x:Face=\"1\"", "attribute Face: unknown attribute"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.New);
    EXPECT_THAT(Refusal(With(row.Old, row.New)), HasSubstr(row.Error));
  }
}

TEST(ReadDocument, RefusesAListOfNumbersWithSomethingElseInIt) {
  CStatus status;
  auto board = std::make_unique<QtSts::CCANPsrbSensor>();
  board->InputVoltages = {230, 231};
  status.Sensors.Add(board.release());
  std::string document = QtSts::WriteDocument(status);
  const std::string voltages = "InputVoltages=\"230 231\"";
  const std::size_t position = document.find(voltages);
  ASSERT_NE(position, std::string::npos);
  document.replace(position, voltages.size(), "InputVoltages=\"230 high\"");
  EXPECT_THAT(Refusal(document), HasSubstr("<CANPsrbSensor> attribute InputVoltages: not a value"));
}

// A board with a point in each list: inputs from 1 to 2, outputs from 1 on.
std::string BoardDocument() {
  CStatus status;
  auto* const board = new QtSts::CCANDcio2in1out;
  status.Sensors.Add(board);
  board->SetConnected(true);
  board->Points.Inputs = std::make_unique<QtSts::InputListType>(2);
  board->Points.Outputs = std::make_unique<QtSts::OutputListType>();
  auto* const door = new QtSts::CDoorSensorInputType;
  door->Index = 2;
  board->Points.Inputs->Add(door);
  auto* const heater = new QtSts::CHeaterOutputType;
  heater->Index = 2147483647;
  board->Points.Outputs->Add(heater);
  return QtSts::WriteDocument(status);
}

// Such documents used to be read, and then had points and boards that none can have.
TEST(ReadDocument, RefusesWhatListsAndBoardsOfTheLibraryRefuse) {
  const struct {
    const char* Old;
    const char* New;
    const char* Error;
  } rows[] = {
      {" Index=\"2\"", " Index=\"0\"",
       "<DoorSensorInputType> attribute Index: 0 is refused: the list takes indices from 1 to 2"},
      {" Index=\"2\"", " Index=\"-1\"",
       "<DoorSensorInputType> attribute Index: -1 is refused: the list takes indices from 1 to 2"},
      {" Index=\"2\"", " Index=\"3\"",
       "<DoorSensorInputType> attribute Index: 3 is refused: the list takes indices from 1 to 2"},
      {" Index=\"2147483647\"", " Index=\"0\"",
       "<HeaterOutputType> attribute Index: 0 is refused: the list takes indices from 1 on"},
      {" Index=\"2147483647\"", " Index=\"-2147483648\"",
       "attribute Index: -2147483648 is refused: the list takes indices from 1 on"},
      {"MaximumIndex=\"2\"", "MaximumIndex=\"1\"",
       "attribute Index: 2 is refused: the list takes indices from 1 to 1"},
      {"MaximumIndex=\"2\"", "MaximumIndex=\"0\"",
       "attribute Index: 2 is refused: the list takes no index"},
      {"BoardConnected=\"true\"", "BoardConnected=\"false\"",
       "<CANDcio2in1out> attribute BoardConnected: contradicts Connected"},
      {" Connected=\"true\"", " Connected=\"false\"",
       "<CANDcio2in1out> attribute BoardConnected: contradicts Connected"},
  };
  const std::string document = BoardDocument();
  XmlError error;
  ASSERT_NE(ReadDocument(document, &error), nullptr) << error.Text();
  for (const auto& row : rows) {
    SCOPED_TRACE(row.New);
    std::string changed = document;
    const std::size_t position = changed.find(row.Old);
    ASSERT_NE(position, std::string::npos);
    changed.replace(position, std::string(row.Old).size(), row.New);
    EXPECT_THAT(Refusal(changed), AllOf(testing::StartsWith("line "), HasSubstr(row.Error)));
  }
}

TEST(ReadDocument, ReadsEachIndexThatAListTakes) {
  std::string open = BoardDocument();
  const std::string closed = "OpenEnded=\"false\" MaximumIndex=\"2\"";
  const std::size_t position = open.find(closed);
  ASSERT_NE(position, std::string::npos);
  open.replace(position, closed.size(), "OpenEnded=\"true\" MaximumIndex=\"0\"");
  XmlError error;
  EXPECT_NE(ReadDocument(open, &error), nullptr) << error.Text();
}

// Parse reads one object, which has the same to keep.
TEST(Parse, RefusesABoardWhoseFlagsContradictEachOther) {
  QtSts::CCANDcio2in1out board;
  board.Connected = true;
  xmlNode* const node = xmlNewNode(nullptr, reinterpret_cast<const xmlChar*>("CANDcio2in1out"));
  EXPECT_TRUE(board.Write(node));
  QtSts::CCANDcio2in1out read;
  EXPECT_FALSE(read.Parse(node));
  xmlFreeNode(node);
}

TEST(ReadDocument, GivesTheLineOfAnElementFarDown) {
  const std::string lines(70000, '\n');
  EXPECT_THAT(Refusal(With("<Compositors/>", "<Compositors/>" + lines + "<Surprise/>")),
              HasSubstr("line 7"));
}

TEST(ReadDocument, RefusesWhatIsNotXml) {
  for (const char* text : {"", " ", "Status", "<Status", "<Status></Area>", "<a/><b/>", "{}"}) {
    SCOPED_TRACE(text);
    EXPECT_THAT(Refusal(text), HasSubstr("not a document: "));
  }
  EXPECT_THAT(Refusal("<Area/>"), HasSubstr("the outermost element is not <Status>"));
  EXPECT_THAT(Refusal(Document().substr(0, 500)), HasSubstr("not a document: "));
}

TEST(ReadDocument, RefusesOtherEncodingsThanUtf8) {
  const std::string document = Document();
  std::string wide;
  for (const char c : document) {
    wide += c;
    wide += '\0';
  }
  for (const std::string& text : {wide, "\xFF\xFE" + wide, "\xFE\xFF" + document,
                                  "\x4C\x6F\xA7\x94" + document, document + '\0'}) {
    EXPECT_EQ(Refusal(text), "not a document: the text is not UTF-8");
  }
  XmlError error;
  EXPECT_NE(ReadDocument("\xEF\xBB\xBF" + document, &error), nullptr) << error.Text();
}

TEST(ReadDocument, AcceptsCommentsAndBlanks) {
  XmlError error;
  EXPECT_NE(
      ReadDocument(With("<Compositors/>", "<!-- a \"comment\" --> \n<Compositors> </Compositors>"),
                   &error),
      nullptr)
      << error.Text();
}

TEST(ReadDocument, ExpandsNoEntities) {
  const std::string bomb =
      "<!DOCTYPE Status [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;\">"
      "<!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;\">]>\n<Status ";
  EXPECT_THAT(Refusal(With("<Status ", bomb + "GUID=\"&c;\" ")),
              HasSubstr("document types are not accepted"));
  EXPECT_THAT(Refusal(With("<Status ", "<!DOCTYPE Status SYSTEM \"/etc/passwd\">\n<Status ")),
              HasSubstr("document types are not accepted"));
  EXPECT_THAT(Refusal(With("GUID=\"\"", "GUID=\"&unknown;\"")), HasSubstr("not a document: "));
}

TEST(ReadDocument, BoundsDepthSizeAndAttributes) {
  std::string deep;
  for (int i = 0; i < 100000; ++i) {
    deep += "<Status>";
  }
  EXPECT_THAT(Refusal(deep), HasSubstr("not a document: "));
  EXPECT_THAT(Refusal(std::string(QtSts::kMaximumDocumentSize + 1, ' ')), HasSubstr("larger than"));
  // libxml2 alone would compare these with each other for hours.
  std::string crowded = "<!-- ' --><Status";
  for (int i = 0; i < 1000000; ++i) {
    crowded += " a" + std::to_string(i) + "=''";
  }
  EXPECT_THAT(Refusal(crowded + "/>"), HasSubstr("more than 1000 attributes"));
}

TEST(ReadDocument, ReadsADocumentOfManyMegabytes) {
  CStatus status;
  status.FirmwareVersion.assign(9'000'000, 'v');
  for (int i = 0; i < 25000; ++i) {
    status.Sensors.Add(new QtSts::CCANTempSensor);
  }
  const std::string xml = QtSts::WriteDocument(status);
  ASSERT_GT(xml.size(), std::size_t{11} << 20);
  XmlError error;
  const auto read = ReadDocument(xml, &error);
  ASSERT_NE(read, nullptr) << error.Text();
  EXPECT_EQ(read->Sensors.Count(), 25000U);
}

TEST(ReadDocument, BoundsTheLengthOfAText) {
  CStatus status;
  status.FirmwareVersion.assign(9'000'000, 'v');
  XmlError error;
  const auto read = ReadDocument(QtSts::WriteDocument(status), &error);
  ASSERT_NE(read, nullptr) << error.Text();
  EXPECT_EQ(read->FirmwareVersion, status.FirmwareVersion);
  status.FirmwareVersion.assign(11'000'000, 'v');
  EXPECT_THAT(Refusal(QtSts::WriteDocument(status)), HasSubstr("length too long"));
}

// Each wrong byte either changes a value or is refused with one message; nothing else happens.
TEST(ReadDocument, SurvivesEveryChangedByte) {
  const std::string document = Document();
  for (std::size_t i = 0; i < document.size(); ++i) {
    for (const char c : {'<', '"', '\0', '\xff', ' '}) {
      std::string changed = document;
      changed[i] = c;
      XmlError error;
      const auto read = ReadDocument(changed, &error);
      EXPECT_TRUE(read != nullptr || !error.Message.empty()) << i;
    }
  }
}

class ReadDocumentFile : public testing::Test {
 protected:
  const test_support::TemporaryFolder folder_;
  const std::string path_ = folder_.Path() + "/document.xml";
};

TEST_F(ReadDocumentFile, ReadsAFile) {
  std::ofstream(path_) << Document();
  XmlError error;
  EXPECT_NE(QtSts::ReadDocumentFile(path_, &error), nullptr) << error.Text();
}

TEST_F(ReadDocumentFile, SaysWhyAFileCannotBeRead) {
  const struct {
    const char* Path;
    const char* Reason;
  } rows[] = {{"/nowhere/at/all.xml", "No such file or directory"}, {"/", "Is a directory"}};
  for (const auto& row : rows) {
    XmlError error;
    EXPECT_EQ(QtSts::ReadDocumentFile(row.Path, &error), nullptr);
    EXPECT_EQ(error.Text(), std::string("the file cannot be read: ") + row.Reason);
  }
}

TEST_F(ReadDocumentFile, RefusesAnEmptyFile) {
  std::ofstream(path_) << "";
  XmlError error;
  EXPECT_EQ(QtSts::ReadDocumentFile(path_, &error), nullptr);
  EXPECT_THAT(error.Text(), HasSubstr("not a document: "));
}

TEST_F(ReadDocumentFile, EndsAtAFileWithoutAnEnd) {
  XmlError error;
  EXPECT_EQ(QtSts::ReadDocumentFile("/dev/zero", &error), nullptr);
  EXPECT_THAT(error.Text(), HasSubstr("larger than"));
}

}  // namespace
