// How the library reports to its observer. Without an observer each report costs one comparison.
#pragma once

#include <cerrno>

#include "collector/state/observer.h"

namespace observe {

// Exported, so that parsers that a test links beside the library use the same one.
COLLECTOR_API extern Observer* g_observer;

inline bool IsWatched() noexcept { return g_observer != nullptr; }

// Hands `event` to the observer, unless there is none or it is being called already.
COLLECTOR_API void Send(const Event& event);

// `make` returns the event; it is called only when there is an observer.
template <class Make>
inline void Report(Make make) {
  if (IsWatched()) [[unlikely]] {
    Send(make());
  }
}

inline void ReportProbeBegins(const char* probe) {
  Report([&] {
    ProbeBegins event;
    event.Probe = probe;
    return event;
  });
}

inline void ReportProbeEnds(const char* probe, int result) {
  Report([&] {
    ProbeEnds event;
    event.Probe = probe;
    event.Result = result;
    return event;
  });
}

// Reports whether `label` was found in what was read last. Returns `found`.
inline bool ReportLabel(const char* label, bool found) {
  Report([&] {
    Label event;
    event.Text = label;
    event.Found = found;
    return event;
  });
  return found;
}

// Reports that no value follows `label` in what was read last; "": that none is in it.
inline void ReportUnreadable(const char* label) {
  Report([&] {
    Label event;
    event.Text = label;
    event.Found = true;
    event.Readable = false;
    return event;
  });
}

// Reports an element that its last row completes, or that is refused.
template <class Make>
inline void ReportRecord(Place place, Ending ending, Make fill) {
  Report([&] {
    Record event;
    event.What = ending;
    event.Where = place;
    fill(event);
    return event;
  });
}

// Calls `call`, which returns a negative number and sets errno when it fails. Reports the question
// before the call and its outcome afterwards. `fill` sets what belongs to the call in the answer.
// errno is as the call left it.
template <class CallIt, class Fill>
auto Ask(const Asks& question, CallIt call, Fill fill) {
  if (!IsWatched()) [[likely]] {
    return call();
  }
  Send(question);
  const auto result = call();
  const int error = errno;
  Answers answer;
  answer.Question = &question;
  answer.Result = static_cast<long long>(result);
  answer.Error = result < 0 ? error : 0;
  fill(result, answer);
  Send(answer);
  errno = error;
  return result;
}

template <class CallIt>
auto Ask(const Asks& question, CallIt call) {
  return Ask(question, call, [](auto, Answers&) {});
}

}  // namespace observe
