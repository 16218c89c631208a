#include "capture/description.h"

#include <statuscollector/version.h>

#include <cmath>
#include <cstdio>
#include <ctime>
#include <nlohmann/json.hpp>

#include "capture/notes.h"
#include "collector/observer.h"

namespace capture {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kFormat = 1;

const char* NameOf(observe::Stage stage) {
  switch (stage) {
    case observe::Stage::kOpen:
      return "open";
    case observe::Stage::kPrepare:
      return "prepare";
    case observe::Stage::kExecute:
      return "execute";
    case observe::Stage::kRows:
      return "rows";
    case observe::Stage::kFinish:
      return "finish";
    case observe::Stage::kRelease:
      return "release";
    case observe::Stage::kSwitch:
    case observe::Stage::kTable:
    case observe::Stage::kTrigger:
      break;
  }
  return "other";
}

std::string UtcText(std::chrono::system_clock::time_point time) {
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  std::tm parts = {};
  gmtime_r(&seconds, &parts);
  char text[32];
  return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts)};
}

void AddError(const char* name, int error, Json* source) {
  if (error != 0) {
    (*source)[name] = error;
  }
}

Json FileSource(const std::string& path, const File& file) {
  Json source = {{"name", path}};
  if (file.Readings.empty()) {
    AddError("statusErrno", file.LookError, &source);
    return source;
  }
  const Reading& reading = file.Readings.front();
  AddError("openErrno", reading.OpenError, &source);
  AddError("statusErrno", reading.StatusError, &source);
  AddError("readErrno", reading.ReadError, &source);
  if (reading.OpenError == 0) {
    source["bytes"] = reading.Bytes.size();
    source["goesOn"] = reading.GoesOn;
  }
  source["readings"] = file.Readings.size();
  if (!file.Links.empty()) {
    source["links"] = file.Links;
  }
  return source;
}

Json DeviceSource(const std::string& path, const Device& device) {
  Json source = {{"name", path}};
  AddError("openErrno", device.Openings.empty() ? 0 : device.Openings.front().Error, &source);
  source["requests"] = device.Answers.size();
  return source;
}

Json SourcesOf(const Cycle& cycle) {
  Json sources = Json::array();
  for (const auto& [path, device] : cycle.Devices) {
    sources.push_back(DeviceSource(path, device));
  }
  for (const auto& [path, file] : cycle.Files) {
    sources.push_back(FileSource(path, file));
  }
  Json interfaces = {{"name", "getifaddrs"}, {"entries", cycle.Interfaces.size()}};
  AddError("errno", cycle.InterfacesError, &interfaces);
  sources.push_back(interfaces);
  return sources;
}

Json DatabaseOf(const Cycle& cycle) {
  Json failures = Json::array();
  for (const DatabaseFailure& failure : cycle.Failures) {
    failures.push_back({{"stage", NameOf(static_cast<observe::Stage>(failure.Stage))},
                        {"code", failure.Code},
                        {"message", failure.Message}});
  }
  std::size_t cut = 0;
  for (const Row& row : cycle.Rows) {
    cut += row.KeyGoesOn || row.ValueGoesOn ? 1 : 0;
  }
  return {{"rows", cycle.Rows.size()}, {"rowsThatGoOn", cut}, {"failures", failures}};
}

Json CycleOf(const Cycle& cycle) {
  Json json = Json::object();
  if (cycle.Ended && !cycle.Threw) {
    json["result"] = cycle.Result;
  }
  json["seconds"] = cycle.Seconds;
  json["localTime"] = cycle.LocalTime;
  if (cycle.Uptime) {
    json["uptime"] = *cycle.Uptime;
  }
  if (cycle.Storage) {
    json["storage"] = {{"blocks", cycle.Storage->Blocks},
                       {"free", cycle.Storage->Free},
                       {"blockSize", cycle.Storage->BlockSize}};
  }
  json["document"] = cycle.Document.has_value();
  json["sources"] = SourcesOf(cycle);
  json["database"] = DatabaseOf(cycle);
  Json notes = Json::array();
  for (const Note& note : NotesOf(cycle)) {
    notes.push_back({{"field", note.Field}, {"why", note.Why}});
  }
  json["notes"] = notes;
  return json;
}

// "<+0530>-05:30": in the names digits and signs only, as the C library takes them.
std::string ZoneName(std::int64_t seconds_east) {
  const std::int64_t minutes = std::abs(seconds_east) / 60;
  char text[32];
  std::snprintf(text, sizeof text, "<%c%02d%02d>", seconds_east < 0 ? '-' : '+',
                static_cast<int>(minutes / 60), static_cast<int>(minutes % 60));
  return text;
}

// What is added to local time to get UTC.
std::string ZoneDifference(std::int64_t seconds_east) {
  const std::int64_t seconds = std::abs(seconds_east);
  char text[32];
  std::snprintf(text, sizeof text, "%c%d:%02d:%02d", seconds_east > 0 ? '-' : '+',
                static_cast<int>(seconds / 3600), static_cast<int>(seconds / 60 % 60),
                static_cast<int>(seconds % 60));
  return text;
}

}  // namespace

std::string ZoneText(std::int64_t seconds_east, bool daylight_saving) {
  constexpr std::int64_t kHour = 3600;
  if (!daylight_saving) {
    return ZoneName(seconds_east) + ZoneDifference(seconds_east);
  }
  // Daylight saving from a day before each year to a day after it.
  return ZoneName(seconds_east - kHour) + ZoneDifference(seconds_east - kHour) +
         ZoneName(seconds_east) + ZoneDifference(seconds_east) + ",0/-24,J365/48";
}

std::string DescriptionOf(const Recording& recording, const std::vector<Replaced>& replaced,
                          const Machine& machine) {
  Json json = {{"format", kFormat},
               {"program", std::string("statuscollector ") + STATUSCOLLECTOR_VERSION},
               {"library", QtSts::LibraryVersion()},
               {"system", {{"kernel", machine.Kernel}, {"machine", machine.Type}}},
               {"began", UtcText(recording.Began)}};
  if (!recording.Cycles.empty()) {
    const Cycle& first = recording.Cycles.front();
    json["zone"] = ZoneText(first.ZoneOffset, first.DaylightSaving);
  }
  json["complete"] = !recording.Stopped.has_value();
  if (recording.Stopped) {
    json["stopped"] = {{"cycle", recording.Cycles.size()}, {"why", recording.Stopped->Why}};
    if (const auto& last = recording.Stopped->Last) {
      json["stopped"]["doing"] = last->Doing;
      json["stopped"]["source"] = last->Source;
    }
  }
  json["cycles"] = Json::array();
  for (const Cycle& cycle : recording.Cycles) {
    json["cycles"].push_back(CycleOf(cycle));
  }
  json["redacted"] = Json::array();
  for (const Replaced& one : replaced) {
    json["redacted"].push_back({{"kind", one.Kind}, {"now", one.Now}});
  }
  // What is not UTF-8, in a message of the system or a name, stands as U+FFFD.
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace capture
