// Replaces spellings in texts.
#pragma once

#include <string>
#include <string_view>
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
  // The longest are replaced first; of one length, those that come first.
  explicit Replacer(std::vector<Spelling> spellings);

  // `text` with each of them replaced; letters keep their case. Without numbers those alone that
  // are made of digits only, or are bytes, stay.
  std::string Replace(std::string_view text, bool with_numbers) const;

  // `text` with the beginning of one of them at its end replaced.
  std::string ReplaceEnd(std::string_view text) const;

 private:
  std::vector<Spelling> spellings_;  // the longest first
};

}  // namespace capture
