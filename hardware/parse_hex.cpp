#include "hardware/parse_hex.h"

#include <cctype>
#include <cstring>
#include <initializer_list>

namespace hardware {
namespace {

// Where the digits begin.
const char* AfterPrefix(const char* text) {
  for (const char* prefix : {"0x", "0X"}) {
    if (const char* found = std::strstr(text, prefix)) {
      return found + std::strlen(prefix);
    }
  }
  return text;
}

bool EndsNumber(unsigned char c) { return c == '\0' || c == ' ' || c == '\n' || c == '\r'; }

}  // namespace

unsigned char HexDigit(unsigned char c) {
  if (c >= '0' && c <= '9') {
    return static_cast<unsigned char>(c - '0');
  }
  if (c >= 'A' && c <= 'F') {
    return static_cast<unsigned char>(c - 'A' + 10);
  }
  if (c >= 'a' && c <= 'f') {
    return static_cast<unsigned char>(c - 'a' + 10);
  }
  return c;
}

std::uint64_t HexValue(const char* text, bool* readable) {
  std::uint64_t value = 0;
  const char* const begin = AfterPrefix(text);
  const char* c = begin;
  bool digits = true;
  for (; !EndsNumber(static_cast<unsigned char>(*c)); ++c) {
    value = value * 16 + HexDigit(static_cast<unsigned char>(*c));
    digits = digits && std::isxdigit(static_cast<unsigned char>(*c)) != 0;
  }
  if (readable != nullptr) {
    // "0x" may be that of another number, lines later.
    const char* const first = text + std::strspn(text, " \t");
    const bool here = begin == first || begin == first + std::strlen("0x");
    *readable = digits && c != begin && here;
  }
  return value;
}

}  // namespace hardware
