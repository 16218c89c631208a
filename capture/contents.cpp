#include "capture/contents.h"

#include <sys/utsname.h>

#include <cstdio>

#include "capture/description.h"
#include "sandbox/format/text.h"

namespace capture {
namespace {

// The folder of a cycle: the capture's own of the first one, that of a step of each further one.
std::string FolderOf(std::size_t cycle) {
  if (cycle == 0) {
    return "";
  }
  char name[32];
  std::snprintf(name, sizeof name, "steps/%02zu/", cycle);
  return name;
}

// What a file gave when it was read again and was not the same: "again/2/root/proc/net/dev".
void AddAgain(const Cycle& cycle, const std::string& folder, Entries* contents) {
  for (const auto& [path, file] : cycle.Files) {
    for (std::size_t at = 1; at < file.Readings.size(); ++at) {
      if (!file.Readings[at].Same(file.Readings.front())) {
        std::string name = folder;
        name.append("again/").append(std::to_string(at + 1)).append("/root").append(path);
        (*contents)[name] = {file.Readings[at].Bytes};
      }
    }
  }
}

// What is in `now` and not the same in `before`; what is gone stands in `removed`.
Entries StepOf(const Entries& before, const Entries& now) {
  Entries step;
  for (const auto& [name, entry] : now) {
    const auto same = before.find(name);
    if (same == before.end() || same->second != entry) {
      step[name] = entry;
    }
  }
  std::string removed;
  for (const auto& [name, entry] : before) {
    if (!now.contains(name)) {
      removed += sandbox::WordText(name) + "\n";
    }
  }
  if (!removed.empty()) {
    step["removed"] = {removed};
  }
  return step;
}

}  // namespace

Machine ThisMachine() {
  utsname names = {};
  if (uname(&names) == -1) {
    return {};
  }
  return {names.release, names.machine};
}

Entries ContentsOf(const Recording& recording, const std::vector<Replaced>& replaced,
                   const Machine& machine) {
  Entries contents;
  contents["capture.json"] = {DescriptionOf(recording, replaced, machine)};
  Controller controller;
  Entries before;
  for (std::size_t at = 0; at < recording.Cycles.size(); ++at) {
    const Cycle& cycle = recording.Cycles[at];
    const std::string folder = FolderOf(at);
    controller.Take(cycle);
    const Entries now = controller.Scenario();
    for (const auto& [name, entry] : StepOf(before, now)) {
      contents[folder + name] = entry;
    }
    before = now;
    AddAgain(cycle, folder, &contents);
    if (cycle.Document) {
      contents[folder + "document.xml"] = {*cycle.Document};
    }
    if (at != 0) {  // also when nothing is different
      contents[folder.substr(0, folder.size() - 1)] = {"", 0755, true};
    }
  }
  return contents;
}

}  // namespace capture
