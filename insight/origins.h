// The row or source that a value of the document comes from. Private to this library.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "insight/snapshot.h"
#include "model/tree.h"

namespace insight {

// By path; collected when the first finding asks. Points into the snapshot.
class Origins {
 public:
  explicit Origins(const Snapshot& snapshot) : snapshot_(snapshot) {}

  // Whether a row of this key stands in the document, and is no mark that is not set.
  bool HasRow(std::string_view key);

  // Sets Key and Source of `finding`, whose Path is that of a value of `holder` or of a record in
  // it. `key` as ValueRule::Key.
  void Name(Finding* finding, const QtSts::TreeElement& holder, const char* key);

 private:
  using Texts = std::unordered_map<std::string_view, std::string_view>;

  void Collect();
  void CollectRows();
  void CollectKeys();
  std::string SourceOf(std::string_view path) const;
  std::string KeyOf(std::string_view path) const;
  std::string KeyOfNumber(const Finding& finding, const QtSts::TreeElement& holder) const;

  const Snapshot& snapshot_;
  bool collected_ = false;
  bool keys_collected_ = false;
  Texts rows_;  // path to key
  // Path to keys, where several rows fill one field.
  std::unordered_map<std::string_view, std::vector<std::string_view>> filled_;
  std::unordered_set<std::string_view> keys_;  // see HasRow
  Texts sources_;                              // path to id
};

}  // namespace insight
