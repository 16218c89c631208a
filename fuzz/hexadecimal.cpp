// Hexadecimal texts, against a second, slower way to read them.
#include <algorithm>
#include <string>

#include "fuzz/fuzz.h"
#include "hardware/parse_hex.h"

namespace {

constexpr std::size_t kLargestInput = 4096;

std::uint64_t Digit(char c) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  const auto found = kDigits.find(c >= 'A' && c <= 'F' ? static_cast<char>(c + 'a' - 'A') : c);
  return found != std::string_view::npos ? found : static_cast<unsigned char>(c);
}

std::uint64_t Slowly(std::string text) {
  for (const char* prefix : {"0x", "0X"}) {
    if (const auto found = text.find(prefix); found != std::string::npos) {
      text.erase(0, found + 2);
      break;
    }
  }
  text.erase(std::min(text.find_first_of(" \n\r"), text.size()));
  std::uint64_t value = 0;
  for (const char c : text) {
    value = (value << 4U) + Digit(c);
  }
  return value;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > kLargestInput) {
    return 0;
  }
  const fuzz::Exact text(fuzz::Text(data, size));
  FUZZ_CHECK(hardware::HexValue(text.Get()) == Slowly(text.Get()));
  for (const char* c = text.Get(); *c != '\0'; ++c) {
    FUZZ_CHECK(hardware::HexDigit(static_cast<unsigned char>(*c)) == Digit(*c));
  }
  return 0;
}
