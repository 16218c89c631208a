#include "insight/limits.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <stdexcept>
#include <string>

namespace insight {
namespace {

constexpr Range kAll;

constexpr Range AtLeast(double least) { return {.Least = least}; }
constexpr Range UpTo(double most) { return {.Least = 0, .Most = most}; }

// For displays outdoors: frost and sun on the cabinet are no fault, frost and heat that its
// electronics are not made for are. Counts are since the start of what counts them.
constexpr LimitInfo kLimits[] = {
    {"database-age", "s", "For how long the database has not changed", {UpTo(86400), kAll}},
    {"temperature", "C", "Each temperature of a connected sensor", {{-30, 65}, {-40, 80}}},
    {"humidity", "%", "Each humidity of a connected sensor", {AtLeast(1), kAll}},
    {"memory-free", "%", "Free memory, page cache included", {AtLeast(10), AtLeast(5)}},
    {"storage-free", "%", "Free space of the root file system", {AtLeast(10), AtLeast(5)}},
    {"fan-speed",
     "%",
     "Speed of each fan, of the middle one of its board or of its average",
     {AtLeast(25), kAll}},
    {"airflow", "%", "Airflow of a minute, of its long-term average", {AtLeast(25), kAll}},
    {"link-errors", "c", "Errors of each network device", {UpTo(1000), kAll}},
    {"link-transitions",
     "c",
     "How often the link of each network device came or went",
     {UpTo(100), kAll}},
    {"sync-losses", "c", "Losses of synchronisation of each connected sensor", {UpTo(100), kAll}},
    {"device-errors", "c", "Errors that each DCIO device counts", {UpTo(100), kAll}},
    {"signal-losses",
     "c",
     "How often the signal of each video input that has one was lost, or was not valid",
     {UpTo(100), kAll}},
    {"output-voltage",
     "%",
     "Lowest output voltage of each power-supply board that is not 0, of its highest; output of "
     "each isolation board, of the middle one of them",
     {AtLeast(90), AtLeast(50)}},
    {"input-voltage", "%", "Input voltages likewise", {AtLeast(75), kAll}},
    {"supply-volts", "V", "Highest output voltage of each power-supply board", {AtLeast(20), kAll}},
    {"isolation-volts",
     "V",
     "Input and output of each isolation board",
     {AtLeast(4.5), AtLeast(3)}},
    {"brightness", "%", "Brightness in force, of the one that is asked for", {{25, 400}, kAll}},
};

std::size_t PositionOf(std::string_view name) {
  const auto* const info = std::ranges::find(kLimits, name, &LimitInfo::Name);
  if (info == std::end(kLimits)) {
    throw std::out_of_range("no limit " + std::string(name));
  }
  return static_cast<std::size_t>(info - std::begin(kLimits));
}

std::optional<double> ParseNumber(std::string_view text) {
  double number = 0;
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || rest != end || !std::isfinite(number)) {
    return std::nullopt;
  }
  return number;
}

// As short as it reads back, without an exponent.
std::string Number(double number) {
  char buffer[512];
  char* const end =
      std::to_chars(std::begin(buffer), std::end(buffer), number, std::chars_format::fixed).ptr;
  return {std::begin(buffer), end};
}

}  // namespace

std::optional<Range> ParseRange(std::string_view text) {
  Range range;
  range.Excluded = text.starts_with('@');
  text.remove_prefix(range.Excluded ? 1 : 0);
  const std::size_t colon = text.find(':');
  const std::string_view least = colon == std::string_view::npos ? "" : text.substr(0, colon);
  const std::string_view most = colon == std::string_view::npos ? text : text.substr(colon + 1);
  if (least != "~") {
    const std::optional<double> number = ParseNumber(least.empty() ? "0" : least);
    if (!number) {
      return std::nullopt;
    }
    range.Least = *number;
  }
  if (colon == std::string_view::npos || !most.empty()) {
    const std::optional<double> number = ParseNumber(most);
    if (!number) {
      return std::nullopt;
    }
    range.Most = *number;
  } else if (text == ":") {
    return std::nullopt;
  }
  return range.Least <= range.Most ? std::optional(range) : std::nullopt;
}

std::string Written(const Range& range) {
  if (range.IsEverything()) {
    return "";
  }
  return (range.Excluded ? "@" : "") + (std::isinf(range.Least) ? "~" : Number(range.Least)) + ":" +
         (std::isinf(range.Most) ? "" : Number(range.Most));
}

std::span<const LimitInfo> LimitTable() { return kLimits; }

Limits::Limits() {
  for (const LimitInfo& info : kLimits) {
    limits_.push_back(info.Default);
  }
}

const Limit& Limits::Of(std::string_view name) const { return limits_[PositionOf(name)]; }
Limit& Limits::Of(std::string_view name) { return limits_[PositionOf(name)]; }

}  // namespace insight
