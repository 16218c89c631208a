// Replaces what identifies a controller in any text, in any encoding.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "capture/pseudonyms.h"
#include "capture/replacer.h"

namespace capture {

class TextRedactor {
 public:
  TextRedactor(const Identities& identities, const Pseudonyms& pseudonyms);

  // Addresses in each spelling, in hexadecimal and as numbers; words; the serial number as a
  // number. Also where the text is in percent signs or other escapes, base64, hexadecimal, bytes in
  // pairs of digits, UTF-16 or UTF-32, and in two of these, one within the other.
  std::string Text(std::string_view text) const;

  // The same, without numbers that are not written as addresses.
  std::string Words(std::string_view text) const;

  // `text`, which may end within a value, with the beginning of that replaced.
  std::string End(std::string_view text) const { return spellings_.ReplaceEnd(text); }

  // What stands for a number that is the serial number or an address; nothing: the number itself.
  std::optional<std::uint64_t> Number(std::uint64_t number) const;

 private:
  std::string Decoded(std::string_view text, int encodings) const;
  std::string Numbers(std::string_view text) const;
  std::optional<std::string> Hexadecimal(std::string_view token) const;

  const Identities& identities_;
  const Pseudonyms& pseudonyms_;
  const Replacer spellings_;
};

}  // namespace capture
