// How lists delete what they own: in which order, how often, and without memory.
#include "model/owning_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "model/dcio_boards.h"
#include "tests/support/interposed/failure.h"

namespace {

using interposed::Call;
using interposed::Extent;
using interposed::Failure;
using testing::ElementsAre;

// What a list of each kind holds, and the number in an element by which the test knows it.
struct Inputs {
  using List = QtSts::InputListType;
  using Element = QtSts::BaseInputType;
  static auto& Number(Element& element) { return element.Index; }
};
struct Outputs {
  using List = QtSts::OutputListType;
  using Element = QtSts::BaseOutputType;
  static auto& Number(Element& element) { return element.Index; }
};
struct Fans {
  using List = QtSts::FanRpmList;
  using Element = QtSts::FanRpm;
  static auto& Number(Element& element) { return element.Ordinal; }
};
struct Sensors {
  using List = QtSts::CSensorList;
  using Element = QtSts::CSensor;
  static auto& Number(Element& element) { return element.NumberOfAttributes; }
};

class KindNames {
 public:
  template <class Kind>
  static std::string GetName(int /*position*/) {
    return std::is_same_v<Kind, Inputs>    ? "Inputs"
           : std::is_same_v<Kind, Outputs> ? "Outputs"
           : std::is_same_v<Kind, Fans>    ? "Fans"
                                           : "Sensors";
  }
};

// The numbers of the elements in the order in which they went.
std::vector<long> g_gone;

// Notes its number, as it stands in the element, when it goes.
template <class Kind>
class Noted : public Kind::Element {
 public:
  ~Noted() override { g_gone.push_back(static_cast<long>(Kind::Number(*this))); }
};

template <class Kind>
class OwnedList : public testing::Test {
 protected:
  OwnedList() { g_gone.clear(); }

  typename Kind::Element* Make(int number) {
    auto* const element = new Noted<Kind>;
    Kind::Number(*element) = number;
    return element;
  }

  // `count` elements, numbered from 1 and scattered in memory, are in the list, followed by the
  // first and the last of them once more.
  void Fill(typename Kind::List* list, int count) {
    constexpr int kStep = 7919;  // a prime, so that every element has its turn
    std::vector<typename Kind::Element*> made(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
      made[static_cast<std::size_t>(static_cast<long>(i) * kStep % count)] = Make(0);
    }
    int number = 0;
    for (auto* const element : made) {
      Kind::Number(*element) = ++number;
      list->Add(element);
    }
    list->Add(made.front());
    list->Add(made.back());
    g_gone.reserve(made.size());
  }
};

using Kinds = testing::Types<Inputs, Outputs, Fans, Sensors>;
TYPED_TEST_SUITE(OwnedList, Kinds, KindNames);

std::vector<long> NumbersTo(long last) {
  std::vector<long> numbers;
  for (long number = 1; number <= last; ++number) {
    numbers.push_back(number);
  }
  return numbers;
}

// Point lists used to overwrite the indices, and the other lists went by the addresses.
TYPED_TEST(OwnedList, DeletesFromFrontToBackWhatStillHasItsNumber) {
  {
    typename TypeParam::List list;
    std::vector<typename TypeParam::Element*> made = {this->Make(3), this->Make(2), this->Make(1)};
    list.Add(made[2]);
    list.Add(made[0]);
    list.Add(made[1]);
  }
  EXPECT_THAT(g_gone, ElementsAre(1, 3, 2));
}

TYPED_TEST(OwnedList, DeletesEachElementOnceHoweverOftenItWasAdded) {
  {
    typename TypeParam::List list;
    auto* const twice = this->Make(1);
    auto* const thrice = this->Make(2);
    for (auto* const element : {twice, thrice, thrice, twice, thrice}) {
      list.Add(element);
    }
  }
  EXPECT_THAT(g_gone, ElementsAre(1, 2));
}

TYPED_TEST(OwnedList, KeepsTheOrderInListsOfAnyLength) {
  for (const int count : {1, 2, 3, 7, 8, 62, 63, 64, 1000}) {
    SCOPED_TRACE(count);
    g_gone.clear();
    {
      typename TypeParam::List list;
      this->Fill(&list, count);
    }
    EXPECT_EQ(g_gone, NumbersTo(count));
  }
}

TYPED_TEST(OwnedList, NeedsNoMemoryToGo) {
  for (const int count : {1, 64, 65, 1000}) {
    SCOPED_TRACE(count);
    g_gone.clear();
    std::optional<Failure> out_of_memory;
    {
      typename TypeParam::List list;
      this->Fill(&list, count);
      out_of_memory.emplace(Call::kMemory, 1, Extent::kFromThenOn);
    }
    out_of_memory.reset();
    EXPECT_EQ(g_gone, NumbersTo(count));
  }
}

// A list used to compare each of its points with all before it: a document of 64 megabytes that
// was read from a file took minutes to go.
TYPED_TEST(OwnedList, OfManyElementsGoesInSeconds) {
  constexpr int kElements = 100000;
  for (const bool without_memory : {false, true}) {
    std::clock_t start = 0;
    std::optional<Failure> out_of_memory;
    {
      typename TypeParam::List list;
      this->Fill(&list, kElements);
      if (without_memory) {
        out_of_memory.emplace(Call::kMemory, 1, Extent::kFromThenOn);
      }
      start = std::clock();
    }
    const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    out_of_memory.reset();
    EXPECT_LT(seconds, 8) << "each compared with all before it";
    EXPECT_EQ(g_gone.size(), std::size_t{kElements});
    g_gone.clear();
  }
}

template <class List>
class NotedList : public List {
 public:
  explicit NotedList(std::vector<std::string>* seen, std::function<std::string()> look)
      : seen_(seen), look_(std::move(look)) {}
  ~NotedList() override { seen_->push_back(look_()); }

 private:
  std::vector<std::string>* seen_;
  std::function<std::string()> look_;
};

// The pointer to the inputs used to be null already while they went.
TEST(PointPair, ClearsEachPointerAfterItsListIsGone) {
  std::vector<std::string> seen;
  {
    QtSts::IOList points;
    const auto look = [&points] {
      return std::string(points.Inputs ? "inputs" : "-") + (points.Outputs ? " outputs" : " -");
    };
    points.Outputs = std::make_unique<NotedList<QtSts::OutputListType>>(&seen, look);
    points.Inputs = std::make_unique<NotedList<QtSts::InputListType>>(&seen, look);
  }
  EXPECT_THAT(seen, ElementsAre("inputs outputs", "- outputs"));
}

TEST(FanList, HoldsItsFansInAVectorThatEveryoneSees) {
  static_assert(std::is_same_v<decltype(QtSts::FanRpmList::Fans), std::vector<QtSts::FanRpm*>>);
  QtSts::FanRpmList list;
  auto* const fan = new QtSts::FanRpm(0, 1, 900);
  EXPECT_TRUE(list.Add(fan));
  EXPECT_TRUE(list.Add(nullptr));
  EXPECT_THAT(list.Fans, ElementsAre(fan, nullptr));
  EXPECT_EQ(list[0U], fan);
  EXPECT_EQ(list[2U], nullptr);
  EXPECT_EQ(list.Count(), 2U);
}

}  // namespace
