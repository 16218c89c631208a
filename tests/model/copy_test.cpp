#include "model/copy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <set>

#include "model/beacons.h"
#include "model/can_sensors.h"
#include "model/compare.h"
#include "model/dcio_boards.h"
#include "model/listed_object.h"
#include "model/xml.h"
#include "tests/support/random_document.h"

namespace {

using QtSts::Copy;
using QtSts::CStatus;

// Every scalar as it stands in memory, and where it stands.
// NOLINTNEXTLINE(misc-no-recursion): the document's depth is that of its classes
void Collect(const QtSts::ListedObject& object, std::string* values,
             std::set<const void*>* places) {
  object.VisitFields([&](const QtSts::ListedField& field) {
    *values += std::string(field.Listed().Name) + (field.IsReported() ? "=" : " absent");
    field.Format(values);  // texts with every byte, not cleaned
    for (const QtSts::ScalarType* type :
         {&QtSts::listing::kText, &QtSts::listing::kFloats, &QtSts::listing::kUInt32}) {
      places->insert(field.ValueIf(*type));
    }
    *values += '\n';
    Collect(field.Record(), values, places);
    return field.VisitElements([&](const QtSts::ListedObject& element) {
      *values += element.Class()->Name;
      Collect(element, values, places);
      return true;
    });
  });
  places->erase(nullptr);
}

TEST(Copy, SaysTheSameAndSharesNothing) {
  for (std::uint64_t seed = 0; seed < 200; ++seed) {
    SCOPED_TRACE(seed);
    const auto document = test_support::RandomDocument(test_support::SeededChoices(seed));
    const auto copy = Copy(*document);
    std::string values[2];
    std::set<const void*> places[2];
    Collect(QtSts::ListedObject::OfDocument(*document), &values[0], &places[0]);
    Collect(QtSts::ListedObject::OfDocument(*copy), &values[1], &places[1]);
    ASSERT_EQ(values[0], values[1]);
    ASSERT_GT(places[0].size(), 20U);
    ASSERT_EQ(places[0].size(), places[1].size());
    for (const void* place : places[0]) {
      ASSERT_FALSE(places[1].contains(place));
    }
    ASSERT_EQ(QtSts::WriteDocument(*copy), QtSts::WriteDocument(*document));
  }
}

TEST(Copy, OutlivesTheDocument) {
  auto document = std::make_unique<CStatus>();
  auto* const sensor = new QtSts::CCANTempSensor;
  sensor->Celsius = 21.5F;
  document->Sensors.Add(sensor);
  const CStatus& read_only = *document;
  const std::unique_ptr<CStatus> copy = Copy(read_only);
  document->Sensors.Clear();
  document.reset();
  const auto* const copied = dynamic_cast<const QtSts::CCANTempSensor*>(copy->Sensors[0]);
  ASSERT_NE(copied, nullptr);
  EXPECT_EQ(copied->Celsius, 21.5F);
}

TEST(Copy, KeepsPositionsAndWhatIsNotThere) {
  CStatus status;
  status.Sensors.Add(nullptr);
  auto* const sensor = new QtSts::CCANDoorSensor;
  status.Sensors.Add(sensor);
  status.Sensors.Add(sensor);
  status.Outputs.Add(new QtSts::CTravex6Output);
  auto* const board = new QtSts::CSentrelControlBoardDisplayInterface;
  board->Inputs.reset();  // a fresh one has both lists
  status.Outputs[0]->DisplayInterfaces.Add(board);
  const auto copy = Copy(status);
  ASSERT_EQ(copy->Sensors.size(), 3U);
  EXPECT_EQ(copy->Sensors[0], nullptr);
  EXPECT_NE(copy->Sensors[1], nullptr);
  EXPECT_NE(copy->Sensors[2], copy->Sensors[1]);
  const auto* const copied = dynamic_cast<const QtSts::CSentrelControlBoardDisplayInterface*>(
      copy->Outputs[0]->DisplayInterfaces[0]);
  ASSERT_NE(copied, nullptr);
  EXPECT_EQ(copied->Inputs, nullptr);
  EXPECT_NE(copied->Outputs, nullptr);
  EXPECT_TRUE(QtSts::Compare(status, *copy).empty());
}

TEST(Copy, KeepsWhatPointListsTake) {
  CStatus status;
  auto* const board = new QtSts::CCANDcio2in1out;
  board->Points.Inputs = std::make_unique<QtSts::InputListType>(2);
  auto* const point = new QtSts::CDoorSensorInputType;
  point->Index = 2;
  ASSERT_TRUE(board->Points.Add(point));
  status.Sensors.Add(board);
  const auto copy = Copy(status);
  auto* const copied = dynamic_cast<QtSts::CCANDcio2in1out*>(copy->Sensors[0]);
  ASSERT_NE(copied, nullptr);
  EXPECT_FALSE(copied->Points.Inputs->OpenEnded);
  EXPECT_EQ(copied->Points.Inputs->MaximumIndex, 2U);
  EXPECT_EQ(copied->Points.Outputs, nullptr);
  const QtSts::BaseInputType* const found = FindInput(copied->Points, 2);
  ASSERT_NE(found, nullptr);
  EXPECT_STREQ(NodeNameOf(*found), "DoorSensorInputType");
}

// Such a sensor does not stand in documents, either.
TEST(Copy, LeavesNullWhereDocumentsPassOver) {
  class COwnSensor : public QtSts::CSensor {};
  CStatus status;
  status.Sensors.Add(new COwnSensor);
  status.Sensors.Add(new QtSts::CCANDoorSensor);
  const auto copy = Copy(status);
  ASSERT_EQ(copy->Sensors.size(), 2U);
  EXPECT_EQ(copy->Sensors[0], nullptr);
  EXPECT_NE(copy->Sensors[1], nullptr);
  EXPECT_EQ(QtSts::WriteDocument(*copy), QtSts::WriteDocument(status));
}

TEST(Copy, MakesAPointOfTheNearestClassOfOneOfTheHost) {
  class COwnOutput : public QtSts::CHeaterOutputType {
   public:
    const char* GetNodeName() override { return "OwnOutput"; }
  };
  CStatus status;
  auto* const board = new QtSts::CCANDcio2in1out;
  board->Points.Outputs = std::make_unique<QtSts::OutputListType>(2);
  auto* const point = new COwnOutput;
  point->Index = 1;
  point->Label = "a";
  ASSERT_TRUE(board->Points.Add(point));
  status.Sensors.Add(board);
  const auto copy = Copy(status);
  const auto* const copied = dynamic_cast<const QtSts::CCANDcio2in1out*>(copy->Sensors[0]);
  ASSERT_NE(copied, nullptr);
  const QtSts::BaseOutputType* const found = FindOutput(copied->Points, 1);
  ASSERT_NE(found, nullptr);
  EXPECT_NE(dynamic_cast<const QtSts::CHeaterOutputType*>(found), nullptr);
  EXPECT_EQ(dynamic_cast<const COwnOutput*>(found), nullptr);
  EXPECT_STREQ(NodeNameOf(*found), "OwnOutput");
  EXPECT_EQ(found->Label, "a");
}

TEST(Copy, TakesADocumentOfAClassOfTheHost) {
  class COwnStatus : public CStatus {
   public:
    int Own = 1;
  };
  COwnStatus status;
  status.GUID = "a";
  EXPECT_EQ(Copy(status)->GUID, "a");
}

}  // namespace
