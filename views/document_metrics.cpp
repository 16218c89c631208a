#include "views/document_metrics.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

#include "model/codes.h"
#include "model/tree.h"
#include "views/numbers.h"

namespace views {
namespace {

using QtSts::TreeElement;
using QtSts::TreeValue;

// Calls `visit` with each element that has the value of `metric`, its path, and the value.
template <class Visit>
void VisitValues(const Metric& metric, const Sources& from, const Visit& visit) {
  if (from.Snapshot == nullptr) {
    return;
  }
  for (const TreeElement& element : from.Snapshot->Document.Elements()) {
    if (!element.IsA(*metric.Class) || (!metric.AlsoDisconnected && !IsConnected(element))) {
      continue;
    }
    const TreeValue* const value = element.FindValue(metric.Field);
    const std::string path = element.Path();
    if (value != nullptr && from.Snapshot->IsReported(FieldPath(path, metric.Field))) {
      visit(element, path, *value);
    }
  }
}

// The labels of the root are none.
std::vector<std::pair<const char*, std::string>> LabelsOf(const TreeElement& element,
                                                          const std::string& path) {
  if (path.empty()) {
    return {};
  }
  return {{"element", path}, {"kind", element.Class()->Name}};
}

void Add(const Metric& metric, std::vector<std::pair<const char*, std::string>> labels,
         double number, Samples* samples) {
  if (std::isfinite(number) && number >= metric.Least) {
    samples->push_back({std::move(labels), number * metric.Factor + metric.Offset});
  }
}

std::string TextOf(const TreeElement& element, const char* path) {
  const TreeValue* const value = element.FindValue(path);
  return value == nullptr ? "" : value->Written();
}

// Labels are for telling apart, not for reading novels.
std::string ShortTextOf(const TreeElement& element, const char* path) {
  constexpr std::size_t kMostBytes = 64;
  std::string text = TextOf(element, path);
  if (text.size() > kMostBytes) {
    std::size_t end = kMostBytes;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
      --end;  // within a character of UTF-8
    }
    text.resize(end);
  }
  return text;
}

struct Flag {
  std::uint32_t Bit;
  const char* Name;
};

constexpr Flag kFlags[] = {
    {QtSts::kFlagPowerOff, "power_off"},
    {QtSts::kFlagWatchdogEvent, "watchdog_event"},
    {QtSts::kFlagTrackerActive, "pixel_tracker_active"},
    {QtSts::kFlagTrackerBlanked, "output_blanked"},
    {QtSts::kFlagAmbientFailure, "ambient_sensor_failure"},
    {QtSts::kFlagAmbientOverride, "ambient_override"},
};

// Seconds of an ISO 8601 duration of days, hours, minutes and seconds.
std::optional<double> SecondsOf(std::string_view text) {
  struct Part {
    char Unit;
    double Seconds;
  };
  constexpr Part kParts[] = {{'D', 86400}, {'H', 3600}, {'M', 60}, {'S', 1}};
  if (!text.starts_with('P')) {
    return std::nullopt;
  }
  double seconds = 0;
  for (std::size_t at = 1; at < text.size();) {
    at += text[at] == 'T' ? 1U : 0U;
    long long number = 0;
    const char* const end = text.data() + text.size();
    const auto [after, error] = std::from_chars(text.data() + at, end, number);
    if (error != std::errc() || after == end) {
      return std::nullopt;
    }
    const auto* const part = std::ranges::find(kParts, *after, &Part::Unit);
    if (part == std::end(kParts)) {
      return std::nullopt;
    }
    seconds += static_cast<double>(number) * part->Seconds;
    at = static_cast<std::size_t>(after - text.data()) + 1;
  }
  return seconds;
}

}  // namespace

std::optional<double> NumberOf(const TreeValue& value) {
  switch (value.Kind()) {
    case QtSts::ValueKind::kFlag:
      return value.Flag() ? 1 : 0;
    case QtSts::ValueKind::kUnsigned:
      return static_cast<double>(value.Unsigned());
    case QtSts::ValueKind::kSigned:
      return static_cast<double>(value.Signed());
    case QtSts::ValueKind::kFloat: {
      // As it is written: 41.7, not the next number of 24 bits.
      const std::string text = value.Written();
      double number = value.Real();
      std::from_chars(text.data(), text.data() + text.size(), number);
      return number;
    }
    case QtSts::ValueKind::kDouble:
      return value.Real();
    default:
      return std::nullopt;
  }
}

bool IsConnected(const TreeElement& element) {
  for (const TreeElement* holder = &element; holder != nullptr; holder = holder->Parent()) {
    if (const TreeValue* const connected = holder->FindValue("Connected")) {
      return connected->Flag();
    }
  }
  return true;
}

void CollectValues(const Metric& metric, const Sources& from, Samples* samples) {
  VisitValues(metric, from,
              [&](const TreeElement& element, const std::string& path, const auto& value) {
                if (const std::optional<double> number = NumberOf(value)) {
                  Add(metric, LabelsOf(element, path), *number, samples);
                }
              });
}

void CollectOfDevices(const Metric& metric, const Sources& from, Samples* samples) {
  VisitValues(metric, from,
              [&](const TreeElement& device, const std::string& path, const auto& value) {
                Add(metric, {{"element", path}, {"device", ShortTextOf(device, "Name")}},
                    NumberOf(value).value_or(std::nan("")), samples);
              });
}

void CollectRows(const Metric& metric, const Sources& from, Samples* samples) {
  VisitValues(metric, from,
              [&](const TreeElement& element, const std::string& path, const auto& value) {
                std::size_t index = 0;
                for (const float number : value.Reals()) {
                  auto labels = LabelsOf(element, path);
                  labels.emplace_back("index", std::to_string(index++));
                  char text[32];
                  const auto written = std::to_chars(std::begin(text), std::end(text), number);
                  double shortest = number;
                  std::from_chars(text, written.ptr, shortest);
                  Add(metric, std::move(labels), shortest, samples);
                }
              });
}

void CollectCodes(const Metric& metric, const Sources& from, Samples* samples) {
  VisitValues(metric, from,
              [&](const TreeElement& element, const std::string& path, const auto& value) {
                for (const QtSts::Code& code : value.Listed().Codes) {
                  auto labels = LabelsOf(element, path);
                  labels.emplace_back("state", code.Text);
                  Add(metric, std::move(labels), NumberOf(value) == code.Value ? 1 : 0, samples);
                }
              });
}

void CollectFlags(const Metric& metric, const Sources& from, Samples* samples) {
  VisitValues(
      metric, from, [&](const TreeElement& element, const std::string& path, const auto& value) {
        for (const Flag& flag : kFlags) {
          auto labels = LabelsOf(element, path);
          labels.emplace_back("state", flag.Name);
          Add(metric, std::move(labels), (value.Unsigned() & flag.Bit) != 0 ? 1 : 0, samples);
        }
      });
}

void CollectOutputPoints(const Metric& metric, const Sources& from, Samples* samples) {
  VisitValues(metric, from,
              [&](const TreeElement& point, const std::string& path, const auto& value) {
                Add(metric, LabelsOf(point, path), value.Unsigned() == 0 ? 1 : 0, samples);
              });
}

void CollectUptime(const Metric& metric, const Sources& from, Samples* samples) {
  VisitValues(metric, from, [&](const TreeElement&, const std::string&, const auto& value) {
    if (const std::optional<double> seconds = SecondsOf(value.Text())) {
      Add(metric, {}, *seconds, samples);
    }
  });
}

void CollectDisplay(const Metric& metric, const Sources& from, Samples* samples) {
  if (from.Snapshot == nullptr) {
    return;
  }
  const TreeElement& root = from.Snapshot->Document.Root();
  Add(metric,
      {{"guid", ShortTextOf(root, "GUID")},
       {"title", ShortTextOf(root, "Outputs[0]/Title")},
       {"serial_number", TextOf(root, "SerialNumber")},
       {"firmware_version", ShortTextOf(root, "FirmwareVersion")},
       {"display_firmware_version", ShortTextOf(root, "DisplayFirmwareVersion")}},
      1, samples);
}

void CollectSensors(const Metric& metric, const Sources& from, Samples* samples) {
  VisitValues(metric, from, [&](const TreeElement& sensor, const std::string& path, const auto&) {
    auto labels = LabelsOf(sensor, path);
    labels.emplace_back("address", TextOf(sensor, "Address"));
    labels.emplace_back("bus", TextOf(sensor, "Bus"));
    labels.emplace_back("face", TextOf(sensor, "Face"));
    Add(metric, std::move(labels), 1, samples);
  });
}

}  // namespace views
