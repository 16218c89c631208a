#include "collector/status_interface.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "collector/key_table.h"
#include "collector/state/scratch.h"
#include "collector/state/tell.h"
#include "hardware/files.h"
#include "hardware/paths.h"
#include "hardware/system_calls.h"

namespace {

namespace paths = hardware::paths;
using observe::Stage;

constexpr unsigned short kOpenFlags = 32768;   // SQLITE_OPEN_NOMUTEX: one thread at a time
constexpr unsigned short kSynchronousOff = 0;  // the file lives in memory

constexpr struct {
  const char* Name;
  unsigned short Id;
} kTables[] = {{"status", 100}, {"io", 101}, {"packages", 102}};

constexpr std::size_t kKeySize = 128;
constexpr std::size_t kValueSize = 512;

// Copies as much of `text` as fits, always terminated: an over-long row is dispatched cut.
template <std::size_t kSize>
void CopyText(char (&buffer)[kSize], const char* text) {
  const std::size_t length = strnlen(text, kSize - 1);
  std::memcpy(buffer, text, length);
  buffer[length] = '\0';
}

// A row as the database gives it; null texts are NULL.
struct StoredRow {
  const char* Key;
  const char* Value;
  CppSQLite3Query* Query;
};

std::size_t StoredBytes(void* query, int column) {
  return static_cast<std::size_t>(static_cast<CppSQLite3Query*>(query)->getFieldBytes(column));
}

// Merges the rows, which come in byte order, with the table of keys, which stands in byte order:
// the search for a row's key begins where the previous row's key was found. It deliberately never
// wraps.
class Dispatcher {
 public:
  explicit Dispatcher(QtSts::CStatus* status) : m_Status(status) {}

  // An unknown key is ignored, and so is the handler's result.
  void Dispatch(const StoredRow& stored, char* key, char* value) {
    const std::size_t searched_from = m_Resume;
    const int entry = Find(key);
    observe::Tell([&] {
      observe::RowBegins event;
      event.Key = stored.Key;
      event.Value = stored.Value;
      event.CutKey = key;
      event.CutValue = value;
      event.Entry = entry;
      event.SearchedFrom = static_cast<int>(searched_from);
      event.Bytes = &StoredBytes;
      event.Cells = stored.Query;
      return event;
    });
    const int result = entry < 0 ? 0 : status_primary_keys[m_Resume].Handler(m_Status, value, key);
    observe::Tell([&] {
      observe::RowEnds event;
      event.Result = result;
      return event;
    });
  }

 private:
  // The position in the table; -1 when there is none.
  int Find(const char* key) {
    for (std::size_t i = m_Resume; i < status_primary_keys.size(); ++i) {
      const std::string& prefix = status_primary_keys[i].Key;
      if (std::strncmp(prefix.c_str(), key, prefix.size()) == 0) {
        m_Resume = i;  // not the one after it: several rows may match one prefix
        return static_cast<int>(i);
      }
    }
    return -1;
  }

  QtSts::CStatus* m_Status;
  std::size_t m_Resume = 0;
};

std::string FormatTime(const std::tm& time) {
  char text[512];
  const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &time);
  return {text, length};
}

// "+05:30": deliberately the hours carry the sign and the minutes never do, so -00:30 is "+00:30".
std::string FormatOffset(long seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%+.2i:%02i", static_cast<int>(seconds / 3600),
                static_cast<int>(std::labs(seconds % 3600) / 60));
  return text;
}

// Tells the end of a cycle, also when an exception leaves it.
class CycleEnd {
 public:
  CycleEnd() = default;
  CycleEnd(const CycleEnd&) = delete;
  CycleEnd& operator=(const CycleEnd&) = delete;
  ~CycleEnd() {
    if (!m_Returned) {
      Tell(0, true);
    }
  }

  int Return(int result) {
    m_Returned = true;
    Tell(result, false);
    return result;
  }

 private:
  static void Tell(int result, bool threw) {
    observe::Tell([&] {
      observe::CycleEnds event;
      event.Result = result;
      event.Threw = threw;
      return event;
    });
  }

  bool m_Returned = false;
};

void TellStage(Stage stage) {
  observe::Tell([&] {
    observe::AsksDatabase event;
    event.At = stage;
    return event;
  });
}

void TellFailure(Stage stage, const CppSQLite3Exception& failure, bool from_before = false) {
  observe::Tell([&] {
    observe::DatabaseFails event;
    event.At = stage;
    event.Code = failure.errorCode();
    event.ExtendedCode = failure.extendedCode();
    event.SystemError = failure.systemError();
    event.Message = failure.errorMessage();
    event.FromBefore = from_before;
    return event;
  });
}

void TellOpenFailure(const CppSQLite3DB& database, bool from_before) {
  if (const CppSQLite3Exception* const failure = database.openFailure()) {
    TellFailure(Stage::kOpen, *failure, from_before);
  }
}

}  // namespace

CStatusInterface::CStatusInterface() = default;
CStatusInterface::~CStatusInterface() = default;

int CStatusInterface::InitDatabase(bool write) {
  if (!write) {
    TellStage(Stage::kOpen);
    OpenDatabaseReadOnly(paths::kStatusDatabase, kOpenFlags);
    TellOpenFailure(m_DB, false);
    return 0;
  }
  TellStage(Stage::kOpen);
  OpenDatabaseWrite(paths::kStatusDatabase, kOpenFlags, kSynchronousOff);
  TellOpenFailure(m_DB, false);
  for (const auto& table : kTables) {
    CreateTable(table.Name, table.Id);
  }
  for (const auto& table : kTables) {
    CreateTrigger(table.Name);
  }
  return 0;
}

int CStatusInterface::CloseDatabase() { return CSQLdatabase::CloseDatabase(); }

int CStatusInterface::QueryDatabase() {
  observe::Tell([this] {
    observe::CycleBegins event;
    event.Status = &m_Status;
    return event;
  });
  CycleEnd end;
  return end.Return(RunCycle());
}

int CStatusInterface::RunCycle() {
  m_Hardware.UpdateStatus(&m_Status);
  Reset_Globals();
  observe::TellProbeBegins("GetTime");
  GetTime();
  observe::TellProbeEnds("GetTime", 0);
  return QueryRows();
}

// The four places that catch differ deliberately: only the preparation and the statement's final
// finalize store the code, and only the latter leaves the cycle a success, so that its code makes
// the next cycle fail.
int CStatusInterface::QueryRows() {
  std::string sql = "SELECT * FROM status";
  sql += " ORDER BY address ASC;";
  CppSQLite3Query query;
  Stage stage = Stage::kPrepare;
  try {
    try {
      TellOpenFailure(m_DB, true);
      TellStage(stage);
      m_Statement = m_DB.compileStatement(sql.c_str());
    } catch (const CppSQLite3Exception& failure) {
      failure.Report();
      TellFailure(stage, failure);
      m_LastError = failure.errorCode();
    }
    if (ReadAndClearLastError() != 0) {
      return 1;
    }
    TellStage(stage = Stage::kExecute);
    query = m_Statement.execQuery();
    TellStage(stage = Stage::kRows);
    ReadRows(query);
    TellStage(stage = Stage::kFinish);
    query.finalize();
  } catch (const CppSQLite3Exception& failure) {
    failure.Report();
    TellFailure(stage, failure);
    return 1;
  }
  try {
    TellStage(stage = Stage::kRelease);
    m_Statement.finalize();
  } catch (const CppSQLite3Exception& failure) {
    failure.Report();
    TellFailure(stage, failure);
    m_LastError = failure.errorCode();
  }
  return 0;
}

void CStatusInterface::ReadRows(CppSQLite3Query& query) {
  Dispatcher dispatcher(&m_Status);
  char key[kKeySize];
  char value[kValueSize];
  while (ReadAndClearLastError() == 0 && !query.eof()) {
    const StoredRow row{query.getStringField(0, nullptr), query.getStringField(1, nullptr), &query};
    CopyText(key, row.Key == nullptr ? "" : row.Key);
    CopyText(value, row.Value == nullptr ? "" : row.Value);
    dispatcher.Dispatch(row, key, value);
    query.nextRow();
    if (query.eof()) {
      query.finalize();
    }
  }
}

void CStatusInterface::GetTime() {
  const std::time_t now = hardware::calls::Now();
  // Not localtime and gmtime, whose one result the host's other threads may overwrite. Without them
  // only tzset notices that the zone has changed.
  tzset();
  std::tm local{};
  std::tm utc{};
  hardware::calls::LocalTime(now, &local);
  hardware::calls::UtcTime(now, &utc);
  m_UTCTime = FormatTime(utc);
  m_Status.LocalTime = FormatTime(local) + FormatOffset(local.tm_gmtoff);
  m_Status.DaylightSaving = local.tm_isdst != 0;
  if (const auto timestamp = hardware::ReadText(paths::kConfigurationTimestamp)) {
    m_Status.ConfigurationTimestamp = timestamp->c_str();  // up to its first zero byte
  }
}
