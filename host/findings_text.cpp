#include "host/findings_text.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/annotations.h"
#include "host/printable.h"
#include "host/row_problems.h"

namespace host {
namespace {

using insight::Finding;
using insight::Severity;
using insight::Snapshot;

constexpr std::size_t kMostOfAKind = 20;
constexpr std::size_t kLeastBeside = 56;  // columns that a text has beside paths and keys
constexpr std::size_t kMostRowErrors = 5;
constexpr std::size_t kMostOfAText = 240;
constexpr std::size_t kGap = 2;
constexpr std::string_view kRowErrors = "row-errors";

// "2 critical, 1 unknown, 5 warnings"; "" for none.
std::string Counts(const Snapshot& snapshot) {
  std::string text;
  for (const Severity level : {Severity::kCritical, Severity::kUnknown, Severity::kWarning}) {
    const auto count =
        static_cast<std::size_t>(std::ranges::count(snapshot.Findings, level, &Finding::Level));
    const std::string name = NameOf(level);
    if (count > 0) {
      text.append(text.empty() ? "" : ", ")
          .append(Counted(count, name, level == Severity::kWarning ? name + "s" : name));
    }
  }
  return text;
}

// "12 s", "5 min", "3 h 20 min", "4 d 2 h".
std::string Duration(std::chrono::seconds duration) {
  static constexpr std::pair<std::int64_t, const char*> kUnits[] = {
      {86400, " d"}, {3600, " h"}, {60, " min"}, {1, " s"}};
  std::int64_t rest = std::max<std::int64_t>(duration.count(), 0);
  const auto* unit = std::ranges::find_if(
      kUnits, [rest](const auto& each) { return rest >= each.first || each.first == 1; });
  std::string text = std::to_string(rest / unit->first) + unit->second;
  rest %= unit->first;
  // The second unit of long times only.
  if (unit->first >= 3600 && rest >= unit[1].first) {
    text += " " + std::to_string(rest / unit[1].first) + unit[1].second;
  }
  return text;
}

std::string DatabaseText(const Snapshot& snapshot) {
  const insight::DatabaseState& database = snapshot.Database;
  const std::string rows = Counted(database.Rows, "row", "rows");
  if (database.Unchanged) {
    return rows + ", database last changed " + Duration(*database.Unchanged) + " ago";
  }
  if (database.LastChanged) {
    return rows + ", database last changed " +
           Duration(std::chrono::duration_cast<std::chrono::seconds>(snapshot.Began -
                                                                     *database.LastChanged)) +
           " ago";
  }
  return rows + ", when the database last changed is not known";
}

// No line is broken between a number and its unit.
std::string WithTies(std::string text) {
  static constexpr std::string_view kUnits[] = {" %", " \u00B0C", " V", " rpm", " Hz"};
  for (const std::string_view unit : kUnits) {
    for (std::size_t at = text.find(unit); at != std::string::npos; at = text.find(unit, at + 1)) {
      const char before = at == 0 ? ' ' : text[at - 1];
      if (before >= '0' && before <= '9') {
        text.replace(at, 1, kTie);
      }
    }
  }
  return text;
}

std::string WhatAndWhere(const Finding& finding, const Page& page) {
  const std::string message = WithTies(Printable(finding.Message));
  const std::string where = Printable(finding.Where);
  const std::string text =
      message.empty() || where.empty() ? message + where : message + ", " + where;
  return page.IsWhole() ? text : Truncated(text, kMostOfAText);
}

std::string HintOf(const Finding& finding) {
  return finding.Hint.empty() ? "" : "look at: " + Truncated(Printable(finding.Hint), kMostOfAText);
}

// The findings that are shown, and instead of others of their kind how many there are.
struct Choice {
  const Finding* Shown;
  std::size_t Further;  // left out after it
};

std::vector<Choice> Choose(const Snapshot& snapshot, Extent extent) {
  std::vector<Choice> chosen;
  std::size_t alike = 0;
  const Finding* before = nullptr;
  for (const Finding& finding : snapshot.Findings) {
    alike = before != nullptr && before->Id == finding.Id ? alike + 1 : 0;
    before = &finding;
    if (extent != Extent::kFull && alike >= kMostOfAKind) {
      ++chosen.back().Further;
    } else {
      chosen.push_back({&finding, 0});
    }
  }
  return chosen;
}

std::string FurtherText(std::size_t count) {
  return "and " + std::to_string(count) + " more like it: --section findings shows all";
}

// Rows with errors stand below with their keys.
std::string KeyOf(const Finding& finding) {
  return finding.Id == kRowErrors ? "" : Printable(finding.Key);
}

constexpr std::size_t kLevelWidth = 8;  // of "critical"

Row LevelAndText(const Finding& finding, const Page& page) {
  return {MarkOf(finding.Level),
          {Padded(NameOf(finding.Level), kLevelWidth), WhatAndWhere(finding, page)}};
}

// The places stand beside the texts, in columns of their own.
class Beside {
 public:
  explicit Beside(Page* page) : page_(page) {}

  void Add(const Finding& finding, const std::string& hint) {
    rows_.push_back(LevelAndText(finding, *page_));
    rows_.back().Cells.insert(rows_.back().Cells.end(), {Printable(finding.Path), KeyOf(finding)});
    AddNote(hint);
  }
  void AddNote(const std::string& text) {
    if (!text.empty()) {
      rows_.push_back({Mark::kNone, {"", text, "", ""}});
    }
  }
  void Show() const { page_->Table({{""}, {""}, {""}, {""}}, rows_, 1); }

 private:
  Page* page_;
  std::vector<Row> rows_;
};

// The places stand on lines of their own below the texts, as far to the left as they can.
class Below {
 public:
  explicit Below(Page* page) : page_(page) {}

  void Add(const Finding& finding, const std::string& hint) {
    page_->Table({{""}, {""}}, {LevelAndText(finding, *page_)});
    AddNote(hint);
    const std::string path = Printable(finding.Path);
    const std::string key = KeyOf(finding);
    const std::string both = path + (path.empty() || key.empty() ? "" : "  ") + key;
    if (Width(both) + kIndent <= page_->Columns()) {
      AddNote(both);
    } else {
      AddNote(path);
      AddNote(key);
    }
  }
  void AddNote(const std::string& text) {
    if (!text.empty()) {
      page_->Table({{""}, {""}}, {{Mark::kNone, {" ", text}}});
    }
  }
  void Show() const {}

 private:
  static constexpr std::size_t kIndent = 5;

  Page* page_;
};

// The rows that have errors but for those whose mistake a finding says.
std::vector<const insight::Row*> RowsLeft(const Snapshot& snapshot) {
  std::unordered_map<std::string_view, const Finding*> said;
  for (const Finding& finding : snapshot.Findings) {
    said.emplace(finding.Key, &finding);
  }
  std::vector<const insight::Row*> rows;
  for (const insight::Row& row : snapshot.Rows) {
    const auto finding = said.find(row.Key);
    if (row.Class() == insight::OutcomeClass::kError &&
        (finding == said.end() ||
         finding->second->Message.find(TextOf(row.Remarks.front())) == std::string::npos)) {
      rows.push_back(&row);
    }
  }
  return rows;
}

// What is wrong with the first rows that have errors, which one finding counts.
template <class Layout>
void AddRowErrors(const Snapshot& snapshot, Layout* layout) {
  std::size_t shown = 0;
  for (const Problem& problem : ProblemsOf(RowsLeft(snapshot), Remarks::kFirst)) {
    if (++shown > kMostRowErrors) {
      layout->AddNote("...");
      return;
    }
    const std::string likewise = LikewiseText(problem);
    layout->AddNote(Truncated("row " + Printable(problem.Of->Key) + ": " +
                                  Printable(TextOf(*problem.What)) +
                                  (likewise.empty() ? "" : "; likewise " + likewise),
                              kMostOfAText));
  }
}

template <class Layout>
void ShowChosen(const Snapshot& snapshot, const std::vector<Choice>& chosen, Layout layout) {
  std::string hint_before;
  for (const Choice& choice : chosen) {
    // What is to be looked at is said once for findings in a row.
    std::string hint = HintOf(*choice.Shown);
    layout.Add(*choice.Shown, hint == hint_before ? "" : hint);
    hint_before = std::move(hint);
    if (choice.Shown->Id == kRowErrors) {
      AddRowErrors(snapshot, &layout);
    }
    if (choice.Further > 0) {
      layout.AddNote(FurtherText(choice.Further));
    }
  }
  layout.Show();
}

void ShowBrief(const std::vector<Choice>& chosen, Page* page) {
  const std::size_t room = page->Columns() - 2 - kLevelWidth - kGap;
  const std::string before(kLevelWidth + kGap, ' ');
  for (const Choice& choice : chosen) {
    const Row row = LevelAndText(*choice.Shown, *page);
    const std::string& text = row.Cells.back();
    page->Single(row.How, row.Cells.front() + std::string(kGap, ' ') +
                              (page->IsWhole() ? text : Truncated(text, room)));
    if (choice.Further > 0) {
      page->Single(Mark::kNone, before + FurtherText(choice.Further));
    }
  }
}

}  // namespace

void ShowHeadline(const Snapshot& snapshot, Page* page) {
  if (snapshot.Findings.empty()) {
    page->Headline(Mark::kNone, "all well: no findings in " +
                                    Counted(snapshot.Database.Rows, "row", "rows") + " and " +
                                    Counted(snapshot.Sources.size(), "source", "sources"));
  } else {
    const Severity worst = std::ranges::min(snapshot.Findings, {}, &Finding::Level).Level;
    page->Headline(MarkOf(worst), std::string(NameOf(worst)) + ": " + Counts(snapshot));
  }
  page->Plain(DatabaseText(snapshot));
}

void ShowFindings(const Snapshot& snapshot, Extent extent, Page* page) {
  if (snapshot.Findings.empty()) {
    return;
  }
  page->Gap();
  const std::vector<Choice> chosen = Choose(snapshot, extent);
  if (extent == Extent::kBrief) {
    ShowBrief(chosen, page);
    return;
  }
  std::size_t paths = 0;
  std::size_t keys = 0;
  for (const Choice& choice : chosen) {
    paths = std::max(paths, Width(Printable(choice.Shown->Path)));
    keys = std::max(keys, Width(KeyOf(*choice.Shown)));
  }
  const bool places = paths + keys > 0;
  if (places && 2 + kLevelWidth + 3 * kGap + kLeastBeside + paths + keys <= page->Columns()) {
    ShowChosen(snapshot, chosen, Beside(page));
  } else {
    ShowChosen(snapshot, chosen, Below(page));
  }
}

}  // namespace host
