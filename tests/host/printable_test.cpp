#include "host/printable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <limits>
#include <string>

#include "model/text.h"

namespace {

using host::Printable;
using host::Truncated;
using host::Width;

const std::string kBad = "\xEF\xBF\xBD";

TEST(Printable, LetsNothingSteerTheTerminal) {
  const struct {
    const char* What;
    std::string Text;
    std::string Printable;
  } rows[] = {
      {"plain text", "a b", "a b"},
      {"blanks at the ends", " \t\r\na\n", "a"},
      {"blanks only", " \n", ""},
      {"line ends within", "a\r\nb\tc", "a  b c"},
      {"escape sequence", "\x1b[2Jx", kBad + "[2Jx"},
      {"NUL", std::string("a\0b", 3), "a" + kBad + "b"},
      {"bell and delete", "\x07\x7f", kBad + kBad},
      {"eight-bit control sequence",
       "\xC2\x9B"
       "31m",
       kBad + "31m"},
      {"raw eight-bit control",
       "\x9B"
       "31m",
       kBad + "31m"},
      {"escape behind a cut character", "\xC3\x1b[2J", kBad + kBad + "[2J"},
      {"right-to-left override",
       "\xE2\x80\xAE"
       "abc",
       kBad + "abc"},
      {"line separator",
       "\xE2\x80\xA8"
       "a",
       kBad + "a"},
      {"byte order mark",
       "\xEF\xBB\xBF"
       "a",
       kBad + "a"},
      {"umlaut, euro, lamp", "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x92\xA1",
       "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x92\xA1"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.What);
    EXPECT_EQ(Printable(row.Text), row.Printable);
  }
}

TEST(Width, CountsColumnsNotBytes) {
  EXPECT_EQ(Width(""), 0U);
  EXPECT_EQ(Width("abc"), 3U);
  EXPECT_EQ(Width("21.5 \xC2\xB0"
                  "C"),
            7U);
  EXPECT_EQ(Width("e\xCC\x81"), 1U) << "a combining accent takes no column";
  EXPECT_EQ(Width("\xE6\x97\xA5\xE6\x9C\xAC"), 4U) << "East Asian characters take two";
  EXPECT_EQ(Width("\xF0\x9F\x92\xA1"), 2U);
  EXPECT_EQ(Width("\xE2\x9A\xA1\xE2\x9C\x85\xF0\x9F\xAA\xAB"), 6U)
      << "so do lightning, tick, battery";
  EXPECT_EQ(Width("\xE2\x9A\xA0\xE2\x9C\x93"), 2U) << "a warning sign and a check mark do not";
}

// The least time of several that `measured` takes of the processor, whoever else uses it.
template <class Measured>
double LeastTime(const Measured& measured) {
  const auto now = [] {
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
  };
  double least = std::numeric_limits<double>::max();
  for (int i = 0; i < 7; ++i) {
    const double start = now();
    measured();
    least = std::min(least, now() - start);
  }
  return least;
}

// Every character used to be looked up in 64 ranges, which made the text of a large document take
// twenty times as long as its XML.
TEST(Width, TakesLittleLongerThanLookingAtEachByte) {
  const std::string text(200000, 'a');
  std::string copy = text;
  const double looked_at = LeastTime([&copy] { QtSts::CleanText(&copy); });
  EXPECT_LT(LeastTime([&text] { EXPECT_EQ(Width(text), text.size()); }), 20 * looked_at);
}

TEST(Truncated, CutsBetweenCharacters) {
  const std::string dots = "\xE2\x80\xA6";
  EXPECT_EQ(Truncated("abc", 3), "abc");
  EXPECT_EQ(Truncated("abcd", 3), "ab" + dots);
  EXPECT_EQ(Truncated("\xC3\xA4\xC3\xB6\xC3\xBC\xC3\x9F", 3), "\xC3\xA4\xC3\xB6" + dots);
  EXPECT_EQ(Truncated("\xE6\x97\xA5\xE6\x9C\xAC", 3), "\xE6\x97\xA5" + dots);
  EXPECT_EQ(Truncated("\xE6\x97\xA5\xE6\x9C\xAC", 2), dots) << "half a character is none";
  EXPECT_EQ(Truncated("abc", 0), "");
}

}  // namespace
