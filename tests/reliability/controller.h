// What the reliability tests share: a controller on which every probe and every handler has
// something to do, cycles whose reports are caught, and what is left behind by them.
#pragma once

#include <sqlite3.h>

#include <functional>
#include <string>

#include "collector/status_interface.h"
#include "sandbox/scenario.h"

namespace reliability {

// The demo's controller, made to reach what a healthy one does not: a blanked output that is
// logged, a watchdog event, rows that are no texts.
sandbox::Scenario BusyController();

// Makes the rate limiter let the next tracker report through.
void ForgetTrackerReports();

// Keeps this process's output apart from a cycle's: what Run() runs writes its standard error into
// a file in memory, and its standard output nowhere.
class Quiet {
 public:
  Quiet();
  Quiet(const Quiet&) = delete;
  Quiet& operator=(const Quiet&) = delete;
  ~Quiet();

  // Runs `action`, and gives what it wrote to standard error.
  std::string Run(const std::function<void()>& action);

 private:
  int caught_;
  int nowhere_;
  int error_;
  int output_;
};

// One cycle: how it ended and what it reported.
struct Outcome {
  bool Threw = false;  // std::bad_alloc
  int Result = 0;
  std::string Report;
};

// Runs `cycle`; an exception other than std::bad_alloc passes.
Outcome Run(Quiet* quiet, const std::function<int()>& cycle);

// Number of lines of `report`; -1 when one of them is not "code:message".
int ReportLines(const std::string& report);

// The document without what differs between two cycles by itself: the time and the uptime.
// Changes the document, until its next cycle.
std::string Document(QtSts::CStatus* status);

// The document without anything that a probe fills: what the rows alone made of it. Changes the
// document, until its next cycle.
std::string RowsOnly(QtSts::CStatus* status);

// "" when equal, else the first line that differs, of both.
std::string FirstDifference(const std::string& left, const std::string& right);

int OpenDescriptors();

// Another program at the status database: no defences, no waiting.
class Foreign {
 public:
  explicit Foreign(const std::string& file = sandbox::kDatabase);
  Foreign(const Foreign&) = delete;
  Foreign& operator=(const Foreign&) = delete;
  ~Foreign();

  // "" when done, else "code:message".
  std::string Do(const std::string& sql);
  // First column of the first row, or "code:message".
  std::string Get(const std::string& sql);

 private:
  sqlite3* db_ = nullptr;
};

// A forked process that runs `action` and exits with its result; killed when this object goes.
class Process {
 public:
  explicit Process(const std::function<int()>& action);
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  ~Process() { Kill(); }

  // Ends it in the middle of whatever it does, and waits until it is gone.
  void Kill();
  // Exit status, -1 when a signal ended it.
  int Wait();

 private:
  int pid_;
};

// The number of repetitions: `brief` in the everyday run, `thorough` when STATUS_LONG=1.
int Repetitions(int brief, int thorough);

}  // namespace reliability
