#include "hardware/tolmar_hardware.h"

#include "collector/state/report.h"
#include "hardware/identity.h"
#include "hardware/parse_hex.h"
#include "model/lookup/verify.h"

namespace {

constexpr int kPort = 0;  // the only one there is

// The probes in their order.
constexpr struct {
  const char* Name;
  int (*Run)(CTolmarHardware& hardware);
} kProbes[] = {
    {"Compositor", [](CTolmarHardware& hardware) { return hardware.Compositor(); }},
    {"OutputPort", [](CTolmarHardware& hardware) { return hardware.OutputPort(kPort); }},
    {"ContentLimit", [](CTolmarHardware& hardware) { return hardware.ContentLimit(kPort); }},
    // The first takes input position 0, the second input position 1.
    {"InputGraphic", [](CTolmarHardware& hardware) { return hardware.InputGraphic(); }},
    {"InputDVI", [](CTolmarHardware& hardware) { return hardware.InputDVI(); }},
    {"IDs", [](CTolmarHardware& hardware) { return hardware.IDs(); }},
    {"GUID", [](CTolmarHardware& hardware) { return hardware.GUID(); }},
    {"SystemMemoryKB", [](CTolmarHardware& hardware) { return hardware.SystemMemoryKB(); }},
    {"SystemStorageKB", [](CTolmarHardware& hardware) { return hardware.SystemStorageKB(); }},
    {"Network", [](CTolmarHardware& hardware) { return hardware.Network(); }},
    {"DNS", [](CTolmarHardware& hardware) { return hardware.DNS(); }},
    // FirmwareVersion and DisplayFirmwareVersion, in one step since one reading of the package
    // database fills both. Deliberately 0 also when a version is missing, since the result is that
    // of two probes; which one is missing is reported as a label.
    {"Versions",
     [](CTolmarHardware& hardware) {
       hardware::StoreVersions(hardware.m_pStatus);
       return 0;
     }},
};

}  // namespace

CTolmarHardware::CTolmarHardware() = default;

CTolmarHardware::~CTolmarHardware() = default;

int CTolmarHardware::UpdateStatus(QtSts::CStatus* status) {
  m_pStatus = status;
  if (m_pStatus == nullptr) {
    return 0;
  }
  Status_ClearLists(m_pStatus);
  for (const auto& [name, run] : kProbes) {
    observe::ReportProbeBegins(name);
    observe::ReportProbeEnds(name, run(*this));
  }
  return 0;
}

unsigned char CTolmarHardware::Char2Hex(unsigned char c) { return hardware::HexDigit(c); }

unsigned long long CTolmarHardware::htoi(char* text) { return hardware::HexValue(text); }
