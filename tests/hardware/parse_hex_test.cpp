#include "hardware/parse_hex.h"

#include <gtest/gtest.h>

#include <string>

#include "hardware/tolmar_hardware.h"
#include "tests/hardware/exact.h"

namespace {

struct HexRow {
  const char* Text;
  unsigned long long Value;
};

constexpr HexRow kHexRows[] = {
    // Prefixed and plain numbers, and what ends them.
    {"0x1A\n", 26},
    {"0x1a\r\n", 26},
    {"ff", 255},
    {"FF", 255},
    {"0xff 0x1", 255},
    {"", 0},
    {"0x", 0},
    {" 8", 0},
    {"\n8", 0},
    {"\r8", 0},
    // The prefix is searched for, "0x" in the whole text before any "0X".
    {"reg: 0x8", 8},
    {"12 0x1F", 31},
    {"0X10 20", 16},
    {"0X10 0x20", 32},
    {"12\nnext: 0X1F", 31},
    {"12\nnext register: 0x1F\n", 31},
    {"00x1F", 31},
    // Other bytes neither end the number nor are refused: they are added as they are.
    {"1g", 119},
    {"8\t", 8 * 16 + 9},
    {"8,", 8 * 16 + ','},
    {"0x1x", 16 + 'x'},
    {"\x80", 0x80},
    {"\xFF", 0xFF},
    {"\xE9 1", 0xE9},
    // 64 bits, and no limit on the digits.
    {"0xFFFFFFFFFFFFFFFF", 0xFFFFFFFFFFFFFFFF},
    {"123456789ABCDEF01", 0x23456789ABCDEF01},
    {"0x00000000000000000000000000000012", 0x12},
};

TEST(Htoi, ReadsEachText) {
  CTolmarHardware probe;
  for (const HexRow& row : kHexRows) {
    SCOPED_TRACE(testing::PrintToString(row.Text));
    const ExactText text(row.Text);
    EXPECT_EQ(probe.htoi(text.Get()), row.Value);
    EXPECT_EQ(hardware::HexValue(text), row.Value);
  }
}

TEST(Htoi, LeavesItsTextAlone) {
  std::string text = "12 0x1F\n";
  EXPECT_EQ(CTolmarHardware().htoi(text.data()), 31U);
  EXPECT_EQ(text, "12 0x1F\n");
}

TEST(Char2Hex, GivesDigitsTheirValueAndAnyOtherByteItself) {
  constexpr std::string_view kLower = "0123456789abcdef";
  constexpr std::string_view kUpper = "0123456789ABCDEF";
  CTolmarHardware probe;
  for (int code = 0; code < 256; ++code) {
    SCOPED_TRACE(code);
    const char c = static_cast<char>(code);
    const std::size_t digit = std::min(kLower.find(c), kUpper.find(c));
    const std::size_t value = digit != std::string_view::npos ? digit : static_cast<unsigned>(code);
    EXPECT_EQ(probe.Char2Hex(static_cast<unsigned char>(code)), value);
  }
}

}  // namespace
