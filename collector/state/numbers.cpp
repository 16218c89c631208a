#include "collector/state/numbers.h"

#include <locale.h>
#include <stdlib.h>

namespace numbers {
namespace {

// Lives as long as the process. Without memory for it the host's own locale is used.
locale_t CLocale() {
  static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
  return locale;
}

}  // namespace

long ParseAnyLong(const char* text, const char** end) {
  return strtol(text, const_cast<char**>(end), 10);
}

unsigned long ParseUnsignedLong(const char* text, const char** end) {
  return strtoul(text, const_cast<char**>(end), 10);
}

double ParseDouble(const char* text, const char** end) {
  const locale_t locale = CLocale();
  char** const out = const_cast<char**>(end);
  return locale != nullptr ? strtod_l(text, out, locale) : strtod(text, out);
}

}  // namespace numbers
