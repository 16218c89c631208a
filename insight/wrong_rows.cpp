#include "insight/wrong_rows.h"

#include <algorithm>
#include <iterator>

namespace insight {
namespace {

// Others leave the value what it says, or there is none.
bool IsOfValue(const Remark& remark) {
  static constexpr Outcome kOfValues[] = {Outcome::kLooksTrue, Outcome::kUnknownWord,
                                          Outcome::kNoNumber, Outcome::kTextAfterNumber,
                                          Outcome::kWrapped};
  return remark.What == Outcome::kNull ||
         (remark.Part == RowPart::kValue &&
          std::ranges::find(kOfValues, remark.What) != std::end(kOfValues));
}

}  // namespace

WrongRows::WrongRows(const Snapshot& snapshot) {
  for (const Row& row : snapshot.Rows) {
    const OutcomeClass is = row.Class();
    if (is == OutcomeClass::kFine) {
      continue;
    }
    if (is == OutcomeClass::kError) {
      first_error_ = first_error_ == nullptr ? &row : first_error_;
      ++errors_;
      if (row.What() == Outcome::kUnknownKey) {
        unknown_keys_.push_back(&row);
      }
    }
    const auto mistake = std::ranges::find_if(row.Remarks, &IsOfValue);
    if (mistake != row.Remarks.end() && !row.Path.empty()) {
      rows_.insert({row.Path, {&row, &*mistake}});
      has_wrapped_ = has_wrapped_ || mistake->What == Outcome::kWrapped;
    }
  }
}

const Remark* WrongRows::MistakeIn(std::string_view key, std::string_view path) const {
  const auto [first, last] = rows_.equal_range(path);
  const auto found =
      std::find_if(first, last, [key](const auto& entry) { return entry.second.Of->Key == key; });
  return found == last ? nullptr : found->second.Mistake;
}

const Remark* WrongRows::WrappedAt(std::string_view path) const {
  const auto [first, last] = rows_.equal_range(path);
  const auto found = std::find_if(first, last, [](const auto& entry) {
    return entry.second.Mistake->What == Outcome::kWrapped;
  });
  return found == last ? nullptr : found->second.Mistake;
}

}  // namespace insight
