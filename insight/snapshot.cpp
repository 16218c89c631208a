#include "insight/snapshot.h"

#include <cxxabi.h>

#include <algorithm>
#include <exception>
#include <functional>
#include <iterator>
#include <set>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "collector/observer.h"
#include "insight/findings.h"
#include "insight/row_recorder.h"
#include "insight/row_values.h"
#include "insight/source_database.h"
#include "insight/source_recorder.h"
#include "insight/source_table.h"

namespace insight {

namespace {

// Is the process's observer as long as it lives; the one before it sees the same.
class Observing : public observe::Observer {
 public:
  Observing(SourceRecorder& sources, RowRecorder& rows)
      : sources_(sources), rows_(rows), before_(observe::SetObserver(this)) {}
  Observing(const Observing&) = delete;
  Observing& operator=(const Observing&) = delete;
  ~Observing() override { observe::SetObserver(before_); }

  // Throws what kept the recorders from seeing the whole cycle.
  void ExpectAll() const {
    if (failure_ != nullptr) {
      std::rethrow_exception(failure_);
    }
    if (!began_) {
      throw std::logic_error("insight::Recorder::RunCycle was called by an observer");
    }
  }

  void See(const observe::Event& event) override {
    Record(event);
    PassOn(event);
  }

 private:
  // What the recorders throw ends what they record; the observer before them still sees the rest.
  void Record(const observe::Event& event) {
    if (failure_ != nullptr) {
      return;
    }
    try {
      if (const auto* const begins = event.As<observe::CycleBegins>()) {
        began_ = true;
        rows_.BeginCycle(*begins->Status);
      }
      sources_.See(event);
      rows_.See(event);
    } catch (const std::exception&) {
      failure_ = std::current_exception();
    }
  }

  // As without this observer, an exception of the other one ends its observation alone. The
  // sanitizer is off, since the exception that ends a cancelled thread has no object to bind to; in
  // a function that this one is inlined into it would be on.
  __attribute__((noinline, no_sanitize("null"))) void PassOn(const observe::Event& event) {
    try {
      if (before_ != nullptr) {
        before_->See(event);
      }
    } catch (const abi::__forced_unwind&) {
      throw;  // the thread is being cancelled: nobody may catch that
    } catch (...) {
      before_ = nullptr;
    }
  }

  SourceRecorder& sources_;
  RowRecorder& rows_;
  observe::Observer* before_;
  bool began_ = false;
  std::exception_ptr failure_;
};

// What several probes store in one field is all needed; a row's value stands in place of theirs. A
// source that only adds bits leaves a field as good, or as bad, as the others make it.
// `unwritten` are fields of elements that rows make, sorted.
std::vector<std::string> FindNotReported(const std::vector<Source>& sources,
                                         std::vector<std::string> unwritten) {
  std::set<std::string> probed;   // fields that probes store
  std::set<std::string> missing;  // those of them of which something is missing
  std::set<std::string> rows;     // fields that rows store
  std::set<std::string> written;  // those of them that a row was stored in
  for (const Source& source : sources) {
    const bool is_database = source.Id == kDatabaseId;
    const std::set<std::string_view> unfed(source.Unfed.begin(), source.Unfed.end());
    for (const std::string& field : source.Fields) {
      if (is_database ? RowsAddBits(field) : AddsBits(source.Id, field)) {
        continue;
      }
      (is_database ? rows : probed).insert(field);
      if (unfed.contains(field) != is_database) {
        (is_database ? written : missing).insert(field);
      }
    }
  }
  std::vector<std::string> paths;
  std::ranges::set_difference(missing, written, std::back_inserter(paths));
  for (const std::string& field : rows) {
    if (!written.contains(field) && !probed.contains(field)) {
      paths.push_back(field);
    }
  }
  std::ranges::sort(paths);
  const auto middle = static_cast<std::ptrdiff_t>(paths.size());
  paths.insert(paths.end(), std::move_iterator(unwritten.begin()),
               std::move_iterator(unwritten.end()));
  std::inplace_merge(paths.begin(), paths.begin() + middle, paths.end());
  return paths;
}

// Where a word is not known, what stays may be what no row gave.
void NameUnreported(const std::vector<std::size_t>& rows, Snapshot* snapshot) {
  for (const std::size_t at : rows) {
    Row& row = snapshot->Rows[at];
    for (Remark& remark : row.Remarks) {
      if (remark.What == Outcome::kUnknownWord && remark.Text.ends_with(kStays) &&
          !row.Path.empty() && !snapshot->IsReported(row.Path)) {
        remark.Text += ", which no row reports";
      }
    }
  }
}

}  // namespace

class Recorder::State {
 public:
  explicit State(CStatusInterface& collector) : Collector(collector) {}

  CStatusInterface& Collector;
  SourceRecorder Sources;
  RowRecorder Rows;
  bool Running = false;
};

namespace {

// Sets a mark for as long as it lives.
class RunningNow {
 public:
  explicit RunningNow(bool* mark) : mark_(mark) { *mark_ = true; }
  RunningNow(const RunningNow&) = delete;
  RunningNow& operator=(const RunningNow&) = delete;
  ~RunningNow() { *mark_ = false; }

 private:
  bool* mark_;
};

}  // namespace

Recorder::Recorder(CStatusInterface& collector) : state_(std::make_unique<State>(collector)) {}
Recorder::Recorder(Recorder&&) noexcept = default;
Recorder& Recorder::operator=(Recorder&&) noexcept = default;
Recorder::~Recorder() = default;

Snapshot Recorder::RunCycle(const Limits& limits) {
  if (state_ == nullptr) {
    throw std::logic_error("insight::Recorder::RunCycle was called after a move");
  }
  State& state = *state_;
  if (state.Running) {
    throw std::logic_error("insight::Recorder::RunCycle was called by an observer");
  }
  const auto began = std::chrono::system_clock::now();
  const auto began_steady = std::chrono::steady_clock::now();
  int result = 0;
  {
    const RunningNow running(&state.Running);
    state.Sources.BeginCycle();
    const Observing observing(state.Sources, state.Rows);
    result = state.Collector.QueryDatabase();
    observing.ExpectAll();
  }
  const auto took = std::chrono::steady_clock::now() - began_steady;

  Snapshot snapshot{.Document = QtSts::DocumentTree(state.Collector.m_Status),
                    .Result = result,
                    .Began = began,
                    .BeganSteady = began_steady,
                    .Took = took};
  snapshot.Rows = state.Rows.EndCycle(snapshot.Document);
  snapshot.Database.Rows = snapshot.Rows.size();
  snapshot.Sources = state.Sources.EndCycle(snapshot.Document, &snapshot.Database);
  snapshot.NotReported = FindNotReported(snapshot.Sources, state.Rows.Missing().Sorted());
  NameUnreported(state.Rows.UnknownWords(), &snapshot);
  snapshot.Findings = FindFindings(snapshot, limits);
  return snapshot;
}

bool Snapshot::IsReported(const std::string& path) const {
  const std::string_view whole = path;
  const auto is_missing = [this](std::string_view field) {
    return std::binary_search(NotReported.begin(), NotReported.end(), field, std::less<>());
  };
  for (std::size_t end = 1; end < whole.size(); ++end) {
    if ((whole[end] == '/' || whole[end] == '[') && is_missing(whole.substr(0, end))) {
      return false;
    }
  }
  return !is_missing(whole);
}

const char* NameOf(SourceState state) {
  static constexpr const char* kNames[] = {"ok",        "missing", "denied", "no answer", "empty",
                                           "malformed", "locked",  "failed", "not asked"};
  return kNames[static_cast<std::size_t>(state)];
}

const char* NameOf(Severity severity) {
  static constexpr const char* kNames[] = {"critical", "unknown", "warning"};
  return kNames[static_cast<std::size_t>(severity)];
}

}  // namespace insight
