#include "serve/history_json.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>

#include "insight/nearest.h"
#include "serve/bodies.h"
#include "serve/json_members.h"
#include "views/numbers.h"

namespace serve {
namespace {

// In one answer, so that it has less than half a megabyte.
constexpr std::size_t kMostNumbers = 20000;

SystemTime TimeOf(UnixSeconds seconds) { return SystemTime(std::chrono::seconds(seconds)); }

template <class Number>
void AppendNumber(Number number, std::string* text) {
  char written[48];
  const auto end = std::to_chars(std::begin(written), std::end(written), number).ptr;
  text->append(written, end);
}

void AppendItem(std::string* list) { *list += list->empty() ? "[" : ","; }

void VisitPaths(const Cycle& cycle, const std::function<void(const std::string& path)>& visit) {
  views::VisitNumbers(cycle.Snapshot,
                      [&](const QtSts::TreeElement& element, const std::string& field,
                          double /*number*/) { visit(views::FieldPath(element.Path(), field)); });
}

void AddSeries(const HistoryData& data, const Cycle& latest, const Identities& identities,
               QtSts::JsonText* json) {
  std::vector<bool> named(data.Rows.SeriesCount());
  const auto add = [json](std::string path) {
    QtSts::CleanText(&path);
    json->Next();
    json->String(path);
  };
  json->Member("Series");
  json->Open('[');
  views::VisitNumbers(latest.Snapshot, [&](const QtSts::TreeElement& element,
                                           const std::string& field, double /*number*/) {
    if (const auto series = data.Names.Find(identities.Of(element), field)) {
      named[*series] = true;
      add(views::FieldPath(element.Path(), field));
    }
  });
  std::vector<std::string> gone;
  data.Names.Visit([&](std::string_view element, std::string_view field, std::uint32_t series) {
    if (!named[series]) {
      gone.push_back(views::FieldPath(std::string(element), std::string(field)));
    }
  });
  std::ranges::sort(gone);
  std::ranges::for_each(gone, add);
  json->Close(']');
}

// Which rows are answered: those of today whose times grow, of each `step` the last one.
std::vector<std::size_t> RowsOf(const HistoryData& data, std::uint32_t step) {
  const HistoryRows::Rows& all = data.Rows.All();
  std::vector<std::size_t> rows;
  for (std::size_t at = 0; at < all.size(); ++at) {
    if (!data.IsOfToday(at) || (!rows.empty() && all[at].Time < all[rows.back()].Time)) {
      continue;
    }
    const bool same = !rows.empty() && step > data.Rows.Step() &&
                      all[rows.back()].Time / step == all[at].Time / step;
    if (same) {
      rows.back() = at;
    } else {
      rows.push_back(at);
    }
  }
  return rows;
}

// Times and numbers, with nothing between times that are not known to belong together.
class Lists {
 public:
  explicit Lists(std::size_t count) : numbers_(count) {}

  void Add(UnixSeconds time, bool gap, std::span<const float> numbers) {
    if (gap && !times_.empty() && last_ + 1 < time) {
      AddOne(last_ + 1, {});
    }
    AddOne(time, numbers);
    last_ = time;
  }

  static std::string Closed(const std::string& list) { return list.empty() ? "[]" : list + "]"; }
  std::string Times() const { return Closed(times_); }
  std::string Numbers(std::size_t at) const { return Closed(numbers_[at]); }

 private:
  void AddOne(UnixSeconds time, std::span<const float> numbers) {
    AppendItem(&times_);
    AppendNumber(time, &times_);
    for (std::size_t at = 0; at < numbers_.size(); ++at) {
      AppendItem(&numbers_[at]);
      if (numbers.empty() || std::isnan(numbers[at])) {
        numbers_[at] += "null";
      } else {
        AppendNumber(numbers[at], &numbers_[at]);
      }
    }
  }

  std::string times_;
  std::vector<std::string> numbers_;
  UnixSeconds last_ = 0;
};

Lists ListsOf(const HistoryData& data, const std::vector<std::uint32_t>& series,
              const std::vector<std::size_t>& rows) {
  Lists lists(series.size());
  std::size_t at = 0;
  bool gap = false;
  auto next = rows.begin();
  data.Rows.Read(series, [&](const HistoryRows::Row& row, std::span<const float> numbers) {
    gap = gap || row.Gap;
    if (next != rows.end() && *next == at++) {
      lists.Add(row.Time, gap, numbers);
      gap = false;
      ++next;
    }
  });
  return lists;
}

std::optional<std::uint32_t> SeriesAt(const HistoryData& data, const Identities& identities,
                                      std::string_view path) {
  const std::string identity = identities.OfPath(path);
  // A path that leads nowhere in the document may be an identity already.
  return data.Find(identity);
}

struct Asked {
  std::uint32_t Series;
  std::string_view Path;  // the first of those that lead to it
};

std::optional<std::vector<Asked>> FindAsked(const HistoryData& data, const Identities& identities,
                                            const std::vector<std::string_view>& paths,
                                            std::string_view* unknown) {
  std::vector<Asked> asked;
  for (const std::string_view path : paths) {
    const std::optional<std::uint32_t> found = SeriesAt(data, identities, path);
    if (!found) {
      *unknown = path;
      return std::nullopt;
    }
    if (std::ranges::find(asked, *found, &Asked::Series) == asked.end()) {
      asked.push_back({*found, path});
    }
  }
  return asked;
}

}  // namespace

void AddEpisode(const Episode& episode, QtSts::JsonText* json) {
  AddText("Id", std::string(episode.Id), json);
  AddText("Severity", NameOf(episode.Level), json);
  AddText("Message", std::string(episode.Message), json);
  AddText("Where", std::string(episode.Where), json);
  AddText("Path", std::string(episode.Path), json);
  AddText("Begin", TimeText(TimeOf(episode.Begin)), json);
  json->Member("Before");
  json->Literal(episode.Before ? "true" : "false");
  if (episode.End) {
    AddText("End", TimeText(TimeOf(*episode.End)), json);
  }
}

std::string HistoryListOf(const HistoryData& data, const Cycle& latest,
                          const Identities& identities) {
  QtSts::JsonText json;
  json.Open('{');
  AddNumber("Step", data.Rows.Step(), &json);
  const std::vector<std::size_t> rows = RowsOf(data, data.Rows.Step());
  if (!rows.empty()) {
    AddText("Begin", TimeText(TimeOf(data.Rows.All()[rows.front()].Time)), &json);
    AddText("End", TimeText(TimeOf(data.Rows.All()[rows.back()].Time)), &json);
  }
  AddSeries(data, latest, identities, &json);
  AddNumber("LeftOut", data.LeftOut, &json);
  json.Member("Findings");
  json.Open('[');
  for (const Episode& episode : data.Findings.All()) {
    json.Next();
    json.Open('{');
    AddEpisode(episode, &json);
    json.Close('}');
  }
  json.Close(']');
  json.Close('}');
  return json.Take();
}

bool HasHistoryOf(const HistoryData& data, const Identities& identities,
                  const std::vector<std::string_view>& paths, std::string_view* unknown) {
  return FindAsked(data, identities, paths, unknown).has_value();
}

std::optional<std::string> HistoryOf(const HistoryData& data, const Identities& identities,
                                     const std::vector<std::string_view>& paths,
                                     std::string_view* unknown) {
  const std::optional<std::vector<Asked>> asked = FindAsked(data, identities, paths, unknown);
  if (!asked) {
    return std::nullopt;
  }
  std::vector<std::uint32_t> series;
  std::ranges::transform(*asked, std::back_inserter(series), &Asked::Series);
  std::uint32_t step = data.Rows.Step();
  std::vector<std::size_t> rows = RowsOf(data, step);
  while (rows.size() * series.size() > kMostNumbers && step < kHistorySeconds) {
    step *= 2;
    rows = RowsOf(data, step);
  }
  const Lists lists = ListsOf(data, series, rows);
  QtSts::JsonText json;
  json.Open('{');
  AddNumber("Step", step, &json);
  json.Member("Times");
  json.Literal(lists.Times());
  json.Member("Series");
  json.Open('[');
  for (std::size_t at = 0; at < series.size(); ++at) {
    json.Next();
    json.Open('{');
    AddText("Path", std::string((*asked)[at].Path), &json);
    json.Member("Values");
    json.Literal(lists.Numbers(at));
    json.Close('}');
  }
  json.Close(']');
  json.Close('}');
  return json.Take();
}

std::string NearestPath(const Cycle& latest, std::string_view path) {
  constexpr std::size_t kMost = 2000;      // of which the nearest is sought
  constexpr std::size_t kMostBytes = 200;  // of a path
  std::vector<std::string> paths;
  VisitPaths(latest, [&paths](const std::string& each) { paths.push_back(each); });
  if (paths.size() > kMost || path.size() > kMostBytes) {
    return "";
  }
  return std::string(
      insight::Names(std::vector<std::string_view>(paths.begin(), paths.end())).Nearest(path));
}

}  // namespace serve
