#include "collector/state/numbers.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <random>
#include <string>

namespace {

// The C library is the reference: in the C locale, which tests start in, both must agree.
void ExpectLikeTheCLibrary(const std::string& text) {
  SCOPED_TRACE("text: '" + text + "'");
  const char* end = nullptr;
  char* expected_end = nullptr;
  EXPECT_EQ(numbers::ParseLong(text.c_str(), &end), std::strtol(text.c_str(), &expected_end, 10));
  EXPECT_EQ(end - text.c_str(), expected_end - text.c_str());
  EXPECT_EQ(numbers::ParseUnsignedLong(text.c_str()), std::strtoul(text.c_str(), nullptr, 10));
}

TEST(Numbers, ReadIntegersAsTheCLibraryDoes) {
  for (const char* text : {"",
                           "0",
                           "7",
                           "-7",
                           "+7",
                           " 7",
                           "\t7",
                           "007",
                           "7x",
                           "x7",
                           "0x1F",
                           "7.9",
                           "- 7",
                           "--7",
                           "999999999999999999",
                           "1000000000000000000",
                           "9223372036854775807",
                           "9223372036854775808",
                           "-9223372036854775808",
                           "-9223372036854775809",
                           "99999999999999999999",
                           "18446744073709551615",
                           "18446744073709551616",
                           "000000000000000000000000005"}) {
    ExpectLikeTheCLibrary(text);
  }
}

TEST(Numbers, ReadRandomTextsAsTheCLibraryDoes) {
  constexpr char kCharacters[] = "0123456789 +-x.";
  std::mt19937 random(1);
  for (int i = 0; i < 100000; ++i) {
    std::string text(random() % 24, '0');
    for (char& c : text) {
      c = random() % 8 == 0 ? kCharacters[random() % (sizeof kCharacters - 1)]
                            : kCharacters[random() % 10];
    }
    ExpectLikeTheCLibrary(text);
  }
}

TEST(Numbers, ReadNothingBeyondTheEndOfTheText) {
  for (std::size_t digits = 1; digits <= 24; ++digits) {
    // A buffer of exactly this size, so that AddressSanitizer finds a byte too many.
    char* const text = static_cast<char*>(std::malloc(digits + 1));
    ASSERT_NE(text, nullptr);
    std::string(digits, '1').copy(text, digits);
    text[digits] = '\0';
    EXPECT_EQ(numbers::ParseLong(text), std::strtol(text, nullptr, 10)) << digits;
    std::free(text);
  }
}

TEST(Numbers, AreNarrowedToTheirLowBits) {
  EXPECT_EQ(numbers::Narrow<std::uint16_t>(65536L + 5), 5);
  EXPECT_EQ(numbers::Narrow<std::uint8_t>(-1L), 255);
  EXPECT_EQ(numbers::Narrow<std::uint32_t>(-1L), 4294967295U);
  EXPECT_EQ(numbers::Narrow<std::int32_t>(4294967295L), -1);
  EXPECT_EQ(numbers::Narrow<std::int32_t>(LONG_MAX), -1);
}

TEST(Numbers, LowerLettersOfAsciiAndNothingElse) {
  const std::string upper = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
  for (int byte = 0; byte < 256; ++byte) {
    const auto c = static_cast<unsigned char>(byte);
    const std::size_t letter = upper.find(static_cast<char>(c));
    EXPECT_EQ(numbers::ToLower(c),
              letter == std::string::npos ? byte : 'a' + static_cast<int>(letter))
        << byte;
  }
}

}  // namespace
