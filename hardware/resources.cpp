#include "hardware/files.h"
#include "hardware/parse_resources.h"
#include "hardware/system_calls.h"
#include "hardware/tolmar_hardware.h"
#include "model/document.h"

namespace paths = hardware::paths;

int CTolmarHardware::SystemMemoryKB() {
  if (m_pStatus == nullptr) {
    return 1;
  }
  if (const auto meminfo = hardware::ReadText(paths::kMemory)) {
    hardware::ParseMemory(meminfo->c_str(), m_pStatus);
  }
  struct sysinfo system;
  if (hardware::calls::System(&system) == 0) {
    m_pStatus->Uptime = hardware::UptimeText(system.uptime);
  }
  return 0;
}

int CTolmarHardware::SystemStorageKB() {
  if (m_pStatus == nullptr) {
    return 1;
  }
  struct statfs storage;
  if (hardware::calls::Storage(paths::kRootFolder, &storage) == 0) {
    m_pStatus->StorageTotal = hardware::StorageKB(storage.f_blocks);
    // Deliberately with the blocks that are reserved for the superuser.
    m_pStatus->StorageFree = hardware::StorageKB(storage.f_bfree);
  }
  return 0;
}
