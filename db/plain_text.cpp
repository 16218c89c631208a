#include "db/plain_text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace sqlitedb {

namespace {

// In bytes. SQLite names in a message what a writer may have given a name of a megabyte.
constexpr std::size_t kLongestText = 1000;

constexpr std::string_view kReplacement = "\xef\xbf\xbd";

// Control characters, and those that are invisible or turn the reading direction.
constexpr struct {
  std::uint32_t First;
  std::uint32_t Last;
} kSteering[] = {
    {0x00, 0x1f},     {0x7f, 0x9f},     {0x61c, 0x61c},
    {0x200b, 0x200f}, {0x2028, 0x202e}, {0x2060, 0x206f},
};

// Bytes of the character that `text` begins with, if it may stay; else 0.
std::size_t BytesToKeep(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text[0]);
  const std::size_t length = lead < 0x80 ? 1 : lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : 4;
  if ((lead >= 0x80 && lead < 0xc2) || lead > 0xf4 || length > text.size()) {
    return 0;
  }
  std::uint32_t code = length == 1 ? lead : lead & (0x7fU >> length);
  for (const char c : text.substr(1, length - 1)) {
    const auto byte = static_cast<unsigned char>(c);
    if ((byte & 0xc0U) != 0x80) {
      return 0;
    }
    code = code << 6U | (byte & 0x3fU);
  }
  const bool steers =
      std::any_of(std::begin(kSteering), std::end(kSteering),
                  [&](const auto& range) { return code >= range.First && code <= range.Last; });
  return steers ? 0 : length;
}

}  // namespace

std::string PlainText(std::string text) {
  if (text.size() > kLongestText) {
    text.replace(kLongestText, std::string::npos, "...");
  }
  for (std::size_t at = 0; at < text.size();) {
    if (const std::size_t kept = BytesToKeep(std::string_view(text).substr(at))) {
      at += kept;
    } else {
      text.replace(at, 1, kReplacement);
      at += kReplacement.size();
    }
  }
  return text;
}

}  // namespace sqlitedb
