#include "capture/spellings.h"

#include <algorithm>
#include <cstdio>
#include <unordered_set>
#include <utility>

#include "capture/characters.h"

namespace capture {
namespace {

constexpr std::uint32_t kLeastNumber = 100'000;  // smaller ones may be anything

std::string Hexadecimal(std::uint64_t number, int digits) {
  char text[32];
  std::snprintf(text, sizeof text, "%0*llx", digits, static_cast<unsigned long long>(number));
  return text;
}

std::string BytesOf(std::string_view digits) {
  std::string bytes;
  for (std::size_t at = 0; at + 1 < digits.size(); at += 2) {
    bytes += static_cast<char>(std::stoi(std::string(digits.substr(at, 2)), nullptr, 16));
  }
  return bytes;
}

// The bytes that the digits stand for, the last one first.
std::string Turned(std::string_view digits) {
  std::string turned;
  for (std::size_t at = digits.size(); at >= 2; at -= 2) {
    turned += digits.substr(at - 2, 2);
  }
  return turned;
}

// Groups of `size` digits with `separator` between them.
std::string Grouped(std::string_view digits, std::size_t size, char separator) {
  std::string text;
  for (std::size_t at = 0; at < digits.size(); at += size) {
    text.append(at == 0 ? 0 : 1, separator).append(digits.substr(at, size));
  }
  return text;
}

// Each group without the zeros that it begins with.
std::string Short(const std::string& groups, char separator) {
  std::string text;
  for (std::size_t at = 0; at < groups.size(); ++at) {
    const bool begins = text.empty() || text.back() == separator;
    const bool goes_on = at + 1 < groups.size() && groups[at + 1] != separator;
    text += begins && groups[at] == '0' && goes_on ? "" : std::string(1, groups[at]);
  }
  return text;
}

std::string Decimal(IPv4 address, const char* form) {
  char text[64];
  std::snprintf(text, sizeof text, form, address >> 24, address >> 16 & 0xFF, address >> 8 & 0xFF,
                address & 0xFF);
  return text;
}

std::string DigitsOf(const IPv6& address) {
  std::string digits;
  for (const std::uint16_t group : address) {
    digits += Hexadecimal(group, 4);
  }
  return digits;
}

std::string With(std::string text, char separator, char other) {
  std::ranges::replace(text, separator, other);
  return text;
}

std::string Without(std::string text, char separator) {
  std::erase(text, separator);
  return text;
}

// Bytes that could as well be a word are none.
bool AreNoText(std::string_view bytes) {
  return std::ranges::count_if(bytes, [](char c) {
           return (c < ' ' || c > '~') && c != '\n' && c != '\t' && c != '\r';
         }) >= 2;
}

// Digits of a value and of the one in its place.
struct Pair {
  std::string Before;
  std::string Now;
};

class Spellings {
 public:
  Spellings(const Identities& identities, const Pseudonyms& pseudonyms);

  std::vector<Spelling> Take() { return std::move(spellings_); }

 private:
  void Add(const std::string& before, const std::string& now, Edge sides, As what = As::kText);
  void AddBytes(const Pair& digits);
  // Groups of so many digits, with each separator between them.
  void AddGroups(const Pair& digits, std::size_t size, std::string_view separators, Edge sides);
  void AddStation(StationAddress before, StationAddress now);
  void AddIPv4(IPv4 before, IPv4 now);
  void AddIPv6(const IPv6& before, const IPv6& now);
  void AddGuid(const std::string& before, const std::string& now);
  void AddSerial(const Pseudonyms& pseudonyms);
  void AddNumber(std::uint64_t before, std::uint64_t now);

  std::vector<Spelling> spellings_;
  std::unordered_set<std::string> known_;  // what is there before
};

Spellings::Spellings(const Identities& identities, const Pseudonyms& pseudonyms) {
  for (const auto& [before, now] : pseudonyms.Stations) {
    AddStation(before, now);
  }
  for (const auto& [before, now] : pseudonyms.Version4) {
    AddIPv4(before, now);
  }
  for (const auto& [before, now] : pseudonyms.Version6) {
    AddIPv6(before, now);
  }
  for (const auto& [word, about] : identities.Words) {
    const std::string& now = pseudonyms.Words.at(word);
    if (about.InItsPlaceOnly) {
      continue;
    }
    if (about.Kind == "GUID") {
      AddGuid(word, now);
    } else {
      Add(word, now, Edge::kNoLetter);
      for (const char other : {'_', '-'}) {
        Add(With(word, '.', other), With(now, '.', other), Edge::kNoLetter);
      }
    }
  }
  AddSerial(pseudonyms);
}

void Spellings::Add(const std::string& before, const std::string& now, Edge sides, As what) {
  if (before != now && !before.empty() && known_.insert(before).second) {
    spellings_.push_back({before, now, sides, what});
  }
}

void Spellings::AddBytes(const Pair& digits) {
  for (const auto& [before, now] : {digits, Pair{Turned(digits.Before), Turned(digits.Now)}}) {
    if (AreNoText(BytesOf(before))) {
      Add(BytesOf(before), BytesOf(now), Edge::kAnything, As::kBytes);
    }
  }
}

void Spellings::AddGroups(const Pair& digits, std::size_t size, std::string_view separators,
                          Edge sides) {
  for (const char separator : separators) {
    Add(Grouped(digits.Before, size, separator), Grouped(digits.Now, size, separator), sides);
  }
}

void Spellings::AddStation(StationAddress before, StationAddress now) {
  const Pair digits = {Hexadecimal(before, 12), Hexadecimal(now, 12)};
  const Pair turned = {Turned(digits.Before), Turned(digits.Now)};
  for (const Pair& order : {digits, turned}) {
    Add(order.Before, order.Now, Edge::kAnything);
    AddGroups(order, 2, ":- _.", Edge::kNoHexadecimal);
    AddGroups(order, 4, ".:- _", Edge::kNoHexadecimal);
  }
  AddGroups(digits, 6, ":- _.", Edge::kNoHexadecimal);
  for (const char separator : {':', '-'}) {
    Add(Short(Grouped(digits.Before, 2, separator), separator),
        Short(Grouped(digits.Now, 2, separator), separator), Edge::kNoGroup);
  }
  AddNumber(before, now);
  AddBytes(digits);
}

void Spellings::AddIPv4(IPv4 before, IPv4 now) {
  for (const char* const form :
       {"%u.%u.%u.%u", "%u-%u-%u-%u", "%u_%u_%u_%u", "%u %u %u %u", "%u,%u,%u,%u",
        "%03u.%03u.%03u.%03u", "%03u-%03u-%03u-%03u", "%03u%03u%03u%03u", "0%o.0%o.0%o.0%o"}) {
    Add(Decimal(before, form), Decimal(now, form), Edge::kNoDigit);
  }
  for (const char* const form : {"0x%x.0x%x.0x%x.0x%x", "0x%02x.0x%02x.0x%02x.0x%02x",
                                 "0x%02x 0x%02x 0x%02x 0x%02x", "0x%02x, 0x%02x, 0x%02x, 0x%02x"}) {
    Add(Decimal(before, form), Decimal(now, form), Edge::kNoHexadecimal);
  }
  const Pair digits = {Hexadecimal(before, 8), Hexadecimal(now, 8)};
  for (const Pair& order : {digits, Pair{Turned(digits.Before), Turned(digits.Now)}}) {
    Add(order.Before, order.Now, Edge::kNoHexadecimal, As::kNumber);
    AddGroups(order, 2, ":- _.", Edge::kNoHexadecimal);
    AddGroups(order, 4, ":", Edge::kNoHexadecimal);
  }
  for (const auto& [one, other] :
       {std::pair(before, now), std::pair(__builtin_bswap32(before), __builtin_bswap32(now))}) {
    AddNumber(one, other);
    if (one > 0x7FFFFFFF) {  // as a number with a sign
      Add(std::to_string(static_cast<std::int32_t>(one)),
          std::to_string(static_cast<std::int32_t>(other)), Edge::kNoNumber, As::kNumber);
    }
  }
  AddBytes(digits);
}

void Spellings::AddIPv6(const IPv6& before, const IPv6& now) {
  const Pair digits = {DigitsOf(before), DigitsOf(now)};
  Add(digits.Before, digits.Now, Edge::kAnything);
  for (const char separator : {':', '-', '.'}) {
    const Pair groups = {Grouped(digits.Before, 4, separator), Grouped(digits.Now, 4, separator)};
    Add(groups.Before, groups.Now, Edge::kNoGroup);
    Add(Short(groups.Before, separator), Short(groups.Now, separator), Edge::kNoGroup);
    Add(With(TextOf(before), ':', separator), With(TextOf(now), ':', separator), Edge::kNoGroup);
  }
  Pair turned = digits;  // as names of addresses have it
  std::ranges::reverse(turned.Before);
  std::ranges::reverse(turned.Now);
  AddGroups(turned, 1, ".", Edge::kNoHexadecimal);
  AddBytes(digits);
}

void Spellings::AddGuid(const std::string& before, const std::string& now) {
  constexpr std::size_t kLong = 16;
  const Edge sides = before.size() < kLong ? Edge::kNoLetter : Edge::kAnything;
  Add(before, now, sides);
  if (before.find('-') != std::string::npos) {
    for (const char other : {'_', ' ', ':', '.'}) {
      Add(With(before, '-', other), With(now, '-', other), sides);
    }
    Add(Without(before, '-'), Without(now, '-'), sides);
  }
  const Pair digits = {Without(before, '-'), Without(now, '-')};
  constexpr std::size_t kUuid = 32;
  if (digits.Before.size() == kUuid && std::ranges::all_of(digits.Before, IsHexadecimal)) {
    // Some systems have the first three groups the other way round.
    const auto mixed = [](const std::string& text) {
      return Turned(text.substr(0, 8)) + Turned(text.substr(8, 4)) + Turned(text.substr(12, 4)) +
             text.substr(16);
    };
    const Pair other = {mixed(digits.Before), mixed(digits.Now)};
    Add(other.Before, other.Now, Edge::kAnything);
    AddGroups(digits, 2, " :-", Edge::kNoHexadecimal);
    AddBytes(digits);
    AddBytes(other);
  }
}

void Spellings::AddSerial(const Pseudonyms& pseudonyms) {
  const std::uint32_t before = pseudonyms.OldSerialNumber;
  const std::uint32_t now = pseudonyms.SerialNumber;
  if (before < kLeastNumber / 2) {
    return;
  }
  AddNumber(before, now);
  AddNumber(__builtin_bswap32(before), __builtin_bswap32(now));
  const Pair digits = {Hexadecimal(before, 8), Hexadecimal(now, 8)};
  for (const Pair& order : {digits, Pair{Turned(digits.Before), Turned(digits.Now)}}) {
    Add(order.Before, order.Now, Edge::kNoHexadecimal, As::kNumber);
  }
  const std::string brief = Hexadecimal(before, 1);
  if (!std::ranges::all_of(brief, IsDigit)) {  // it is written as another number, too
    for (const int length : {1, 6, 7}) {
      Add(Hexadecimal(before, length),
          Hexadecimal(now, std::max<int>(length, static_cast<int>(brief.size()))),
          Edge::kNoHexadecimal, As::kNumber);
    }
  }
  AddBytes(digits);
}

void Spellings::AddNumber(std::uint64_t before, std::uint64_t now) {
  if (before >= kLeastNumber / 2) {
    Add(std::to_string(before), std::to_string(now), Edge::kNoNumber, As::kNumber);
  }
}

}  // namespace

std::vector<Spelling> SpellingsOf(const Identities& identities, const Pseudonyms& pseudonyms) {
  return Spellings(identities, pseudonyms).Take();
}

}  // namespace capture
