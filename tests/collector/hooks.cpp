#include "tests/collector/hooks.h"

#include "handlers/handlers.h"

std::function<void(const DispatchedRow&)> g_on_thermal_scaler;

// Stands in front of the library's own: the dynamic linker takes the program's definition first.
int Status_ThermalScaler(QtSts::CStatus* status, char* value, char* key) {
  if (g_on_thermal_scaler) {
    g_on_thermal_scaler({status, value, key});
  }
  return 0;
}
