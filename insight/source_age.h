// Since when the status database has not changed. Private to this library.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "insight/snapshot.h"

namespace insight {

// Looks at the database's file and its log after each cycle, never into them.
class DatabaseAge {
 public:
  // Fills all of `state` but its rows.
  void Look(DatabaseState* state);

 private:
  // What counts: the log while it holds something, else the database.
  struct Sight {
    bool Log;
    std::int64_t Size;
    std::chrono::system_clock::time_point Changed;

    bool operator==(const Sight&) const = default;
  };

  std::optional<Sight> sight_;
  std::chrono::steady_clock::time_point looked_;
  // When it last changed, on the clock that nobody sets.
  std::chrono::steady_clock::time_point changed_;
};

}  // namespace insight
