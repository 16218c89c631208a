#include "insight/daylight.h"

#include <algorithm>
#include <ctime>
#include <optional>
#include <string>

#include "insight/reading_rules.h"
#include "model/can_sensors.h"

namespace insight {
namespace {

using QtSts::TreeElement;
using QtSts::TreeValue;

// What each kind of light sensor reads.
constexpr struct {
  const QtSts::ClassInfo& Class;
  const char* Field;
} kLight[] = {
    {QtSts::CCANLightSensor::Class, "OneMinAverage"},
    {QtSts::CCANLightSensor::Class, "TenMinAverage"},
    {QtSts::CCANLightLuxSensor::Class, "OneMinAverage"},
    {QtSts::CCANLightLuxSensor::Class, "OneMinLuxAverage"},
    {QtSts::CCANLightLuxSensor::Class, "TenMinAverage"},
    {QtSts::CCANLightLuxSensor::Class, "TenMinLuxAverage"},
    {QtSts::CCANMultiDirectionalSensor::Class, "Ambient"},
    {QtSts::CCANMultiDirectionalSensor::Class, "Front"},
    {QtSts::CCANMultiDirectionalSensor::Class, "Back"},
};

constexpr double kOverridden = 201;  // stands for an ambient light that is overridden

// Nothing for an element that is no light sensor.
std::optional<double> BrightestOf(const TreeElement& sensor) {
  std::optional<double> brightest;
  for (const auto& [info, field] : kLight) {
    if (sensor.IsA(info)) {
      const double light = NumberOf(*sensor.FindValue(field));
      brightest = std::max(brightest.value_or(0), light == kOverridden ? 0 : light);
    }
  }
  return brightest;
}

// NOLINTNEXTLINE(misc-no-recursion): as deep as the document
bool SeesLight(const TreeElement& element) {
  if (BrightestOf(element) >= kLeastByDay && IsOfConnected(element)) {
    return true;
  }
  for (const TreeElement& child : element.Children()) {
    if (SeesLight(child)) {
      return true;
    }
  }
  return false;
}

constexpr int kHour = 3600;
constexpr int kDay = 24 * kHour;

// The time of day in "2026-11-20T07:31:00-06:00", in seconds, there or in UTC; nothing for what is
// no such text.
std::optional<int> SecondsOfDay(const TreeValue* value, bool in_utc) {
  std::tm parts = {};
  const std::string text(value == nullptr ? "" : value->Written());
  if (strptime(text.c_str(), "%Y-%m-%dT%H:%M:%S%z", &parts) == nullptr) {
    return std::nullopt;
  }
  const long seconds =
      parts.tm_hour * kHour + parts.tm_min * 60 + parts.tm_sec - (in_utc ? parts.tm_gmtoff : 0);
  return static_cast<int>((seconds % kDay + kDay) % kDay);
}

bool IsByDayByClock(const TreeElement& root) {
  const auto now = SecondsOfDay(root.FindValue("LocalTime"), true);
  const auto rises = SecondsOfDay(root.FindValue("SolarInfo/CalculatedSunrise"), true);
  const auto sets = SecondsOfDay(root.FindValue("SolarInfo/CalculatedSunset"), true);
  if (now && rises && sets) {
    const auto since_sunrise = [&](int time) { return (time - *rises + kDay) % kDay; };
    return since_sunrise(*now) >= kHour && since_sunrise(*now) + kHour <= since_sunrise(*sets);
  }
  const auto here = SecondsOfDay(root.FindValue("LocalTime"), false);
  return here && *here >= 10 * kHour && *here < 15 * kHour;
}

}  // namespace

bool IsBlind(const TreeElement& sensor) { return BrightestOf(sensor) == 0; }

bool IsByDay(const TreeElement& root) { return SeesLight(root) || IsByDayByClock(root); }

}  // namespace insight
