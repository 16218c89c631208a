#include "model/text.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <utility>

namespace QtSts {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

bool IsPlain(unsigned char c) {
  return (c >= 0x20 && c < 0x80) || c == '\t' || c == '\n' || c == '\r';
}

// How many bytes follow a UTF-8 lead byte; -1 for a byte that leads nothing.
int FollowingBytes(unsigned char lead) {
  if (lead >= 0xC2 && lead <= 0xDF) {
    return 1;
  }
  if (lead >= 0xE0 && lead <= 0xEF) {
    return 2;
  }
  return lead >= 0xF0 && lead <= 0xF4 ? 3 : -1;
}

struct Character {
  std::size_t Length;  // in bytes; 0 when XML cannot carry it
  std::uint32_t Code;
};

// The multi-byte character that `text` begins with.
Character FirstCharacter(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text[0]);
  const int following = FollowingBytes(lead);
  const std::size_t length = static_cast<std::size_t>(following) + 1;
  if (following < 0 || text.size() < length) {
    return {0, 0};
  }
  std::uint32_t code = lead & (0x3FU >> following);
  for (const char byte : text.substr(1, length - 1)) {
    const auto c = static_cast<unsigned char>(byte);
    if ((c & 0xC0U) != 0x80U) {
      return {0, 0};
    }
    code = (code << 6U) | (c & 0x3FU);
  }
  constexpr std::uint32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
  const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
  const bool nocharacter = code == 0xFFFE || code == 0xFFFF;
  const bool valid = code >= kSmallest[following] && code <= 0x10FFFF && !surrogate && !nocharacter;
  return {valid ? length : 0, code};
}

struct Range {
  std::uint32_t First;
  std::uint32_t Last;
};

constexpr Range kSteering[] = {
    {0x7F, 0x9F}, {0x61C, 0x61C}, {0x200E, 0x200F}, {0x2028, 0x202E}, {0x2066, 0x2069},
};

bool Steers(std::uint32_t code) {
  return std::any_of(std::begin(kSteering), std::end(kSteering), [code](const Range& range) {
    return code >= range.First && code <= range.Last;
  });
}

std::string FourDigits(std::uint32_t code) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text;
  for (int shift = 12; shift >= 0; shift -= 4) {
    text += kDigits[(code >> static_cast<unsigned int>(shift)) & 0xFU];
  }
  return text;
}

}  // namespace

void CleanText(std::string* text) {
  const std::string_view source = *text;
  std::string cleaned;
  std::size_t copied = 0;  // bytes of the source that `cleaned` already stands for
  std::size_t position = 0;
  while (position < source.size()) {
    if (IsPlain(static_cast<unsigned char>(source[position]))) {
      ++position;
    } else if (const std::size_t length = FirstCharacter(source.substr(position)).Length;
               length > 0) {
      position += length;
    } else {
      cleaned.append(source.substr(copied, position - copied)).append(kReplacement);
      copied = ++position;
    }
  }
  if (copied > 0) {
    cleaned.append(source.substr(copied));
    *text = std::move(cleaned);
  }
}

void EscapeSteering(std::string* text, std::string_view before, std::string_view after) {
  const std::string_view source = *text;
  std::string escaped;
  std::size_t copied = 0;  // bytes of the source that `escaped` already stands for
  std::size_t position = 0;
  while (position < source.size()) {
    const auto c = static_cast<unsigned char>(source[position]);
    if (c < kSteering[0].First) {
      ++position;
      continue;
    }
    const Character character =
        c < 0x80 ? Character{1, c} : FirstCharacter(source.substr(position));
    const std::size_t length = std::max<std::size_t>(character.Length, 1);
    if (Steers(character.Code)) {
      escaped.append(source.substr(copied, position - copied));
      escaped.append(before).append(FourDigits(character.Code)).append(after);
      copied = position + length;
    }
    position += length;
  }
  if (copied > 0) {
    escaped.append(source.substr(copied));
    *text = std::move(escaped);
  }
}

}  // namespace QtSts
