#include "capture/notes.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "capture/controller.h"
#include "capture/recorder.h"
#include "collector/observer.h"
#include "insight/source_table.h"
#include "model/xml.h"

namespace capture {
namespace {

constexpr const char* kNetwork = "Network";
constexpr const char* kMark = "%d";
constexpr const char* kInterfaceMark = "%s";

// The names of the document's network devices, in order.
std::vector<std::string> DevicesOf(const Cycle& cycle) {
  std::vector<std::string> names;
  QtSts::XmlError error;
  const std::unique_ptr<QtSts::CStatus> document =
      cycle.Document ? QtSts::ReadDocument(*cycle.Document, &error) : nullptr;
  if (document != nullptr) {
    for (const QtSts::CNetworkDevice* device : document->Network.Devices) {
      names.push_back(device->Name);
    }
  }
  return names;
}

// Whether `name`, a path with a mark for the interface, stands for `path`.
bool Names(const std::string& name, const std::string& path) {
  const std::size_t mark = name.find(kInterfaceMark);
  if (mark == std::string::npos) {
    return name == path;
  }
  const std::string before = name.substr(0, mark);
  const std::string after = name.substr(mark + std::strlen(kInterfaceMark));
  return path.size() > before.size() + after.size() && path.starts_with(before) &&
         path.ends_with(after);
}

class Notes {
 public:
  explicit Notes(const Cycle& cycle) : cycle_(cycle), devices_(DevicesOf(cycle)) {}

  std::vector<Note> Take() {
    AddAlways();
    AddFiles();
    AddNodes();
    AddNetwork();
    AddDatabase();
    return std::move(notes_);
  }

 private:
  void Add(const std::string& field, const std::string& why) {
    if (std::ranges::find(notes_, field, &Note::Field) == notes_.end()) {
      notes_.push_back({field, why});
    }
  }

  void AddAlways() {
    Add("LocalTime", "the time of the replay");
    Add("Uptime", "goes on during the replay");
    Add("StorageTotal", "the storage of the replay");
    Add("StorageFree", "the storage of the replay");
  }

  // What the source feeds in a probe; with a request, what its answer feeds.
  void AddFed(const std::string& source, const std::string& probe, unsigned long request,
              const std::string& why) {
    for (const insight::Feed& feed : insight::FeedTable()) {
      if (probe == feed.Probe && *feed.Field != '\0' && feed.Needs != insight::Part::kSpoils &&
          (request == 0 || feed.Request == request) &&
          Names(insight::SourceNamed(feed.Source).Name, source)) {
        AddExpanded(feed.Field, why);
      }
    }
  }

  void AddExpanded(const std::string& field, const std::string& why) {
    const std::size_t mark = field.find(kMark);
    if (mark == std::string::npos) {
      Add(field, why);
      return;
    }
    for (std::size_t position = 0; position < devices_.size(); ++position) {
      std::string one = field;
      Add(one.replace(mark, std::strlen(kMark), std::to_string(position)), why);
    }
  }

  void AddFiles() {
    for (const auto& [path, file] : cycle_.Files) {
      for (const Reading& reading : file.Readings) {
        if (!reading.Same(file.Readings.front())) {
          AddFed(path, reading.Probe, 0, path + " changed during the cycle");
        }
      }
      if (file.LooksDiffer) {
        AddFed(path, "OutputPort", 0, path + " came or went during the cycle");
        AddFed(path, "Network", 0, path + " came or went during the cycle");
      }
    }
  }

  void AddNodes() {
    for (const auto& [path, device] : cycle_.Devices) {
      for (const Answer& opening : device.Openings) {
        if (!opening.Same(device.Openings.front())) {
          AddFed(path, opening.Probe, 0, path + " could not always be opened");
        }
      }
      for (const auto& [request, answers] : device.Answers) {
        for (const Answer& answer : answers) {
          if (!answer.Same(answers.front())) {
            AddFed(path, answer.Probe, request, path + " answered in two ways");
          }
        }
      }
    }
  }

  void AddNetwork() {
    for (std::size_t at = 0; at < devices_.size(); ++at) {
      const auto asked = cycle_.HardwareAddresses.find(devices_[at]);
      if (asked != cycle_.HardwareAddresses.end() && !CanBeGiven(asked->second.Text)) {
        Add("Network/Devices[" + std::to_string(at) + "]/MACAddress",
            "the interfaces of a replay cannot have this address");
      }
    }
    for (const InterfaceEntry& entry : cycle_.Interfaces) {
      if (entry.Texts.at(entry::kName).starts_with("lo:")) {
        Add(kNetwork, "the loopback interface of a replay has no aliases");
      }
    }
    if (!cycle_.WithoutText.empty() && !HasNullAddress()) {
      Add(kNetwork, "the addresses of " + cycle_.WithoutText.front() + " could not be written");
    }
  }

  // Of an interface of a replay: an address of one station.
  static bool CanBeGiven(const std::string& text) {
    constexpr int kHexadecimal = 16;
    const auto first = std::strtoul(text.c_str(), nullptr, kHexadecimal);
    return !text.empty() && text != "00:00:00:00:00:00" && (first & 1) == 0;
  }

  // An entry without an address is why one could not be written, and is in the capture.
  bool HasNullAddress() const {
    const std::vector<sandbox::NetworkInterface> interfaces = InterfacesOf(cycle_);
    return std::ranges::any_of(interfaces, [](const sandbox::NetworkInterface& interface) {
      return std::ranges::any_of(interface.Addresses, [](const sandbox::InterfaceAddress& address) {
        return address.Peer == "0.0.0.0";
      });
    });
  }

  void AddDatabase() {
    if (!CanBeOrdered(cycle_.Rows)) {
      Add("*", "the rows came in another order than that of their keys' bytes");
    }
    const bool failed_late =
        cycle_.AskedForRows && std::ranges::any_of(cycle_.Failures, [](const auto& failure) {
          return failure.Stage >= static_cast<std::uint64_t>(observe::Stage::kRows);
        });
    if (failed_late) {
      Add("Result", "reading the rows failed after " + std::to_string(cycle_.Rows.size()));
    }
  }

  const Cycle& cycle_;
  const std::vector<std::string> devices_;
  std::vector<Note> notes_;
};

}  // namespace

std::vector<Note> NotesOf(const Cycle& cycle) { return Notes(cycle).Take(); }

}  // namespace capture
