#include "capture/encodings.h"

#include <algorithm>
#include <cctype>
#include <cstdint>

namespace capture {
namespace {

constexpr std::string_view kBase64 =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t kLeastBase64 = 6;        // of five digits
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

std::string DecodePercent(std::string_view text) {
  std::string decoded;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool encoded = text[at] == '%' && at + 2 < text.size() &&
                         HexadecimalDigit(text[at + 1]) >= 0 && HexadecimalDigit(text[at + 2]) >= 0;
    decoded += encoded ? ByteOf(text.substr(at + 1, 2)) : text[at];
    at += encoded ? 2 : 0;
  }
  return decoded;
}

// All but letters, digits and what structures an address of the web.
std::string EncodePercent(const std::string& text) {
  constexpr std::string_view kPlain = "/?&=#~_";
  std::string encoded;
  for (const char c : text) {
    const bool plain = std::isalnum(static_cast<unsigned char>(c)) != 0 ||
                       kPlain.find(c) != std::string_view::npos;
    encoded += plain ? std::string(1, c) : "%" + DigitsOf(c, false);
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

}  // namespace

std::string RewritePercent(std::string_view text, const Recode& recode) {
  return RewriteRuns(
      text, 3, [](char c) { return c > ' '; },
      [&recode](std::string_view run) {
        const std::string decoded = DecodePercent(run);
        const std::string recoded = decoded.size() == run.size() ? decoded : recode(decoded);
        return recoded == decoded ? std::string(run) : EncodePercent(recoded);
      });
}

std::string RewriteBase64(std::string_view text, const Recode& recode) {
  return RewriteRuns(
      text, kLeastBase64, [](char c) { return Base64Digit(c) >= 0; },
      [&recode](std::string_view run) {
        const std::string decoded = DecodeBase64(run);
        const std::string recoded = IsText(decoded) ? recode(decoded) : decoded;
        return recoded == decoded ? std::string(run) : EncodeBase64(recoded, run);
      });
}

std::string RewriteHexadecimalText(std::string_view text, const Recode& recode) {
  return RewriteRuns(
      text, kLeastHexadecimal, [](char c) { return HexadecimalDigit(c) >= 0; },
      [&recode](std::string_view run) {
        std::string decoded;
        for (std::size_t at = 0; at + 1 < run.size(); at += 2) {
          decoded += ByteOf(run.substr(at, 2));
        }
        const std::string recoded = IsText(decoded) ? recode(decoded) : decoded;
        if (recoded == decoded) {
          return std::string(run);
        }
        const bool small = run.find_first_of("abcdef") != std::string_view::npos;
        std::string result;
        for (const char c : recoded) {
          result += DigitsOf(c, small);
        }
        return result + std::string(run.substr(run.size() / 2 * 2));
      });
}

}  // namespace capture
