// A tool of the controller that calls a handler by itself: the headers of what a cycle works with
// have the names that they have in the sources.
#include <collector/key_table.h>
#include <collector/state/scratch.h>
#include <collector/status_interface.h>
#include <handlers/handlers.h>
#include <hardware/rate_limit.h>
#include <internals/collector/state/codes.h>
#include <model/lookup/verify.h>
#include <sensors/placements.h>
#include <sensors/points.h>
#include <sensors/sensor_keys.h>

int main() {
  CStatusInterface collector;
  char value[] = "a-b";
  char key[] = "GUID";
  Reset_Globals();
  Status_GUID(&collector.m_Status, value, key);
  return collector.m_Status.GUID == "a-b" && u32_TTableNumAttribute == 0 ? 0 : 1;
}
