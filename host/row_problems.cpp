#include "host/row_problems.h"

#include <algorithm>
#include <cstddef>
#include <unordered_map>

#include "collector/key_table.h"
#include "host/printable.h"

namespace host {
namespace {

using insight::OutcomeClass;
using insight::Remark;
using insight::Row;

// The part of the key after that of its family.
std::string_view WithinFamily(std::string_view key) {
  const std::string_view family = FamilyOf(key);
  key.remove_prefix(family.empty() ? 0 : std::min(key.size(), family.size() + 1));
  return key;
}

}  // namespace

std::string_view FamilyOf(std::string_view key) {
  const auto* const entry = std::ranges::find_if(
      status_primary_keys, [&](const StatusKey& each) { return key.starts_with(each.Key); });
  if (entry == status_primary_keys.end() || !entry->Key.ends_with('_')) {
    return "";
  }
  return key.substr(0, key.find('_', entry->Key.size()));
}

std::string TextOf(const Remark& remark) {
  return remark.Text.empty() ? insight::InfoOf(remark.What).Meaning : remark.Text;
}

std::vector<Problem> ProblemsOf(const std::vector<const Row*>& rows, Remarks remarks) {
  std::vector<Problem> problems;
  std::unordered_map<std::string, std::size_t> known;  // of the family; to the place of the problem
  std::string_view family;
  for (const Row* const row : rows) {
    if (row->Class() != OutcomeClass::kError) {
      continue;
    }
    if (const std::string_view own = FamilyOf(row->Key); own != family) {
      family = own;
      known.clear();
    }
    for (const Remark& remark : row->Remarks) {
      if (insight::InfoOf(remark.What).Class != OutcomeClass::kError) {
        continue;
      }
      const auto [entry, is_new] =
          known.emplace(insight::InfoOf(remark.What).Id + (" " + remark.Text), problems.size());
      if (is_new) {
        problems.push_back({row, &remark, {}});
      } else {
        problems[entry->second].Likewise.push_back(row);
      }
      if (remarks == Remarks::kFirst) {
        break;
      }
    }
  }
  return problems;
}

std::string LikewiseText(const Problem& problem) {
  constexpr std::size_t kMostNamed = 12;
  const std::size_t count = problem.Likewise.size();
  if (count == 0) {
    return "";
  }
  const std::string_view family = FamilyOf(problem.Of->Key);
  std::string text = Counted(count, "more row", "more rows");
  text += family.empty() ? "" : " of " + Printable(family);
  const char* separator = ": ";
  for (std::size_t at = 0; at < std::min(count, kMostNamed); ++at) {
    text += separator + Printable(WithinFamily(problem.Likewise[at]->Key));
    separator = ", ";
  }
  return count <= kMostNamed ? text : text + " and " + std::to_string(count - kMostNamed) + " more";
}

}  // namespace host
