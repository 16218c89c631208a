// Rows through the product's dispatcher, as a cycle brings them there: in byte order of key, each
// key once.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "collector/dispatch.h"
#include "fuzz/fuzz.h"

namespace fuzz {

using Rows = std::map<std::string, std::string, std::less<>>;

// Calls the handler of every row that has one.
inline void Dispatch(const Rows& rows, QtSts::CStatus* status) {
  rows::Dispatcher dispatcher(status);
  for (const auto& [key, value] : rows) {
    dispatcher.Dispatch(key.c_str(), value.c_str());
  }
}

// The same with texts that AddressSanitizer watches: each in a block of exactly its size.
inline void DispatchExact(const Rows& rows, QtSts::CStatus* status) {
  rows::Dispatcher dispatcher(status);
  for (const auto& [full_key, full_value] : rows) {
    const Exact key(std::string_view(full_key.c_str()).substr(0, CSQLdatabase::kMaxAddressBytes));
    const Exact value(std::string_view(full_value.c_str()).substr(0, CSQLdatabase::kMaxValueBytes));
    dispatcher.DispatchInPlace(key.Get(), value.Get());
  }
}

}  // namespace fuzz
