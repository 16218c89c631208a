#include "capture/encodings.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <vector>

namespace capture {
namespace {

constexpr std::string_view kBase64 =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t kLeastBase64 = 6;        // of five digits
constexpr std::size_t kLeastText = 7;          // "1.2.3.4"
constexpr std::size_t kLeastHexadecimal = 10;  // likewise

int HexadecimalDigit(char c) {
  if (c >= '0' && c <= '9') {
    return c - '0';
  }
  const char small = static_cast<char>(c | 0x20);
  return small >= 'a' && small <= 'f' ? small - 'a' + 10 : -1;
}

char ByteOf(std::string_view digits) {
  return static_cast<char>(HexadecimalDigit(digits[0]) * 16 + HexadecimalDigit(digits[1]));
}

std::string DigitsOf(char byte, bool small) {
  const char* const digits = small ? "0123456789abcdef" : "0123456789ABCDEF";
  const auto value = static_cast<unsigned char>(byte);
  return {digits[value / 16], digits[value % 16]};
}

// A way to write one character by the digits of its number.
struct Escape {
  std::string_view Begin;
  std::size_t Least;  // digits
  std::size_t Most;
  int Base;
  std::string_view End;
};
constexpr Escape kEscapes[] = {
    {"%", 2, 2, 16, ""},    {"\\x", 2, 2, 16, ""}, {"\\u00", 2, 2, 16, ""}, {"=", 2, 2, 16, ""},
    {"&#x", 2, 4, 16, ";"}, {"&#", 2, 3, 10, ";"}, {"\\", 3, 3, 8, ""},
};

// The length of the escape that `text` begins with, 0 for none.
std::size_t ReadEscape(std::string_view text, const Escape& escape, char* character) {
  if (!text.starts_with(escape.Begin)) {
    return 0;
  }
  const std::string_view digits = text.substr(escape.Begin.size(), escape.Most);
  unsigned number = 0;
  const auto [end, error] =
      std::from_chars(digits.data(), digits.data() + digits.size(), number, escape.Base);
  const auto count = static_cast<std::size_t>(end - digits.data());
  const std::size_t length = escape.Begin.size() + count + escape.End.size();
  if (error != std::errc() || count < escape.Least || number > 0xFF ||
      text.substr(escape.Begin.size() + count, escape.End.size()) != escape.End) {
    return 0;
  }
  *character = static_cast<char>(number);
  return length;
}

std::string WriteEscape(char character, const Escape& escape) {
  const char* const form = escape.Base == 16 ? "%02X" : escape.Base == 10 ? "%02u" : "%03o";
  char digits[8];
  std::snprintf(digits, sizeof digits, form, static_cast<unsigned char>(character));
  return std::string(escape.Begin).append(digits).append(escape.End);
}

struct Decoded {
  std::string Text;
  std::vector<bool> Escaped;  // of each character
};

Decoded DecodeEscapes(std::string_view text, const Escape& escape) {
  Decoded decoded;
  while (!text.empty()) {
    char character = text.front();
    const std::size_t length = ReadEscape(text, escape, &character);
    decoded.Text += character;
    decoded.Escaped.push_back(length != 0);
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return decoded;
}

// As before where the length stays; else all but letters, digits and what structures an address of
// the web is escaped.
std::string EncodeEscapes(const std::string& text, const Decoded& before, const Escape& escape) {
  constexpr std::string_view kPlain = "/?&=#~_";
  const bool same_length = text.size() == before.Text.size();
  std::string encoded;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    const bool plain = std::isalnum(static_cast<unsigned char>(c)) != 0 ||
                       kPlain.find(c) != std::string_view::npos;
    const bool escaped = same_length ? before.Escaped[at] : !plain;
    encoded += escaped ? WriteEscape(c, escape) : std::string(1, c);
  }
  return encoded;
}

// Both ways that 62 and 63 are written.
int Base64Digit(char c) {
  const char standard = c == '-' ? '+' : c == '_' ? '/' : c;
  const std::size_t place = kBase64.find(standard);
  return place == std::string_view::npos ? -1 : static_cast<int>(place);
}

std::string DecodeBase64(std::string_view digits) {
  std::string bytes;
  std::uint32_t bits = 0;
  int count = 0;
  for (const char c : digits) {
    bits = bits << 6 | static_cast<std::uint32_t>(Base64Digit(c));
    count += 6;
    if (count >= 8) {
      count -= 8;
      bytes += static_cast<char>(bits >> count & 0xFF);
    }
  }
  return bytes;
}

// In the alphabet of `like`, whose last digit may hold bits after the last byte.
std::string EncodeBase64(std::string_view bytes, std::string_view like) {
  const bool for_names = like.find_first_of("-_") != std::string_view::npos;
  const bool same_length = bytes.size() == like.size() * 6 / 8;
  const std::size_t count = same_length ? like.size() : (bytes.size() * 8 + 5) / 6;
  std::string digits;
  for (std::size_t at = 0; at < count; ++at) {
    auto value = same_length ? static_cast<unsigned>(Base64Digit(like[at])) : 0;
    for (std::size_t bit = 0; bit < 6; ++bit) {
      const std::size_t place = at * 6 + bit;
      if (place / 8 < bytes.size()) {
        const unsigned mask = 32U >> bit;
        const unsigned set = static_cast<unsigned char>(bytes[place / 8]) >> (7 - place % 8) & 1U;
        value = set != 0 ? value | mask : value & ~mask;
      }
    }
    const char c = kBase64[value];
    digits += !for_names ? c : c == '+' ? '-' : c == '/' ? '_' : c;
  }
  return digits;
}

// What is encoded here is text; a word that only looks like an encoding hardly ever gives that.
bool IsText(std::string_view bytes) {
  return std::ranges::all_of(bytes, [](char c) { return c >= ' ' && c <= '~'; });
}

// Rewrites the runs of at least `least` characters that are digits of an encoding.
template <class IsDigit, class RewriteRun>
std::string RewriteRuns(std::string_view text, std::size_t least, IsDigit is_digit,
                        RewriteRun rewrite) {
  std::string result;
  for (std::size_t at = 0; at < text.size();) {
    std::size_t end = at;
    while (end < text.size() && is_digit(text[end])) {
      ++end;
    }
    if (end == at) {
      result += text[at++];
      continue;
    }
    const std::string_view run = text.substr(at, end - at);
    result += run.size() < least ? std::string(run) : rewrite(run);
    at = end;
  }
  return result;
}

// `bytes` with what is text in them recoded. A word that only looks like an encoding hardly ever
// has one of this length.
std::string RecodeTexts(std::string_view bytes, const Recode& recode) {
  if (IsText(bytes)) {
    return recode(bytes);
  }
  return RewriteRuns(
      bytes, kLeastText, [](char c) { return c >= ' ' && c <= '~'; },
      [&recode](std::string_view run) { return recode(run); });
}

std::string DecodeHexadecimal(std::string_view digits) {
  std::string bytes;
  for (std::size_t at = 0; at + 1 < digits.size(); at += 2) {
    bytes += ByteOf(digits.substr(at, 2));
  }
  return bytes;
}

// The digits of one byte after the other, with the same text between all of them.
struct Pairs {
  std::string Bytes;
  std::string Between;  // "", or how the first two are kept apart, such as ", 0x"
  std::size_t Length = 0;
};

Pairs ReadPairs(std::string_view text) {
  static constexpr std::string_view kSeparators = " :-,;x0";
  const auto pair_at = [text](std::size_t at) {
    return at + 2 <= text.size() && HexadecimalDigit(text[at]) >= 0 &&
           HexadecimalDigit(text[at + 1]) >= 0;
  };
  Pairs pairs;
  if (!pair_at(0)) {
    return pairs;
  }
  std::size_t between = 1;
  while (between <= 4 && 2 + between < text.size() &&
         kSeparators.find(text[1 + between]) != std::string_view::npos && !pair_at(2 + between)) {
    ++between;
  }
  pairs.Between = text.substr(2, between);
  const bool apart = std::ranges::all_of(
      pairs.Between, [](char c) { return kSeparators.find(c) != std::string_view::npos; });
  for (std::size_t at = 0; apart && pair_at(at); at = pairs.Length + between) {
    pairs.Bytes += ByteOf(text.substr(at, 2));
    pairs.Length = at + 2;
    if (text.substr(pairs.Length, between) != pairs.Between) {
      break;
    }
  }
  return pairs;
}

// Characters of `size` bytes each, the one that is not zero at `place`.
std::string RewriteWide(std::string_view text, std::size_t size, std::size_t place,
                        const Recode& recode) {
  const auto character_at = [&](std::size_t at) {
    const std::string_view bytes = text.substr(at, size);
    return bytes.size() == size && IsText(bytes.substr(place, 1)) &&
           std::ranges::count(bytes, '\0') == static_cast<std::ptrdiff_t>(size - 1);
  };
  std::string result;
  for (std::size_t at = 0; at < text.size();) {
    std::string narrow;
    while (character_at(at + narrow.size() * size)) {
      narrow += text[at + narrow.size() * size + place];
    }
    if (narrow.size() < kLeastText) {
      result += text[at++];
      continue;
    }
    at += narrow.size() * size;
    for (const char c : recode(narrow)) {
      result.append(place, '\0').append(1, c).append(size - 1 - place, '\0');
    }
  }
  return result;
}

}  // namespace

std::string RewriteEscapes(std::string_view text, const Recode& recode) {
  std::string result(text);
  for (const Escape& escape : kEscapes) {
    if (result.find(escape.Begin) == std::string::npos) {
      continue;
    }
    result = RewriteRuns(
        result, 3, [](char c) { return c > ' '; },
        [&](std::string_view run) {
          const Decoded decoded = DecodeEscapes(run, escape);
          const bool any = decoded.Text.size() != run.size();
          const std::string recoded = any ? recode(decoded.Text) : decoded.Text;
          return recoded == decoded.Text ? std::string(run)
                                         : EncodeEscapes(recoded, decoded, escape);
        });
  }
  return result;
}

// A run may begin with what belongs to no encoding.
std::string RewriteBase64(std::string_view text, const Recode& recode) {
  return RewriteRuns(
      text, kLeastBase64, [](char c) { return Base64Digit(c) >= 0; },
      [&recode](std::string_view run) {
        std::string result(run);
        for (std::size_t begin = 0; begin < 4; ++begin) {
          const std::string_view digits = std::string_view(result).substr(begin);
          const std::string decoded = DecodeBase64(digits);
          const std::string recoded = RecodeTexts(decoded, recode);
          if (recoded != decoded) {
            result.replace(begin, std::string::npos, EncodeBase64(recoded, digits));
          }
        }
        return result;
      });
}

std::string RewriteHexadecimalText(std::string_view text, const Recode& recode) {
  return RewriteRuns(
      text, kLeastHexadecimal, [](char c) { return HexadecimalDigit(c) >= 0; },
      [&recode](std::string_view run) {
        const bool small = run.find_first_of("abcdef") != std::string_view::npos;
        std::string result(run);
        for (std::size_t begin = 0; begin < 2; ++begin) {
          const std::string decoded = DecodeHexadecimal(std::string_view(result).substr(begin));
          const std::string recoded = RecodeTexts(decoded, recode);
          if (recoded != decoded) {
            std::string digits = result.substr(0, begin);
            for (const char c : recoded) {
              digits += DigitsOf(c, small);
            }
            result.replace(0, begin + decoded.size() * 2, digits);
          }
        }
        return result;
      });
}

std::string RewritePairs(std::string_view text, const Recode& recode) {
  constexpr std::size_t kLeastPairs = 5;
  std::string result;
  while (!text.empty()) {
    // Within digits no run begins. It may be long, and is read once.
    const bool whole = result.empty() || HexadecimalDigit(result.back()) < 0;
    const Pairs pairs = whole ? ReadPairs(text) : Pairs();
    const bool enough = pairs.Bytes.size() >= kLeastPairs;
    const std::string recoded = enough ? RecodeTexts(pairs.Bytes, recode) : pairs.Bytes;
    if (recoded == pairs.Bytes) {
      const std::size_t length = enough ? pairs.Length : std::size_t{1};
      result += text.substr(0, length);
      text.remove_prefix(length);
      continue;
    }
    const bool small = text.substr(0, pairs.Length).find_first_of("abcdef") != std::string::npos;
    for (std::size_t at = 0; at < recoded.size(); ++at) {
      result.append(at == 0 ? "" : pairs.Between).append(DigitsOf(recoded[at], small));
    }
    text.remove_prefix(pairs.Length);
  }
  return result;
}

std::string RewriteWideText(std::string_view text, const Recode& recode) {
  std::string result(text);
  if (result.find('\0') != std::string::npos) {
    for (const std::size_t size : {std::size_t{4}, std::size_t{2}}) {
      for (const std::size_t place : {std::size_t{0}, size - 1}) {
        result = RewriteWide(result, size, place, recode);
      }
    }
  }
  return result;
}

}  // namespace capture
