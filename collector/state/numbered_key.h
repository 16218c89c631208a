// Keys that contain a number: a prefix, the number and, after an underscore, an attribute, as in
// "Sensor_07_Celsius".
#pragma once

#include <cstddef>
#include <cstring>
#include <utility>

#include "collector/state/numbers.h"
#include "collector/state/report.h"
#include "collector/state/store.h"

namespace rows {

inline constexpr char kDcioPrefix[] = "DCIO_";
inline constexpr char kSensorPrefix[] = "Sensor_";
inline constexpr char kDevicePrefix[] = "TtableDeviceNode_";

// A number with the text after the underscore that ends it; the text is null without one.
struct Numbered {
  long Number;
  const char* Rest;
  const char* End;  // of the number
};

// What follows the first underscore of `text`; null without one.
inline const char* AfterUnderscore(const char* text) {
  const char* const underscore = std::strchr(text, '_');
  return underscore == nullptr ? nullptr : underscore + 1;
}

// "07_Celsius" is 7 and "Celsius". A text without a number counts as 0.
inline Numbered SplitNumber(const char* text) {
  const char* end = text;
  const long number = numbers::ParseLong(text, &end);
  return {number, *end == '_' ? end + 1 : AfterUnderscore(end), end};
}

struct NumberedKey {
  bool IsNumbered;
  // What the handler returns for a key that is not: -1 when the number begins with one of '(' to
  // '/', a sign among them; 0 for a key that is null or shorter than its prefix.
  int Result;
  Numbered Parts;
};

// Splits a key that is to begin with this prefix, one of those above.
template <std::size_t kSize>
NumberedKey SplitKey(const char* key, const char (&/*prefix*/)[kSize]) {
  constexpr std::size_t kPrefixLength = kSize - 1;
  const auto reaches = [key]<std::size_t... kAt>(std::index_sequence<kAt...>) {
    return ((key[kAt] != '\0') && ...);
  };
  if (key == nullptr || !reaches(std::make_index_sequence<kPrefixLength>())) {
    return {false, 0, {}};
  }
  const char first = key[kPrefixLength];
  if (first >= 0x28 && first <= 0x2F) {
    ReportKept(observe::Fate::kRefusedNumber, {}, key + kPrefixLength);
    return {false, -1, {}};
  }
  return {true, 0, SplitNumber(key + kPrefixLength)};
}

// Stores the number of the key, cut to the width of its destination.
template <class T, std::size_t kSize>
void StoreKeyNumber(const Numbered& parts, const char* key, const char (&/*prefix*/)[kSize],
                    T* destination) {
  *destination = numbers::Narrow<T>(parts.Number);
  observe::Report([&] {
    observe::Stores event;
    event.Destination = destination;
    event.Parser = kInteger.Name;
    event.Text = key + kSize - 1;
    event.Consumed = static_cast<std::size_t>(parts.End - event.Text);
    event.Read.Is = observe::Number::Type::kSigned;
    event.Read.Signed = parts.Number;
    event.Stored.Is = observe::Number::Type::kSigned;
    event.Stored.Signed = *destination;
    return event;
  });
}

}  // namespace rows
