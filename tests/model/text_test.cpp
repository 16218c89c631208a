#include "model/text.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace std::string_literals;

std::string Cleaned(std::string text) {
  QtSts::CleanText(&text);
  return text;
}

const std::string kBad = "\xEF\xBF\xBD";  // U+FFFD

TEST(CleanText, KeepsWhatXmlCanCarry) {
  for (const std::string& text :
       {""s, "plain"s, "tab\tline\nreturn\r"s, "<&>\"'"s, "\x7f"s, "\xC2\x80"s, "\xC3\xA4"s,
        "\xE2\x82\xAC"s, "\xED\x9F\xBF"s, "\xEE\x80\x80"s, "\xEF\xBF\xBD"s, "\xF0\x9F\x92\xA1"s,
        "\xF4\x8F\xBF\xBF"s}) {
    SCOPED_TRACE(testing::PrintToString(text));
    EXPECT_EQ(Cleaned(text), text);
  }
}

TEST(CleanText, PutsOneReplacementForEachBadByte) {
  const struct {
    const char* What;
    std::string Text;
    int BadBytes;
  } rows[] = {
      {"NUL", "\0"s, 1},
      {"control characters", "\x01\x08\x0b\x0c\x0e\x1f"s, 6},
      {"lone trail byte", "\x80"s, 1},
      {"byte that leads nothing", "\xff\xfe"s, 2},
      {"overlong slash", "\xC0\xAF"s, 2},
      {"overlong three bytes", "\xE0\x80\xAF"s, 3},
      {"overlong four bytes", "\xF0\x80\x80\xAF"s, 4},
      {"high surrogate", "\xED\xA0\x80"s, 3},
      {"low surrogate", "\xED\xBF\xBF"s, 3},
      {"U+FFFE", "\xEF\xBF\xBE"s, 3},
      {"U+FFFF", "\xEF\xBF\xBF"s, 3},
      {"beyond U+10FFFF", "\xF4\x90\x80\x80"s, 4},
      {"cut two-byte character", "\xC3"s, 1},
      {"cut three-byte character", "\xE2\x82"s, 2},
      {"cut four-byte character", "\xF0\x9F\x92"s, 3},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.What);
    std::string expected = "a";
    for (int i = 0; i < row.BadBytes; ++i) {
      expected += kBad;
    }
    EXPECT_EQ(Cleaned("a" + row.Text + "z"), expected + "z");
    EXPECT_EQ(Cleaned("a" + row.Text), expected) << "at the end of the text";
  }
}

TEST(CleanText, ReadsOnAfterACutCharacter) {
  EXPECT_EQ(Cleaned("\xE2\x82\xC3\xA4"), kBad + kBad + "\xC3\xA4");
}

// Used to move the rest of the text for each bad byte, which took minutes for a megabyte of them.
TEST(CleanText, TakesTimeInProportionToTheText) {
  const std::string cleaned = Cleaned(std::string(std::size_t{4} << 20, '\x01'));
  EXPECT_EQ(cleaned.size(), std::size_t{12} << 20);
}

TEST(CleanText, ChangesNothingTheSecondTime) {
  const std::string once = Cleaned("\xff\x01<\xC3\xA4");
  EXPECT_EQ(Cleaned(once), once);
}

// Characters that steer a terminal or turn the reading direction, from and to.
struct Range {
  const char* First;
  const char* Last;
  const char* Escaped;  // the first and the last, between "<" and ">"
};
const Range kSteering[] = {
    {"\x7f", "\xC2\x9F", "<007F><009F>"},
    {"\xD8\x9C", "\xD8\x9C", "<061C><061C>"},
    {"\xE2\x80\x8E", "\xE2\x80\x8F", "<200E><200F>"},
    {"\xE2\x80\xA8", "\xE2\x80\xAE", "<2028><202E>"},
    {"\xE2\x81\xA6", "\xE2\x81\xA9", "<2066><2069>"},
};

std::string Escaped(std::string text) {
  QtSts::EscapeSteering(&text, "<", ">");
  return text;
}

TEST(EscapeSteering, SpellsWhatSteersATerminalOrTurnsTheReadingDirection) {
  for (const Range& range : kSteering) {
    SCOPED_TRACE(range.Escaped);
    const std::string text = std::string(range.First) + range.Last;
    EXPECT_EQ(Escaped(text), range.Escaped);
    EXPECT_EQ(Escaped("a" + text + "z"), std::string("a") + range.Escaped + "z");
  }
}

TEST(EscapeSteering, LeavesTheNeighboursOfEachRangeAlone) {
  for (const std::string& text :
       {""s, "~"s, "\xC2\xA0"s, "\xD8\x9B"s, "\xD8\x9D"s, "\xE2\x80\x8D"s, "\xE2\x80\x90"s,
        "\xE2\x80\xA7"s, "\xE2\x80\xAF"s, "\xE2\x81\xA5"s, "\xE2\x81\xAA"s, "\xC3\xA4"s,
        "\xF0\x9F\x92\xA1"s, "\t\n\r<&>"s}) {
    SCOPED_TRACE(testing::PrintToString(text));
    EXPECT_EQ(Escaped(text), text);
    EXPECT_EQ(Escaped("a" + text + "\x7f"), "a" + text + "<007F>");
  }
}

}  // namespace
