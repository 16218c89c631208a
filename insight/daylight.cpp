#include "insight/daylight.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

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

// All that the light sensor reads; nothing for an element that is none.
std::vector<double> LightOf(const TreeElement& sensor) {
  std::vector<double> light;
  for (const auto& [info, field] : kLight) {
    if (sensor.IsA(info)) {
      const double read = NumberOf(*sensor.FindValue(field));
      light.push_back(read == kOverridden ? 0 : read);
    }
  }
  return light;
}

// NOLINTNEXTLINE(misc-no-recursion): as deep as the document
bool SeesLight(const TreeElement& element) {
  const auto is_light = [](double read) { return std::isfinite(read) && read >= kLeastByDay; };
  if (std::ranges::any_of(LightOf(element), is_light) && IsOfConnected(element)) {
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

bool IsLight(const TreeElement& element, const TreeValue& value) {
  return std::ranges::any_of(kLight, [&](const auto& each) {
    return value.Listed().Name == std::string_view(each.Field) && element.IsA(each.Class);
  });
}

bool IsBlind(const TreeElement& sensor) {
  const std::vector<double> light = LightOf(sensor);
  return !light.empty() && std::ranges::all_of(light, [](double read) { return read == 0; });
}

bool IsByDay(const TreeElement& root) { return SeesLight(root) || IsByDayByClock(root); }

}  // namespace insight
