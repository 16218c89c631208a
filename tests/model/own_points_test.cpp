// Points of classes that a program makes for itself.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libxml/tree.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "model/compare.h"
#include "model/copy.h"
#include "model/dcio_boards.h"
#include "model/document.h"
#include "model/json.h"
#include "model/tree.h"
#include "model/xml.h"

namespace {

using QtSts::CStatus;
using QtSts::DocumentTree;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* kOutputs = "Sensors[0]/Points/Outputs/Points";

// What another library brings along: the point does not begin where its object begins.
class Mixin {
 public:
  Mixin() = default;
  Mixin(const Mixin&) = delete;
  Mixin& operator=(const Mixin&) = delete;
  virtual ~Mixin() = default;
  std::string Own = "not in the document";
};

class Siren : public Mixin, public QtSts::CAuxiliaryOutputType {
 public:
  explicit Siren(const char* name = "SirenOutputType") : name_(name) {}
  const char* GetNodeName() override { return name_; }

 private:
  const char* name_;
};

// A board of any number of points in a document, which owns them.
struct Board {
  CStatus Status;
  QtSts::CCANDcio2in1out* Record = new QtSts::CCANDcio2in1out;

  Board() {
    Status.Sensors.Add(Record);
    Record->Points.Inputs = std::make_unique<QtSts::InputListType>();
    Record->Points.Outputs = std::make_unique<QtSts::OutputListType>();
  }

  template <class Point>
  Point* Add(std::unique_ptr<Point> point) {
    point->Index = 1;
    Point* const added = point.get();
    EXPECT_TRUE(Record->Points.Add(point.release()));
    return added;
  }
};

std::string Xml(Board& board) { return QtSts::WriteDocument(board.Status); }

// Such points used to be left out, and nothing said so.
TEST(OwnPoints, AreWrittenUnderTheirNodeNameWithTheFieldsOfTheNearestListedClass) {
  Board board;
  Siren* const siren = board.Add(std::make_unique<Siren>());
  siren->Label = "Siren";
  siren->Set(true);
  EXPECT_THAT(Xml(board),
              HasSubstr("<SirenOutputType SpareWord=\"0\" StoredState=\"0\" Index=\"1\" "
                        "Label=\"Siren\"/>"));
  const DocumentTree tree(board.Status);
  const QtSts::TreeElement* const element = tree.Root().Find(std::string(kOutputs) + "[0]");
  ASSERT_NE(element, nullptr);
  EXPECT_STREQ(element->Name(), "SirenOutputType");
  EXPECT_TRUE(element->IsA(QtSts::CAuxiliaryOutputType::Class));
  EXPECT_EQ(element->FindValue("Label")->Text(), "Siren");
}

TEST(OwnPoints, AreComparedByTheirNameAndFields) {
  Board before;
  Board after;
  before.Add(std::make_unique<Siren>());
  Siren* const siren = after.Add(std::make_unique<Siren>());
  EXPECT_THAT(QtSts::Compare(before.Status, after.Status), IsEmpty());
  siren->Label = "Siren";
  const auto differences = QtSts::Compare(before.Status, after.Status);
  ASSERT_EQ(differences.size(), 1U);
  EXPECT_EQ(differences[0].Text(), std::string(kOutputs) + "[0]/Label: \"\" -> \"Siren\"");
  Board other;
  other.Add(std::make_unique<QtSts::CAuxiliaryOutputType>());
  EXPECT_EQ(QtSts::Compare(other.Status, after.Status)[0].Text(),
            std::string(kOutputs) + "[0]: AuxiliaryOutputType -> SirenOutputType");
}

// A name that XML cannot have would make the whole document unreadable, and that of a listed class
// used to come back as that class, or not at all.
TEST(OwnPoints, HaveTheNameOfTheNearestListedClassWhereTheirOwnIsNone) {
  for (const char* name : {static_cast<const char*>(nullptr), "", " ", "1st", "a b", "<a>", "a:b",
                           "-a", "\xC3\xA4", "a\"", "AuxiliaryOutputType", "HeaterOutputType",
                           "DoorSensorInputType", "CANTempSensor", "Status"}) {
    SCOPED_TRACE(name == nullptr ? "null" : name);
    Board board;
    board.Add(std::make_unique<Siren>(name));
    EXPECT_THAT(Xml(board), HasSubstr("<AuxiliaryOutputType SpareWord=\"0\" StoredState=\"1\""));
    QtSts::XmlError error;
    EXPECT_NE(QtSts::ReadDocument(Xml(board), &error), nullptr) << error.Text();
  }
}

// The copy used to have the name of the nearest listed class.
TEST(OwnPoints, KeepTheirNamesInCopies) {
  Board board;
  board.Add(std::make_unique<Siren>())->Set(true);
  std::string name = "Horn";
  board.Add(std::make_unique<Siren>(name.c_str()))->Label = "Horn";
  class Lamp : public QtSts::BaseOutputType {
    const char* GetNodeName() override { return "Lamp.1"; }
  };
  board.Add(std::make_unique<Lamp>());
  const std::string xml = Xml(board);
  const auto copy = QtSts::Copy(board.Status);
  name = "gone";
  EXPECT_EQ(QtSts::WriteDocument(*copy), xml);
  EXPECT_EQ(QtSts::WriteJson(*QtSts::Copy(*copy)), QtSts::WriteJson(*copy));
  const auto* const record = dynamic_cast<const QtSts::CCANDcio*>(copy->Sensors[0]);
  ASSERT_NE(record, nullptr);
  const QtSts::BaseOutputType* const horn = record->Points.Outputs->Points.at(1);
  EXPECT_STREQ(NodeNameOf(*horn), "Horn");
  EXPECT_NE(dynamic_cast<const QtSts::CAuxiliaryOutputType*>(horn), nullptr);
}

TEST(OwnPoints, OfInputsAreWrittenAsTheNearestListedClass) {
  class Hatch : public Mixin, public QtSts::CDoorSensorInputType {};
  class Plain : public QtSts::BaseInputType {};
  Board board;
  board.Add(std::make_unique<Hatch>())->SpareWord = 7;
  board.Add(std::make_unique<Plain>())->Label = "plain";
  const std::string xml = Xml(board);
  EXPECT_THAT(xml, HasSubstr("<DoorSensorInputType State=\"0\" Index=\"1\" Label=\"\" "
                             "SpareWord=\"7\"/>"));
  EXPECT_THAT(xml, HasSubstr("<BaseInputType State=\"0\" Index=\"1\" Label=\"plain\"/>"));
  QtSts::XmlError error;
  EXPECT_NE(QtSts::ReadDocument(xml, &error), nullptr) << error.Text();
}

TEST(OwnPoints, WriteTheirFieldsAlone) {
  Siren siren;
  siren.Label = "alone";
  xmlNode* const node = xmlNewNode(nullptr, reinterpret_cast<const xmlChar*>("Point"));
  EXPECT_TRUE(siren.Write(node));
  xmlChar* const label = xmlGetProp(node, reinterpret_cast<const xmlChar*>("Label"));
  ASSERT_NE(label, nullptr);
  EXPECT_STREQ(reinterpret_cast<const char*>(label), "alone");
  xmlFree(label);
  xmlFreeNode(node);
}

// Names are remembered for all threads.
TEST(OwnPoints, MayBeWrittenOnSeveralThreadsAtATime) {
  std::vector<std::string> names;
  names.reserve(100);
  for (int i = 0; i < 100; ++i) {
    names.push_back("Siren" + std::to_string(i) + "Type");
  }
  std::atomic<int> written = 0;
  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (const std::string& name : names) {
        Board board;
        board.Add(std::make_unique<Siren>(name.c_str()));
        written += Xml(board).find("<" + name + " ") != std::string::npos ? 1 : 0;
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(written, 400);
}

template <class Listed>
class EveryPoint : public testing::Test {};

using Points = testing::Types<
    QtSts::BaseInputType, QtSts::GeneralPurposeInputType, QtSts::AirflowSensorInputType,
    QtSts::CDoorSensorInputType, QtSts::SurgeSuppressorInputType,
    QtSts::CIntakeFanStatusRelayInputType, QtSts::CFrontFanStatusRelayInputType,
    QtSts::CPixelFanStatusRelayInputType, QtSts::CFanPowerSenseInputType,
    QtSts::CPowerSupplyStatusRelayInputType, QtSts::CMaintHeaterStatusRelayInputType,
    QtSts::CHeaterStatusRelayInputType, QtSts::BaseOutputType, QtSts::CIntakeFanOutputType,
    QtSts::CPixelFanOutputType, QtSts::CFrontFanOutputType, QtSts::CMaintHeaterOutputType,
    QtSts::CHeaterOutputType, QtSts::CGeneralPurposeOutputType, QtSts::CAuxiliaryOutputType,
    QtSts::CFaultOkLedOutputType, QtSts::CCurrentMessageOutputType>;
TYPED_TEST_SUITE(EveryPoint, Points);

TYPED_TEST(EveryPoint, IsTheNearestOfAClassThatIsDerivedFromIt) {
  class Own : public TypeParam {};
  Board board;
  board.Add(std::make_unique<Own>());
  EXPECT_THAT(Xml(board), HasSubstr(std::string("<") + TypeParam::Class.Name + " "));
}

// Guards the list above.
TEST(OwnPoints, AreTriedForEveryListedClass) {
  std::size_t listed = 0;
  for (const QtSts::ClassInfo* const info : QtSts::Classes()) {
    listed += QtSts::IsA(*info, QtSts::BaseInputType::Class) ||
                      QtSts::IsA(*info, QtSts::BaseOutputType::Class)
                  ? 1
                  : 0;
  }
  EXPECT_EQ(listed, 22U);
}

}  // namespace
