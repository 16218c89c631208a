// Hexadecimal texts, as the drivers and the kernel print them.
#pragma once

#include <cstdint>

namespace hardware {

// Value of a hexadecimal digit of either case. Any other byte is its own value, deliberately: there
// is no error value, and HexValue folds such bytes in as they are.
unsigned char HexDigit(unsigned char c);

// Value of the hexadecimal number in `text`, modulo 2^64. It starts behind the first "0x" in the
// whole text, be it lines later, without one behind the first "0X", else with the first byte. It
// ends at a blank, '\n', '\r' or the end of the text; a tab or a comma does not end it.
std::uint64_t HexValue(const char* text);

}  // namespace hardware
