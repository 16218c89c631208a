#include "insight/readings.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "insight/daylight.h"
#include "insight/finding_texts.h"
#include "insight/reading_rules.h"
#include "model/beacons.h"
#include "model/can_sensors.h"
#include "model/codes.h"
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
constexpr Range kVolts = {.Least = 0};
constexpr Range kPercent = {.Least = 0, .Most = 100};
constexpr Range kLatitude = {.Least = -90, .Most = 90};
constexpr Range kLongitude = {.Least = -180, .Most = 180};

Number Plain(const TreeElement&, const TreeValue& value, Peers*) { return NumberOf(value); }

Number Celsius(const TreeElement&, const TreeValue& value, Peers*) {
  return NumberOf(value) - kZeroCelsius;
}

// -1 stands for a counter without a source.
Number Count(const TreeElement&, const TreeValue& value, Peers*) {
  return value.Signed() < 0 ? Number() : NumberOf(value);
}

// Without a signal losses are counted as long as nothing is plugged in.
Number OfSignal(const TreeElement& input, const TreeValue& value, Peers*) {
  return input.FindValue("SignalPresent")->Flag() ? NumberOf(value) : Number();
}

Number PercentOf(const TreeElement& element, const TreeValue& value, const char* total) {
  const TreeValue* const all = element.FindValue(total);
  const bool known = all != nullptr && NumberOf(*all) > 0;
  return known ? NumberOf(value) * 100 / NumberOf(*all) : Number();
}

Number Memory(const TreeElement& element, const TreeValue& value, Peers*) {
  return PercentOf(element, value, "MemoryTotal");
}

Number Storage(const TreeElement& element, const TreeValue& value, Peers*) {
  return PercentOf(element, value, "StorageTotal");
}

// Of a fan that stands still, and of 0 V, another finding speaks.
Number ShareOf(double reading, double usual) {
  const bool known = reading > 0 && usual > 0 && std::isfinite(usual);
  return known ? reading * 100 / usual : Number();
}

// The elements of a list that all work say how it should be.
Number ShareOfOthers(const TreeElement& element, const TreeValue& value, Peers* peers) {
  const Number middle = peers->MiddleOf(*element.Parent(), value.Listed().Name);
  return middle ? ShareOf(NumberOf(value), *middle) : Number();
}

Number ShareOfAverage(const TreeElement& fan, const TreeValue& value, Peers*) {
  return ShareOf(NumberOf(value), NumberOf(*fan.FindValue("AverageRpm")));
}

Number ShareOfLongTerm(const TreeElement& sensor, const TreeValue& value, Peers*) {
  return PercentOf(sensor, value, "LongTermAverage");
}

// The lowest that is not 0.
Number ShareOfHighest(const TreeElement&, const TreeValue& value, Peers*) {
  double lowest = 0;
  double highest = 0;
  for (const float volts : value.Reals()) {
    highest = std::max<double>(highest, volts);
    lowest = volts > 0 && (lowest == 0 || volts < lowest) ? volts : lowest;
  }
  return ShareOf(lowest, highest);
}

Number Highest(const TreeElement&, const TreeValue& value, Peers*) {
  const auto highest = std::ranges::max_element(value.Reals());
  return highest != value.Reals().end() && *highest > 0 ? *highest : Number();
}

// The others' where that is higher: compared with them a low one is low already.
Number OrOfOthers(const TreeElement& element, const TreeValue& value, Peers* peers) {
  const double volts = NumberOf(value);
  const Number middle = peers->MiddleOf(*element.Parent(), value.Listed().Name);
  return volts > 0 ? std::max(volts, middle.value_or(0)) : Number();
}

// Whether a schedule, an override or the dark may give another brightness than is asked for.
bool MayDiffer(const TreeElement& dimming) {
  const TreeElement& output = *dimming.Parent();
  const TreeValue& mode = *dimming.FindValue("DimmingMode");
  const std::string_view name = mode.CodeName() == nullptr ? "" : mode.CodeName();
  const std::uint64_t flags = output.FindValue("StatusFlags")->Unsigned();
  if (name == "override" || name == "schedule" ||
      (flags & (QtSts::kFlagAmbientFailure | QtSts::kFlagAmbientOverride)) != 0) {
    return true;
  }
  return (name == "auto" || name == "gps") && !IsByDay(*output.Parent()->Parent());
}

constexpr double kLeastAskedFor = 1;  // percent; a share of less is of 1

Number ShareOfAskedFor(const TreeElement& dimming, const TreeValue& value, Peers* peers) {
  constexpr double kLeast = 20;  // a smaller difference may be on its way
  const TreeValue& level = *dimming.FindValue("DimmingLevel");
  const double asked_for = NumberOf(level);
  const bool known = peers->IsKnown(dimming, level) && kPercent.Holds(asked_for) &&
                     std::abs(NumberOf(value) - asked_for) >= kLeast && !MayDiffer(dimming);
  return known ? ShareOf(NumberOf(value), std::max(asked_for, kLeastAskedFor)) : Number();
}

std::string ThoughAskedFor(const TreeElement& dimming) {
  const TreeValue& level = *dimming.FindValue("DimmingLevel");
  return NumberOf(level) < kLeastAskedFor ? ", though " + TextOf(level) + " is asked for" : "";
}

constexpr const char* kNoLimit = nullptr;
constexpr const char* kNoHint = nullptr;  // without a limit nothing is outside of it
constexpr const char* kNoShare = nullptr;
constexpr const char* kOwn = "";  // compared with the limit is another one's

constexpr const char* kHeat = "fans, filters, doors and heating of the cabinet; the sensor itself";
constexpr const char* kFan = "the fan: dirty, blocked or worn out; its supply";
constexpr const char* kCable = "cable, plugs and the switch at its other end";
constexpr const char* kAirflow = "filters and fans of the cabinet; the sensor itself";
constexpr const char* kVideo = "the player at this input, its cable and plugs";
constexpr const char* kSupplyInput = "fuse and wiring of that input, and what feeds it";
constexpr const char* kSupplyOutput = "the power supply of that output, and its load";
constexpr const char* kBoardInput = "the supply of the board";
constexpr const char* kBoardOutput = "the board and what it feeds";
constexpr const char* kBrightness =
    "heat and content, which lower it; light sensors; the program that sets the brightness";
constexpr const char* kReadable = "the sensor, its cable, and the program that writes its rows";

constexpr ReadingRule kRules[] = {
    {QtSts::CStatus::Class, "MemoryFree", "memory-free", kAny, "free memory", " is {} of all",
     "which programs of the controller take the memory", &Memory},
    {QtSts::CStatus::Class, "StorageFree", "storage-free", kAny, "free storage", " is {} of all",
     "which files of the controller take the space: logs, media, old packages", &Storage},
    {QtSts::CNetworkDevice::Class, "Statistics/First", "link-transitions", kAny, "link transitions",
     kNoShare, kCable, &Count},
    {QtSts::CNetworkDevice::Class, "Statistics/Second", "link-errors", kAny, "link errors",
     kNoShare, kCable, &Count},
    {QtSts::CDCIODevice::Class, "ErrorCounter", "device-errors", kAny, "device errors", kNoShare,
     "cable and address of the device", &Plain},
    {QtSts::CSensor::Class, "SyncLossCounter", "sync-losses", kAny, "synchronisation losses",
     kNoShare, "cable and termination of the sensor's bus", &Plain},
    {QtSts::CDigitalInput::Class, "Statistics/First", "signal-losses", kAny, "signal losses",
     kNoShare, kVideo, &OfSignal},
    {QtSts::CDigitalInput::Class, "Statistics/Second", "signal-losses", kAny,
     "pictures that were not valid", kNoShare, kVideo, &OfSignal},
    {QtSts::CCANPsrbSensor::Class, "InputVoltages", "input-voltage", kVolts, "input voltage",
     ": the lowest above 0 is {} of the highest", kSupplyInput, &ShareOfHighest},
    {QtSts::CCANPsrbSensor::Class, "OutputVoltages", "output-voltage", kVolts, "output voltage",
     ": the lowest above 0 is {} of the highest", kSupplyOutput, &ShareOfHighest},
    {QtSts::CCANPsrbSensor::Class, "OutputVoltages", "supply-volts", kAny,
     "highest output voltage of the board", kNoShare,
     "the power supplies of the board, and what feeds them", &Highest},
    {QtSts::CCANIsolationBoardSensor::Class, "InputVoltage", "isolation-volts", kAny,
     "input voltage", kOwn, kBoardInput, &OrOfOthers},
    {QtSts::CCANIsolationBoardSensor::Class, "OutputVoltage", "isolation-volts", kAny,
     "output voltage", kOwn, kBoardOutput, &OrOfOthers},
    {QtSts::CCANIsolationBoardSensor::Class, "InputVoltage", "input-voltage", kVolts,
     "input voltage", " is {} of that of the other isolation boards", kBoardInput, &ShareOfOthers},
    {QtSts::CCANIsolationBoardSensor::Class, "OutputVoltage", "output-voltage", kVolts,
     "output voltage", " is {} of that of the other isolation boards", kBoardOutput,
     &ShareOfOthers},
    {QtSts::FanRpm::Class, "Rpm", "fan-speed", kAny, "fan speed",
     " is {} of that of the board's other fans", kFan, &ShareOfOthers},
    {QtSts::CCANFanRpmSensor::Class, "CurrentRpm", "fan-speed", kAny, "fan speed",
     " is {} of its average", kFan, &ShareOfAverage},
    {QtSts::CCANAirflowSensor::Class, "OneMinAverage", "airflow", kAny, "airflow",
     " is {} of its long-term average", kAirflow, &ShareOfLongTerm},
    {QtSts::CCANTempSensor::Class, "Celsius", "temperature", kCelsius, "temperature", kNoShare,
     kHeat, &Plain},
    {QtSts::CCANIsolationBoardSensor::Class, "Celsius", "temperature", kCelsius, "temperature",
     kNoShare, kHeat, &Plain},
    {QtSts::COnboardTempSensor::Class, "Celsius", "temperature", kCelsius, "temperature", kNoShare,
     kHeat, &Plain},
    {QtSts::CBeaconRecord::Class, "TemperatureKelvin", "temperature", kKelvin, "temperature",
     kNoShare, kHeat, &Celsius},
    {QtSts::CBeaconRecord::Class, "Humidity", "humidity", kPercent, "humidity", kNoShare, kReadable,
     &Plain},
    {QtSts::CCANHumiditySensor::Class, "Humidity", "humidity", kPercent, "humidity", kNoShare,
     kReadable, &Plain},
    {QtSts::CCANMultiDirectionalSensor::Class, "Latitude", kNoLimit, kLatitude, "latitude",
     kNoShare, kNoHint, &Plain},
    {QtSts::CCANMultiDirectionalSensor::Class, "Longitude", kNoLimit, kLongitude, "longitude",
     kNoShare, kNoHint, &Plain},
    {QtSts::CDimming::Class, "DimmingLevel", kNoLimit, kPercent, "brightness that is asked for",
     kNoShare, kNoHint, &Plain},
    {QtSts::CDimming::Class, "ActualDimmingLevel", "brightness", kPercent, "brightness",
     " is {} of the one asked for", kBrightness, &ShareOfAskedFor, &ThoughAskedFor},
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

bool Peers::IsKnown(const TreeElement& element, const TreeValue& value) const {
  const std::string path = element.PathOf(value);
  return snapshot_.IsReported(path) && !wrong_rows_.HasWritten(path);
}

std::optional<double> Peers::MiddleOf(const TreeElement& list, const char* field) {
  const auto [entry, first] = middles_.try_emplace({&list, field});
  if (!first) {
    return entry->second;
  }
  std::vector<double> values;
  for (const TreeElement& element : list.Children()) {
    const TreeValue* const value = element.FindValue(field);
    if (value != nullptr && IsOfConnected(element) && std::isfinite(NumberOf(*value)) &&
        NumberOf(*value) >= 0 && IsKnown(element, *value)) {
      values.push_back(NumberOf(*value));
    }
  }
  constexpr std::size_t kFewest = 3;
  if (values.size() >= kFewest) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle);
    entry->second = *middle;
  }
  return entry->second;
}

std::vector<Reading> Readings(const Snapshot& snapshot) {
  std::vector<Reading> readings;
  const WrongRows wrong_rows(snapshot);
  Peers peers(snapshot, wrong_rows);
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
      const Number number = rule.Read(element, *found.Value, &peers);
      const std::string path = found.Holder->PathOf(*found.Value);
      if (number && std::isfinite(*number) && snapshot.IsReported(path)) {
        readings.push_back({rule.Limit, path, *number});
      }
    }
  }
  return readings;
}

}  // namespace insight
