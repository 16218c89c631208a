// Lists as programs walk them: positions of any integer type, iterators, const.
#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <ranges>
#include <vector>

#include "model/can_sensors.h"
#include "model/dcio_boards.h"
#include "model/document.h"

namespace {

using QtSts::CSensor;
using QtSts::CSensorList;
using QtSts::FanRpm;
using QtSts::FanRpmList;
using QtSts::InputListType;
using testing::ElementsAre;

// What a program writes that knows nothing of the lists. Here, too, a conversion that changes a
// value is an error.
template <class List>
concept IsWalked = std::ranges::random_access_range<List> && std::ranges::sized_range<List> &&
    std::ranges::random_access_range<const List> && std::ranges::sized_range<const List>;
static_assert(IsWalked<CSensorList> && IsWalked<QtSts::COutputList> && IsWalked<FanRpmList> &&
              IsWalked<InputListType> && IsWalked<QtSts::OutputListType>);
static_assert(
    std::is_same_v<decltype(*std::declval<const CSensorList&>().begin()), const CSensor*>);
static_assert(std::is_same_v<decltype(*std::declval<CSensorList&>().begin()), CSensor*>);
static_assert(std::is_convertible_v<decltype(std::declval<CSensorList&>().begin()),
                                    decltype(std::declval<const CSensorList&>().begin())>);
static_assert(!std::is_convertible_v<decltype(std::declval<const CSensorList&>().begin()),
                                     decltype(std::declval<CSensorList&>().begin())>);

// The operator that takes an unsigned int stays the one that an unsigned int finds.
static_assert(std::is_same_v<CSensor* (CSensorList::*)(const unsigned int&) const,
                             decltype(static_cast<CSensor* (CSensorList::*)(const unsigned int&)
                                                      const>(&CSensorList::operator[]))>);

enum Place { kFirstPlace, kSecondPlace };
enum SmallPlace : std::int8_t { kBeforeAll = -1, kFirstSmall = 0 };

template <class Position>
class ListPosition : public testing::Test {};
using Positions =
    testing::Types<bool, char, signed char, unsigned char, short, unsigned short, int, unsigned int,
                   long, unsigned long, long long, unsigned long long, std::size_t, std::ptrdiff_t,
                   wchar_t, char8_t, Place, SmallPlace, QtSts::InputType>;
TYPED_TEST_SUITE(ListPosition, Positions);

TYPED_TEST(ListPosition, OfAnyIntegerTypeFindsTheElement) {
  CSensorList sensors;
  auto* const sensor = new CSensor;
  sensors.Add(sensor);
  FanRpmList fans;
  auto* const fan = new FanRpm(0, 1, 900);
  fans.Add(fan);
  const auto first = static_cast<TypeParam>(0);
  const auto second = static_cast<TypeParam>(1);
  EXPECT_EQ(sensors[first], sensor);
  EXPECT_EQ(sensors[second], nullptr);
  EXPECT_EQ(fans[first], fan);
  EXPECT_EQ(fans[second], nullptr);
}

TEST(ListPositionOutside, IsNullHoweverFarItLies) {
  CSensorList sensors;
  sensors.Add(new CSensor);
  FanRpmList fans;
  fans.Add(new FanRpm);
  const std::int64_t wraps_to_zero = std::int64_t{1} << 32;
  EXPECT_EQ(sensors[-1], nullptr);
  EXPECT_EQ(sensors[kBeforeAll], nullptr);
  EXPECT_EQ(sensors[static_cast<signed char>(-1)], nullptr);
  EXPECT_EQ(sensors[wraps_to_zero], nullptr);
  EXPECT_EQ(sensors[-wraps_to_zero], nullptr);
  EXPECT_EQ(sensors[std::numeric_limits<long long>::min()], nullptr);
  EXPECT_EQ(sensors[std::numeric_limits<unsigned long long>::max()], nullptr);
  EXPECT_EQ(fans[-1], nullptr);
  EXPECT_EQ(fans[wraps_to_zero], nullptr);
  EXPECT_NE(sensors[0], nullptr);
  EXPECT_NE(sensors[0L], nullptr);
}

// A class that converts to an integer finds the operator that was always there.
TEST(ListPositionOfAClass, IsTakenAsAnUnsignedInt) {
  CSensorList sensors;
  sensors.Add(new CSensor);
  const std::integral_constant<int, 0> first;
  EXPECT_NE(sensors[first], nullptr);
  EXPECT_NE(sensors[{}], nullptr);
}

CSensor* NumberedSensor(std::uint32_t number) {
  auto* const sensor = new CSensor;
  sensor->NumberOfAttributes = number;
  return sensor;
}

TEST(ListWalk, GoesFromFrontToBack) {
  QtSts::CStatus status;
  for (const std::uint32_t number : {3U, 1U, 2U}) {
    status.Sensors.Add(NumberedSensor(number));
  }
  std::vector<std::uint32_t> numbers;
  const QtSts::CStatus& read_only = status;
  for (const CSensor* sensor : read_only.Sensors) {
    numbers.push_back(sensor->NumberOfAttributes);
  }
  EXPECT_THAT(numbers, ElementsAre(3, 1, 2));
  EXPECT_EQ(read_only.Sensors.size(), 3U);
  EXPECT_FALSE(read_only.Sensors.empty());
  EXPECT_TRUE(read_only.Outputs.empty());
}

TEST(ListWalk, ChangesTheElementsOfAListThatIsNotConst) {
  QtSts::CStatus status;
  status.Sensors.Add(NumberedSensor(1));
  for (CSensor* sensor : status.Sensors) {
    sensor->NumberOfAttributes = 7;
  }
  EXPECT_EQ(status.Sensors[0]->NumberOfAttributes, 7U);
}

TEST(ListWalk, WorksWithTheAlgorithmsOfTheStandardLibrary) {
  CSensorList sensors;
  for (const std::uint32_t number : {3U, 1U, 2U}) {
    sensors.Add(NumberedSensor(number));
  }
  const CSensorList& read_only = sensors;
  const auto most = std::ranges::max_element(read_only, {}, &CSensor::NumberOfAttributes);
  EXPECT_EQ(most - read_only.begin(), 0);
  EXPECT_EQ((*most)->NumberOfAttributes, 3U);
  EXPECT_EQ(std::count_if(sensors.begin(), sensors.end(),
                          [](const CSensor* each) { return each->NumberOfAttributes > 1; }),
            2);
  std::vector<std::uint32_t> backwards;
  for (auto each = std::reverse_iterator(read_only.end());
       each != std::reverse_iterator(read_only.begin()); ++each) {
    backwards.push_back((*each)->NumberOfAttributes);
  }
  EXPECT_THAT(backwards, ElementsAre(2, 1, 3));
  EXPECT_EQ(sensors.begin()[2]->NumberOfAttributes, 2U);
  EXPECT_EQ(*(1 + sensors.begin()), sensors[1]);
  EXPECT_EQ(*(sensors.end() - 1), sensors[2]);
  auto place = sensors.begin();
  EXPECT_EQ(*place++, sensors[0]);
  EXPECT_EQ(*place--, sensors[1]);
  EXPECT_EQ(place, sensors.begin());
  EXPECT_LT(place, sensors.end());
}

TEST(ListWalk, GivesNullWhereNullWasAdded) {
  CSensorList sensors;
  sensors.Add(nullptr);
  sensors.Add(NumberedSensor(1));
  EXPECT_EQ(std::vector<CSensor*>(sensors.begin(), sensors.end()),
            (std::vector<CSensor*>{nullptr, sensors[1]}));
  EXPECT_EQ(sensors.size(), 2U);
}

TEST(ListWalk, OfAnEmptyListEndsAtOnce) {
  const CSensorList sensors;
  EXPECT_EQ(sensors.begin(), sensors.end());
  const InputListType points;
  EXPECT_EQ(points.begin(), points.end());
  EXPECT_TRUE(points.empty());
  const FanRpmList fans;
  EXPECT_EQ(fans.begin(), fans.end());
  EXPECT_EQ(CSensorList::iterator(), CSensorList::iterator());
}

TEST(ListWalk, GivesPointsAndFansInOrderOfAddition) {
  InputListType points;
  for (const int index : {5, 2}) {
    auto* const point = new QtSts::BaseInputType;
    point->Index = index;
    points.Add(point);
  }
  std::vector<int> indices;
  for (const QtSts::BaseInputType* point : std::as_const(points)) {
    indices.push_back(point->Index);
  }
  EXPECT_THAT(indices, ElementsAre(5, 2));
  EXPECT_EQ(points.size(), 2U);
  FanRpmList fans;
  fans.Add(new FanRpm(0, 7, 900));
  for (FanRpm* fan : fans) {
    fan->Rpm = 1000;
  }
  EXPECT_EQ(fans[0]->Rpm, 1000);
  EXPECT_EQ(fans.size(), 1U);
}

// ---- What the virtual functions say, of objects that are const

TEST(ConstPoint, SaysWhetherItIsActiveOrOn) {
  QtSts::CDoorSensorInputType door;
  QtSts::CHeaterOutputType heater;
  for (const bool on : {true, false}) {
    door.Set(on);
    heater.Set(on);
    EXPECT_EQ(QtSts::IsActive(std::as_const(door)), on);
    EXPECT_EQ(QtSts::IsOn(std::as_const(heater)), on);
  }
}

TEST(ConstPoint, SaysWhatAClassOfTheHostSays) {
  class CStuckInput : public QtSts::BaseInputType {
   public:
    bool Get() override { return true; }
  };
  class CNamedOutput : public QtSts::BaseOutputType {
   public:
    bool Get() override { return true; }
    const char* GetNodeName() override { return "NamedOutput"; }
  };
  const CStuckInput input;
  const CNamedOutput output;
  EXPECT_TRUE(IsActive(input));
  EXPECT_TRUE(IsOn(output));
  EXPECT_STREQ(NodeNameOf(input), "BaseInputType");
  EXPECT_STREQ(NodeNameOf(output), "NamedOutput");
}

// It used to be what GetNodeName says, also where the document has another name.
TEST(ConstPoint, HasANameThatXmlCanHave) {
  class CBadlyNamedOutput : public QtSts::CHeaterOutputType {
   public:
    const char* GetNodeName() override { return "<heater>"; }
  };
  class CUnnamedOutput : public QtSts::BaseOutputType {
   public:
    const char* GetNodeName() override { return nullptr; }
  };
  EXPECT_STREQ(NodeNameOf(CBadlyNamedOutput()), "HeaterOutputType");
  EXPECT_STREQ(NodeNameOf(CUnnamedOutput()), "BaseOutputType");
}

TEST(ConstPoint, HasTheNodeNameOfItsElementInTheDocument) {
  EXPECT_STREQ(NodeNameOf(QtSts::CDoorSensorInputType()), "DoorSensorInputType");
  EXPECT_STREQ(NodeNameOf(QtSts::BaseInputType()), "BaseInputType");
  EXPECT_STREQ(NodeNameOf(QtSts::CMaintHeaterOutputType()), "MaintenanceHeaterOutputType");
  EXPECT_STREQ(NodeNameOf(QtSts::BaseOutputType()), "BaseOutputType");
}

TEST(ConstPoint, IsFoundByItsIndex) {
  QtSts::IOList points(std::make_unique<InputListType>(8),
                       std::make_unique<QtSts::OutputListType>(8));
  auto* const input = new QtSts::BaseInputType;
  auto* const output = new QtSts::BaseOutputType;
  input->Index = 3;
  output->Index = 4;
  ASSERT_TRUE(points.Add(input));
  ASSERT_TRUE(points.Add(output));
  const QtSts::IOList& read_only = points;
  EXPECT_EQ(FindInput(read_only, 3), input);
  EXPECT_EQ(FindInput(read_only, 4), nullptr);
  EXPECT_EQ(FindOutput(read_only, 4), output);
  EXPECT_EQ(FindOutput(read_only, 0), nullptr);
  const QtSts::IOList without_lists;
  EXPECT_EQ(FindInput(without_lists, 1), nullptr);
  EXPECT_EQ(FindOutput(without_lists, 1), nullptr);
}

TEST(ConstInput, SaysItsType) {
  EXPECT_EQ(TypeOf(QtSts::CPlayerInput()), QtSts::kPlayerInput);
  EXPECT_EQ(TypeOf(QtSts::CAnalogInput()), QtSts::kAnalogInput);
  EXPECT_EQ(TypeOf(QtSts::CDigitalInput()), QtSts::kDigitalInput);
}

}  // namespace
