// Rows through the handlers as a cycle brings them there: in byte order of key, each key once, cut
// to what the cycle's buffers hold, looked up in the key table from the last match on.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "collector/key_table.h"
#include "fuzz/fuzz.h"

namespace fuzz {

using Rows = std::map<std::string, std::string, std::less<>>;

inline constexpr std::size_t kLongestKey = 127;
inline constexpr std::size_t kLongestValue = 511;

/// Calls the handler of every row that has one.
inline void Dispatch(const Rows& rows, QtSts::CStatus* status) {
  std::size_t resume = 0;
  for (const auto& [full_key, full_value] : rows) {
    const Exact key(std::string_view(full_key.c_str()).substr(0, kLongestKey));
    const Exact value(std::string_view(full_value.c_str()).substr(0, kLongestValue));
    for (std::size_t i = resume; i < status_primary_keys.size(); ++i) {
      const std::string& prefix = status_primary_keys[i].Key;
      if (std::strncmp(prefix.c_str(), key.Get(), prefix.size()) == 0) {
        resume = i;
        status_primary_keys[i].Handler(status, value.Get(), key.Get());
        break;
      }
    }
  }
}

}  // namespace fuzz
