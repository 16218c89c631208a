#include "collector/state/observer.h"

#include <cxxabi.h>

#include <utility>

#include "collector/state/report.h"

namespace observe {
namespace {

// The observer that is in See, else null: what it calls of the collector is not reported.
Observer* g_busy = nullptr;

}  // namespace

Observer* g_observer = nullptr;

Observer::~Observer() = default;

Observer* SetObserver(Observer* observer) noexcept { return std::exchange(g_observer, observer); }

Observer* CurrentObserver() noexcept { return g_observer; }

// The sanitizer is off here, since what ends a cancelled thread is an exception without an object
// that the reference could be bound to.
__attribute__((no_sanitize("null"))) void Send(const Event& event) {
  if (g_busy != nullptr || g_observer == nullptr) {
    return;
  }
  g_busy = g_observer;
  try {
    g_busy->See(event);
  } catch (const abi::__forced_unwind&) {
    g_busy = nullptr;
    throw;  // the thread is being cancelled: nobody may catch that
  } catch (...) {
    if (g_observer == g_busy) {
      g_observer = nullptr;
    }
  }
  g_busy = nullptr;
}

}  // namespace observe
