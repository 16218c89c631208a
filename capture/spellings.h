// Values as people and programs write them apart from their usual form.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "capture/pseudonyms.h"

namespace capture {

// All spellings of a controller's values that are found by their own letters, wherever they stand:
// between other letters, with other separators, as numbers, as the bytes themselves.
class Spellings {
 public:
  Spellings(const Identities& identities, const Pseudonyms& pseudonyms);

  // `text` with each of them replaced; letters keep their case. Without numbers those alone that
  // are made of digits only, or are bytes, stay.
  std::string Replace(std::string_view text, bool with_numbers) const;

  // `text` with the beginning of one of them at its end replaced.
  std::string ReplaceEnd(std::string_view text) const;

 private:
  // What must not stand at either side, for it would be part of the value.
  enum class Edge { kAnything, kNoDigit, kNoNumber, kNoHexadecimal, kNoGroup, kNoLetter };
  enum class As { kText, kNumber, kBytes };
  struct Spelling {
    std::string Before;  // in small letters, but for bytes
    std::string Now;
    Edge Sides;
    As What;
  };
  // Digits of a value and of the one in its place.
  struct Pair {
    std::string Before;
    std::string Now;
  };

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
  static bool Fits(Edge sides, std::string_view text, std::size_t begin, std::size_t end);

  std::vector<Spelling> spellings_;  // the longest first
};

}  // namespace capture
