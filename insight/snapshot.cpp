#include "insight/snapshot.h"

#include <algorithm>
#include <new>
#include <set>
#include <utility>

#include "collector/observer.h"
#include "insight/findings.h"
#include "insight/row_recorder.h"
#include "insight/source_recorder.h"

namespace insight {

namespace {

// Is the process's observer as long as it lives; the one before it sees the same.
class Observing : public observe::Observer {
 public:
  Observing(SourceRecorder& sources, RowRecorder& rows)
      : m_Sources(sources), m_Rows(rows), m_Before(observe::SetObserver(this)) {}
  Observing(const Observing&) = delete;
  Observing& operator=(const Observing&) = delete;
  ~Observing() override { observe::SetObserver(m_Before); }

  // False when an exception has ended the observation: something of the cycle is missing.
  bool SawAll() const { return observe::CurrentObserver() == this; }

  void See(const observe::Event& event) override {
    if (const auto* const begins = event.As<observe::CycleBegins>()) {
      m_Rows.BeginCycle(*begins->Status);
    }
    m_Sources.See(event);
    m_Rows.See(event);
    PassOn(event);
  }

 private:
  // As without this observer, an exception of the other one ends its observation alone.
  void PassOn(const observe::Event& event) noexcept {
    try {
      if (m_Before != nullptr) {
        m_Before->See(event);
      }
    } catch (...) {
      m_Before = nullptr;
    }
  }

  SourceRecorder& m_Sources;
  RowRecorder& m_Rows;
  observe::Observer* m_Before;
};

// The fields that no source fed and no row wrote.
std::vector<std::string> FindNotReported(const std::vector<Source>& sources,
                                         const std::vector<Row>& rows) {
  std::set<std::string> paths;
  for (const Source& source : sources) {
    paths.insert(source.Unfed.begin(), source.Unfed.end());
  }
  for (const Row& row : rows) {
    paths.erase(row.Path);
  }
  return {paths.begin(), paths.end()};
}

}  // namespace

class Recorder::State {
 public:
  explicit State(CStatusInterface& collector) : Collector(collector) {}

  CStatusInterface& Collector;
  SourceRecorder Sources;
  RowRecorder Rows;
};

Recorder::Recorder(CStatusInterface& collector) : m_State(std::make_unique<State>(collector)) {}
Recorder::Recorder(Recorder&&) noexcept = default;
Recorder& Recorder::operator=(Recorder&&) noexcept = default;
Recorder::~Recorder() = default;

Snapshot Recorder::RunCycle(const Limits& limits) {
  State& state = *m_State;
  const auto began = std::chrono::system_clock::now();
  const auto began_steady = std::chrono::steady_clock::now();
  int result = 0;
  {
    state.Sources.BeginCycle();
    const Observing observing(state.Sources, state.Rows);
    result = state.Collector.QueryDatabase();
    if (!observing.SawAll()) {
      throw std::bad_alloc();  // nothing else is thrown by the recorders
    }
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
  snapshot.NotReported = FindNotReported(snapshot.Sources, snapshot.Rows);
  snapshot.Findings = FindFindings(snapshot, limits);
  return snapshot;
}

bool Snapshot::IsReported(const std::string& path) const {
  return !std::ranges::binary_search(NotReported, path);
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
