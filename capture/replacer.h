// Replaces spellings in texts.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace capture {

// What must not stand at either side, for it would be part of the value.
enum class Edge { kAnything, kNoDigit, kNoNumber, kNoHexadecimal, kNoGroup, kNoLetter };
enum class As { kText, kNumber, kBytes };
struct Spelling {
  std::string Before;  // in small letters, but for bytes
  std::string Now;
  Edge Sides;
  As What;
};

class Replacer {
 public:
  // No two are the same before. The longest are replaced first; of one length, those that come
  // first.
  explicit Replacer(std::vector<Spelling> spellings);
  Replacer(const Replacer&) = delete;
  Replacer& operator=(const Replacer&) = delete;

  // `text` with each of them replaced; letters keep their case. Without numbers those alone that
  // are made of digits only, or are bytes, stay.
  std::string Replace(std::string_view text, bool with_numbers) const;

  // `text` with the beginning of one of them at its end replaced.
  std::string ReplaceEnd(std::string_view text) const;

 private:
  class Work;

  // Where spellings stand in the list. A text has few beginnings of theirs: those alone are looked
  // up, in each length that begins so.
  struct Index {
    static constexpr std::size_t kPairs = 0x10000;

    void Add(std::string_view spelling, std::size_t place);

    std::unordered_map<std::string_view, std::size_t> Places;
    std::vector<std::vector<std::size_t>> Lengths = std::vector<std::vector<std::size_t>>(kPairs);
  };

  std::vector<Spelling> spellings_;  // the longest first
  Index letters_;                    // of all but bytes
  Index bytes_;
};

}  // namespace capture
