#include "collector/state/numbered_key.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// The result of a key that is refused, otherwise its number and what follows.
std::string Split(const char* key) {
  const rows::NumberedKey parts = rows::SplitKey(key, rows::kDcioPrefix);
  if (!parts.IsNumbered) {
    return "result " + std::to_string(parts.Result);
  }
  return std::to_string(parts.Parts.Number) +
         (parts.Parts.Rest == nullptr ? "" : std::string(" ") + parts.Parts.Rest);
}

TEST(NumberedKey, IsANumberAndWhatFollowsItsUnderscore) {
  EXPECT_EQ(Split("DCIO_07_State"), "7 State");
  EXPECT_EQ(Split("DCIO_7_"), "7 ");
  EXPECT_EQ(Split("DCIO_7_a_b"), "7 a_b");
  EXPECT_EQ(Split("DCIO_7x_State"), "7 State");
  EXPECT_EQ(Split("DCIO_ -7_State"), "-7 State");
  EXPECT_EQ(Split("DCIO_99999999999999999999_State"), "9223372036854775807 State");
}

TEST(NumberedKey, CountsAsZeroWithoutANumber) {
  EXPECT_EQ(Split("DCIO_"), "0");
  EXPECT_EQ(Split("DCIO__State"), "0 State");
  EXPECT_EQ(Split("DCIO_x_State"), "0 State");
}

TEST(NumberedKey, HasNoRestWithoutAnUnderscore) {
  EXPECT_EQ(Split("DCIO_7"), "7");
  EXPECT_EQ(Split("DCIO_7State"), "7");
}

TEST(NumberedKey, IsRefusedWhenItsNumberBeginsWithOneOfEightCharacters) {
  for (int c = 1; c < 256; ++c) {
    const std::string key = std::string("DCIO_") + static_cast<char>(c) + "1_State";
    EXPECT_EQ(Split(key.c_str()) == "result -1", c >= '(' && c <= '/') << c;
  }
}

TEST(NumberedKey, IsIgnoredWhenItIsShorterThanItsPrefixOrNull) {
  for (const char* const key : {"", "D", "DCIO"}) {
    EXPECT_EQ(Split(key), "result 0") << key;
  }
  EXPECT_EQ(Split(nullptr), "result 0");
}

}  // namespace
