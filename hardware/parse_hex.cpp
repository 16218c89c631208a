#include "hardware/parse_hex.h"

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

std::uint64_t HexValue(const char* text) {
  std::uint64_t value = 0;
  for (const char* c = AfterPrefix(text); !EndsNumber(static_cast<unsigned char>(*c)); ++c) {
    value = value * 16 + HexDigit(static_cast<unsigned char>(*c));
  }
  return value;
}

}  // namespace hardware
