// The I/O points, their lists and the fan list: what they start as, which points a list takes, who
// deletes what.
#include "model/io_points.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "model/dcio_boards.h"
#include "model/field_access.h"
#include "tests/model/slot.h"

namespace {

using QtSts::BaseInputType;
using QtSts::BaseOutputType;
using QtSts::InputListType;
using QtSts::IOList;
using QtSts::OutputListType;
using testing::ElementsAre;
using testing::IsEmpty;

// Writes its name down when it is deleted.
template <class Base>
class Witness : public Base {
 public:
  Witness(std::string name, std::vector<std::string>* deaths)
      : name_(std::move(name)), deaths_(deaths) {}
  Witness(const Witness&) = delete;
  Witness& operator=(const Witness&) = delete;
  ~Witness() override { deaths_->push_back(name_); }

 private:
  std::string name_;
  std::vector<std::string>* deaths_;
};

template <class Point>
std::unique_ptr<Point> PointAt(int index) {
  auto point = std::make_unique<Point>();
  point->Index = index;
  return point;
}

// Offers a new point with this index; true when the list took it.
template <class Point, class List>
bool Offer(List* list, int index) {
  auto point = PointAt<Point>(index);
  if (!list->Add(point.get())) {
    return false;
  }
  static_cast<void>(point.release());
  return true;
}

// Both lists keep the same rules.
template <class T>
class PointListTest : public testing::Test {};

struct Inputs {
  using List = InputListType;
  using Point = BaseInputType;
};
struct Outputs {
  using List = OutputListType;
  using Point = BaseOutputType;
};
using BothLists = testing::Types<Inputs, Outputs>;

class KindNames {
 public:
  template <class T>
  static std::string GetName(int /*position*/) {
    return std::is_same_v<T, Inputs> ? "Inputs" : "Outputs";
  }
};

TYPED_TEST_SUITE(PointListTest, BothLists, KindNames);

TYPED_TEST(PointListTest, TakesIndicesUpToTheMaximumOrAnyWhenOpenEnded) {
  constexpr struct {
    bool OpenEnded;
    std::uint32_t Maximum;
    int Index;
    bool Taken;
  } kRows[] = {
      {false, 8, 1, true},
      {false, 8, 8, true},
      {false, 8, 9, false},
      {false, 8, 0, false},
      {false, 8, -1, false},
      {true, 8, 8, true},
      {true, 8, 9, true},
      {true, 8, 0, false},
      {true, 8, -1, false},
      {true, 0, 1, true},
      {false, 0, 1, false},
      {true, 0, 0, false},
      {true, 0, -1, false},
      {false, 24, 25, false},
      {true, 8, 2147483647, true},
      {false, 8, -2147483647 - 1, false},
      {true, 8, -2147483647 - 1, false},
      // A maximum beyond what a signed index can hold does not let negative ones in.
      {false, 4294967295, -1, false},
      {false, 4294967295, 2147483647, true},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << (row.OpenEnded ? "open-ended" : "closed") << " at "
                                    << row.Maximum << ", index " << row.Index);
    typename TypeParam::List list(row.Maximum);
    list.OpenEnded = row.OpenEnded;
    EXPECT_EQ(list.IsValid(PointAt<typename TypeParam::Point>(row.Index).get()), row.Taken);
    EXPECT_EQ(Offer<typename TypeParam::Point>(&list, row.Index), row.Taken);
    EXPECT_EQ(list.Points.size(), row.Taken ? 1U : 0U);
  }
}

TYPED_TEST(PointListTest, IsMadeOpenEndedOrClosedAtABoardsCapacity) {
  const typename TypeParam::List open;
  EXPECT_TRUE(open.OpenEnded);
  EXPECT_EQ(open.MaximumIndex, 0U);
  EXPECT_THAT(open.Points, IsEmpty());
  const typename TypeParam::List closed(16);
  EXPECT_FALSE(closed.OpenEnded);
  EXPECT_EQ(closed.MaximumIndex, 16U);
  EXPECT_THAT(closed.Points, IsEmpty());
}

TYPED_TEST(PointListTest, RefusesAMissingPoint) {
  typename TypeParam::List list;
  EXPECT_FALSE(list.IsValid(nullptr));
  EXPECT_FALSE(list.Add(nullptr));
  EXPECT_THAT(list.Points, IsEmpty());
}

TYPED_TEST(PointListTest, GivesTheFirstOfTwoPointsWithTheSameIndex) {
  typename TypeParam::List list(8);
  ASSERT_TRUE(Offer<typename TypeParam::Point>(&list, 3));
  ASSERT_TRUE(Offer<typename TypeParam::Point>(&list, 3));
  ASSERT_EQ(list.Points.size(), 2U);
  typename TypeParam::Point* found = nullptr;
  EXPECT_TRUE(list.Get(3, &found));
  EXPECT_EQ(found, list.Points[0]);
}

TYPED_TEST(PointListTest, LeavesTheResultAloneWhenNoPointHasTheIndex) {
  typename TypeParam::Point untouched;
  typename TypeParam::Point* found = &untouched;
  typename TypeParam::List list(8);
  EXPECT_FALSE(list.Get(3, &found));
  EXPECT_EQ(found, &untouched);
  ASSERT_TRUE(Offer<typename TypeParam::Point>(&list, 4));
  EXPECT_FALSE(list.Get(3, &found));
  EXPECT_EQ(found, &untouched);
}

TYPED_TEST(PointListTest, NeitherKeepsNorDeletesARefusedPoint) {
  std::vector<std::string> deaths;
  auto refused = std::make_unique<Witness<typename TypeParam::Point>>("refused", &deaths);
  {
    typename TypeParam::List list(8);
    EXPECT_FALSE(list.Add(refused.get()));
    EXPECT_THAT(list.Points, IsEmpty());
  }
  EXPECT_THAT(deaths, IsEmpty());
}

TYPED_TEST(PointListTest, PassesOverAMissingPointWhenItGoes) {
  std::vector<std::string> deaths;
  {
    typename TypeParam::List list;
    auto point = std::make_unique<Witness<typename TypeParam::Point>>("point", &deaths);
    list.Points = {nullptr, point.get(), nullptr};
    static_cast<void>(point.release());
  }
  EXPECT_THAT(deaths, ElementsAre("point"));
}

TYPED_TEST(PointListTest, KeepsTheOrderOfItsOperations) {
  EXPECT_EQ(Slot(&TypeParam::List::IsValid), 2U);
  EXPECT_EQ(Slot(&TypeParam::List::Add), 3U);
  EXPECT_EQ(Slot(&TypeParam::List::Get), 4U);
}

TYPED_TEST(PointListTest, AsksItsOwnIsValidBeforeItTakesAPoint) {
  class Generous : public TypeParam::List {
   public:
    bool IsValid(typename TypeParam::Point* /*point*/) const override { return true; }
  };
  Generous list;
  EXPECT_TRUE(Offer<typename TypeParam::Point>(&list, -7));
  EXPECT_EQ(list.Points.size(), 1U);
}

template <class... Points>
std::vector<std::unique_ptr<QtSts::CBaseStatus>> MakeAll() {
  std::vector<std::unique_ptr<QtSts::CBaseStatus>> all;
  (all.push_back(std::make_unique<Points>()), ...);
  return all;
}

// The eleven kinds of inputs by type code, from 1.
std::vector<std::unique_ptr<QtSts::CBaseStatus>> InputKinds() {
  return MakeAll<QtSts::GeneralPurposeInputType, QtSts::AirflowSensorInputType,
                 QtSts::CDoorSensorInputType, QtSts::SurgeSuppressorInputType,
                 QtSts::CIntakeFanStatusRelayInputType, QtSts::CFrontFanStatusRelayInputType,
                 QtSts::CPixelFanStatusRelayInputType, QtSts::CFanPowerSenseInputType,
                 QtSts::CPowerSupplyStatusRelayInputType, QtSts::CMaintHeaterStatusRelayInputType,
                 QtSts::CHeaterStatusRelayInputType>();
}

}  // namespace

TEST(InputPoint, StartsInactiveWithoutIndexOrLabel) {
  BaseInputType input;
  EXPECT_EQ(input.State, 0U);
  EXPECT_EQ(input.Index, 0);
  EXPECT_EQ(input.Label, "");
  EXPECT_FALSE(input.Get());
}

TEST(InputPoint, StoresOneForActiveAndReadsAnyOtherThanZeroAsActive) {
  BaseInputType input;
  input.Set(true);
  EXPECT_EQ(input.State, 1U);
  EXPECT_TRUE(input.Get());
  input.Set(false);
  EXPECT_EQ(input.State, 0U);
  EXPECT_FALSE(input.Get());
  input.State = 2;
  EXPECT_TRUE(input.Get());
}

TEST(InputPoint, HasAFieldMoreInEachOfItsElevenKindsThatStartsAtOne) {
  EXPECT_EQ(BaseInputType::Class.OwnFields().size(), 3U);
  const auto kinds = InputKinds();
  ASSERT_EQ(kinds.size(), 11U);
  for (const auto& kind : kinds) {
    const QtSts::ClassInfo* const info = QtSts::ClassOf(*kind);
    ASSERT_NE(info, nullptr);
    SCOPED_TRACE(info->Name);
    EXPECT_EQ(info->Base, &BaseInputType::Class);
    ASSERT_EQ(info->OwnFields().size(), 1U);
    std::string value;
    const QtSts::Field& field = info->OwnFields().front();
    field.Scalar->Format(QtSts::FieldAccess::Read(field, kind.get()), &value);
    EXPECT_EQ(value, "1");
  }
  QtSts::CDoorSensorInputType door;
  door.Set(true);
  EXPECT_EQ(door.SpareWord, 1U);
}

TEST(InputPoint, IsListedUnderItsClassNameWithoutALeadingC) {
  std::vector<std::string> names;
  for (const auto& kind : InputKinds()) {
    names.emplace_back(QtSts::ClassOf(*kind)->Name);
  }
  EXPECT_THAT(
      names, ElementsAre("GeneralPurposeInputType", "AirflowSensorInputType", "DoorSensorInputType",
                         "SurgeSuppressorInputType", "IntakeFanStatusRelayInputType",
                         "FrontFanStatusRelayInputType", "PixelFanStatusRelayInputType",
                         "FanPowerSenseInputType", "PowerSupplyStatusRelayInputType",
                         "MaintHeaterStatusRelayInputType", "HeaterStatusRelayInputType"));
  EXPECT_STREQ(BaseInputType::Class.Name, "BaseInputType");
}

TEST(OutputPoint, StartsOffWithoutIndexOrLabel) {
  BaseOutputType output;
  EXPECT_EQ(output.SpareWord, 0U);
  EXPECT_EQ(output.StoredState, 1U);
  EXPECT_EQ(output.Index, 0);
  EXPECT_EQ(output.Label, "");
  EXPECT_FALSE(output.Get());
}

TEST(OutputPoint, StoresTheInverseOfItsState) {
  BaseOutputType output;
  output.Set(true);
  EXPECT_EQ(output.StoredState, 0U);
  EXPECT_TRUE(output.Get());
  output.Set(false);
  EXPECT_EQ(output.StoredState, 1U);
  EXPECT_FALSE(output.Get());
  output.StoredState = 2;
  EXPECT_FALSE(output.Get());
  EXPECT_EQ(output.SpareWord, 0U);
}

TEST(OutputPoint, NamesItsNodeByItsKind) {
  const auto kinds =
      MakeAll<QtSts::BaseOutputType, QtSts::CIntakeFanOutputType, QtSts::CPixelFanOutputType,
              QtSts::CFrontFanOutputType, QtSts::CMaintHeaterOutputType, QtSts::CHeaterOutputType,
              QtSts::CGeneralPurposeOutputType, QtSts::CAuxiliaryOutputType,
              QtSts::CFaultOkLedOutputType, QtSts::CCurrentMessageOutputType>();
  std::vector<std::string> names;
  for (const auto& kind : kinds) {
    auto& output = dynamic_cast<BaseOutputType&>(*kind);
    names.emplace_back(output.GetNodeName());
    const QtSts::ClassInfo* const info = QtSts::ClassOf(*kind);
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(names.back(), info->Name);
    EXPECT_EQ(info->OwnFields().size(), info == &BaseOutputType::Class ? 4U : 0U);
    EXPECT_FALSE(output.Get());
  }
  EXPECT_THAT(names,
              ElementsAre("BaseOutputType", "IntakeFanOutputType", "PixelFanOutputType",
                          "FrontFanOutputType", "MaintenanceHeaterOutputType", "HeaterOutputType",
                          "GeneralPurposeOutputType", "AuxiliaryOutputType", "FaultOkLedOutputType",
                          "CurrentMessageOutputType"));
}

TEST(Points, KeepTheOrderOfTheirOperations) {
  EXPECT_EQ(Slot(&BaseInputType::Parse), 2U);
  EXPECT_EQ(Slot(&BaseInputType::Write), 3U);
  EXPECT_EQ(Slot(&BaseInputType::Set), 4U);
  EXPECT_EQ(Slot(&BaseInputType::Get), 5U);
  EXPECT_EQ(Slot(&BaseOutputType::Set), 4U);
  EXPECT_EQ(Slot(&BaseOutputType::Get), 5U);
  EXPECT_EQ(Slot(&BaseOutputType::GetNodeName), 6U);
}

TEST(PointPair, KeepsTheOrderOfItsOperations) {
  EXPECT_EQ(Slot<bool (IOList::*)(BaseInputType*)>(&IOList::Add), 2U);
  EXPECT_EQ(Slot<bool (IOList::*)(BaseOutputType*)>(&IOList::Add), 3U);
  EXPECT_EQ((Slot<bool (IOList::*)(int, BaseInputType**)>(&IOList::Get)), 4U);
  EXPECT_EQ((Slot<bool (IOList::*)(int, BaseOutputType**)>(&IOList::Get)), 5U);
}

TEST(PointPair, HandsEachPointToTheListOfItsKind) {
  IOList points(std::make_unique<InputListType>(2), std::make_unique<OutputListType>(1));
  EXPECT_TRUE(Offer<BaseInputType>(&points, 2));
  EXPECT_FALSE(Offer<BaseOutputType>(&points, 2));
  EXPECT_TRUE(Offer<BaseOutputType>(&points, 1));
  BaseInputType* input = nullptr;
  EXPECT_TRUE(points.Get(2, &input));
  EXPECT_EQ(input, points.Inputs->Points.at(0));
  EXPECT_FALSE(points.Get(1, &input));
  BaseOutputType* output = nullptr;
  EXPECT_TRUE(points.Get(1, &output));
  EXPECT_EQ(output, points.Outputs->Points.at(0));
}

TEST(PointPair, AnswersFalseToEverythingWithoutItsLists) {
  IOList points;
  EXPECT_FALSE(Offer<BaseInputType>(&points, 1));
  EXPECT_FALSE(Offer<BaseOutputType>(&points, 1));
  BaseInputType* input = nullptr;
  BaseOutputType* output = nullptr;
  EXPECT_FALSE(points.Get(1, &input));
  EXPECT_FALSE(points.Get(1, &output));
  EXPECT_EQ(input, nullptr);
  EXPECT_EQ(output, nullptr);
}

TEST(FanList, TakesTheSameFanTwiceAndDeletesItOnce) {
  std::vector<std::string> deaths;
  {
    QtSts::FanRpmList fans;
    auto* const fan = new Witness<QtSts::FanRpm>("fan", &deaths);
    EXPECT_TRUE(fans.Add(fan));
    EXPECT_TRUE(fans.Add(fan));
    EXPECT_EQ(fans.Count(), 2U);
    EXPECT_EQ(fans[0U], fan);
    EXPECT_EQ(fans[1U], fan);
  }
  EXPECT_THAT(deaths, ElementsAre("fan"));
}

TEST(FanList, HoldsOrdinalNumberAndSpeedInTheirWidths) {
  const QtSts::FanRpm fan(4294967295U, 255, 65535);
  EXPECT_EQ(fan.Ordinal, 4294967295U);
  EXPECT_EQ(fan.FanNumber, 255);
  EXPECT_EQ(fan.Rpm, 65535);
  static_assert(std::is_same_v<decltype(fan.Ordinal), std::uint32_t>);
  static_assert(std::is_same_v<decltype(fan.FanNumber), std::uint8_t>);
  static_assert(std::is_same_v<decltype(fan.Rpm), std::uint16_t>);
}

TEST(DcioBoard, SetsBothOfItsConnectedFlags) {
  QtSts::CCANDcio2in1out board;
  QtSts::CCANSensor& sensor = board;
  sensor.SetConnected(true);
  EXPECT_TRUE(board.Connected);
  EXPECT_TRUE(board.BoardConnected);
  sensor.SetConnected(false);
  EXPECT_FALSE(board.Connected);
  EXPECT_FALSE(board.BoardConnected);
}
