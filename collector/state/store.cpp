#include "collector/state/store.h"

#include <cstring>

#include "collector/state/numbers.h"
#include "collector/state/report.h"

namespace rows {
namespace {

using Kind = Reading::Kind;

// A reading of the bytes from `begin` to `end`; the caller sets its value.
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

namespace {

// Always inlined, since every row passes through it.
[[gnu::always_inline]] inline void Put(const Reading& reading, Type type, void* address) {
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

observe::Number ReadNumberOf(const Reading& reading) {
  observe::Number number;
  switch (reading.Is) {
    case Kind::kSigned:
      number.Is = observe::Number::Type::kSigned;
      number.Signed = reading.Signed;
      break;
    case Kind::kUnsigned:
      number.Is = observe::Number::Type::kUnsigned;
      number.Unsigned = reading.Unsigned;
      break;
    case Kind::kFraction:
      number.Is = observe::Number::Type::kFloating;
      number.Floating = reading.Fraction;
      break;
    default:
      break;
  }
  return number;
}

template <class T>
observe::Number Load(const void* address) {
  T value;
  std::memcpy(&value, address, sizeof value);
  observe::Number number;
  if constexpr (std::is_floating_point_v<T>) {
    number.Is = observe::Number::Type::kFloating;
    number.Floating = value;
  } else if constexpr (std::is_signed_v<T>) {
    number.Is = observe::Number::Type::kSigned;
    number.Signed = value;
  } else {
    number.Is = observe::Number::Type::kUnsigned;
    number.Unsigned = value;
  }
  return number;
}

observe::Number StoredNumber(Type type, const void* address) {
  switch (type) {
    case Type::kBool:
    case Type::kUnsigned8:
      return Load<std::uint8_t>(address);
    case Type::kUnsigned16:
      return Load<std::uint16_t>(address);
    case Type::kUnsigned32:
    case Type::kBits:
      return Load<std::uint32_t>(address);
    case Type::kSigned32:
      return Load<std::int32_t>(address);
    case Type::kFloat:
      return Load<float>(address);
    case Type::kDouble:
      return Load<double>(address);
    case Type::kString:
    case Type::kPoint:
      return {};
  }
  return {};
}

observe::Fate FateOf(const Parser& parser, const Reading& reading) {
  if (reading.Is == Kind::kNothing) {
    return observe::Fate::kUnknownWord;
  }
  const bool other = !parser.Words.empty() && reading.Consumed == 0;
  return other ? observe::Fate::kOtherWord : observe::Fate::kStored;
}

[[gnu::always_inline]] inline Reading ReadAndPut(const Entry& entry, Type type, void* address,
                                                 const char* text) {
  const Reading reading = entry.Reader->Read(*entry.Reader, text);
  if (reading.Is != Kind::kNothing) {
    Put(reading, type, address);
  }
  return reading;
}

// Not inlined, so that rows that nobody watches do not pay for it.
[[gnu::noinline]] void StoreWatched(const Entry& entry, Type type, void* address, const char* text,
                                    Slot slot) {
  const Reading reading = ReadAndPut(entry, type, address, text);
  observe::Stores event;
  event.What = FateOf(*entry.Reader, reading);
  event.Destination = address;
  event.Container = slot.Container;
  event.Index = slot.Index;
  event.Attribute = entry.Name;
  event.Parser = entry.Reader->Name;
  event.Text = text;
  event.Consumed = reading.Consumed;
  event.Read = ReadNumberOf(reading);
  event.Stored = StoredNumber(type, address);
  observe::Send(event);
}

}  // namespace

void Store(const Entry& entry, Type type, void* address, const char* text, Slot slot) {
  if (observe::IsWatched()) [[unlikely]] {
    StoreWatched(entry, type, address, text, slot);
  } else {
    ReadAndPut(entry, type, address, text);
  }
}

void ReportKept(observe::Fate fate, std::string_view attribute, const char* text, Slot slot) {
  observe::Report([&] {
    observe::Stores event{};
    event.What = fate;
    event.Container = slot.Container;
    event.Index = slot.Index;
    event.Attribute = attribute;
    event.Text = text;
    return event;
  });
}

}  // namespace rows
