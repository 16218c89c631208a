#include "capture/tokens.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <iterator>
#include <tuple>

#include "capture/characters.h"

namespace capture {
namespace {

bool IsWord(char c) { return IsDigit(c) || IsLetter(c) || c == '_'; }

// The character at a place, a blank outside of the text.
char At(std::string_view text, std::size_t at) { return at < text.size() ? text[at] : ' '; }
char Before(std::string_view text, std::size_t at) { return at == 0 ? ' ' : text[at - 1]; }

// Calls `length_at` at each place; where it is not 0 a token of that length begins.
template <class LengthAt>
std::string Rewrite(std::string_view text, const Use& use, LengthAt length_at) {
  std::string result;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = length_at(at);
    if (length == 0) {
      result += text[at++];
      continue;
    }
    const std::string_view token = text.substr(at, length);
    result += use(token).value_or(std::string(token));
    at += length;
  }
  return result;
}

// How many characters from `at` on are of a kind.
template <class Is>
std::size_t Run(std::string_view text, std::size_t at, Is is) {
  std::size_t end = at;
  while (end < text.size() && is(text[end])) {
    ++end;
  }
  return end - at;
}

std::size_t LengthOfIPv4(std::string_view text, std::size_t at) {
  const char before = Before(text, at);
  if (!IsDigit(text[at]) || IsDigit(before) || (before == '.' && IsDigit(Before(text, at - 1)))) {
    return 0;
  }
  std::size_t end = at;
  for (int part = 0; part < 4; ++part) {
    if (part != 0 && At(text, end++) != '.') {
      return 0;
    }
    const std::size_t digits = Run(text, end, IsDigit);
    if (digits == 0 || digits > 3) {
      return 0;
    }
    end += digits;
  }
  const bool goes_on = At(text, end) == '.' && IsDigit(At(text, end + 1));
  return goes_on || !ParseIPv4(text.substr(at, end - at)) ? 0 : end - at;
}

std::size_t LengthOfIPv6(std::string_view text, std::size_t at) {
  const auto belongs = [](char c) { return IsHexadecimal(c) || c == ':' || c == '.'; };
  const char before = Before(text, at);
  // "IP:fe80::1": the colon ends a word that is no part of an address.
  const bool named =
      before == ':' && at >= 2 && IsWord(text[at - 2]) && !IsHexadecimal(text[at - 2]);
  if (!belongs(text[at]) || (!named && (belongs(before) || IsWord(before)))) {
    return 0;
  }
  std::size_t length = Run(text, at, belongs);
  if (IsWord(At(text, at + length))) {
    return 0;
  }
  while (length > 2 && (text[at + length - 1] == '.' ||
                        (text[at + length - 1] == ':' && text[at + length - 2] != ':'))) {
    --length;  // of the sentence
  }
  return ParseIPv6(text.substr(at, length)) ? length : 0;
}

// Six pairs, or three groups of four.
std::size_t LengthOfStation(std::string_view text, std::size_t at) {
  for (const auto& [separator, groups, digits] :
       {std::tuple(':', 6, 2), std::tuple('-', 6, 2), std::tuple('.', 3, 4)}) {
    if (IsWord(Before(text, at)) || Before(text, at) == separator) {
      continue;
    }
    std::size_t end = at;
    bool fits = true;
    for (int group = 0; fits && group < groups; ++group) {
      fits = (group == 0 || At(text, end++) == separator) &&
             Run(text, end, IsHexadecimal) == static_cast<std::size_t>(digits);
      end += static_cast<std::size_t>(digits);
    }
    if (fits && !IsWord(At(text, end)) &&
        !(At(text, end) == separator && IsHexadecimal(At(text, end + 1)))) {
      return end - at;
    }
  }
  return 0;
}

std::size_t LengthOfHexadecimal(std::string_view text, std::size_t at) {
  const bool prefixed =
      at >= 2 && Lower(text[at - 1]) == 'x' && text[at - 2] == '0' && !IsWord(Before(text, at - 2));
  if (!IsHexadecimal(text[at]) || (IsWord(Before(text, at)) && !prefixed)) {
    return 0;
  }
  const std::size_t length = Run(text, at, IsHexadecimal);
  const bool decimal = Run(text, at, IsDigit) == length && length < 8;
  return IsWord(At(text, at + length)) || (decimal && !prefixed) ? 0 : length;
}

std::size_t LengthOfDecimal(std::string_view text, std::size_t at) {
  const char before = Before(text, at);
  if (!IsDigit(text[at]) || IsWord(before) || (before == '.' && IsDigit(Before(text, at - 1)))) {
    return 0;
  }
  const std::size_t length = Run(text, at, IsDigit);
  const char after = At(text, at + length);
  return IsWord(after) || (after == '.' && IsDigit(At(text, at + length + 1))) ? 0 : length;
}

std::size_t LengthOfUuid(std::string_view text, std::size_t at) {
  constexpr std::string_view kForm = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
  if (!IsHexadecimal(text[at]) || IsWord(Before(text, at)) || at + kForm.size() > text.size() ||
      IsWord(At(text, at + kForm.size()))) {
    return 0;
  }
  for (std::size_t i = 0; i < kForm.size(); ++i) {
    if (kForm[i] == '-' ? text[at + i] != '-' : !IsHexadecimal(text[at + i])) {
      return 0;
    }
  }
  return kForm.size();
}

std::size_t LengthOfWord(std::string_view text, std::size_t at, std::string_view word) {
  if (at + word.size() > text.size() || (IsWord(word.front()) && IsWord(Before(text, at))) ||
      (IsWord(word.back()) && IsWord(At(text, at + word.size())))) {
    return 0;
  }
  for (std::size_t i = 0; i < word.size(); ++i) {
    if (Lower(text[at + i]) != Lower(word[i])) {
      return 0;
    }
  }
  return word.size();
}

bool HasSmallLetters(std::string_view token) { return std::ranges::any_of(token, IsSmall); }

}  // namespace

std::string RewriteIPv4(std::string_view text, const Use& use) {
  return Rewrite(text, use, [text](std::size_t at) { return LengthOfIPv4(text, at); });
}

std::string RewriteIPv6(std::string_view text, const Use& use) {
  return Rewrite(text, use, [text](std::size_t at) { return LengthOfIPv6(text, at); });
}

std::string RewriteStations(std::string_view text, const Use& use) {
  return Rewrite(text, use, [text](std::size_t at) {
    return IsHexadecimal(text[at]) ? LengthOfStation(text, at) : 0;
  });
}

std::string RewriteHexadecimal(std::string_view text, const Use& use) {
  return Rewrite(text, use, [text](std::size_t at) { return LengthOfHexadecimal(text, at); });
}

std::string RewriteDecimal(std::string_view text, const Use& use) {
  return Rewrite(text, use, [text](std::size_t at) { return LengthOfDecimal(text, at); });
}

std::string RewriteUuids(std::string_view text, const Use& use) {
  return Rewrite(text, use, [text](std::size_t at) { return LengthOfUuid(text, at); });
}

std::string RewriteWord(std::string_view text, std::string_view word, const Use& use) {
  return Rewrite(text, use, [=](std::size_t at) { return LengthOfWord(text, at, word); });
}

std::optional<IPv4> ParseIPv4(std::string_view token) {
  in_addr address = {};
  // As the system writes it: without leading zeros.
  if (inet_pton(AF_INET, std::string(token).c_str(), &address) != 1) {
    return std::nullopt;
  }
  return ntohl(address.s_addr);
}

std::optional<IPv6> ParseIPv6(std::string_view token) {
  in6_addr address = {};
  if (token.find('.') != std::string_view::npos || std::ranges::count(token, ':') < 2 ||
      inet_pton(AF_INET6, std::string(token).c_str(), &address) != 1) {
    return std::nullopt;
  }
  IPv6 groups;
  for (std::size_t i = 0; i < groups.size(); ++i) {
    groups[i] =
        static_cast<std::uint16_t>(address.s6_addr[2 * i] * 256 + address.s6_addr[2 * i + 1]);
  }
  return groups;
}

StationAddress ParseStation(std::string_view token) {
  std::string digits;
  std::ranges::copy_if(token, std::back_inserter(digits), IsHexadecimal);
  StationAddress address = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), address, 16);
  return address;
}

std::string TextOf(IPv4 address) {
  char text[INET_ADDRSTRLEN] = "";
  const in_addr bytes = {htonl(address)};
  inet_ntop(AF_INET, &bytes, text, sizeof text);
  return text;
}

std::string TextOf(const IPv6& address) {
  in6_addr bytes = {};
  for (std::size_t i = 0; i < address.size(); ++i) {
    bytes.s6_addr[2 * i] = static_cast<std::uint8_t>(address[i] / 256);
    bytes.s6_addr[2 * i + 1] = static_cast<std::uint8_t>(address[i] % 256);
  }
  char text[INET6_ADDRSTRLEN] = "";
  inet_ntop(AF_INET6, &bytes, text, sizeof text);
  return text;
}

std::string InTheSpellingOf(std::string_view token, const IPv6& address) {
  std::string text;
  if (token.find("::") != std::string_view::npos) {
    text = TextOf(address);
  } else {
    for (std::size_t at = 0, group = 0; at < token.size() && group < address.size(); ++group) {
      const std::size_t digits = Run(token, at, IsHexadecimal);
      char part[8];
      std::snprintf(part, sizeof part, "%0*x", static_cast<int>(digits), address[group]);
      text.append(group == 0 ? "" : ":").append(part);
      at += digits + 1;
    }
  }
  return HasCapitals(token) ? InCapitals(text) : text;
}

std::string InTheSpellingOf(std::string_view token, StationAddress address) {
  char digits[16];
  std::snprintf(digits, sizeof digits, "%012llx", static_cast<unsigned long long>(address));
  std::string text;
  const char* next = digits;
  for (const char c : token) {
    text += IsHexadecimal(c) ? *next++ : c;
  }
  return HasSmallLetters(token) ? text : InCapitals(text);
}

std::string HexadecimalLike(std::string_view token, std::uint64_t number) {
  char digits[32];
  std::snprintf(digits, sizeof digits, "%0*llx", static_cast<int>(token.size()),
                static_cast<unsigned long long>(number));
  return HasSmallLetters(token) ? digits : InCapitals(digits);
}

}  // namespace capture
