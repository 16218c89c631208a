#include "model/tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "model/can_sensors.h"
#include "model/dcio_boards.h"
#include "model/document.h"
#include "model/xml.h"
#include "tests/support/comma_locale.h"
#include "tests/support/random_document.h"
#include "tests/support/tree_of_xml.h"

namespace {

using QtSts::CStatus;
using QtSts::DocumentTree;
using QtSts::TreeElement;
using QtSts::TreeValue;
using QtSts::ValueKind;
using test_support::TreeDiffersFromXml;
using testing::ElementsAre;

// A document with an output, two display interfaces and a sensor behind the second.
std::unique_ptr<CStatus> Sample() {
  auto status = std::make_unique<CStatus>();
  auto* const output = new QtSts::CTravex6Output;
  status->Outputs.Add(output);
  output->Dimming.DimmingMode = 3;
  output->DisplayInterfaces.Add(new QtSts::CTravexRouterDisplayInterface);
  auto* const interface = new QtSts::CTravexRouterDisplayInterface;
  output->DisplayInterfaces.Add(interface);
  auto* const sensor = new QtSts::CCANTempSensor;
  sensor->Celsius = 21.6F;
  interface->Sensors.Add(sensor);
  return status;
}

TEST(DocumentTree, SaysWhatTheXmlSaysOfEveryContent) {
  for (std::uint64_t seed = 0; seed < 300; ++seed) {
    SCOPED_TRACE(seed);
    const auto document = test_support::RandomDocument(test_support::SeededChoices(seed));
    ASSERT_EQ(TreeDiffersFromXml(*document, QtSts::WriteDocument(*document)), "");
  }
}

TEST(DocumentTree, SaysTheSameUnderALocaleWithDecimalComma) {
  const auto document = Sample();
  const std::string xml = QtSts::WriteDocument(*document);
  const test_support::CommaLocale locale;
  EXPECT_EQ(TreeDiffersFromXml(*document, xml), "");
}

// The proof above is worth nothing if it cannot fail.
TEST(DocumentTree, IsFoundOutWhenItDiffersFromTheXml) {
  auto document = Sample();
  const std::string xml = QtSts::WriteDocument(*document);
  document->Outputs[0]->Dimming.DimmingMode = 4;
  EXPECT_THAT(TreeDiffersFromXml(*document, xml),
              testing::MatchesRegex("the tree says +DimmingMode=4, the XML +DimmingMode=3"));
  document->Outputs[0]->Dimming.DimmingMode = 3;
  document->Sensors.Add(new QtSts::CCANTempSensor);
  EXPECT_NE(TreeDiffersFromXml(*document, xml), "");
}

TEST(DocumentTree, HoldsValuesOfEachKind) {
  CStatus status;
  status.MemoryFree = -5;
  status.StorageFree = std::numeric_limits<std::uint64_t>::max();
  status.DaylightSaving = true;
  status.GUID = "a\x01";
  auto* const sensor = new QtSts::CCANMultiDirectionalSensor;
  sensor->Ambient = 20.5F;
  sensor->Latitude = -0.1;
  status.Sensors.Add(sensor);
  auto* const board = new QtSts::CCANPsrbSensor;
  board->InputVoltages = {230, 231.5F};
  status.Sensors.Add(board);
  const DocumentTree tree(status);
  const TreeElement& root = tree.Root();
  EXPECT_EQ(root.FindValue("MemoryFree")->Kind(), ValueKind::kSigned);
  EXPECT_EQ(root.FindValue("MemoryFree")->Signed(), -5);
  EXPECT_EQ(root.FindValue("StorageFree")->Kind(), ValueKind::kUnsigned);
  EXPECT_EQ(root.FindValue("StorageFree")->Unsigned(), status.StorageFree);
  EXPECT_EQ(root.FindValue("DaylightSaving")->Kind(), ValueKind::kFlag);
  EXPECT_TRUE(root.FindValue("DaylightSaving")->Flag());
  EXPECT_EQ(root.FindValue("GUID")->Kind(), ValueKind::kText);
  EXPECT_EQ(root.FindValue("GUID")->Text(), "a\xEF\xBF\xBD");
  EXPECT_EQ(root.FindValue("Sensors[0]/Ambient")->Kind(), ValueKind::kFloat);
  EXPECT_EQ(root.FindValue("Sensors[0]/Ambient")->Real(), 20.5);
  EXPECT_EQ(root.FindValue("Sensors[0]/Latitude")->Kind(), ValueKind::kDouble);
  EXPECT_EQ(root.FindValue("Sensors[0]/Latitude")->Real(), -0.1);
  EXPECT_EQ(root.FindValue("Sensors[1]/InputVoltages")->Kind(), ValueKind::kReals);
  EXPECT_THAT(root.FindValue("Sensors[1]/InputVoltages")->Reals(), ElementsAre(230, 231.5F));
  EXPECT_EQ(root.FindValue("Sensors[1]/InputVoltages")->Written(), "230 231.5");
  EXPECT_TRUE(root.FindValue("Sensors[1]/OutputVoltages")->Reals().empty());
}

TEST(DocumentTree, KnowsUnitsAndNamesOfCodes) {
  const auto status = Sample();
  const DocumentTree tree(*status);
  const TreeElement& output = *tree.Root().Find("Outputs[0]");
  EXPECT_STREQ(output.FindValue("Dimming/DimmingMode")->CodeName(), "gps");
  EXPECT_STREQ(output.FindValue("Dimming/DimmingLevel")->Listed().Unit, "%");
  EXPECT_EQ(output.FindValue("StatusFlags")->CodeName(), nullptr);
  status->Outputs[0]->Dimming.DimmingMode = 77;
  EXPECT_EQ(DocumentTree(*status).Root().FindValue("Outputs[0]/Dimming/DimmingMode")->CodeName(),
            nullptr);
}

TEST(DocumentTree, FindsByPath) {
  const auto status = Sample();
  const DocumentTree tree(*status);
  const TreeElement& root = tree.Root();
  EXPECT_EQ(root.Find(""), &root);
  EXPECT_TRUE(root.Find("Outputs")->IsList());
  EXPECT_STREQ(root.Find("Outputs[0]/DisplayInterfaces[1]")->Name(),
               "TravexRouterDisplayInterface");
  EXPECT_EQ(root.FindValue("Outputs[0]/DisplayInterfaces[1]/Sensors[0]/Celsius")->Written(),
            "21.6");
  const TreeElement& output = *root.Find("Outputs[0]");
  EXPECT_EQ(output.Find("Dimming/Content")->FindValue("First"),
            root.FindValue("Outputs[0]/Dimming/Content/First"));
  EXPECT_EQ(root.Find("Outputs")->Find("[0]/Dimming"), output.Find("Dimming"));
}

TEST(DocumentTree, FindsNothingWhereAPathLeadsNowhere) {
  const auto status = Sample();
  const DocumentTree tree(*status);
  for (const char* path :
       {"Nothing", "Outputs[1]", "Outputs[-1]", "Outputs[]", "Outputs[0", "Outputs[0]x",
        "Outputs[0]/", "Outputs[0]//Dimming", "/Outputs", "Outputs/Dimming", "Dimming[0]", "[0]",
        "Outputs[0]/Dimming[0]", "Outputs[99999999999999999999]", "GUID/x", "GUID"}) {
    SCOPED_TRACE(path);
    const TreeElement* const found = tree.Root().Find(path);
    EXPECT_TRUE(found == nullptr || std::string(path) == "Outputs[0]/");
    EXPECT_EQ(tree.Root().FindValue(std::string(path) + "/GUID"), nullptr);
  }
  EXPECT_EQ(tree.Root().FindValue(""), nullptr);
  EXPECT_EQ(tree.Root().FindValue("Outputs"), nullptr) << "an element is no value";
}

TEST(DocumentTree, GivesThePathOfEveryElementAndValue) {
  for (std::uint64_t seed = 0; seed < 20; ++seed) {
    SCOPED_TRACE(seed);
    const auto document = test_support::RandomDocument(test_support::SeededChoices(seed));
    const DocumentTree tree(*document);
    for (const TreeElement& element : tree.Elements()) {
      EXPECT_EQ(tree.Root().Find(element.Path()), &element) << element.Path();
      for (const TreeValue& value : element.Values()) {
        EXPECT_EQ(tree.Root().FindValue(element.PathOf(value)), &value) << element.PathOf(value);
      }
    }
  }
}

TEST(DocumentTree, GivesItsElementsInOrderOfTheDocument) {
  CStatus status;
  status.Sensors.Add(new QtSts::CCANTempSensor);
  const DocumentTree tree(status);
  std::vector<std::string> names;
  for (const TreeElement& element : tree.Elements()) {
    names.emplace_back(element.Name());
  }
  EXPECT_THAT(names, ElementsAre("Status", "Sensors", "CANTempSensor", "Network", "DNS",
                                 "Addresses", "Devices", "DCIO", "Devices", "Compositors", "Inputs",
                                 "Outputs", "SolarInfo"));
  EXPECT_EQ(tree.Elements().front().Parent(), nullptr);
  EXPECT_EQ(tree.Elements()[2].Parent(), &tree.Elements()[1]);
  EXPECT_EQ(tree.Elements()[1].Parent(), &tree.Root());
}

TEST(DocumentTree, OutlivesItsDocumentAndBeingMoved) {
  auto status = std::make_unique<CStatus>();
  status->GUID = "short";
  DocumentTree first(*status);
  status.reset();
  const TreeValue* const value = first.Root().FindValue("GUID");
  const DocumentTree second = std::move(first);
  EXPECT_EQ(second.Root().FindValue("GUID"), value);
  EXPECT_EQ(value->Text(), "short");
}

TEST(DocumentTree, HoldsTheDocumentOfADerivedClass) {
  class COwnStatus : public CStatus {};
  COwnStatus status;
  status.GUID = "own";
  const DocumentTree tree(status);
  EXPECT_STREQ(tree.Root().Name(), "Status");
  EXPECT_EQ(tree.Root().FindValue("GUID")->Text(), "own");
}

TEST(DocumentTree, PassesOverElementsOfUnlistedClasses) {
  class CForeign : public QtSts::CCANSensor {};
  CStatus status;
  status.Sensors.Add(new CForeign);
  status.Sensors.Add(new QtSts::CCANTempSensor);
  const DocumentTree tree(status);
  EXPECT_STREQ(tree.Root().Find("Sensors[0]")->Name(), "CANTempSensor");
  EXPECT_EQ(tree.Root().Find("Sensors[1]"), nullptr);
  const CForeign foreign;
  const DocumentTree empty(static_cast<const QtSts::CBaseStatus&>(foreign));
  EXPECT_TRUE(empty.Root().Values().empty());
  EXPECT_EQ(empty.Elements().size(), 1U);
}

}  // namespace
