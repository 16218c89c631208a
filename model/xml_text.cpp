#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "model/xml.h"

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

// Length of the multi-byte character that `text` begins with; 0 when XML cannot carry it.
std::size_t CharacterLength(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text[0]);
  const int following = FollowingBytes(lead);
  const std::size_t length = static_cast<std::size_t>(following) + 1;
  if (following < 0 || text.size() < length) {
    return 0;
  }
  std::uint32_t code = lead & (0x3FU >> following);
  for (const char byte : text.substr(1, length - 1)) {
    const auto c = static_cast<unsigned char>(byte);
    if ((c & 0xC0U) != 0x80U) {
      return 0;
    }
    code = (code << 6U) | (c & 0x3FU);
  }
  constexpr std::uint32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
  const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
  const bool nocharacter = code == 0xFFFE || code == 0xFFFF;
  const bool valid = code >= kSmallest[following] && code <= 0x10FFFF && !surrogate && !nocharacter;
  return valid ? length : 0;
}

}  // namespace

void CleanText(std::string* text) {
  const std::string_view source = *text;
  std::string cleaned;
  std::size_t copied = 0;  // bytes of the source that `cleaned` already tells
  std::size_t position = 0;
  while (position < source.size()) {
    if (IsPlain(static_cast<unsigned char>(source[position]))) {
      ++position;
    } else if (const std::size_t length = CharacterLength(source.substr(position)); length > 0) {
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

}  // namespace QtSts
