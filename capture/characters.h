// What a character is, in every locale. Private to this folder.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace capture {

constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }
constexpr bool IsSmall(char c) { return c >= 'a' && c <= 'z'; }
constexpr bool IsCapital(char c) { return c >= 'A' && c <= 'Z'; }
constexpr bool IsLetter(char c) { return IsSmall(c) || IsCapital(c); }
constexpr bool IsHexadecimal(char c) {
  return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

constexpr char Lower(char c) { return IsCapital(c) ? static_cast<char>(c - 'A' + 'a') : c; }
constexpr char Capital(char c) { return IsSmall(c) ? static_cast<char>(c - 'a' + 'A') : c; }

inline bool HasCapitals(std::string_view text) { return std::ranges::any_of(text, IsCapital); }

inline std::string InCapitals(std::string text) {
  std::ranges::transform(text, text.begin(), Capital);
  return text;
}

}  // namespace capture
