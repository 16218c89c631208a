#include "collector/state/numbers.h"

#include <locale.h>
#include <stdlib.h>

#include <limits>

namespace numbers {
namespace {

// Lives as long as the process. Without memory for it the host's own locale has to do.
locale_t CLocale() {
  static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
  return locale;
}

// More than 9 for what is no digit.
unsigned long DigitValue(char c) {
  return static_cast<unsigned long>(static_cast<unsigned char>(c)) - '0';
}

}  // namespace

long ParseLong(const char* text, const char** end) {
  // Almost every row holds a few plain digits, which cost a fraction of what strtol takes for them.
  // Blanks, signs, what may overflow and everything else are left to strtol.
  unsigned long value = 0;
  const char* behind = text;
  for (unsigned long digit = DigitValue(*behind); digit <= 9; digit = DigitValue(*++behind)) {
    value = value * 10 + digit;
  }
  if (behind != text && behind - text <= std::numeric_limits<long>::digits10) {
    if (end != nullptr) {
      *end = behind;
    }
    return static_cast<long>(value);
  }
  return strtol(text, const_cast<char**>(end), 10);
}

unsigned long ParseUnsignedLong(const char* text) { return strtoul(text, nullptr, 10); }

double ParseDouble(const char* text) {
  const locale_t locale = CLocale();
  return locale != nullptr ? strtod_l(text, nullptr, locale) : strtod(text, nullptr);
}

}  // namespace numbers
