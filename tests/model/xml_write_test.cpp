#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libxml/tree.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>

#include "model/can_sensors.h"
#include "model/compare.h"
#include "model/dcio_boards.h"
#include "model/text.h"
#include "model/xml.h"
#include "tests/support/comma_locale.h"
#include "tests/support/random_document.h"
#include "tests/support/validate.h"

namespace {

using QtSts::CStatus;
using QtSts::WriteDocument;
using test_support::IsValidDocument;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

QtSts::CTravex6Output* AddOutput(CStatus& status) {
  auto* const output = new QtSts::CTravex6Output;
  status.Outputs.Add(output);
  return output;
}

template <class T>
T* AddSensor(CStatus& status) {
  auto* const sensor = new T;
  status.Sensors.Add(sensor);
  return sensor;
}

TEST(WriteDocument, StartsWithADeclarationAndTheRoot) {
  CStatus status;
  EXPECT_THAT(WriteDocument(status),
              StartsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Status "));
}

TEST(WriteDocument, PutsScalarsIntoAttributesAndRecordsIntoElements) {
  CStatus status;
  status.MemoryTotal = 512;
  AddOutput(status)->ScalerOutputArea.Width = 640;
  const std::string xml = WriteDocument(status);
  EXPECT_THAT(xml, HasSubstr(" MemoryTotal=\"512\""));
  EXPECT_THAT(xml, HasSubstr("<ScalerOutputArea Width=\"640\" Height=\"0\"/>"));
}

TEST(WriteDocument, NamesListElementsByClassWithoutTheC) {
  CStatus status;
  AddOutput(status);
  AddSensor<QtSts::CCANTempSensor>(status);
  const std::string xml = WriteDocument(status);
  EXPECT_THAT(xml, HasSubstr("<Outputs>\n    <Travex6Output "));
  EXPECT_THAT(xml, HasSubstr("<Sensors>\n    <CANTempSensor "));
}

TEST(WriteDocument, NamesOutputPointsAsTheyNameThemselves) {
  CStatus status;
  auto* const board = AddSensor<QtSts::CCANDcio2in1out>(status);
  board->Points.Outputs = std::make_unique<QtSts::OutputListType>(1);
  auto* const point = new QtSts::CMaintHeaterOutputType;
  point->Index = 1;
  ASSERT_TRUE(board->Points.Add(point));
  EXPECT_THAT(WriteDocument(status), HasSubstr("<MaintenanceHeaterOutputType "));
  int kinds = 0;
  for (const QtSts::ClassInfo* const info : QtSts::Classes()) {
    if (info->Create == nullptr || !QtSts::IsA(*info, QtSts::BaseOutputType::Class)) {
      continue;
    }
    const std::unique_ptr<QtSts::CBaseStatus> made(info->Create());
    EXPECT_STREQ(dynamic_cast<QtSts::BaseOutputType&>(*made).GetNodeName(), info->Name);
    ++kinds;
  }
  EXPECT_EQ(kinds, 10);
}

TEST(WriteDocument, LeavesOutWhatIsNotReported) {
  CStatus status;
  auto* const sensor = AddSensor<QtSts::CCANTempSensor>(status);
  EXPECT_THAT(WriteDocument(status), Not(HasSubstr(" Face=")));
  sensor->Face = std::make_unique<std::uint32_t>(2);
  EXPECT_THAT(WriteDocument(status), HasSubstr(" Face=\"2\""));
}

TEST(WriteDocument, WritesAListWithoutElementsAsAnEmptyElement) {
  CStatus status;
  EXPECT_THAT(WriteDocument(status), HasSubstr("<Sensors/>"));
}

TEST(WriteDocument, PassesOverElementsOfUnlistedClasses) {
  class CForeign : public QtSts::CCANSensor {};
  CStatus status;
  AddSensor<CForeign>(status);
  EXPECT_THAT(WriteDocument(status), HasSubstr("<Sensors/>"));
}

TEST(WriteDocument, WritesNumbersInTheirShortestForm) {
  const struct {
    float Value;
    const char* Text;
  } rows[] = {
      {21.6F, "21.6"},
      {0, "0"},
      {-0.0F, "-0"},
      {100, "100"},
      {59.94F, "59.94"},
      {1e-10F, "1e-10"},
      {16777216, "16777216"},
      {std::numeric_limits<float>::max(), "3.4028235e+38"},
      {std::numeric_limits<float>::denorm_min(), "1e-45"},
      {std::numeric_limits<float>::quiet_NaN(), "NaN"},
      {-std::numeric_limits<float>::quiet_NaN(), "NaN"},
      {std::numeric_limits<float>::infinity(), "INF"},
      {-std::numeric_limits<float>::infinity(), "-INF"},
  };
  CStatus status;
  auto* const sensor = AddSensor<QtSts::CCANTempSensor>(status);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.Text);
    sensor->Celsius = row.Value;
    const std::string xml = WriteDocument(status);
    EXPECT_THAT(xml, HasSubstr(std::string(" Celsius=\"") + row.Text + "\""));
    EXPECT_TRUE(IsValidDocument(xml));
  }
}

TEST(WriteDocument, WritesTheSameUnderALocaleWithDecimalComma) {
  const auto document = test_support::RandomDocument(test_support::SeededChoices(5));
  AddSensor<QtSts::CCANTempSensor>(*document)->Celsius = 1234567.5F;
  const std::string before = WriteDocument(*document);
  const test_support::CommaLocale locale;
  EXPECT_EQ(WriteDocument(*document), before);
  EXPECT_THAT(before, HasSubstr(" Celsius=\"1234567.5\""));
}

// libxml2 writes such bytes as they are and reports no error.
TEST(WriteDocument, StaysWellFormedWhateverTheTextsHold) {
  CStatus status;
  status.GUID = std::string("a\0b\x01\x1b[31m\xff\xed\xa0\x80<&>\"'\t\r\n]]>", 24);
  const std::string xml = WriteDocument(status);
  EXPECT_TRUE(IsValidDocument(xml));
  QtSts::XmlError error;
  const auto read = QtSts::ReadDocument(xml, &error);
  ASSERT_NE(read, nullptr) << error.Text();
  std::string expected = status.GUID;
  QtSts::CleanText(&expected);
  EXPECT_EQ(read->GUID, expected);
}

// Such characters used to stand in the text as they are, and steered the terminal that showed it.
TEST(WriteDocument, WritesWhatSteersATerminalAsReferences) {
  CStatus status;
  status.GUID =
      "\x7f\xC2\x9B"
      "31m\xE2\x80\xAE\xD8\x9C&\xC3\xA4";
  const std::string xml = WriteDocument(status);
  EXPECT_THAT(xml, HasSubstr(" GUID=\"&#x007F;&#x009B;31m&#x202E;&#x061C;&amp;\xC3\xA4\""));
  QtSts::XmlError error;
  const auto read = QtSts::ReadDocument(xml, &error);
  ASSERT_NE(read, nullptr) << error.Text();
  EXPECT_EQ(read->GUID, status.GUID);
}

TEST(WriteDocument, WritesValidDocumentsOfEveryContent) {
  for (std::uint64_t seed = 0; seed < 100; ++seed) {
    SCOPED_TRACE(seed);
    const auto document = test_support::RandomDocument(test_support::SeededChoices(seed));
    EXPECT_TRUE(IsValidDocument(WriteDocument(*document)));
  }
}

TEST(WriteDocument, LeavesTheXmlToAClassThatWritesItself) {
  class COwnStatus : public CStatus {
   public:
    bool Write(xmlNode* node) override {
      return xmlNewProp(node, reinterpret_cast<const xmlChar*>("Own"),
                        reinterpret_cast<const xmlChar*>("1")) != nullptr;
    }
  };
  COwnStatus status;
  EXPECT_EQ(WriteDocument(status),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Status Own=\"1\"/>\n");
}

// Programs used to copy a document, or cast const away, to write one that they only look at.
TEST(WriteDocument, WritesADocumentThatIsConst) {
  CStatus status;
  status.GUID = "a";
  EXPECT_EQ(WriteDocument(std::as_const(status)), WriteDocument(status));
  std::string (*const write)(const CStatus&) = &WriteDocument;
  EXPECT_EQ(write(status), WriteDocument(status));
}

TEST(Write, FillsTheElementOfAnyClass) {
  QtSts::CArea area;
  area.Width = 3;
  xmlNode* const node = xmlNewNode(nullptr, reinterpret_cast<const xmlChar*>("Area"));
  EXPECT_TRUE(area.Write(node));
  QtSts::CArea copy;
  EXPECT_TRUE(copy.Parse(node));
  EXPECT_EQ(copy.Width, 3U);
  xmlFreeNode(node);
}

TEST(Write, AnswersFalseWithoutAnElement) {
  QtSts::CArea area;
  EXPECT_FALSE(area.Write(nullptr));
  EXPECT_FALSE(area.Parse(nullptr));
}

}  // namespace
