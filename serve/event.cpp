#include "serve/event.h"

#include <algorithm>
#include <string_view>

#include "host/printable.h"
#include "serve/bodies.h"
#include "serve/json_members.h"

namespace serve {
namespace {

void AddFindings(const insight::Snapshot& snapshot, QtSts::JsonText* json) {
  using insight::Severity;
  json->Member("Findings");
  json->Open('{');
  for (const Severity severity : {Severity::kCritical, Severity::kUnknown, Severity::kWarning}) {
    AddNumber(NameOf(severity),
              std::ranges::count(snapshot.Findings, severity, &insight::Finding::Level), json);
  }
  json->Close('}');
}

void AddChanges(const Cycle& cycle, QtSts::JsonText* json) {
  json->Member("Changes");
  json->Open('[');
  for (const QtSts::Difference& change : cycle.Changes) {
    json->Next();
    json->Open('{');
    AddText("Path", change.Path, json);
    AddText("Before", change.Before, json);
    AddText("After", change.After, json);
    json->Close('}');
  }
  json->Close(']');
  AddNumber("FurtherChanges", cycle.FurtherChanges, json);
}

std::string DataOf(const State& before, const State& now) {
  QtSts::JsonText json;
  json.Open('{');
  AddState(now, &json);
  if (now.Latest != nullptr) {
    AddFindings(now.Latest->Snapshot, &json);
    if (now.Latest != before.Latest) {
      AddChanges(*now.Latest, &json);
    }
  }
  json.Close('}');
  return json.Take();
}

}  // namespace

void AddState(const State& state, QtSts::JsonText* json) {
  AddNumber("Version", state.Version, json);
  AddText("Failure", host::Printable(state.Failure), json);
  if (state.Hanging) {
    json->Member("Hanging");
    json->Open('{');
    AddText("Asked", host::Printable(state.Hanging->Asked), json);
    AddText("Since", TimeText(state.Hanging->Since), json);
    json->Close('}');
  }
  if (state.Latest != nullptr) {
    const insight::Snapshot& snapshot = state.Latest->Snapshot;
    AddNumber("Cycle", state.Latest->Number, json);
    AddNumber("Result", snapshot.Result, json);
    AddText("Began", TimeText(snapshot.Began), json);
    AddNumber("Seconds", std::chrono::duration<double>(snapshot.Took).count(), json);
    AddText("Trouble", host::Printable(state.Latest->Trouble), json);
  }
}

std::string EventOf(const State& before, const State& now) {
  std::string event = "id: " + std::to_string(now.Version) + "\nevent: state\n";
  const std::string data = DataOf(before, now);
  for (std::size_t begin = 0; begin < data.size();) {
    const std::size_t end = std::min(data.find('\n', begin), data.size());
    event.append("data: ").append(data, begin, end - begin).append("\n");
    begin = end + 1;
  }
  return event + "\n";
}

}  // namespace serve
