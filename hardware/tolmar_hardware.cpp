#include "hardware/tolmar_hardware.h"

#include "hardware/identity.h"
#include "hardware/parse_hex.h"
#include "model/lookup/verify.h"

CTolmarHardware::CTolmarHardware() = default;

CTolmarHardware::~CTolmarHardware() = default;

int CTolmarHardware::UpdateStatus(QtSts::CStatus* status) {
  m_pStatus = status;
  if (m_pStatus == nullptr) {
    return 0;
  }
  Status_ClearLists(m_pStatus);
  Compositor();
  constexpr int kPort = 0;  // the only one there is
  OutputPort(kPort);
  ContentLimit(kPort);
  InputGraphic();  // takes input position 0
  InputDVI();      // takes input position 1
  IDs();
  GUID();
  SystemMemoryKB();
  SystemStorageKB();
  Network();
  DNS();
  hardware::StoreVersions(m_pStatus);  // FirmwareVersion, DisplayFirmwareVersion
  return 0;
}

unsigned char CTolmarHardware::Char2Hex(unsigned char c) { return hardware::HexDigit(c); }

unsigned long long CTolmarHardware::htoi(char* text) { return hardware::HexValue(text); }
