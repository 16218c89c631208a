#include "host/text_template.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <utility>

#include "host/page.h"
#include "host/printable.h"
#include "model/codes.h"

namespace host {
namespace {

using QtSts::TreeElement;
using QtSts::TreeValue;
using QtSts::ValueKind;

constexpr QtSts::Code kStatusFlagNames[] = {
    {QtSts::kFlagPowerOff, "power off"},
    {QtSts::kFlagWatchdogEvent, "watchdog event"},
    {QtSts::kFlagTrackerActive, "pixel tracker active"},
    {QtSts::kFlagTrackerBlanked, "output blanked"},
    {QtSts::kFlagAmbientFailure, "ambient sensor failure"},
    {QtSts::kFlagAmbientOverride, "ambient override"},
};

std::string Hexadecimal(std::uint64_t number, std::size_t digits) {
  char buffer[16];
  char* const end = std::to_chars(std::begin(buffer), std::end(buffer), number, 16).ptr;
  std::string text(std::begin(buffer), end);
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char c) { return c >= 'a' ? static_cast<char>(c - 'a' + 'A') : c; });
  return "0x" + std::string(digits - std::min(digits, text.size()), '0') + text;
}

// "none" or "0x1800: pixel tracker active, output blanked".
std::string FlagNames(std::uint64_t flags) {
  if (flags == 0) {
    return "none";
  }
  std::string text = Hexadecimal(flags, 0);
  const char* separator = ": ";
  for (const QtSts::Code& flag : kStatusFlagNames) {
    if ((flags & flag.Value) != 0) {
      text.append(separator).append(flag.Text);
      separator = ", ";
    }
  }
  return text;
}

// "P1DT2H3M4S" as "1 d 2 h 3 min 4 s".
std::string Duration(const std::string& text) {
  constexpr std::pair<char, const char*> kUnits[] = {{'P', ""},    {'T', ""},      {'D', " d "},
                                                     {'H', " h "}, {'M', " min "}, {'S', " s "}};
  std::string spelled;
  for (const char c : text) {
    const auto* const unit =
        std::find_if(std::begin(kUnits), std::end(kUnits),
                     [c](const auto& candidate) { return candidate.first == c; });
    if (unit != std::end(kUnits)) {
      spelled += unit->second;
    } else {
      spelled += c;
    }
  }
  return spelled;
}

// Of kelvins.
std::string Celsius(double kelvins) {
  char text[32];
  const auto [end, error] = std::to_chars(std::begin(text), std::end(text), kelvins - 273.15,
                                          std::chars_format::fixed, 2);
  return std::string(text, end) + kTie + "\u00B0C";
}

// The name that `names` ("0=off,1=on") gives to `text`; false when it gives none.
bool GivenName(std::string_view names, const std::string& text, std::string* name) {
  while (!names.empty()) {
    const std::size_t comma = names.find(',');
    const std::string_view pair = names.substr(0, comma);
    const std::size_t equals = pair.find('=');
    if (pair.substr(0, equals) == text) {
      *name = pair.substr(equals + 1);
      return true;
    }
    names = comma == std::string_view::npos ? "" : names.substr(comma + 1);
  }
  return false;
}

std::string CodeName(const TreeValue& value) {
  const char* const name = value.CodeName();
  return name != nullptr ? name : "unknown (" + value.Written() + ")";
}

std::string WithUnit(const TreeValue& value, const std::string& text) {
  const char* const unit = value.Listed().Unit;
  return *unit == '\0' ? text : text + kTie + unit;
}

std::string Commas(const TreeValue& value) {
  std::string text;
  for (const char c : value.Written()) {
    text += c == ' ' ? ", " : std::string(1, c);
  }
  return text.empty() ? "none" : WithUnit(value, text);
}

std::string Plain(const TreeValue& value, const std::string& written) {
  if (!value.Listed().Codes.empty()) {
    return CodeName(value);
  }
  if (value.Kind() == ValueKind::kFlag) {
    return value.Flag() ? "yes" : "no";
  }
  if (value.Kind() == ValueKind::kReals) {
    return Commas(value);
  }
  return written.empty() ? "" : WithUnit(value, written);
}

std::string Formatted(const TreeValue& value, std::string_view format) {
  if (format.starts_with("hex")) {
    std::size_t digits = 0;
    std::from_chars(format.data() + 3, format.data() + format.size(), digits);
    return Hexadecimal(value.Unsigned(), digits);
  }
  if (format == "flags") {
    return FlagNames(value.Unsigned());
  }
  if (format == "power") {
    return (value.Unsigned() & QtSts::kFlagPowerOff) != 0 ? "off" : "on";
  }
  if (format == "celsius") {
    return Celsius(static_cast<double>(value.Unsigned()));
  }
  std::string written = value.Written();
  if (format == "bare") {
    return written;
  }
  if (format == "duration") {
    return Duration(written);
  }
  std::string name;
  return GivenName(format, written, &name) ? name : Plain(value, written);
}

// What stands in place of `place`; empty when it is not reported.
std::string FillPlace(std::string_view place, const TreeElement& element,
                      const ValueSet& unreported, Filled* filled) {
  if (place == "Class") {
    return element.Class()->Name;
  }
  if (place == "#") {
    return std::to_string(element.Position());
  }
  const std::size_t colon = place.find(':');
  const TreeValue* const value = element.FindValue(place.substr(0, colon));
  if (value == nullptr || unreported.contains(value)) {
    return "";
  }
  filled->Used.push_back(value);
  return Printable(
      Formatted(*value, colon == std::string_view::npos ? "" : place.substr(colon + 1)));
}

}  // namespace

Filled Fill(std::string_view text_template, const TreeElement& element,
            const ValueSet& unreported) {
  Filled filled;
  bool places = false;
  bool reported = false;
  while (!text_template.empty()) {
    const std::size_t open = text_template.find('{');
    filled.Text += text_template.substr(0, open);
    if (open == std::string_view::npos) {
      break;
    }
    const std::size_t close = text_template.find('}', open);
    const std::string text =
        FillPlace(text_template.substr(open + 1, close - open - 1), element, unreported, &filled);
    places = true;
    reported = reported || !text.empty();
    filled.Text += text.empty() ? kNotReported : text;
    text_template.remove_prefix(close + 1);
  }
  if (places && !reported) {
    filled.Text = kNotReported;
  }
  return filled;
}

}  // namespace host
