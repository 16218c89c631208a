#include "tests/collector/hooks.h"

#include <ctime>

#include "collector/state/scratch.h"
#include "collector/status_interface.h"
#include "handlers/handlers.h"
#include "model/lookup/verify.h"
#include "tests/support/interposed/real.h"

std::function<void(const DispatchedRow&)> g_on_thermal_scaler;
std::function<void(const char* call)> g_on_call;

namespace {

void Note(const char* call) {
  if (g_on_call) {
    g_on_call(call);
  }
}

}  // namespace

// These replace the library's own: the dynamic linker takes the program's definitions first.

int Status_ThermalScaler(QtSts::CStatus* status, char* value, char* key) {
  if (g_on_thermal_scaler) {
    g_on_thermal_scaler({status, value, key});
  }
  return 0;
}

void Status_ClearLists(QtSts::CStatus* status) {
  Note("Status_ClearLists");
  interposed::Real<void(QtSts::CStatus*)>("_Z17Status_ClearListsPN5QtSts7CStatusE")(status);
}

void Reset_Globals() {
  Note("Reset_Globals");
  interposed::Real<void()>("_Z13Reset_Globalsv")();
}

void CStatusInterface::GetTime() {
  Note("GetTime");
  interposed::Real<void(CStatusInterface*)>("_ZN16CStatusInterface7GetTimeEv")(this);
}

extern "C" __attribute__((visibility("default"))) std::time_t time(std::time_t* result) noexcept {
  Note("time");
  INTERPOSED_REAL(time);
  return real(result);
}
