#include "capture/pseudonyms.h"

#include <algorithm>
#include <optional>
#include <set>
#include <stdexcept>
#include <utility>

#include "hardware/parse_hex.h"

namespace capture {
namespace {

constexpr int kMostTries = 1000;
constexpr std::size_t kMostDigits = 4;  // of a part of an address

// Numbers from Least to Most.
struct Range {
  std::uint32_t Least;
  std::uint32_t Most;
};

// The numbers with as many digits as `number` has, without 255, which is a broadcast address.
Range SameDigits(std::uint32_t number) {
  return number < 10 ? Range{0, 9} : number < 100 ? Range{10, 99} : Range{100, 254};
}

Range SameHexadecimalDigits(std::uint32_t number) {
  return number < 0x10     ? Range{1, 0xF}
         : number < 0x100  ? Range{0x10, 0xFF}
         : number < 0x1000 ? Range{0x100, 0xFFF}
                           : Range{0x1000, 0xFFFF};
}

class Maker {
 public:
  // `other_length`: a number may get more or fewer digits.
  Maker(const Identities& identities, bool other_length, std::mt19937_64* random)
      : identities_(identities), other_length_(other_length), random_(*random) {}

  Pseudonyms Make() {
    for (const IPv4 address : identities_.Version4) {
      made_.Version4[address] = Of(address);
    }
    for (const IPv6& address : identities_.Version6) {
      made_.Version6[address] = Of(address);
    }
    for (const StationAddress address : identities_.Stations) {
      made_.Stations[address] = OfStation(address);
    }
    for (const auto& [word, about] : identities_.Words) {
      do {
        made_.Words[word] = OfWord(word);
      } while (identities_.Words.contains(made_.Words[word]));
    }
    MakeSerial();
    return std::move(made_);
  }

 private:
  std::uint32_t Any(Range range) {
    return std::uniform_int_distribution<std::uint32_t>(range.Least, range.Most)(random_);
  }

  // The part of an address that stands for `number` after `before`, always the same and for no
  // other number there. `before` is the text of the part of the address that comes before.
  std::uint32_t Part(const std::string& before, std::uint32_t number, Range range) {
    Parts& parts = parts_[before];
    if (const auto known = parts.Made.find(number); known != parts.Made.end()) {
      return known->second;
    }
    const auto is_free = [&](std::uint32_t part) {
      return part != number && !parts.Taken.contains(part);
    };
    std::uint32_t part = Any(range);
    for (int tries = 0; tries < kMostTries && !is_free(part); ++tries) {
      part = Any(range);
    }
    parts.Taken.insert(part);
    return parts.Made[number] = part;
  }

  IPv4 Of(IPv4 address) {
    const std::uint32_t parts[] = {address >> 24, address >> 16 & 0xFF, address >> 8 & 0xFF,
                                   address & 0xFF};
    const int kept = LocalNumbers(address);
    IPv4 made = 0;
    std::string before = "4";
    for (int i = 0; i < 4; ++i) {
      const bool stays = i < kept || (i == 3 && (parts[i] == 0 || parts[i] == 255));
      const Range range = i == 0          ? Public(parts[0])
                          : other_length_ ? Range{1, 254}
                                          : SameDigits(parts[i]);
      made = made << 8 | (stays ? parts[i] : Part(before, parts[i], range));
      before += "." + std::to_string(parts[i]);
    }
    return made;
  }

  // First numbers of other networks.
  static Range Public(std::uint32_t first) {
    return first < 10 ? Range{1, 9} : first < 100 ? Range{11, 99} : Range{193, 223};
  }

  IPv6 Of(const IPv6& address) {
    IPv6 made = address;
    std::string before = "6";
    for (std::size_t i = 0; i < address.size(); ++i) {
      const bool local = i == 0 && (address[0] & 0xFFC0) == 0xFE80;
      if (address[i] != 0 && !local) {
        const Range range = i == 0          ? FirstGroup(address[0])
                            : other_length_ ? Range{1, 0xFFFF}
                                            : SameHexadecimalDigits(address[i]);
        made[i] = static_cast<std::uint16_t>(Part(before, address[i], range));
      }
      before += "." + std::to_string(address[i]);
    }
    return made;
  }

  static Range FirstGroup(std::uint32_t group) {
    if (group >= 0x2000 && group < 0x4000) {
      return {0x2000, 0x3FFF};
    }
    if (group >= 0xFC00 && group < 0xFE00) {
      return {0xFC00, 0xFDFF};
    }
    return SameHexadecimalDigits(group);
  }

  // Of one station; made or given by somebody, as it was.
  StationAddress OfStation(StationAddress address) {
    constexpr StationAddress kKinds = 0x030000000000;
    constexpr StationAddress kAll = 0xFFFFFFFFFFFF;
    StationAddress made = address;
    while (identities_.Stations.contains(made) || IsCommon(made) ||
           !stations_.insert(made).second) {
      made = (random_() & kAll & ~kKinds) | (address & kKinds);
    }
    return made;
  }

  char Letter(char least, char most) {
    return static_cast<char>(
        Any({static_cast<unsigned char>(least), static_cast<unsigned char>(most)}));
  }

  // Letters for letters, digits for digits, of hexadecimal numbers those.
  std::string OfWord(const std::string& word) {
    const bool hexadecimal = word.find_first_not_of("0123456789abcdef-{}") == std::string::npos;
    std::string made = word;
    for (std::size_t at = 0; at < made.size(); ++at) {
      char& c = made[at];
      // A UUID says there how it was made.
      const bool kind = hexadecimal && made.size() == 36 && (at == 14 || at == 19);
      if (kind) {
        continue;
      }
      if (c >= '0' && c <= '9') {
        c = Letter('0', '9');
      } else if (c >= 'a' && c <= 'z') {
        c = Letter('a', hexadecimal ? 'f' : 'z');
      }
    }
    return made;
  }

  void MakeSerial() {
    made_.OldSerialNumber = NumberOf(identities_.Serial);
    made_.SerialNumber = made_.OldSerialNumber;
    made_.Serial = identities_.Serial;
    const std::size_t digits = Decimals(made_.OldSerialNumber);
    for (int tries = 0; tries < kMostTries; ++tries) {
      const std::string made = OfSerial();
      const std::uint32_t number = NumberOf(made);
      // As many decimal digits, too, as long as that can be had.
      if (number != made_.OldSerialNumber && (Decimals(number) == digits || tries > 900)) {
        made_.Serial = made;
        made_.SerialNumber = number;
        return;
      }
    }
  }

  static std::uint32_t NumberOf(const std::string& serial) {
    return static_cast<std::uint32_t>(hardware::HexValue(serial.c_str()));
  }

  static std::size_t Decimals(std::uint32_t number) { return std::to_string(number).size(); }

  // Zeros before the number, and what says that it is hexadecimal, stay.
  std::string OfSerial() {
    std::string made = identities_.Serial;
    const bool prefixed = made.starts_with("0x") || made.starts_with("0X");
    std::size_t at = made.find_first_not_of('0', prefixed ? 2 : 0);
    for (bool first = true; at < made.size(); ++at, first = false) {
      char& c = made[at];
      if (c >= '0' && c <= '9') {
        c = Letter(first ? '1' : '0', '9');
      } else if ((c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F')) {
        c = c < 'a' ? Letter('A', 'F') : Letter('a', 'f');
      } else if ((c >= 'g' && c <= 'z') || (c >= 'G' && c <= 'Z')) {
        c = c < 'a' ? Letter('G', 'Z') : Letter('g', 'z');
      }
    }
    return made;
  }

  const Identities& identities_;
  const bool other_length_;
  std::mt19937_64& random_;
  Pseudonyms made_;
  struct Parts {
    std::map<std::uint32_t, std::uint32_t> Made;
    std::set<std::uint32_t> Taken;
  };
  std::map<std::string, Parts> parts_;  // by what comes before them
  std::set<StationAddress> stations_;   // that stand for others
};

std::optional<IPv4> Parse(const std::string& text, IPv4 /*like*/) { return ParseIPv4(text); }
std::optional<IPv6> Parse(const std::string& text, const IPv6& /*like*/) { return ParseIPv6(text); }

// Whether no pseudonym is, or has within it, an address of the controller, and no two are the same.
template <class Map>
bool AreNew(const Map& pseudonyms) {
  std::set<typename Map::mapped_type> used;
  return std::ranges::all_of(pseudonyms, [&](const auto& pair) {
    const std::string made = TextOf(pair.second);
    for (std::size_t begin = 0; begin < kMostDigits; ++begin) {
      for (std::size_t end = 0; end < kMostDigits && begin + end < made.size(); ++end) {
        const auto within = Parse(made.substr(begin, made.size() - begin - end), pair.second);
        if (within && pseudonyms.contains(*within)) {
          return false;
        }
      }
    }
    return used.insert(pair.second).second;
  });
}

}  // namespace

Pseudonyms MakePseudonyms(const Identities& identities, std::mt19937_64* random) {
  for (int tries = 0; tries < kMostTries; ++tries) {
    // There may be nine networks whose number has one digit.
    Pseudonyms made = Maker(identities, tries >= kMostTries / 2, random).Make();
    if (AreNew(made.Version4) && AreNew(made.Version6)) {
      return made;
    }
  }
  throw std::runtime_error("there are too many addresses to replace all; capture without --redact");
}

}  // namespace capture
