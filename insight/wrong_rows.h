// Rows whose value became something else than it says, so that what comes of it says little.
// Private to this library.
#pragma once

#include <cstddef>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "insight/snapshot.h"

namespace insight {

// Points into the snapshot.
class WrongRows {
 public:
  explicit WrongRows(const Snapshot& snapshot);

  // How many rows have errors, and the first of them; null when there is none.
  std::size_t Errors() const { return errors_; }
  const Row* FirstError() const { return first_error_; }

  // The rows whose keys are not known.
  const std::vector<const Row*>& UnknownKeys() const { return unknown_keys_; }

  // What is wrong with the value of the row with this key, which stands at `path`; null when
  // nothing is, or when it stands elsewhere.
  const Remark* MistakeIn(std::string_view key, std::string_view path) const;

  // What is wrong with the row whose number wrapped and stands at `path`; null when none did.
  const Remark* WrappedAt(std::string_view path) const;
  bool HasWrapped() const { return has_wrapped_; }

  // Whether a wrong row wrote the value at `path`.
  bool HasWritten(std::string_view path) const { return rows_.contains(path); }

 private:
  struct Wrong {
    const Row* Of;
    const Remark* Mistake;
  };
  std::unordered_multimap<std::string_view, Wrong> rows_;  // by path
  bool has_wrapped_ = false;
  std::vector<const Row*> unknown_keys_;
  std::size_t errors_ = 0;
  const Row* first_error_ = nullptr;
};

}  // namespace insight
