#include "host/explain_text.h"

#include <algorithm>
#include <map>
#include <set>
#include <string_view>
#include <unordered_map>

#include "host/page.h"
#include "host/printable.h"
#include "host/row_problems.h"
#include "host/sources_text.h"
#include "insight/nearest.h"

namespace host {
namespace {

using insight::OutcomeClass;
using insight::Remark;
using insight::Snapshot;
using insight::SourceState;

Mark MarkOf(OutcomeClass outcome_class) {
  switch (outcome_class) {
    case OutcomeClass::kError:
      return Mark::kCritical;
    case OutcomeClass::kNotice:
      return Mark::kWarning;
    default:
      return Mark::kNone;
  }
}

// Begins with a capital letter and ends with a stop.
std::string Sentence(std::string text) {
  if (!text.empty() && text.front() >= 'a' && text.front() <= 'z') {
    text.front() = static_cast<char>(text.front() - 'a' + 'A');
  }
  if (!text.empty() && !text.ends_with('.')) {
    text += '.';
  }
  return text;
}

// What became of a row, in its line of the table. Paths within `element`, which the title names,
// begin with "…".
std::string Fate(const insight::Row& row, const std::string& element) {
  std::string fate;
  if (row.Class() != OutcomeClass::kFine) {
    for (const Remark& remark : row.Remarks) {
      if (insight::InfoOf(remark.What).Class != OutcomeClass::kFine) {
        fate += (fate.empty() ? "" : "; ") + TextOf(remark);
      }
    }
  } else if (row.Path.empty()) {
    fate = TextOf(row.Remarks.front());
    const std::string known = ", which completes " + element;
    if (!element.empty() && fate.ends_with(known)) {
      fate.resize(fate.size() - known.size());
    }
  } else {
    const bool within = !element.empty() && row.Path.starts_with(element + '/');
    fate = within ? "\u2026" + row.Path.substr(element.size()) : row.Path;
    if (row.Before != row.After && !row.Before.empty()) {
      fate += " (before: " + row.Before + ")";
    }
  }
  return Printable(fate);
}

// What stands in front of the number, or the key: "Sensor_", "GUID".
std::string_view HeadOf(std::string_view key) {
  const std::size_t digit = key.find_first_of("0123456789");
  const std::size_t underscore = key.find('_');
  return key.substr(
      0, std::min(digit, underscore == std::string_view::npos ? key.size() : underscore + 1));
}

bool IsSameLetter(char left, char right) {
  const auto small = [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  };
  return small(left) == small(right);
}

// The beginning of keys that `prefix` perhaps means, of those that rows have: "Sensor_" for
// "sensor_"; "" when none is near.
std::string NearestPrefix(const std::vector<insight::Row>& rows, std::string_view prefix) {
  std::set<std::string_view> heads;
  for (const insight::Row& row : rows) {
    const std::string_view beginning = std::string_view(row.Key).substr(0, prefix.size());
    if (std::ranges::equal(beginning, prefix, &IsSameLetter)) {
      return std::string(beginning);
    }
    heads.insert(HeadOf(row.Key));
  }
  return std::string(insight::Names({heads.begin(), heads.end()}).Nearest(HeadOf(prefix)));
}

class Explanation {
 public:
  Explanation(const Snapshot& snapshot, const Snapshot& before, const ExplainOptions& options,
              std::size_t columns, bool colour)
      : snapshot_(snapshot),
        before_(before),
        options_(options),
        rows_(WantedRows(snapshot, {.Prefix = options.Prefix})),
        differs_(DifferingRows(rows_, before)),
        page_(columns, colour) {}

  std::string Render() {
    if (options_.Prefix.empty() && !options_.Problems) {
      ShowSources(snapshot_, &before_, &page_);
    }
    if (rows_.empty()) {
      ShowNoRows();
    } else if (!options_.Problems) {
      ShowRows();
    }
    ShowProblems();
    ShowSummary();
    return page_.Take();
  }

 private:
  void ShowNoRows() {
    page_.Title("Rows");
    const std::string nearest = NearestPrefix(snapshot_.Rows, options_.Prefix);
    page_.Line(
        options_.Prefix.empty()
            ? "none"
            : "No row has a key that begins with \"" + Printable(options_.Prefix) + "\"" +
                  (nearest.empty() ? "" : "; the nearest is \"" + Printable(nearest) + "\"") + ".");
  }

  void ShowRows() {
    for (std::size_t i = 0; i < rows_.size();) {
      const std::string_view family = FamilyOf(rows_[i]->Key);
      std::size_t end = i;
      std::string element;
      for (; end < rows_.size() && FamilyOf(rows_[end]->Key) == family; ++end) {
        const insight::Row& row = *rows_[end];
        if (std::ranges::count(row.Remarks, insight::Outcome::kCompleted, &Remark::What) != 0) {
          element = row.Path;
        }
      }
      const std::string of = family.empty() ? "" : " of " + Printable(family);
      page_.Title("Rows" + of + (element.empty() ? "" : ": " + Printable(element)));
      std::vector<Row> rows;
      for (; i < end; ++i) {
        const insight::Row& row = *rows_[i];
        std::string_view key = row.Key;
        key.remove_prefix(family.empty() ? 0 : std::min(key.size(), family.size() + 1));
        rows.push_back({MarkOf(row.Class()),
                        {Truncated(Printable(key), KeyColumns()),
                         row.IsNull ? "NULL" : Truncated(Printable(row.Value), ValueColumns()),
                         Fate(row, element) + (differs_[i] ? kDiffers : "")}});
      }
      page_.Table({{""}, {""}, {""}}, rows);
    }
  }

  void ShowProblems() {
    bool first = true;
    for (const Problem& problem : ProblemsOf(rows_, Remarks::kAll)) {
      const insight::OutcomeInfo& info = insight::InfoOf(problem.What->What);
      first ? page_.Title("Problems") : page_.Gap();
      first = false;
      const Quoted quoted = Quote(*problem.Of, *problem.What);
      page_.Plain(quoted.Text);
      if (!quoted.Carets.empty() && Width(quoted.Carets) <= page_.Columns()) {
        page_.Plain(quoted.Carets);
      }
      page_.Line(Sentence(Printable(TextOf(*problem.What))) + " [" + info.Id + "]");
      if (!problem.Likewise.empty()) {
        page_.Line("Likewise " + LikewiseText(problem) + ".");
      }
      page_.Line(Sentence(std::string("Cure: ") + info.Cure));
    }
  }

  void ShowSummary() {
    std::size_t fine = 0;
    std::size_t notices = 0;  // a row may have several
    std::size_t errors = 0;
    for (const insight::Row* const row : rows_) {
      fine += row->Class() == OutcomeClass::kFine ? 1 : 0;
      for (const Remark& remark : row->Remarks) {
        const OutcomeClass is = insight::InfoOf(remark.What).Class;
        notices += is == OutcomeClass::kNotice ? 1 : 0;
        errors += is == OutcomeClass::kError ? 1 : 0;
      }
    }
    page_.Title("Summary");
    page_.Line(std::to_string(rows_.size()) + " of " + std::to_string(snapshot_.Rows.size()) +
               " rows: " + std::to_string(fine) + " fine; " +
               Counted(notices, "notice", "notices") + ", " + Counted(errors, "error", "errors") +
               ".");
    std::map<SourceState, std::size_t> states;
    for (const insight::Source& source : snapshot_.Sources) {
      ++states[source.State];
    }
    std::string text = Counted(snapshot_.Sources.size(), "source", "sources");
    for (const char* separator = ": "; const auto& [state, count] : states) {
      text += separator + std::to_string(count) + " " + NameOf(state);
      separator = ", ";
    }
    page_.Line(text + ".");
    const auto differing = std::ranges::count(differs_, true);
    page_.Line(
        "This is the second of two cycles, so that values are carried over as in a host "
        "that stays; in the one cycle of show, what is inherited from an earlier cycle is not "
        "reported. Rows that became something else than in the first: " +
        std::to_string(differing) + (differing == 0 ? "." : ", marked ~."));
  }

  // What keys and values have of the page at most.
  std::size_t KeyColumns() const { return page_.Columns() * 2 / 5; }
  // The words that rows may hold are not cut.
  std::size_t ValueColumns() const {
    constexpr std::size_t kLongestWord = std::string_view("CANPowerSupplyRedundancyBoard").size();
    return std::max(page_.Columns() * 3 / 10, kLongestWord);
  }

  const Snapshot& snapshot_;
  const Snapshot& before_;
  const ExplainOptions& options_;
  std::vector<const insight::Row*> rows_;
  std::vector<bool> differs_;  // of rows_
  Page page_;
};

bool IsSame(const insight::Row& left, const insight::Row& right) {
  return left.Value == right.Value && left.Path == right.Path && left.After == right.After &&
         std::ranges::equal(left.Remarks, right.Remarks,
                            [](const Remark& one, const Remark& other) {
                              return one.What == other.What && one.Text == other.Text;
                            });
}

}  // namespace

std::vector<const insight::Row*> WantedRows(const Snapshot& snapshot,
                                            const ExplainOptions& options) {
  std::vector<const insight::Row*> rows;
  for (const insight::Row& row : snapshot.Rows) {
    if (row.Key.starts_with(options.Prefix) &&
        (!options.Problems || row.Class() == OutcomeClass::kError)) {
      rows.push_back(&row);
    }
  }
  return rows;
}

std::vector<bool> DifferingRows(const std::vector<const insight::Row*>& rows,
                                const Snapshot& before) {
  std::unordered_map<std::string_view, const insight::Row*> earlier;
  for (const insight::Row& row : before.Rows) {
    earlier.emplace(row.Key, &row);
  }
  std::vector<bool> differs;
  differs.reserve(rows.size());
  for (const insight::Row* const row : rows) {
    const auto same = earlier.find(row->Key);
    differs.push_back(same == earlier.end() || !IsSame(*row, *same->second));
  }
  return differs;
}

Quoted Quote(const insight::Row& row, const Remark& remark) {
  constexpr std::string_view kEquals = " = ";
  const std::string key = Printable(row.Key);
  const std::string value = row.IsNull ? "NULL" : Printable(row.Value);
  Quoted quoted = {key + std::string(kEquals) + value, ""};
  if (remark.Part == insight::RowPart::kNone) {
    return quoted;
  }
  const bool in_key = remark.Part == insight::RowPart::kKey;
  const std::string_view text = in_key ? row.Key : row.Value;
  const std::size_t begin = std::min(remark.Begin, text.size());
  const std::size_t end = std::min(std::max(remark.End, begin), text.size());
  // What Printable leaves out at the ends of a text has no column; a caret stands in its place.
  const std::size_t before = Width(Printable(std::string(text.substr(0, begin)) + "|")) - 1;
  const std::size_t width =
      Width(Printable("|" + std::string(text.substr(begin, end - begin)) + "|"));
  quoted.Carets = std::string((in_key ? 0 : Width(key) + kEquals.size()) + before, ' ') +
                  std::string(std::max<std::size_t>(width - 2, 1), '^');
  return quoted;
}

std::string ExplainInText(const Snapshot& snapshot, const Snapshot& before,
                          const ExplainOptions& options, std::size_t columns, bool colour) {
  return Explanation(snapshot, before, options, columns, colour).Render();
}

}  // namespace host
