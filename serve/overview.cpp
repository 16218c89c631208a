#include "serve/overview.h"

#include <algorithm>
#include <functional>
#include <vector>

#include "serve/bodies.h"
#include "serve/event.h"
#include "serve/history_json.h"
#include "serve/json_members.h"

namespace serve {
namespace {

// More than this nobody reads on a page; /insight.json has all.
constexpr std::size_t kMostRows = 200;
constexpr std::size_t kMostEnded = 100;

template <class Items, class Add>
void AddItems(const char* name, const Items& items, QtSts::JsonText* json, const Add& add) {
  json->Member(name);
  json->Open('[');
  for (const auto& item : items) {
    json->Next();
    json->Open('{');
    add(item);
    json->Close('}');
  }
  json->Close(']');
}

void AddFindings(const Cycle& cycle, QtSts::JsonText* json) {
  std::size_t at = 0;
  AddItems("Findings", cycle.Snapshot.Findings, json, [&](const insight::Finding& finding) {
    AddText("Id", finding.Id, json);
    AddText("Severity", NameOf(finding.Level), json);
    AddText("Message", finding.Message, json);
    AddText("Where", finding.Where, json);
    AddText("Hint", finding.Hint, json);
    AddText("Path", finding.Path, json);
    AddText("Since", TimeText(cycle.FindingsSince[at]), json);
    json->Member("Before");
    json->Literal(cycle.FindingsBefore[at] ? "true" : "false");
    ++at;
  });
}

// The latest first.
void AddEnded(const HistoryData& data, QtSts::JsonText* json) {
  std::vector<const Episode*> ended;
  for (const Episode& episode : data.Findings.All()) {
    if (episode.End) {
      ended.push_back(&episode);
    }
  }
  std::ranges::stable_sort(ended, std::greater<>(), [](const Episode* each) { return each->End; });
  const std::size_t count = ended.size();
  ended.resize(std::min(count, kMostEnded));
  AddItems("Ended", ended, json, [&](const Episode* each) { AddEpisode(*each, json); });
  AddNumber("EndedCount", count, json);
}

void AddSources(const insight::Snapshot& snapshot, QtSts::JsonText* json) {
  AddItems("Sources", snapshot.Sources, json, [&](const insight::Source& source) {
    AddText("Name", source.Name, json);
    AddText("State", NameOf(source.State), json);
    AddText("Reason", source.Reason, json);
    json->Member("Required");
    json->Literal(source.Required ? "true" : "false");
  });
}

void AddRows(const insight::Snapshot& snapshot, QtSts::JsonText* json) {
  std::vector<const insight::Row*> wrong;
  std::size_t count = 0;
  for (const insight::Row& row : snapshot.Rows) {
    if (row.Class() == insight::OutcomeClass::kError && ++count <= kMostRows) {
      wrong.push_back(&row);
    }
  }
  AddItems("Rows", wrong, json, [&](const insight::Row* row) {
    AddText("Key", row->Key, json);
    AddText("Value", row->IsNull ? "NULL" : row->Value, json);
    AddText("Text", row->Remarks.front().Text, json);
    AddText("Cure", insight::InfoOf(row->What()).Cure, json);
  });
  AddNumber("RowsInError", count, json);
}

void AddNotReported(const insight::Snapshot& snapshot, QtSts::JsonText* json) {
  json->Member("NotReported");
  json->Open('[');
  for (const std::string& path : snapshot.NotReported) {
    json->Next();
    json->String(path);
  }
  json->Close(']');
}

}  // namespace

std::string OverviewOf(const State& state, std::chrono::seconds interval, const History& history) {
  QtSts::JsonText json;
  json.Open('{');
  AddNumber("Interval", interval.count(), &json);
  AddState(state, &json);
  if (state.Latest != nullptr) {
    AddText("First", TimeText(state.Latest->First), &json);
    AddNumber("RowCount", state.Latest->Snapshot.Database.Rows, &json);
    AddFindings(*state.Latest, &json);
    history.Look([&json](const HistoryData& data) { AddEnded(data, &json); });
    AddSources(state.Latest->Snapshot, &json);
    AddRows(state.Latest->Snapshot, &json);
    AddNotReported(state.Latest->Snapshot, &json);
  }
  json.Close('}');
  return json.Take();
}

}  // namespace serve
