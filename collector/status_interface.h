// The one class that a host uses.
#pragma once

#include <string>

#include "collector/state/export.h"
#include "db/sql_database.h"
#include "hardware/tolmar_hardware.h"
#include "model/document.h"

// Owns the connection to the status database (its base), one status document and one hardware
// probe.
//
//   CStatusInterface collector;
//   collector.InitDatabase(false);
//   if (collector.QueryDatabase() == 0) { ... read collector.m_Status ... }
//   collector.CloseDatabase();
//
// One thread at a time; since the scratch state is process-wide, two objects in one process must
// not run QueryDatabase at the same time either.
class COLLECTOR_API CStatusInterface : public CSQLdatabase {
 public:
  // Everything at its defaults; nothing is opened.
  CStatusInterface();
  ~CStatusInterface() override;

  // Opens "/dev/shm/status.db". `write`: creates what is missing of the file, the tables "status",
  // "io" and "packages" and their triggers; otherwise read-only, never creating. Always 0: a
  // failure is reported on standard error as code, ":", message, and to the observer.
  int InitDatabase(bool write);

  // The base's result: 0, or SQLite's code. Harmless when nothing is open.
  int CloseDatabase();

  // One collection cycle: probes the controller, stamps the time, and hands every row of table
  // "status" to its handler. 0: all rows were read. 1: the database failed, with a report on
  // standard error; the probe's results and the time are in the document all the same. A statement
  // that cannot be finalized after the last row is reported, too, but makes the next cycle return 1
  // without a report. Throws std::bad_alloc without memory, and std::system_error when the lock of
  // the log limiter fails.
  int QueryDatabase();

  // Stamps the UTC text and the document's local time, daylight-saving flag and configuration
  // timestamp. Called by QueryDatabase.
  void GetTime();

  QtSts::CStatus m_Status;     // refilled by every cycle, at the same address
  CTolmarHardware m_Hardware;  // the probe
  std::string m_UTCTime;       // "2026-11-15T09:22:15", empty before the first cycle

 private:
  int RunCycle();
  int QueryRows();
  void ReadRows(CppSQLite3Query& query);
};
