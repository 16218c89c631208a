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

  const QtSts::CStatus* m_Status = nullptr;
  bool m_ReadRows = false;  // the cycle came so far
  std::size_t m_Rows = 0;
  std::set<std::string> m_Written;  // fields that a row was stored in

  bool m_Failed = false;
  observe::Stage m_FailedAt = observe::Stage::kOpen;
  int m_Code = 0;
  int m_Error = 0;
  std::string m_Message;
};

}  // namespace insight
