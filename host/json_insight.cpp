#include "host/json_insight.h"

#include <charconv>
#include <chrono>
#include <cmath>
#include <ctime>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "model/text.h"

namespace host {
namespace {

// Texts of sources and rows may hold any bytes.
void AddText(std::string_view text, QtSts::JsonText* json) {
  std::string clean(text);
  QtSts::CleanText(&clean);
  json->String(clean);
}

// A member only where there is something to say.
void AddTextMember(const char* name, std::string_view text, QtSts::JsonText* json) {
  if (!text.empty()) {
    json->Member(name);
    AddText(text, json);
  }
}

void AddCount(const char* name, long long number, QtSts::JsonText* json) {
  json->Member(name);
  json->Literal(std::to_string(number));
}

void AddFlag(const char* name, bool flag, QtSts::JsonText* json) {
  json->Member(name);
  json->Literal(flag ? "true" : "false");
}

// JSON has no numbers for not-a-number and the infinities.
void AddReal(const char* name, double number, QtSts::JsonText* json) {
  json->Member(name);
  if (!std::isfinite(number)) {
    json->String(std::isnan(number) ? "NaN" : number > 0 ? "INF" : "-INF");
    return;
  }
  char text[32];
  char* const end = std::to_chars(std::begin(text), std::end(text), number).ptr;
  json->Literal({text, static_cast<std::size_t>(end - text)});
}

// "2026-11-22T04:29:22Z"
void AddTime(const char* name, std::chrono::system_clock::time_point time, QtSts::JsonText* json) {
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  std::tm parts = {};
  char text[64];
  if (gmtime_r(&seconds, &parts) != nullptr) {
    json->Member(name);
    json->String({text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts)});
  }
}

void AddDatabase(const insight::DatabaseState& database, QtSts::JsonText* json) {
  json->Open('{');
  AddCount("Rows", static_cast<long long>(database.Rows), json);
  if (database.LastChanged) {
    AddTime("LastChanged", *database.LastChanged, json);
  }
  if (database.Unchanged) {
    AddCount("UnchangedSeconds", database.Unchanged->count(), json);
  }
  AddFlag("EveryoneMayWrite", database.EveryoneMayWrite, json);
  json->Close('}');
}

void AddItem(const insight::Source& source, QtSts::JsonText* json) {
  AddTextMember("Id", source.Id, json);
  AddTextMember("Name", source.Name, json);
  AddTextMember("State", NameOf(source.State), json);
  AddFlag("Required", source.Required, json);
  AddCount("Errno", source.Error, json);
  AddTextMember("Reason", source.Reason, json);
  AddTextMember("StoppedBy", source.StoppedBy, json);
  AddTexts("Fields", source.Fields, json);
  AddTexts("Unfed", source.Unfed, json);
}

void AddItem(const insight::Remark& remark, QtSts::JsonText* json) {
  const insight::OutcomeInfo& info = InfoOf(remark.What);
  AddTextMember("Outcome", info.Id, json);
  AddTextMember("Class", NameOf(info.Class), json);
  AddTextMember("Text", remark.Text, json);
  AddTextMember("Cure", info.Cure, json);
  if (remark.Part != insight::RowPart::kNone) {
    AddTextMember("Part", remark.Part == insight::RowPart::kKey ? "key" : "value", json);
    AddCount("Begin", static_cast<long long>(remark.Begin), json);
    AddCount("End", static_cast<long long>(remark.End), json);
  }
}

void AddItem(const insight::Change& change, QtSts::JsonText* json) {
  AddTextMember("Path", change.Path, json);
  AddTextMember("Before", change.Before, json);
  AddTextMember("After", change.After, json);
}

template <class Items>
void AddItems(const char* name, const Items& items, QtSts::JsonText* json);

void AddItem(const insight::Row& row, QtSts::JsonText* json) {
  json->Member("Key");
  AddText(row.Key, json);
  json->Member("Value");
  if (row.IsNull) {
    json->Literal("null");
  } else {
    AddText(row.Value, json);
  }
  AddTextMember("Path", row.Path, json);
  AddTextMember("Before", row.Before, json);
  AddTextMember("After", row.After, json);
  AddItems("Changes", row.Changes, json);
  AddItems("Carried", row.Carried, json);
  AddItems("Remarks", row.Remarks, json);
}

void AddItem(const insight::Finding& finding, QtSts::JsonText* json) {
  AddTextMember("Id", finding.Id, json);
  AddTextMember("Severity", NameOf(finding.Level), json);
  AddTextMember("Message", finding.Message, json);
  AddTextMember("Where", finding.Where, json);
  AddTextMember("Hint", finding.Hint, json);
  AddTextMember("Path", finding.Path, json);
  AddTextMember("Source", finding.Source, json);
  AddTextMember("Key", finding.Key, json);
  if (finding.Value) {
    AddReal("Value", *finding.Value, json);
  }
}

template <class Items>
void AddItems(const char* name, const Items& items, QtSts::JsonText* json) {
  json->Member(name);
  json->Open('[');
  for (const auto& item : items) {
    json->Next();
    json->Open('{');
    AddItem(item, json);
    json->Close('}');
  }
  json->Close(']');
}

void AddFindings(const insight::Snapshot& snapshot,
                 std::span<const std::chrono::system_clock::time_point> since,
                 QtSts::JsonText* json) {
  json->Member("Findings");
  json->Open('[');
  for (std::size_t at = 0; at < snapshot.Findings.size(); ++at) {
    json->Next();
    json->Open('{');
    AddItem(snapshot.Findings[at], json);
    if (at < since.size()) {
      AddTime("Since", since[at], json);
    }
    json->Close('}');
  }
  json->Close(']');
}

}  // namespace

void AddTexts(const char* name, const std::vector<std::string>& texts, QtSts::JsonText* json) {
  json->Member(name);
  json->Open('[');
  for (const std::string& text : texts) {
    json->Next();
    AddText(text, json);
  }
  json->Close(']');
}

void AddInsight(const insight::Snapshot& snapshot, QtSts::JsonText* json,
                std::span<const std::chrono::system_clock::time_point> since) {
  json->Open('{');
  AddCount("Result", snapshot.Result, json);
  AddTime("Began", snapshot.Began, json);
  AddReal("Seconds", std::chrono::duration<double>(snapshot.Took).count(), json);
  json->Member("Database");
  AddDatabase(snapshot.Database, json);
  AddItems("Sources", snapshot.Sources, json);
  AddItems("Rows", snapshot.Rows, json);
  AddFindings(snapshot, since, json);
  AddTexts("NotReported", snapshot.NotReported, json);
  json->Close('}');
}

}  // namespace host
