#include "capture/text_redactor.h"

#include <charconv>

#include "capture/encodings.h"
#include "capture/spellings.h"

namespace capture {
namespace {

constexpr std::uint64_t kLeastNumber = 4096;  // smaller ones may be anything

template <class Map, class Key>
auto Find(const Map& map, const Key& key) {
  const auto found = map.find(key);
  return found == map.end() ? std::nullopt : std::optional(found->second);
}

std::optional<std::uint64_t> ParseNumber(std::string_view token, int base) {
  std::uint64_t number = 0;
  const auto end = std::from_chars(token.data(), token.data() + token.size(), number, base);
  return end.ec == std::errc() && end.ptr == token.data() + token.size() ? std::optional(number)
                                                                         : std::nullopt;
}

// `made`, in capitals where the token is.
std::string Like(std::string_view token, std::string made) {
  for (std::size_t i = 0; i < made.size() && i < token.size(); ++i) {
    if (token[i] >= 'A' && token[i] <= 'Z' && made[i] >= 'a' && made[i] <= 'z') {
      made[i] = static_cast<char>(made[i] - 'a' + 'A');
    }
  }
  return made;
}

std::string Without(std::string text, char c) {
  std::erase(text, c);
  return text;
}

}  // namespace

TextRedactor::TextRedactor(const Identities& identities, const Pseudonyms& pseudonyms)
    : identities_(identities),
      pseudonyms_(pseudonyms),
      spellings_(SpellingsOf(identities, pseudonyms)) {}

std::optional<std::uint64_t> TextRedactor::Number(std::uint64_t number) const {
  if (number < kLeastNumber) {
    return std::nullopt;
  }
  if (number == pseudonyms_.OldSerialNumber && number != pseudonyms_.SerialNumber) {
    return pseudonyms_.SerialNumber;
  }
  if (number > 0xFFFFFFFF) {
    return std::nullopt;
  }
  if (const auto made = Find(pseudonyms_.Version4, static_cast<IPv4>(number))) {
    return *made;
  }
  if (const auto made = Find(pseudonyms_.Version4, __builtin_bswap32(static_cast<IPv4>(number)))) {
    return __builtin_bswap32(*made);
  }
  return std::nullopt;
}

std::optional<std::string> TextRedactor::Hexadecimal(std::string_view token) const {
  if (token.size() == 12) {
    if (const auto made = Find(pseudonyms_.Stations, ParseStation(token))) {
      return HexadecimalLike(token, *made);
    }
  }
  if (token.size() == 32) {
    IPv6 address;
    for (std::size_t i = 0; i < address.size(); ++i) {
      address[i] = static_cast<std::uint16_t>(*ParseNumber(token.substr(4 * i, 4), 16));
    }
    if (const auto made = Find(pseudonyms_.Version6, address)) {
      std::string text;
      for (std::size_t i = 0; i < made->size(); ++i) {
        text += HexadecimalLike(token.substr(4 * i, 4), (*made)[i]);
      }
      return text;
    }
  }
  const std::optional<std::uint64_t> number = ParseNumber(token, 16);
  const std::optional<std::uint64_t> made = number ? Number(*number) : std::nullopt;
  return made ? std::optional(HexadecimalLike(token, *made)) : std::nullopt;
}

// What keeps its length.
std::string TextRedactor::Words(std::string_view text) const {
  std::string result(text);
  for (const auto& [word, about] : identities_.Words) {
    if (!about.InItsPlaceOnly) {
      const std::string& made = pseudonyms_.Words.at(word);
      result = RewriteWord(result, word, [&](auto token) { return Like(token, made); });
      if (word.find('-') != std::string::npos) {
        result = RewriteWord(result, Without(word, '-'), [&made = made](auto token) {
          return Like(token, Without(made, '-'));
        });
      }
    }
  }
  result = RewriteIPv6(result, [this](auto token) -> std::optional<std::string> {
    const auto made = Find(pseudonyms_.Version6, *ParseIPv6(token));
    return made ? std::optional(InTheSpellingOf(token, *made)) : std::nullopt;
  });
  result = RewriteStations(result, [this](auto token) -> std::optional<std::string> {
    const auto made = Find(pseudonyms_.Stations, ParseStation(token));
    return made ? std::optional(InTheSpellingOf(token, *made)) : std::nullopt;
  });
  result = RewriteIPv4(result, [this](auto token) -> std::optional<std::string> {
    const auto made = Find(pseudonyms_.Version4, *ParseIPv4(token));
    return made ? std::optional(TextOf(*made)) : std::nullopt;
  });
  return spellings_.Replace(result, false);
}

std::string TextRedactor::Numbers(std::string_view text) const {
  const std::string result = RewriteDecimal(text, [this](auto token) -> std::optional<std::string> {
    const auto number = ParseNumber(token, 10);
    const auto made = number ? Number(*number) : std::nullopt;
    return made ? std::optional(std::to_string(*made)) : std::nullopt;
  });
  return spellings_.Replace(
      RewriteHexadecimal(result, [this](auto token) { return Hexadecimal(token); }), true);
}

std::string TextRedactor::Text(std::string_view text) const {
  constexpr int kMostEncodings = 2;  // one within the other
  return Decoded(text, kMostEncodings);
}

std::string TextRedactor::Decoded(std::string_view text, int encodings) const {
  std::string result = Words(text);
  if (encodings > 0) {
    for (const auto rewrite : {&RewriteEscapes, &RewriteBase64, &RewriteHexadecimalText,
                               &RewritePairs, &RewriteWideText}) {
      result = rewrite(result, [this, encodings](std::string_view decoded) {
        return Decoded(decoded, encodings - 1);
      });
    }
  }
  return Numbers(result);
}

}  // namespace capture
