#include "host/json.h"

#include "host/json_insight.h"
#include "model/json.h"
#include "model/json_text.h"

namespace host {

std::string RenderJson(const insight::Snapshot& snapshot) {
  return QtSts::WriteJson(snapshot.Document, [&snapshot](QtSts::JsonText* json) {
    json->Member("Insight");
    AddInsight(snapshot, json);
  });
}

std::string RenderInsightJson(const insight::Snapshot& snapshot) {
  QtSts::JsonText json;
  json.Open('{');
  json.Member("Insight");
  AddInsight(snapshot, &json);
  json.Close('}');
  return json.Take();
}

std::string RenderInsightJson(const insight::Snapshot& snapshot,
                              const std::vector<std::chrono::system_clock::time_point>& since) {
  QtSts::JsonText json;
  json.Open('{');
  json.Member("Insight");
  AddInsight(snapshot, &json, since);
  json.Close('}');
  return json.Take();
}

std::string RenderInsightJson(const insight::Snapshot& snapshot,
                              const std::vector<std::string>& differing) {
  QtSts::JsonText json;
  json.Open('{');
  json.Member("Insight");
  AddInsight(snapshot, &json);
  AddTexts("Differing", differing, &json);
  json.Close('}');
  return json.Take();
}

}  // namespace host
