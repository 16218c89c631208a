#include "host/limit_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <string_view>

namespace host {
namespace {

std::string Number(double number) {
  char text[512];
  char* const end =
      std::to_chars(std::begin(text), std::end(text), number, std::chars_format::fixed).ptr;
  return {std::begin(text), end};
}

// "-30 to 65", "min 10 %"; "" where there is no limit.
std::string RangeText(const insight::Range& range, const std::string& unit) {
  if (range.IsEverything()) {
    return "";
  }
  const bool least = std::isfinite(range.Least);
  const bool most = std::isfinite(range.Most);
  std::string text = range.Excluded ? "not " : "";
  if (least != most) {
    text += least ? "min " : "max ";
  }
  text += least ? Number(range.Least) : "";
  text += least && most ? " to " : "";
  return text + (most ? Number(range.Most) : "") + unit;
}

// "-30 to 65 (-40 to 80)", "min 4.5 V (3 V)"
std::string LimitText(const insight::Limits& limits, const char* name, const std::string& unit) {
  const insight::Limit& limit = limits.Of(name);
  const std::string warning = RangeText(limit.Warning, unit);
  std::string critical = RangeText(limit.Critical, unit);
  for (const std::string_view words : {"min ", "max "}) {
    if (warning.starts_with(words) && critical.starts_with(words)) {
      critical.erase(0, words.size());  // said once
    }
  }
  return warning + (critical.empty() ? "" : (warning.empty() ? "(" : " (") + critical + ")");
}

}  // namespace

std::string LimitText(const insight::Limits& limits, const Measured& measured) {
  const auto table = insight::LimitTable();
  const std::string_view unit =
      std::ranges::find(table, std::string_view(measured.Limit), &insight::LimitInfo::Name)->Unit;
  std::string text =
      LimitText(limits, measured.Limit, unit == "V" || unit == "%" ? " " + std::string(unit) : "");
  if (unit != "%") {
    return text;
  }
  const std::string volts =
      measured.InVolts == nullptr ? "" : LimitText(limits, measured.InVolts, " V");
  const std::string_view words = "min ";
  if (volts.starts_with(words) && text.starts_with(words)) {
    text.erase(0, words.size());  // said once
  }
  return (volts.empty() ? "not 0" : volts) + (text.empty() ? "" : ", " + text);
}

}  // namespace host
