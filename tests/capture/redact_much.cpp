// redact_much WHAT COUNT: replaces what stands in a text of COUNT parts.
#include <cstdlib>
#include <string>
#include <string_view>

#include "capture/encodings.h"
#include "capture/spellings.h"
#include "capture/text_redactor.h"

namespace {

std::string DashedAddress(unsigned int number) {
  return "10-" + std::to_string(number >> 16 & 0xFF) + "-" + std::to_string(number >> 8 & 0xFF) +
         "-" + std::to_string(number & 0xFF);
}

// Addresses that are all in the text, in a spelling that is none of the usual ones.
void Addresses(unsigned int count) {
  constexpr unsigned int kFirst = 10U << 24 | 1U << 16;
  capture::Pseudonyms pseudonyms;
  std::string text;
  for (unsigned int number = kFirst; number < kFirst + count; ++number) {
    pseudonyms.Version4[number] = number + (1U << 16);
    text += DashedAddress(number) + "\n";
  }
  const capture::Identities identities;
  const capture::Replacer replacer(capture::SpellingsOf(identities, pseudonyms));
  if (replacer.Replace(text, true).find("10-1-") != std::string::npos) {
    std::abort();
  }
}

// A few bytes in pairs of digits, and zeros that are as many again.
void Pairs(unsigned int count) {
  const std::string text = "11 22 33 44 55" + std::string(count, '0');
  if (capture::RewritePairs(text, [](std::string_view bytes) { return std::string(bytes); }) !=
      text) {
    std::abort();
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    return 2;
  }
  const auto count = static_cast<unsigned int>(std::strtoul(argv[2], nullptr, 10));
  (std::string_view(argv[1]) == "pairs" ? Pairs : Addresses)(count);
}
