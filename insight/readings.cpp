#include "insight/readings.h"

#include <algorithm>
#include <cstddef>

#include "insight/reading_rules.h"
#include "model/beacons.h"
#include "model/can_sensors.h"
#include "model/dcio_boards.h"
#include "model/document.h"
#include "model/onboard_sensors.h"

namespace insight {
namespace {

using QtSts::TreeElement;
using QtSts::TreeValue;
using Number = std::optional<double>;

constexpr Range kAny;
constexpr Range kCelsius = {.Least = -60, .Most = 150};
constexpr double kZeroCelsius = 273.15;  // kelvin
constexpr Range kKelvin = {.Least = 213, .Most = 423};
constexpr Range kPercent = {.Least = 0, .Most = 100};
constexpr Range kLatitude = {.Least = -90, .Most = 90};
constexpr Range kLongitude = {.Least = -180, .Most = 180};

Number Plain(const TreeElement&, const TreeValue& value) { return NumberOf(value); }

Number Celsius(const TreeElement&, const TreeValue& value) {
  return NumberOf(value) - kZeroCelsius;
}

// -1 stands for a counter without a source.
Number Count(const TreeElement&, const TreeValue& value) {
  return value.Signed() < 0 ? Number() : NumberOf(value);
}

Number PercentOf(const TreeElement& element, const TreeValue& value, const char* total) {
  const TreeValue* const all = element.FindValue(total);
  const bool known = all != nullptr && NumberOf(*all) > 0;
  return known ? NumberOf(value) * 100 / NumberOf(*all) : Number();
}

Number Memory(const TreeElement& element, const TreeValue& value) {
  return PercentOf(element, value, "MemoryTotal");
}

Number Storage(const TreeElement& element, const TreeValue& value) {
  return PercentOf(element, value, "StorageTotal");
}

// Of a fan that stands still another finding speaks.
Number ShareOf(double speed, double usual) {
  return speed > 0 && usual > 0 ? speed * 100 / usual : Number();
}

// The fans of a board that all turn say how fast they should; two do not say which one is wrong.
Number BesideOthers(const TreeElement& fan, const TreeValue& value) {
  constexpr std::size_t kFewest = 3;
  std::vector<double> speeds;
  for (const TreeElement& other : fan.Parent()->Children()) {
    speeds.push_back(NumberOf(*other.FindValue(value.Listed().Name)));
  }
  const auto middle = speeds.begin() + static_cast<std::ptrdiff_t>(speeds.size() / 2);
  std::ranges::nth_element(speeds, middle);
  return speeds.size() < kFewest ? Number() : ShareOf(NumberOf(value), *middle);
}

Number BesideAverage(const TreeElement& fan, const TreeValue& value) {
  return ShareOf(NumberOf(value), NumberOf(*fan.FindValue("AverageRpm")));
}

constexpr const char* kNoLimit = nullptr;

constexpr const char* kHeat = "fans, filters, doors and heating of the cabinet; the sensor itself";
constexpr const char* kFan = "the fan: dirty, blocked or worn out; its supply";
constexpr const char* kCable = "cable, plugs and the switch at its other end";
constexpr const char* kWriter = "the program that writes the row";
constexpr const char* kReadable = "the sensor, its cable, and the program that writes its rows";

constexpr ReadingRule kRules[] = {
    {QtSts::CStatus::Class, "MemoryFree", "memory-free", kAny, "free memory",
     "which programs of the controller take the memory", &Memory},
    {QtSts::CStatus::Class, "StorageFree", "storage-free", kAny, "free storage",
     "which files of the controller take the space: logs, media, old packages", &Storage},
    {QtSts::CNetworkDevice::Class, "Statistics/First", "link-transitions", kAny, "link transitions",
     kCable, &Count},
    {QtSts::CNetworkDevice::Class, "Statistics/Second", "link-errors", kAny, "link errors", kCable,
     &Count},
    {QtSts::CDCIODevice::Class, "ErrorCounter", "device-errors", kAny, "device errors",
     "cable and address of the device", &Plain},
    {QtSts::CSensor::Class, "SyncLossCounter", "sync-losses", kAny, "synchronisation losses",
     "cable and termination of the sensor's bus", &Plain},
    {QtSts::FanRpm::Class, "Rpm", "fan-speed", kAny, "fan speed, beside the board's other fans,",
     kFan, &BesideOthers},
    {QtSts::CCANFanRpmSensor::Class, "CurrentRpm", "fan-speed", kAny,
     "fan speed, beside its average,", kFan, &BesideAverage},
    {QtSts::CCANTempSensor::Class, "Celsius", "temperature", kCelsius, "temperature", kHeat,
     &Plain},
    {QtSts::CCANIsolationBoardSensor::Class, "Celsius", "temperature", kCelsius, "temperature",
     kHeat, &Plain},
    {QtSts::COnboardTempSensor::Class, "Celsius", "temperature", kCelsius, "temperature", kHeat,
     &Plain},
    {QtSts::CBeaconRecord::Class, "TemperatureKelvin", "temperature", kKelvin, "temperature", kHeat,
     &Celsius},
    {QtSts::CBeaconRecord::Class, "Humidity", kNoLimit, kPercent, "humidity", kReadable, &Plain},
    {QtSts::CCANHumiditySensor::Class, "Humidity", kNoLimit, kPercent, "humidity", kReadable,
     &Plain},
    {QtSts::CCANMultiDirectionalSensor::Class, "Latitude", kNoLimit, kLatitude, "latitude",
     kReadable, &Plain},
    {QtSts::CCANMultiDirectionalSensor::Class, "Longitude", kNoLimit, kLongitude, "longitude",
     kReadable, &Plain},
    {QtSts::CDimming::Class, "DimmingLevel", kNoLimit, kPercent, "brightness that is asked for",
     kWriter, &Plain},
    {QtSts::CDimming::Class, "ActualDimmingLevel", kNoLimit, kPercent, "brightness", kWriter,
     &Plain},
};

}  // namespace

std::span<const ReadingRule> ReadingRules() { return kRules; }

FoundValue FindIn(const TreeElement& element, const QtSts::ClassInfo& info, std::string_view path) {
  if (!element.IsA(info)) {
    return {};
  }
  const std::size_t slash = path.rfind('/');
  const bool own = slash == std::string_view::npos;
  const TreeElement* const holder = own ? &element : element.Find(path.substr(0, slash));
  return holder == nullptr
             ? FoundValue()
             : FoundValue{holder, holder->FindValue(own ? path : path.substr(slash + 1))};
}

double NumberOf(const TreeValue& value) {
  switch (value.Kind()) {
    case QtSts::ValueKind::kUnsigned:
      return static_cast<double>(value.Unsigned());
    case QtSts::ValueKind::kSigned:
      return static_cast<double>(value.Signed());
    case QtSts::ValueKind::kFloat:
    case QtSts::ValueKind::kDouble:
      return value.Real();
    default:
      return 0;
  }
}

bool IsOfConnected(const TreeElement& element) {
  for (const TreeElement* holder = &element; holder != nullptr; holder = holder->Parent()) {
    if (const TreeValue* const connected = holder->FindValue("Connected")) {
      return connected->Flag();
    }
  }
  return true;
}

std::vector<Reading> Readings(const Snapshot& snapshot) {
  std::vector<Reading> readings;
  if (snapshot.Database.Unchanged) {
    readings.push_back(
        {"database-age", "", static_cast<double>(snapshot.Database.Unchanged->count())});
  }
  for (const TreeElement& element : snapshot.Document.Elements()) {
    for (const ReadingRule& rule : kRules) {
      const FoundValue found =
          rule.Limit == kNoLimit ? FoundValue() : FindIn(element, rule.Class, rule.Field);
      if (found.Value == nullptr || !rule.Possible.Holds(NumberOf(*found.Value)) ||
          !IsOfConnected(element)) {
        continue;
      }
      const Number number = rule.Read(element, *found.Value);
      const std::string path = found.Holder->PathOf(*found.Value);
      if (number && snapshot.IsReported(path)) {
        readings.push_back({rule.Limit, path, *number});
      }
    }
  }
  return readings;
}

}  // namespace insight
