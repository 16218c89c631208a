#include "serve/event.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <string_view>

#include "host/printable.h"
#include "model/json_text.h"
#include "serve/bodies.h"

namespace serve {
namespace {

void AddText(const char* name, const std::string& text, QtSts::JsonText* json) {
  json->Member(name);
  json->String(text);
}

template <class Number>
void AddNumber(const char* name, Number number, QtSts::JsonText* json) {
  char text[32];
  char* const end = std::to_chars(std::begin(text), std::end(text), number).ptr;
  json->Member(name);
  json->Literal({text, static_cast<std::size_t>(end - text)});
}

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

void AddCycle(const Cycle& cycle, bool is_new, QtSts::JsonText* json) {
  const insight::Snapshot& snapshot = cycle.Snapshot;
  AddNumber("Cycle", cycle.Number, json);
  AddNumber("Result", snapshot.Result, json);
  AddText("Began", TimeText(snapshot.Began), json);
  AddNumber("Seconds", std::chrono::duration<double>(snapshot.Took).count(), json);
  AddText("Trouble", host::Printable(cycle.Trouble), json);
  AddFindings(snapshot, json);
  if (is_new) {
    AddChanges(cycle, json);
  }
}

std::string DataOf(const State& before, const State& now) {
  QtSts::JsonText json;
  json.Open('{');
  AddNumber("Version", now.Version, &json);
  AddText("Failure", host::Printable(now.Failure), &json);
  if (now.Hanging) {
    json.Member("Hanging");
    json.Open('{');
    AddText("Asked", host::Printable(now.Hanging->Asked), &json);
    AddText("Since", TimeText(now.Hanging->Since), &json);
    json.Close('}');
  }
  if (now.Latest != nullptr) {
    AddCycle(*now.Latest, now.Latest != before.Latest, &json);
  }
  json.Close('}');
  return json.Take();
}

}  // namespace

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
