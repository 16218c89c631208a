// Numbers in row texts: read as in the C locale, whatever locale the host has set, and narrowed on
// purpose.
#pragma once

#include <limits>
#include <type_traits>

namespace numbers {

// The decimal integer that `text` begins with, as strtol reads it: 0 without one, the nearest limit
// of long for one that is too large. `*end`, if wanted, is where the number ends: `text` itself
// without one. Inline, since every row passes through it twice.
inline long ParseLong(const char* text, const char** end = nullptr);

// The same through strtoul.
unsigned long ParseUnsignedLong(const char* text, const char** end = nullptr);

// The number that `text` begins with, as strtod reads it in the C locale: 0.0 without one.
double ParseDouble(const char* text, const char** end = nullptr);

// What ParseLong leaves to strtol.
long ParseAnyLong(const char* text, const char** end);

// More than 9 for what is no digit.
constexpr unsigned long DigitValue(char c) {
  return static_cast<unsigned long>(static_cast<unsigned char>(c)) - '0';
}

// Almost every row holds a few plain digits, which are read faster here than by strtol. Everything
// else (blanks, signs, what may overflow) is left to strtol.
inline long ParseLong(const char* text, const char** end) {
  unsigned long value = 0;
  const char* after = text;
  for (unsigned long digit = DigitValue(*after); digit <= 9; digit = DigitValue(*++after)) {
    value = value * 10 + digit;
  }
  if (after == text || after - text > std::numeric_limits<long>::digits10) {
    return ParseAnyLong(text, end);
  }
  if (end != nullptr) {
    *end = after;
  }
  return static_cast<long>(value);
}

// The low bits of `value`, as many as T has: 65541 is 5 in 16 bits, -1 is 255 in 8.
template <class T, class From>
constexpr T Narrow(From value) {
  using Unsigned = std::make_unsigned_t<T>;
  return static_cast<T>(static_cast<Unsigned>(static_cast<std::make_unsigned_t<From>>(value)));
}

// The ASCII letter in lower case, any other byte as it is.
constexpr unsigned char ToLower(unsigned char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<unsigned char>(c - 'A' + 'a') : c;
}

}  // namespace numbers
