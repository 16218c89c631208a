// How values of rows are read, and what of them is stored.
#include "collector/state/store.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using rows::Reading;
using Kind = rows::Reading::Kind;

Reading Read(const rows::Parser& parser, const char* text) { return parser.Read(parser, text); }

constexpr rows::Word kColours[] = {{"red", 7}, {"reddish", 8}};
constexpr rows::Parser kColour = rows::Words(kColours);
constexpr rows::Parser kColourOr = rows::WordsOr(kColours, 9);

// What is left of `before` when `text` is stored there.
template <class T>
T Stored(const rows::Parser& parser, const char* text, T before) {
  rows::Store({"name", &parser}, rows::TypeOf<T>(), &before, text);
  return before;
}

TEST(Readings, HoldWhatWasReadBeforeItIsCut) {
  const Reading integer = Read(rows::kInteger, " -70000x");
  EXPECT_EQ(integer.Is, Kind::kSigned);
  EXPECT_EQ(integer.Signed, -70000);
  EXPECT_EQ(integer.Consumed, 7U);
  const Reading large = Read(rows::kUnsigned, "18446744073709551615");
  EXPECT_EQ(large.Is, Kind::kUnsigned);
  EXPECT_EQ(large.Unsigned, std::numeric_limits<unsigned long>::max());
  EXPECT_EQ(large.Consumed, 20U);
  const Reading fraction = Read(rows::kNumber, "21.5 C");
  EXPECT_EQ(fraction.Is, Kind::kFraction);
  EXPECT_EQ(fraction.Fraction, 21.5);
  EXPECT_EQ(fraction.Consumed, 4U);
  const Reading text = Read(rows::kText, "some text");
  EXPECT_EQ(text.Is, Kind::kText);
  EXPECT_STREQ(text.Text, "some text");
  EXPECT_EQ(text.Consumed, 9U);
}

TEST(Readings, OfWhatIsNoNumberAreZeroFromNoBytes) {
  for (const rows::Parser* const parser : {&rows::kInteger, &rows::kUnsigned, &rows::kNumber}) {
    SCOPED_TRACE(parser->Name);
    EXPECT_EQ(Read(*parser, "abc").Consumed, 0U);
    EXPECT_EQ(Stored(*parser, "abc", 5.0F), 0.0F);
  }
}

TEST(Readings, OfAWordAreItsCodeAndOfAnyOtherTextNothingOrOneCode) {
  EXPECT_EQ(Read(kColour, "red").Unsigned, 7U);
  EXPECT_EQ(Read(kColour, "reddish").Unsigned, 8U);
  EXPECT_EQ(Read(kColour, "reddish").Consumed, 7U);
  for (const char* const other : {"", "re", "redd", "Red", "red "}) {
    SCOPED_TRACE(other);
    EXPECT_EQ(Read(kColour, other).Is, Kind::kNothing);
    EXPECT_EQ(Read(kColourOr, other).Unsigned, 9U);
    EXPECT_EQ(Read(kColourOr, other).Consumed, 0U);
  }
}

TEST(Stores, WrapIntegersToTheWidthOfTheirPlace) {
  EXPECT_EQ(Stored(rows::kInteger, "65541", std::uint16_t{1}), 5);
  EXPECT_EQ(Stored(rows::kInteger, "-1", std::uint8_t{1}), 255);
  EXPECT_EQ(Stored(rows::kInteger, "4294967295", std::int32_t{1}), -1);
  EXPECT_EQ(Stored(rows::kUnsigned, "4294967297", std::uint32_t{0}), 1U);
  EXPECT_EQ(Stored(rows::kIntegerPlusOne, "4294967295", std::uint32_t{5}), 0U);
  EXPECT_EQ(Stored(rows::kIntegerPlusOne, "9223372036854775807", std::uint32_t{5}), 0U);
}

TEST(Stores, KeepFractionsAndWholeNumbersApart) {
  EXPECT_EQ(Stored(rows::kNumber, "44.9", 0.0), 44.9);
  EXPECT_EQ(Stored(rows::kInteger, "44.9", 0.0), 44.0);
  EXPECT_EQ(Stored(rows::kNumber, "0.1", 0.0F), 0.1F);
}

TEST(Stores, KeepThePlaceAsItIsWhenNothingWasRead) {
  EXPECT_EQ(Stored(kColour, "blue", std::uint32_t{3}), 3U);
  EXPECT_EQ(Stored(kColourOr, "blue", std::uint32_t{3}), 9U);
  EXPECT_EQ(Stored(rows::kTrue, "1", true), false);
  EXPECT_EQ(Stored(rows::kTrue, "true", false), true);
}

TEST(Stores, AssignTextsWhole) {
  EXPECT_EQ(Stored(rows::kText, "", std::string("old")), "");
  EXPECT_EQ(Stored(rows::kText, "a longer text than a string holds itself", std::string("old")),
            "a longer text than a string holds itself");
}

TEST(Stores, AddBitsToThoseThatAreSet) {
  std::uint32_t word = 0x80000001;
  rows::Store({"name", &kColour}, rows::Type::kBits, &word, "red");
  EXPECT_EQ(word, 0x80000007U);
  rows::Store({"name", &kColour}, rows::Type::kBits, &word, "blue");
  EXPECT_EQ(word, 0x80000007U);
}

TEST(Stores, WriteNoByteBeyondTheirPlace) {
  std::uint8_t bytes[16];
  for (const auto& [type, size] : {std::pair(rows::Type::kBool, 1),
                                   {rows::Type::kUnsigned8, 1},
                                   {rows::Type::kUnsigned16, 2},
                                   {rows::Type::kUnsigned32, 4},
                                   {rows::Type::kSigned32, 4},
                                   {rows::Type::kFloat, 4},
                                   {rows::Type::kDouble, 8}}) {
    std::fill(std::begin(bytes), std::end(bytes), std::uint8_t{0xAA});
    rows::Store({"name", &rows::kInteger}, type, bytes, "1");
    EXPECT_TRUE(std::all_of(bytes + size, std::end(bytes), [](int b) { return b == 0xAA; }));
    EXPECT_FALSE(std::all_of(bytes, bytes + size, [](int b) { return b == 0xAA; }));
  }
}

}  // namespace
