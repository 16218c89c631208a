// Hexadecimal texts, as the drivers and the kernel print them.
#pragma once

#include <cstdint>

namespace hardware {

// Value of a hexadecimal digit of either case. Deliberately any other byte is its own value: there
// is no error value, and HexValue adds such bytes as they are.
unsigned char HexDigit(unsigned char c);

// Value of the hexadecimal number in `text`, modulo 2^64. It starts after the first "0x" in the
// whole text, even lines later; if there is none, after the first "0X"; if there is none either,
// with the first byte. It ends at a blank, '\n', '\r' or the end of the text; a tab or a comma does
// not end it. Sets `readable`, when there is one, to whether it is the first
// thing in `text` and has digits and nothing else.
std::uint64_t HexValue(const char* text, bool* readable = nullptr);

}  // namespace hardware
