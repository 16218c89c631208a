#include "host/printable.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "model/text.h"

namespace host {
namespace {

struct Range {
  std::uint32_t First;
  std::uint32_t Last;
};

template <std::size_t kCount>
constexpr bool IsAscending(const Range (&ranges)[kCount]) {
  return std::is_sorted(
      std::begin(ranges), std::end(ranges),
      [](const Range& left, const Range& right) { return left.Last < right.First; });
}

// `ranges` are in ascending order.
template <std::size_t kCount>
bool IsIn(const Range (&ranges)[kCount], std::uint32_t code) {
  const Range* const range =
      std::lower_bound(std::begin(ranges), std::end(ranges), code,
                       [](const Range& each, std::uint32_t wanted) { return each.Last < wanted; });
  return range != std::end(ranges) && code >= range->First;
}

// Control characters, and format characters that are invisible or turn the reading direction.
constexpr Range kSteering[] = {
    {0x00, 0x1F},     {0x7F, 0x9F},     {0xAD, 0xAD},       {0x61C, 0x61C},
    {0x180E, 0x180E}, {0x200B, 0x200F}, {0x2028, 0x202E},   {0x2060, 0x206F},
    {0xFEFF, 0xFEFF}, {0xFFF9, 0xFFFB}, {0xE0000, 0xE007F},
};

// Marks that stand on the character before them.
constexpr Range kCombining[] = {
    {0x300, 0x36F},   {0x483, 0x489},   {0x591, 0x5BD},   {0x610, 0x61A},   {0x64B, 0x65F},
    {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF}, {0x20D0, 0x20FF}, {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F},
};

// East Asian characters and pictographs, two columns wide.
constexpr Range kWide[] = {
    {0x1100, 0x115F},   {0x231A, 0x231B},   {0x2329, 0x232A},   {0x23E9, 0x23EC},
    {0x23F0, 0x23F0},   {0x23F3, 0x23F3},   {0x25FD, 0x25FE},   {0x2614, 0x2615},
    {0x2648, 0x2653},   {0x267F, 0x267F},   {0x2693, 0x2693},   {0x26A1, 0x26A1},
    {0x26AA, 0x26AB},   {0x26BD, 0x26BE},   {0x26C4, 0x26C5},   {0x26CE, 0x26CE},
    {0x26D4, 0x26D4},   {0x26EA, 0x26EA},   {0x26F2, 0x26F3},   {0x26F5, 0x26F5},
    {0x26FA, 0x26FA},   {0x26FD, 0x26FD},   {0x2705, 0x2705},   {0x270A, 0x270B},
    {0x2728, 0x2728},   {0x274C, 0x274C},   {0x274E, 0x274E},   {0x2753, 0x2755},
    {0x2757, 0x2757},   {0x2795, 0x2797},   {0x27B0, 0x27B0},   {0x27BF, 0x27BF},
    {0x2B1B, 0x2B1C},   {0x2B50, 0x2B50},   {0x2B55, 0x2B55},   {0x2E80, 0x303E},
    {0x3041, 0x33FF},   {0x3400, 0x4DBF},   {0x4E00, 0x9FFF},   {0xA000, 0xA4CF},
    {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},   {0xFF00, 0xFF60},
    {0xFFE0, 0xFFE6},   {0x1F18E, 0x1F18E}, {0x1F191, 0x1F19A}, {0x1F200, 0x1F2FF},
    {0x1F300, 0x1F64F}, {0x1F680, 0x1F6FF}, {0x1F7E0, 0x1F7EB}, {0x1F900, 0x1F9FF},
    {0x1FA70, 0x1FAFF}, {0x20000, 0x3FFFD},
};

static_assert(IsAscending(kSteering) && IsAscending(kCombining) && IsAscending(kWide));

// Printable ASCII is in none of these ranges.
constexpr bool IsPlain(char c) { return c >= ' ' && c <= '~'; }

std::size_t ColumnsOf(std::uint32_t code) {
  if (code < kCombining[0].First) {
    return 1;
  }
  if (IsIn(kCombining, code)) {
    return 0;
  }
  return IsIn(kWide, code) ? 2 : 1;
}

struct Character {
  std::string_view Bytes;
  std::uint32_t Code;
};

// The first character of `text`, which is not empty.
Character First(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text[0]);
  const std::size_t length = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  std::uint32_t code = length == 1 ? lead : lead & (0x7FU >> length);
  const std::string_view bytes = text.substr(0, length);
  for (const char byte : bytes.substr(1)) {
    code = (code << 6U) | (static_cast<unsigned char>(byte) & 0x3FU);
  }
  return {bytes, code};
}

constexpr std::string_view kBlanks = " \t\r\n";

}  // namespace

std::string Printable(std::string_view source) {
  std::string clean(source);
  QtSts::CleanText(&clean);
  std::string_view text = clean;
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string_view::npos) {
    return "";
  }
  text = text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
  std::string printable;
  while (true) {
    const auto plain =
        static_cast<std::size_t>(std::ranges::find_if_not(text, &IsPlain) - text.begin());
    printable += text.substr(0, plain);
    text.remove_prefix(plain);
    if (text.empty()) {
      return printable;
    }
    const Character character = First(text);
    if (kBlanks.find(text[0]) != std::string_view::npos) {
      printable += ' ';
    } else if (IsIn(kSteering, character.Code)) {
      printable += "\xEF\xBF\xBD";
    } else {
      printable += character.Bytes;
    }
    text.remove_prefix(character.Bytes.size());
  }
}

std::size_t Width(std::string_view text) {
  std::size_t columns = 0;
  for (std::size_t position = 0; position < text.size();) {
    if (static_cast<unsigned char>(text[position]) < 0x80) {
      ++columns;
      ++position;
    } else {
      const Character character = First(text.substr(position));
      columns += ColumnsOf(character.Code);
      position += character.Bytes.size();
    }
  }
  return columns;
}

std::size_t BytesWithin(std::string_view text, std::size_t columns) {
  std::size_t bytes = 0;
  while (bytes < text.size()) {
    const Character character = First(text.substr(bytes));
    const std::size_t taken = ColumnsOf(character.Code);
    if (taken > columns) {
      break;
    }
    columns -= taken;
    bytes += character.Bytes.size();
  }
  return bytes;
}

std::string Truncated(std::string_view text, std::size_t columns) {
  if (Width(text) <= columns) {
    return std::string(text);
  }
  return columns == 0 ? "" : std::string(text.substr(0, BytesWithin(text, columns - 1))) + "\u2026";
}

std::string Counted(std::size_t count, std::string_view one, std::string_view many) {
  return std::to_string(count).append(" ").append(count == 1 ? one : many);
}

}  // namespace host
