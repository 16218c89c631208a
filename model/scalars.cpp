// How values of each type are written as text and read back: shortest form, independent of the
// locale, exact in both directions.
#include <charconv>
#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "model/listing.h"

namespace QtSts::listing {
namespace {

template <class T>
void FormatNumber(const void* value, std::string* text) {
  const T number = *static_cast<const T*>(value);
  if constexpr (std::is_floating_point_v<T>) {
    if (std::isnan(number)) {
      *text += "NaN";
      return;
    }
    if (std::isinf(number)) {
      *text += number > 0 ? "INF" : "-INF";
      return;
    }
  }
  char digits[32];
  *text += std::string_view(
      digits, static_cast<std::size_t>(
                  std::to_chars(std::begin(digits), std::end(digits), number).ptr - digits));
}

template <class T>
bool ParseNumber(std::string_view text, void* value) {
  T number{};
  if constexpr (std::is_floating_point_v<T>) {
    if (text == "NaN" || text == "INF" || text == "-INF") {
      number =
          text == "NaN" ? std::numeric_limits<T>::quiet_NaN() : std::numeric_limits<T>::infinity();
      *static_cast<T*>(value) = text[0] == '-' ? -number : number;
      return true;
    }
    // from_chars knows names of its own ("inf", "nan(...)") that no document holds.
    if (text.find_first_not_of("0123456789+-.eE") != std::string_view::npos) {
      return false;
    }
  }
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  if (result.ec != std::errc() || result.ptr != end) {
    return false;
  }
  *static_cast<T*>(value) = number;
  return true;
}

void FormatBool(const void* value, std::string* text) {
  *text += *static_cast<const bool*>(value) ? "true" : "false";
}

bool ParseBool(std::string_view text, void* value) {
  if (text != "true" && text != "false") {
    return false;
  }
  *static_cast<bool*>(value) = text == "true";
  return true;
}

void FormatText(const void* value, std::string* text) {
  *text += *static_cast<const std::string*>(value);
}

bool ParseText(std::string_view text, void* value) {
  *static_cast<std::string*>(value) = text;
  return true;
}

// Numbers in order, separated by one blank.
void FormatFloats(const void* value, std::string* text) {
  const char* separator = "";
  for (const float number : *static_cast<const std::vector<float>*>(value)) {
    *text += separator;
    FormatNumber<float>(&number, text);
    separator = " ";
  }
}

bool ParseFloats(std::string_view text, void* value) {
  std::vector<float> numbers;
  while (!text.empty()) {
    const std::size_t blank = text.find(' ');
    if (!ParseNumber<float>(text.substr(0, blank), &numbers.emplace_back())) {
      return false;
    }
    text = blank == std::string_view::npos ? "" : text.substr(blank + 1);
  }
  *static_cast<std::vector<float>*>(value) = std::move(numbers);
  return true;
}

template <class T>
constexpr ScalarType Number(const char* schema_type) {
  return {schema_type, &FormatNumber<T>, &ParseNumber<T>};
}

}  // namespace

constinit const ScalarType kBool = {"xs:boolean", &FormatBool, &ParseBool};
constinit const ScalarType kUInt8 = Number<std::uint8_t>("xs:unsignedByte");
constinit const ScalarType kUInt16 = Number<std::uint16_t>("xs:unsignedShort");
constinit const ScalarType kUInt32 = Number<std::uint32_t>("xs:unsignedInt");
constinit const ScalarType kUInt64 = Number<std::uint64_t>("xs:unsignedLong");
constinit const ScalarType kInt32 = Number<std::int32_t>("xs:int");
constinit const ScalarType kInt64 = Number<std::int64_t>("xs:long");
constinit const ScalarType kFloat = Number<float>("xs:float");
constinit const ScalarType kDouble = Number<double>("xs:double");
constinit const ScalarType kText = {"xs:string", &FormatText, &ParseText};
constinit const ScalarType kFloats = {"floats", &FormatFloats, &ParseFloats};

}  // namespace QtSts::listing
