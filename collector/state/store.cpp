#include "collector/state/store.h"

#include <cstring>

#include "collector/state/numbers.h"

namespace rows {
namespace {

using Kind = Reading::Kind;

// Of the bytes from `begin` to `end`; the value is still to be set.
Reading Read(Kind kind, const char* begin, const char* end) {
  Reading reading;
  reading.Is = kind;
  reading.Consumed = static_cast<std::uint32_t>(end - begin);
  return reading;
}

Reading Code(std::uint32_t code, const char* begin, const char* end) {
  Reading reading = Read(Kind::kUnsigned, begin, end);
  reading.Unsigned = code;
  return reading;
}

// In bytes, since a code is stored as an enumeration too.
template <class T>
void Write(void* address, T value) {
  std::memcpy(address, &value, sizeof value);
}

unsigned long Bits(const Reading& reading) {
  return reading.Is == Kind::kSigned ? static_cast<unsigned long>(reading.Signed)
                                     : reading.Unsigned;
}

double Fraction(const Reading& reading) {
  return reading.Is == Kind::kSigned ? static_cast<double>(reading.Signed) : reading.Fraction;
}

// Not inlined, so that numbers do not pay for it.
[[gnu::noinline]] void WriteText(void* address, const Reading& reading) {
  static_cast<std::string*>(address)->assign(reading.Text, reading.Consumed);
}

}  // namespace

Reading ReadInteger(const Parser& /*parser*/, const char* text) {
  const char* end = text;
  const long number = numbers::ParseLong(text, &end);
  Reading reading = Read(Kind::kSigned, text, end);
  reading.Signed = number;
  return reading;
}

Reading ReadIntegerPlusOne(const Parser& parser, const char* text) {
  Reading reading = ReadInteger(parser, text);
  reading.Is = Kind::kUnsigned;
  reading.Unsigned = static_cast<unsigned long>(reading.Signed) + 1;
  return reading;
}

Reading ReadUnsigned(const Parser& /*parser*/, const char* text) {
  const char* end = text;
  const unsigned long number = numbers::ParseUnsignedLong(text, &end);
  Reading reading = Read(Kind::kUnsigned, text, end);
  reading.Unsigned = number;
  return reading;
}

Reading ReadNumber(const Parser& /*parser*/, const char* text) {
  const char* end = text;
  const double number = numbers::ParseDouble(text, &end);
  Reading reading = Read(Kind::kFraction, text, end);
  reading.Fraction = number;
  return reading;
}

Reading ReadText(const Parser& /*parser*/, const char* text) {
  Reading reading = Read(Kind::kText, text, text + std::strlen(text));
  reading.Text = text;
  return reading;
}

Reading ReadWord(const Parser& parser, const char* text) {
  const std::string_view whole = text;
  for (const Word& word : parser.Words) {
    if (word.Text == whole) {
      return Code(word.Code, text, text + whole.size());
    }
  }
  return ReadNoWord(parser, text);
}

Reading ReadNoWord(const Parser& parser, const char* text) {
  return parser.KnowsAny ? Code(parser.Otherwise, text, text) : Reading();
}

void Store(const Entry& entry, Type type, void* address, const char* text) {
  const Reading reading = entry.Reader->Read(*entry.Reader, text);
  if (reading.Is == Kind::kNothing) {
    return;
  }
  switch (type) {
    case Type::kBool:
      return Write(address, Bits(reading) != 0);
    case Type::kUnsigned8:
      return Write(address, numbers::Narrow<std::uint8_t>(Bits(reading)));
    case Type::kUnsigned16:
      return Write(address, numbers::Narrow<std::uint16_t>(Bits(reading)));
    case Type::kUnsigned32:
    case Type::kSigned32:
      return Write(address, numbers::Narrow<std::uint32_t>(Bits(reading)));
    case Type::kFloat:
      return Write(address, static_cast<float>(Fraction(reading)));
    case Type::kDouble:
      return Write(address, Fraction(reading));
    case Type::kString:
      return WriteText(address, reading);
    case Type::kBits:
      *static_cast<std::uint32_t*>(address) |= numbers::Narrow<std::uint32_t>(Bits(reading));
      return;
    case Type::kPoint:
      return;  // its parts are stored, never the whole
  }
}

}  // namespace rows
