#include "insight/absences.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include "collector/state/numbered_key.h"
#include "hardware/paths.h"
#include "insight/row_remarks.h"
#include "insight/source_database.h"
#include "insight/source_recorder.h"
#include "model/network.h"

namespace insight {
namespace {

Finding MakeWarning(const char* id, std::string message, std::string hint, std::string source) {
  Finding finding;
  finding.Id = id;
  finding.Message = std::move(message);
  finding.Hint = std::move(hint);
  finding.Source = std::move(source);
  return finding;
}

// Null when there is none of this name that could be read.
const Source* SourceThatAnswered(const Snapshot& snapshot, std::string_view id) {
  const auto source = std::ranges::find(snapshot.Sources, id, &Source::Id);
  const bool found = source != snapshot.Sources.end() && source->State == SourceState::kOk;
  return found ? &*source : nullptr;
}

// True when one was found.
bool FindLostLinks(const Snapshot& snapshot, std::vector<Finding>* findings) {
  constexpr std::string_view kCarrier = "carrier:";
  bool found = false;
  for (const Source& source : snapshot.Sources) {
    const bool off = source.Reason == kSwitchedOff;
    if (source.Id.starts_with(kCarrier) && (off || source.Reason == kNoLink)) {
      findings->push_back(
          MakeWarning("link-lost",
                      "network device " + source.Id.substr(kCarrier.size()) +
                          " has an address but " + (off ? "is switched off" : "no link"),
                      off ? "who has switched it off, and whether it is still wanted"
                          : "cable, plugs and the switch at its other end",
                      source.Id));
      found = true;
    }
  }
  return found;
}

// "eth0 without an IPv4 address, eth1"
std::string NamesOf(const QtSts::TreeElement& devices) {
  std::string names;
  for (const QtSts::TreeElement& device : devices.Children()) {
    names += (names.empty() ? "" : ", ") + device.FindValue("Name")->Written();
    const bool has_address = device.FindValue("IPv4Address")->Text() != QtSts::kNoIPv4Address;
    names += has_address ? "" : " without an IPv4 address";
  }
  return names;
}

// The fields of the T-table that say how large the display is, and their rows.
constexpr std::pair<const char*, const char*> kSizes[] = {
    {"Outputs[0]/Ttable/Columns", "TtableColumns"},
    {"Outputs[0]/Ttable/Rows", "TtableRows"},
    {"Outputs[0]/Ttable/ModuleWidth", "TtableModWidth"},
    {"Outputs[0]/Ttable/ModuleHeight", "TtableModHeight"},
    {"Outputs[0]/Ttable/FaceCount", "TtableFaceCnt"},
};

// What to look at where rows of this name, or that begin with it, are missing: a row whose key is
// near to it is misspelt.
std::string WhyAbsent(const WrongRows& wrong_rows, std::string_view name) {
  const std::string near = NearestIs(name);
  for (const Row* const row : wrong_rows.UnknownKeys()) {
    if (row->Remarks.front().Text.ends_with(near)) {
      return "the program that writes these rows: it writes " + row->Key;
    }
  }
  return "whether the program that writes these rows runs";
}

}  // namespace

// A finding that says why leaves out those that follow from it.
void FindInNetwork(const Snapshot& snapshot, std::vector<Finding>* findings) {
  if (FindLostLinks(snapshot, findings)) {
    return;
  }
  const QtSts::TreeElement& devices = *snapshot.Document.Root().Find("Network/Devices");
  const Source* const interfaces = SourceThatAnswered(snapshot, "interfaces");
  if (interfaces != nullptr && devices.Children().empty()) {
    findings->push_back(MakeWarning("no-network", "no network device is in use",
                                    "the network devices: cable, link and address",
                                    interfaces->Id));
  } else if (interfaces != nullptr && interfaces->Reason.starts_with(kNoDevice)) {
    const std::string name = interfaces->Reason.substr(std::string_view(kNoDevice).size());
    findings->push_back(MakeWarning(
        "device-gone", "network device " + name + " is gone; there is " + NamesOf(devices),
        "whether its card or its driver is gone: the system log; or whether it has another name",
        interfaces->Id));
    return;
  }
  const Source* const routes = SourceThatAnswered(snapshot, "routes");
  if (routes != nullptr && routes->Reason == kNoRoute) {
    const std::string names = NamesOf(devices);
    findings->push_back(MakeWarning(
        "no-gateway",
        "no network device has a default gateway" + (names.empty() ? "" : "; in use: " + names),
        "the network configuration, the server that gives addresses, and whether a device is gone",
        routes->Id));
  }
}

void FindAbsentRows(const Snapshot& snapshot, const WrongRows& wrong_rows,
                    std::vector<Finding>* findings) {
  const bool display = !snapshot.Document.Root().Find("Outputs")->Children().empty();
  if (snapshot.Result != 0 || snapshot.Rows.empty() || !display) {
    return;  // another finding says so, or there is no display
  }
  const auto add = [&](const char* id, std::string message, std::string path,
                       std::string_view name) {
    findings->push_back(
        MakeWarning(id, std::move(message), WhyAbsent(wrong_rows, name), kDatabaseId));
    findings->back().Where = hardware::paths::kStatusDatabase;
    findings->back().Path = std::move(path);
  };
  if (std::ranges::none_of(
          snapshot.Rows, [](const Row& row) { return row.Key.starts_with(rows::kSensorPrefix); })) {
    add("no-sensors", "no row reports a sensor of the display", "", rows::kSensorPrefix);
  }
  std::string missing;
  std::string first;
  for (const auto& [path, key] : kSizes) {
    if (!snapshot.IsReported(path)) {
      missing += (missing.empty() ? "" : ", ") + std::string(key);
      first = first.empty() ? path : first;
    }
  }
  constexpr const char* kBrightness = "Outputs[0]/Dimming/ActualDimmingLevel";
  if (!snapshot.IsReported(kBrightness)) {
    add("no-brightness", "no row says how bright the display is: ActualDimmingLevel missing",
        kBrightness, "ActualDimmingLevel");
  }
  if (!missing.empty()) {
    add("ttable-missing", "no row says how large the display is: " + missing + " missing", first,
        std::string_view(missing).substr(0, missing.find(',')));
  }
}

}  // namespace insight
