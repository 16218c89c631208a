#include "collector/status_interface.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <optional>

#include "collector/dispatch.h"
#include "collector/state/report.h"
#include "collector/state/scratch.h"
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

// Reports the end of a cycle, also when an exception leaves it.
class CycleEnd {
 public:
  CycleEnd() = default;
  CycleEnd(const CycleEnd&) = delete;
  CycleEnd& operator=(const CycleEnd&) = delete;
  ~CycleEnd() {
    if (!returned_) {
      Report(0, true);
    }
  }

  int Return(int result) {
    returned_ = true;
    Report(result, false);
    return result;
  }

 private:
  static void Report(int result, bool threw) {
    observe::Report([&] {
      observe::CycleEnds event;
      event.Result = result;
      event.Threw = threw;
      return event;
    });
  }

  bool returned_ = false;
};

void ReportStage(Stage stage, const char* table = nullptr) {
  observe::Report([&] {
    observe::AsksDatabase event;
    event.At = stage;
    event.Table = table;
    return event;
  });
}

// Of `failure`; nothing happens when it is null.
void ReportFailure(Stage stage, const CppSQLite3Exception* failure, const char* table = nullptr,
                   bool from_before = false) {
  if (failure == nullptr) {
    return;
  }
  observe::Report([&] {
    observe::DatabaseFails event;
    event.At = stage;
    event.Code = failure->errorCode();
    event.ExtendedCode = failure->extendedCode();
    event.SystemError = failure->systemError();
    event.Message = failure->errorMessage();
    event.FromBefore = from_before;
    event.Table = table;
    return event;
  });
}

}  // namespace

CStatusInterface::CStatusInterface() = default;
CStatusInterface::~CStatusInterface() = default;

int CStatusInterface::InitDatabase(bool write) {
  ReportStage(Stage::kOpen);
  if (!write) {
    OpenDatabaseReadOnly(paths::kStatusDatabase, kOpenFlags);
    ReportFailure(Stage::kOpen, m_DB.openFailure());
    return 0;
  }
  std::optional<CppSQLite3Exception> failure;
  const auto failed = [&failure] { return failure ? &*failure : nullptr; };
  OpenDatabaseWrite(paths::kStatusDatabase, kOpenFlags, kSynchronousOff, &failure);
  ReportFailure(m_DB.openFailure() != nullptr ? Stage::kOpen : Stage::kSwitch, failed());
  for (const auto& table : kTables) {
    ReportStage(Stage::kTable, table.Name);
    CreateTable(table.Name, table.Id, &failure);
    ReportFailure(Stage::kTable, failed(), table.Name);
  }
  for (const auto& table : kTables) {
    ReportStage(Stage::kTrigger, table.Name);
    CreateTrigger(table.Name, &failure);
    ReportFailure(Stage::kTrigger, failed(), table.Name);
  }
  return 0;
}

int CStatusInterface::CloseDatabase() { return CSQLdatabase::CloseDatabase(); }

int CStatusInterface::QueryDatabase() {
  observe::Report([this] {
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
  observe::ReportProbeBegins("GetTime");
  GetTime();
  observe::ReportProbeEnds("GetTime", 0);
  return QueryRows();
}

// The three places that catch differ deliberately: only the preparation and the statement's final
// finalize store the code, and only the latter leaves the cycle a success, so that its code makes
// the next cycle fail.
int CStatusInterface::QueryRows() {
  CppSQLite3Query query;
  Stage stage = Stage::kPrepare;
  try {
    try {
      ReportFailure(Stage::kOpen, m_DB.openFailure(), nullptr, true);
      ReportStage(stage);
      m_Statement = m_DB.compileStatement(rows::kSelect);
    } catch (const CppSQLite3Exception& failure) {
      failure.Report();
      ReportFailure(stage, &failure);
      m_LastError = failure.errorCode();
    }
    if (ReadAndClearLastError() != 0) {
      return 1;
    }
    ReportStage(stage = Stage::kExecute);
    query = m_Statement.execQuery();
    ReportStage(stage = Stage::kRows);
    ReadRows(query);
    ReportStage(stage = Stage::kFinish);
    query.finalize();
  } catch (const CppSQLite3Exception& failure) {
    failure.Report();
    ReportFailure(stage, &failure);
    return 1;
  }
  try {
    ReportStage(stage = Stage::kRelease);
    m_Statement.finalize();
  } catch (const CppSQLite3Exception& failure) {
    failure.Report();
    ReportFailure(stage, &failure);
    m_LastError = failure.errorCode();
  }
  return 0;
}

void CStatusInterface::ReadRows(CppSQLite3Query& query) {
  rows::DispatchAll(*this, query, &m_Status);
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
