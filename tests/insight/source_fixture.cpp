#include "tests/insight/source_fixture.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <memory>
#include <ostream>
#include <set>

#include "model/document.h"
#include "sandbox/enter.h"
#include "sandbox/files.h"

namespace {

using insight::Snapshot;
using insight::Source;
using Values = std::map<std::string, std::string>;

Values ValuesOf(const QtSts::DocumentTree& tree) {
  Values values;
  for (const QtSts::TreeElement& element : tree.Elements()) {
    for (const QtSts::TreeValue& value : element.Values()) {
      values[element.PathOf(value)] = value.Written();
    }
  }
  return values;
}

// What the values of the lists' elements are in fresh elements of their classes.
Values InitialOf(const QtSts::DocumentTree& tree) {
  Values values;
  for (const QtSts::TreeElement& element : tree.Elements()) {
    if (element.Class() == nullptr || element.Class()->Create == nullptr) {
      continue;
    }
    const std::unique_ptr<QtSts::CBaseStatus> fresh(element.Class()->Create());
    for (const auto& [path, value] : ValuesOf(QtSts::DocumentTree(*fresh))) {
      values[element.Path() + '/' + path] = value;
    }
  }
  return values;
}

// These change by themselves: what counts is whether they say what the document begins with.
void StopClock(Values* values) {
  const Values initial = ValuesOf(QtSts::DocumentTree(QtSts::CStatus()));
  for (const char* const path : {"LocalTime", "Uptime", "StorageFree"}) {
    if (values->at(path) != initial.at(path)) {
      (*values)[path] = "running";
    }
  }
}

bool Covers(const std::string& field, const std::string& path) {
  return path == field || path.starts_with(field + '[') || path.starts_with(field + '/');
}

using Feeding = std::pair<std::string, std::string>;  // source and field

std::set<Feeding> UnfedIn(const Snapshot& snapshot) {
  std::set<Feeding> unfed;
  for (const Source& source : snapshot.Sources) {
    for (const std::string& field : source.Unfed) {
      unfed.insert({source.Id, field});
      EXPECT_THAT(source.Fields, testing::Contains(field)) << source.Id;
    }
  }
  return unfed;
}

}  // namespace

void Losses::Add(const Snapshot& before, const Snapshot& after) {
  Values values_before = ValuesOf(before.Document);
  Values values_after = ValuesOf(after.Document);
  StopClock(&values_before);
  StopClock(&values_after);
  const Values initial = InitialOf(before.Document);
  for (const auto& [path, value] : values_before) {
    const auto now = values_after.find(path);
    if (now != values_after.end()) {
      if (now->second != value) {
        changed_[path] = Change::kOtherValue;
      }
      continue;
    }
    const auto fresh = initial.find(path);
    const bool as_it_began = fresh != initial.end() && fresh->second == value;
    changed_.insert({path, as_it_began ? Change::kGoneAsItBegan : Change::kOtherValue});
  }
  for (const auto& [path, value] : values_after) {
    EXPECT_TRUE(values_before.contains(path)) << path << " appears";
  }
  const std::set<Feeding> unfed_before = UnfedIn(before);
  for (const Feeding& feeding : UnfedIn(after)) {
    if (!unfed_before.contains(feeding)) {
      unfed_.insert(feeding.second);
    }
  }
}

void Losses::ExpectChangesAreUnfed() const {
  for (const auto& [changed, change] : changed_) {
    const std::string& path = changed;
    const bool named = std::ranges::any_of(
        unfed_, [&path](const std::string& field) { return Covers(field, path); });
    EXPECT_TRUE(named || change == Change::kGoneAsItBegan) << changed << " changes";
  }
  for (const std::string& field : unfed_) {
    EXPECT_TRUE(std::ranges::any_of(changed_,
                                    [&](const auto& entry) { return Covers(field, entry.first); }))
        << field << " is no longer fed";
  }
}

void PrintTo(const Verdict& verdict, std::ostream* out) {
  *out << insight::NameOf(verdict.State) << ", errno " << verdict.Error << ", \"" << verdict.Reason
       << "\", stopped by \"" << verdict.StoppedBy << '"';
}

sandbox::Scenario Talkative() {
  auto scenario = sandbox::Scenario::Load(sandbox::SourcePath("scenarios/demo"));
  scenario.Answer("travex", 0x8004DA55, 75)
      .Answer("travex", 0x8004DA5E, 3)
      .Answer("travex", 0x8004DA5F, 4)
      .Answer("travex", 0x8004DA61, 5)
      .Answer("zetdisplay", 0x8004DA65, 1)
      .File("/proc/net/route",
            "Iface\tDestination\tGateway\n"
            "eth0\t00000000\t0100A8C0\neth1\t00000000\t0200A8C0\n")
      .File("/proc/net/dev",
            "  eth0: 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16\n"
            "  eth1: 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16\n")
      .File("/var/lib/dpkg/status",
            "Package: qtm-distro\nVersion: 7.2\n\nPackage: dispfw\nVersion: 4.12\n")
      .Folder("/var/run")
      .NoInterfaces()
      .Interface({.Name = "eth0",
                  .Mac = "00:1A:2B:3C:4D:5E",
                  .Addresses = {{.Prefix = "192.168.0.20/16", .Broadcast = "192.168.255.255"},
                                {.Prefix = "2001:db8::20/64"}}})
      .Interface({.Name = "eth1",
                  .Mac = "00:1A:2B:3C:4D:5F",
                  .Addresses = {{.Prefix = "10.50.0.1/16", .Broadcast = "10.50.255.255"},
                                {.Prefix = "2001:db8::21/64"}}})
      .Row("DimmingMode", "manual")
      .Row("ErrorFlags", "0x0000000000000001")
      .Row("FansOverride", "on")
      .Row("MdlsAmbientFailure", "1")
      .Row("TtableInterleaved", "1");
  return scenario;
}

sandbox::Scenario Contrary() {
  std::string registers =
      sandbox::ReadFile(sandbox::SourcePath("scenarios/demo/root").string() + kRegisters);
  const std::string_view blanked = "pixel_tracker_bits: 0x0000000";
  registers[registers.find(blanked) + blanked.size()] = '8';
  auto scenario = Talkative();
  scenario.Answer("travex", 0x8004DA1C, 0)
      .Answer("zetdisplay", 0x8004DA1E, 0)
      .Answer("zetdisplay", 0x8004DA50, 0)
      .File(kRegisters, registers)
      .File(kRouting, "video mux status register: 0x4\n")
      .File("/var/run/wd_event", "");
  return scenario;
}

void Apply(const sandbox::Scenario& scenario) {
  scenario.Apply();
  sandbox::RemoveRow("GUID");
  sandbox::RemoveRow("ProductFamily");
}

Snapshot Cycle() {
  CStatusInterface collector;
  testing::internal::CaptureStderr();
  collector.InitDatabase(false);
  Snapshot snapshot = insight::Recorder(collector).RunCycle();
  testing::internal::GetCapturedStderr();
  return snapshot;
}

const Source& Find(const Snapshot& snapshot, const std::string& id) {
  const auto source = std::ranges::find(snapshot.Sources, id, &Source::Id);
  if (source == snapshot.Sources.end()) {
    throw std::runtime_error("no source " + id);
  }
  return *source;
}

Verdict VerdictOf(const Snapshot& snapshot, const std::string& id) {
  const Source& source = Find(snapshot, id);
  return {source.State, source.Error, source.Reason, source.StoppedBy};
}

Snapshot Lose(const std::function<void()>& lose, std::set<std::string>* unfed) {
  Losses losses;
  const auto run = [&](const sandbox::Scenario& scenario) {
    Apply(scenario);
    const Snapshot before = Cycle();
    lose();
    Snapshot after = Cycle();
    losses.Add(before, after);
    return after;
  };
  run(Talkative());
  Snapshot last = run(Contrary());
  losses.ExpectChangesAreUnfed();
  if (unfed != nullptr) {
    *unfed = losses.Unfed();
  }
  return last;
}
