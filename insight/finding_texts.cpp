#include "insight/finding_texts.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <utility>

namespace insight {
namespace {

// Where the value stands in a message.
constexpr std::string_view kValue = "{}";
constexpr std::string_view kHexadecimal = "{0x}";

std::string HexadecimalDigits(std::uint64_t number) {
  char buffer[16];
  return {buffer, std::to_chars(std::begin(buffer), std::end(buffer), number, 16).ptr};
}

}  // namespace

Finding MakeFinding(const char* id, Severity level, std::string message, const char* hint) {
  Finding finding;
  finding.Id = id;
  finding.Level = level;
  finding.Message = std::move(message);
  finding.Hint = hint;
  return finding;
}

std::string CureOf(const Remark& mistake) {
  std::string cure = InfoOf(mistake.What).Cure;
  cure.front() = static_cast<char>(cure.front() - 'A' + 'a');
  return "the program that writes the row: " + cure;
}

std::string Rounded(double number) {
  char buffer[400];
  std::string text(
      std::begin(buffer),
      std::to_chars(std::begin(buffer), std::end(buffer), number, std::chars_format::fixed, 2).ptr);
  text.erase(text.find_last_not_of('0') + 1);
  text.erase(text.find_last_not_of('.') + 1);
  return text;
}

std::string WithUnit(const std::string& number, std::string_view unit) {
  return unit.empty() ? number : number + " " + std::string(unit);
}

std::string Duration(std::chrono::seconds seconds) {
  constexpr std::pair<const char*, std::int64_t> kUnits[] = {
      {" d", 86400}, {" h", 3600}, {" min", 60}, {" s", 1}};
  std::string text;
  std::int64_t rest = seconds.count();
  for (const auto& [unit, size] : kUnits) {
    if (rest >= size || (size == 1 && text.empty())) {
      const bool second = !text.empty();
      text += (second ? " " : "") + std::to_string(rest / size) + unit;
      rest %= size;
      if (second) {
        break;
      }
    }
  }
  return text;
}

std::string TextOf(const QtSts::TreeValue& value) {
  if (value.CodeName() != nullptr) {
    return value.CodeName();
  }
  std::string text = value.Written();
  if (value.Kind() == QtSts::ValueKind::kReals) {
    for (std::size_t blank = text.find(' '); blank != std::string::npos;
         blank = text.find(' ', blank + 2)) {
      text.insert(blank, ",");
    }
  }
  return WithUnit(text, value.Listed().Unit);
}

std::string WithValue(const char* message, const QtSts::TreeValue& value) {
  std::string text = message;
  if (const std::size_t digits = text.find(kHexadecimal); digits != std::string::npos) {
    text.replace(digits, kHexadecimal.size(), HexadecimalDigits(value.Unsigned()));
  } else if (const std::size_t place = text.find(kValue); place != std::string::npos) {
    text.replace(place, kValue.size(), TextOf(value));
  }
  return text;
}

std::string WithShare(const char* text, const std::string& share) {
  std::string whole = text;
  const std::size_t place = whole.find(kValue);
  return place == std::string::npos ? whole : whole.replace(place, kValue.size(), share);
}

std::string OutsideOf(const Range& range, const std::string& text, double number,
                      std::string_view unit) {
  if (range.Excluded) {
    return text + ", between " + Rounded(range.Least) + " and " +
           WithUnit(Rounded(range.Most), unit);
  }
  const bool above = number > range.Most;
  return text + (above ? ", above" : ", below") + " the limit of " +
         WithUnit(Rounded(above ? range.Most : range.Least), unit);
}

std::string_view UnitOf(std::string_view limit) {
  const auto table = LimitTable();
  const std::string_view unit = std::ranges::find(table, limit, &LimitInfo::Name)->Unit;
  return unit == "C" ? "°C" : unit == "c" ? "" : unit;
}

}  // namespace insight
