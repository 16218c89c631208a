#include "insight/limits.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <set>
#include <stdexcept>
#include <string>

namespace {

using insight::ParseRange;
using insight::Range;

constexpr double kInfinite = std::numeric_limits<double>::infinity();

TEST(ParseRange, ReadsTheFormsOfMonitoringPlugins) {
  EXPECT_EQ(ParseRange("10"), (Range{0, 10}));
  EXPECT_EQ(ParseRange("10:"), (Range{10, kInfinite}));
  EXPECT_EQ(ParseRange("~:10"), (Range{-kInfinite, 10}));
  EXPECT_EQ(ParseRange("10:20"), (Range{10, 20}));
  EXPECT_EQ(ParseRange(":20"), (Range{0, 20}));
  EXPECT_EQ(ParseRange("-5.5:5e1"), (Range{-5.5, 50}));
  EXPECT_EQ(ParseRange("@10:20"), (Range{10, 20, true}));
  EXPECT_EQ(ParseRange("@5"), (Range{0, 5, true}));
  EXPECT_EQ(ParseRange("~:"), Range());
}

TEST(ParseRange, RefusesWhatIsNoRange) {
  for (const char* text : {"",      ":",        "@",   "~",   "x",    "10:x", "x:10", "20:10",
                           "-1",    "10:20:30", " 10", "10 ", "10C",  "nan",  "inf",  "0:inf",
                           "1e999", "0x10",     "~5",  "@@5", "10,5", "+5",   "5:~"}) {
    EXPECT_EQ(ParseRange(text), std::nullopt) << text;
  }
}

TEST(ParseRange, ReadsWhatWrittenGives) {
  for (const char* text : {"0:10", "10:", "~:10", "-40.5:80", "@10:20", "0:100000", "0:0.001"}) {
    ASSERT_TRUE(ParseRange(text)) << text;
    EXPECT_EQ(insight::Written(*ParseRange(text)), text);
  }
  EXPECT_EQ(insight::Written(Range()), "");
}

TEST(Range, HoldsItsEnds) {
  const Range range{10, 20};
  EXPECT_FALSE(range.Holds(9.999));
  EXPECT_TRUE(range.Holds(10));
  EXPECT_TRUE(range.Holds(20));
  EXPECT_FALSE(range.Holds(20.001));
}

TEST(Range, HoldsWithExcludedTheNumbersOutside) {
  const Range range{10, 20, true};
  EXPECT_TRUE(range.Holds(9.999));
  EXPECT_FALSE(range.Holds(10));
  EXPECT_FALSE(range.Holds(20));
  EXPECT_TRUE(range.Holds(20.001));
}

TEST(Range, NeverHoldsWhatIsNotANumber) {
  const double no_number = std::numeric_limits<double>::quiet_NaN();
  EXPECT_FALSE(Range().Holds(no_number));
  EXPECT_FALSE((Range{10, 20, true}).Holds(no_number));
}

TEST(Limits, BeginWithTheDefaultsAndHaveEachNameOnce) {
  const insight::Limits limits;
  std::set<std::string> names;
  for (const insight::LimitInfo& info : insight::LimitTable()) {
    EXPECT_TRUE(names.insert(info.Name).second) << info.Name;
    EXPECT_EQ(limits.Of(info.Name).Warning, info.Default.Warning) << info.Name;
    EXPECT_EQ(limits.Of(info.Name).Critical, info.Default.Critical) << info.Name;
  }
}

TEST(Limits, RefuseAnotherName) {
  EXPECT_THROW(static_cast<void>(insight::Limits().Of("temperatur")), std::out_of_range);
}

}  // namespace
