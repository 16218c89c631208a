// What the status database gave in a cycle. Private to this library.
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <string_view>

#include "collector/observer.h"
#include "insight/snapshot.h"

namespace insight {

// Of the database among the sources.
inline constexpr char kDatabaseId[] = "database";

// Whether rows only add bits to this field.
bool RowsAddBits(std::string_view field);

class DatabaseRecorder {
 public:
  void BeginCycle();
  void See(const observe::Event& event);

  // The database among the sources.
  Source EndCycle() const;

 private:
  void SeeStored(const void* destination);

  const QtSts::CStatus* status_ = nullptr;
  bool read_rows_ = false;  // the cycle came so far
  std::size_t rows_ = 0;
  std::set<std::string> written_;  // fields that a row was stored in

  bool failed_ = false;
  observe::Stage failed_at_ = observe::Stage::kOpen;
  int code_ = 0;
  int error_ = 0;
  std::string message_;
};

}  // namespace insight
