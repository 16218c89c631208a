// What a cycle alone does not say: what each source answered, what became of each row, and what
// needs attention.
//
//   CStatusInterface collector;
//   collector.InitDatabase(false);
//   insight::Recorder recorder(collector);
//   const insight::Snapshot snapshot = recorder.RunCycle();
//   for (const insight::Finding& finding : snapshot.Findings) {
//     std::cout << insight::NameOf(finding.Level) << ": " << finding.Message << "\n";
//   }
//
// All of it comes from that cycle itself, through its observer: nothing is read a second time. The
// document is what QueryDatabase alone would give.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "collector/status_interface.h"
#include "insight/export.h"
#include "insight/limits.h"
#include "insight/outcomes.h"
#include "model/tree.h"

namespace insight {

// ---- Sources

enum class SourceState : std::uint8_t {
  kOk,
  kMissing,    // no such file, node or interface
  kDenied,     // no permission
  kNoAnswer,   // to some or all requests
  kEmpty,      // nothing could be read
  kMalformed,  // read, but what is looked for is not in it
  kLocked,     // the database, by another program
  kFailed,     // any other failure
  kNotAsked,   // another source stopped the probe before
};

// "ok", "missing", "denied", "no answer", ...
INSIGHT_API const char* NameOf(SourceState state);

struct Source {
  std::string Id;    // stable: "travex", "meminfo", "carrier:eth0", "database"
  std::string Name;  // as the system names it: "/dev/travex", "sysinfo"
  SourceState State = SourceState::kNotAsked;
  bool Required = false;  // what needs no attention when it is missing is optional
  int Error = 0;          // errno, 0 when there is none
  // In words: "Permission denied", "no answer to 3 of 10 requests: " and which; "" for ok, but for
  // the carrier of an interface that has an address and is not in use, "no link", "switched off",
  // for routes that lead nowhere, "no default route", and for interfaces of which one is missing
  // that comes before another: "no device eth0".
  std::string Reason;
  // The Id of the source that stopped a probe before this one was asked in it: always for kNotAsked
  // unless Reason says why, else when only some of its probes came to it.
  std::string StoppedBy;

  // Paths of the fields that it feeds, as DocumentTree spells them, whether or not they are there.
  // A list stands for all that it holds. The watchdog's marker is kOk whether it is there or not.
  std::vector<std::string> Fields;
  // Those of them that it did not feed in this cycle.
  std::vector<std::string> Unfed;
};

// Of the status database, beside its entry among the sources.
struct DatabaseState {
  std::size_t Rows = 0;  // that the cycle saw
  // When the file or its write-ahead log last changed; nothing when neither could be looked at.
  std::optional<std::chrono::system_clock::time_point> LastChanged;
  // For how long it has not changed, also when the clock was set meanwhile.
  std::optional<std::chrono::seconds> Unchanged;
  bool EveryoneMayWrite = false;
};

// ---- Rows

enum class RowPart : std::uint8_t { kNone, kKey, kValue };

// One thing that became of a row.
struct Remark {
  Outcome What = Outcome::kStored;
  std::string Text;  // one sentence without the closing stop, with names and numbers
  // The bytes of key or value that it speaks of.
  RowPart Part = RowPart::kNone;
  std::size_t Begin = 0;
  std::size_t End = 0;
};

// One difference that a row made.
struct Change {
  std::string Path;
  std::string Before;  // "" when it was not there
  std::string After;   // likewise
};

struct Row {
  std::string Key;    // as the handler gets it: cut
  std::string Value;  // likewise
  bool IsNull = false;

  // Where its value stands: the path of a field, as DocumentTree spells it, or of the element that
  // it completes. "" when it is nowhere in the document.
  std::string Path;
  // What stood there before the row and after it, as the document writes it. Before is "" for a
  // field of an element that was not there before. A list of more than a thousand bytes is cut and
  // ends with "...".
  std::string Before;
  std::string After;

  // All that it changed in the document, by path: a row may fill several fields and make several
  // elements, for which the name of their class stands.
  std::vector<Change> Changes;
  // All that it changed in the scratch state, by the names of its variables: "u32_Address",
  // "beaconRoundel.Humidity", "dcioInputs[3].Label", "FanRpms[2]".
  std::vector<Change> Carried;

  // At least one; the worst first.
  std::vector<Remark> Remarks;

  Outcome What() const { return Remarks.front().What; }
  OutcomeClass Class() const { return InfoOf(What()).Class; }
};

// ---- Findings

enum class Severity : std::uint8_t { kCritical, kUnknown, kWarning };  // the worst first

// "critical", "unknown" or "warning".
INSIGHT_API const char* NameOf(Severity severity);

// What needs attention.
struct Finding {
  std::string Id;  // stable: "fan-stopped", "source-missing"
  Severity Level = Severity::kWarning;
  std::string Message;  // what is wrong: "fan 3 stands still"
  std::string Where;    // "board at router address 12"; "" when Message says it
  std::string Hint;     // what to look at; "" when that is plain
  std::string Path;     // of the value, as DocumentTree spells it; "" when there is none
  std::string Source;   // the Id of the source that it comes from; "" when there is none
  std::string Key;      // of the row that it comes from; "" when there is none
  std::optional<double> Value;
};

// ---- The snapshot

struct Snapshot {
  QtSts::DocumentTree Document;
  int Result = 0;  // of QueryDatabase
  std::chrono::system_clock::time_point Began;
  std::chrono::steady_clock::time_point BeganSteady;
  std::chrono::nanoseconds Took = {};  // of the cycle, observed

  DatabaseState Database = {};
  std::vector<Source> Sources = {};    // in the order of the cycle
  std::vector<Row> Rows = {};          // in the order of the cycle
  std::vector<Finding> Findings = {};  // the worst first, then in order of the document

  // Paths of fields whose source did not answer and that no row wrote: what stands there is the
  // value that the field begins with, an earlier cycle's, or what the collector stores for want of
  // an answer. A list stands for all that it holds. Sorted. Those of a sensor, device or point are
  // among them when no row wrote what it measures: a value that it inherits from a row of another
  // one, or of an earlier cycle, is reported.
  std::vector<std::string> NotReported = {};

  // False when NotReported has the field, or a list that holds it.
  INSIGHT_API bool IsReported(const std::string& path) const;
};

// Runs cycles of one interface and says what became of them. What a cycle inherits from earlier
// ones is known from the second one on, and after one that threw anew.
//
// `collector` stays the caller's and must outlive the recorder. One thread at a time, the one that
// calls QueryDatabase. An observer that is set when RunCycle is called sees the same events and is
// set again afterwards.
class INSIGHT_API Recorder {
 public:
  explicit Recorder(CStatusInterface& collector);
  // One that was moved from may be destroyed and assigned to; RunCycle on it throws
  // std::logic_error.
  Recorder(Recorder&&) noexcept;
  Recorder& operator=(Recorder&&) noexcept;
  ~Recorder();

  // One QueryDatabase(). Throws std::bad_alloc, what QueryDatabase throws, and std::logic_error
  // when an observer calls it: within an event nothing is observed. The recorder may be used
  // afterwards.
  Snapshot RunCycle(const Limits& limits = {});

 private:
  class State;
  std::unique_ptr<State> state_;
};

}  // namespace insight
