#include "insight/origins.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "insight/source_database.h"

namespace insight {
namespace {

// The path of what holds the value or element at `path`; "" for the document.
std::string_view HolderOf(std::string_view path) {
  const std::size_t end = path.find_last_of("/[");
  return path.substr(0, end == std::string_view::npos ? 0 : end);
}

}  // namespace

void Origins::Name(Finding* finding, const QtSts::TreeElement& holder, const char* key) {
  Collect();
  if (key == nullptr) {
    finding->Key = KeyOfNumber(*finding, holder);
    if (finding->Key.empty()) {
      finding->Key = KeyOf(finding->Path);
    }
  } else if (HasRow(key)) {
    finding->Key = key;
  }
  finding->Source = finding->Key.empty() ? SourceOf(finding->Path) : kDatabaseId;
}

bool Origins::HasRow(std::string_view key) {
  CollectKeys();
  return keys_.contains(key);
}

void Origins::Collect() {
  if (std::exchange(collected_, true)) {
    return;
  }
  CollectRows();
  for (const Source& source : snapshot_.Sources) {
    for (const std::string& field : source.Fields) {
      const auto [entry, first] = sources_.emplace(field, source.Id);
      if (!first) {
        entry->second = "";  // of two it is not known which one
      }
    }
  }
}

// There may be many rows: each is looked at once, and most make one entry.
void Origins::CollectRows() {
  rows_.reserve(snapshot_.Rows.size());
  // A row that completes an element fills fields that came of other rows, or of none.
  std::vector<Texts::value_type> completed;
  for (const Row& row : snapshot_.Rows) {
    if (!row.Path.empty()) {
      const auto [entry, first] = rows_.try_emplace(row.Path, row.Key);
      if (!first) {
        std::vector<std::string_view>& keys = filled_[row.Path];
        if (keys.empty()) {
          keys.push_back(entry->second);
        }
        keys.emplace_back(row.Key);
        entry->second = row.Key;
      }
    }
    for (const Change& change : row.Changes) {
      if (change.Path != row.Path) {
        completed.emplace_back(change.Path, row.Key);
      }
    }
  }
  rows_.insert(completed.begin(), completed.end());
}

void Origins::CollectKeys() {
  if (std::exchange(keys_collected_, true)) {
    return;
  }
  for (const Row& row : snapshot_.Rows) {
    if (!row.Path.empty() && row.What() != Outcome::kMarkUnset) {
      keys_.insert(row.Key);
    }
  }
}

// The one that feeds the field, or else a list that holds it.
std::string Origins::SourceOf(std::string_view path) const {
  while (!path.empty()) {
    if (const auto source = sources_.find(path); source != sources_.end()) {
      return std::string(source->second);
    }
    path = HolderOf(path);
  }
  return "";
}

// The row of the number that is wrong in a row of numbers: the first that is not finite, or else
// the lowest, for a share the lowest above 0. "" when it is not known which row gave which number.
std::string Origins::KeyOfNumber(const Finding& finding, const QtSts::TreeElement& holder) const {
  const std::string_view path = finding.Path;
  const auto filled = filled_.find(path);
  const QtSts::TreeValue* const value = holder.FindValue(path.substr(path.rfind('/') + 1));
  if (filled == filled_.end() || value == nullptr || value->Kind() != QtSts::ValueKind::kReals ||
      value->Reals().size() != filled->second.size()) {
    return "";
  }
  const auto& numbers = value->Reals();
  auto wrong = std::ranges::find_if(numbers, [](float number) { return !std::isfinite(number); });
  if (wrong == numbers.end()) {
    const bool share = finding.Value.has_value();
    wrong = std::ranges::min_element(numbers, [share](float left, float right) {
      return share && (left <= 0 || right <= 0) ? left > 0 && right <= 0 : left < right;
    });
  }
  return std::string(filled->second[static_cast<std::size_t>(wrong - numbers.begin())]);
}

// The row that wrote the value, or else the one that completed an element that holds it.
std::string Origins::KeyOf(std::string_view path) const {
  while (!path.empty()) {
    if (const auto row = rows_.find(path); row != rows_.end()) {
      return std::string(row->second);
    }
    path = HolderOf(path);
  }
  return "";
}

}  // namespace insight
