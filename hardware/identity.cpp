#include "hardware/identity.h"

#include <string_view>

#include "collector/state/report.h"
#include "hardware/files.h"
#include "hardware/parse_hex.h"
#include "hardware/parse_packages.h"
#include "hardware/requests.h"
#include "hardware/tolmar_hardware.h"
#include "model/document.h"

namespace {

namespace paths = hardware::paths;
namespace requests = hardware::requests;

// Product family of the hardware; any other identifier means kOtherFamily.
constexpr struct {
  int HardwareId;
  std::int32_t Family;
} kFamilies[] = {{39, 3}, {35, 4}, {19, 5}, {33, 0}};
constexpr std::int32_t kOtherFamily = 1;

std::int32_t FamilyOf(int hardware_id) {
  for (const auto& row : kFamilies) {
    if (row.HardwareId == hardware_id) {
      return row.Family;
    }
  }
  return kOtherFamily;
}

// Each returns what its probe returns.
int StoreFirmwareVersion(const hardware::PackageVersions& versions, QtSts::CStatus* status) {
  if (observe::ReportLabel(hardware::kDistributionPackage, versions.Distribution.has_value())) {
    status->FirmwareVersion = *versions.Distribution;
  }
  return 0;
}

int StoreDisplayFirmwareVersion(const hardware::PackageVersions& versions, QtSts::CStatus* status) {
  if (!observe::ReportLabel(hardware::kDisplayPackage, versions.DisplayFirmware.has_value())) {
    return 1;
  }
  status->DisplayFirmwareVersion = *versions.DisplayFirmware;
  return 0;
}

// The versions in what could be read of the package database.
struct Packages {
  hardware::Reading Reading;
  hardware::PackageVersions Versions;
};

Packages ReadPackages() {
  hardware::PackageSearch search;
  const hardware::Reading reading =
      hardware::ReadBlocks(paths::kPackages, hardware::Access::kRead,
                           [&search](std::string_view block) { return search.Take(block); });
  return {reading, search.TakeVersions()};
}

}  // namespace

int CTolmarHardware::IDs() {
  if (m_pStatus == nullptr) {
    return 1;
  }
  const auto answers = hardware::AskDevice(
      paths::kDisplay, {requests::display::kHardwareId1, requests::display::kHardwareId2,
                        requests::display::kHardwareId3});
  if (!answers) {
    return 1;
  }
  const auto [id1, id2, id3] = *answers;
  m_pStatus->HardwareID1 = id1;
  m_pStatus->HardwareID2 = id2;
  m_pStatus->HardwareID3 = id3;
  m_pStatus->ProductFamily = FamilyOf(id1);

  const auto serial = hardware::ReadText(paths::kSerial);
  if (!serial) {
    return 1;
  }
  bool readable = false;
  m_pStatus->SerialNumber =
      static_cast<std::uint32_t>(hardware::HexValue(serial->c_str(), &readable));
  if (!readable) {
    observe::ReportUnreadable("");
  }
  return 0;
}

int CTolmarHardware::GUID() {
  if (m_pStatus == nullptr) {
    return 1;
  }
  const auto uuid = hardware::ReadText(paths::kUuid);
  if (!uuid) {
    return 1;
  }
  m_pStatus->GUID = uuid->c_str();  // up to the first zero byte
  if (m_pStatus->GUID.find_first_not_of(" \t\r\n") == std::string::npos) {
    observe::ReportUnreadable("");
  }
  return 0;
}

int CTolmarHardware::FirmwareVersion() {
  return m_pStatus == nullptr ? 1 : StoreFirmwareVersion(ReadPackages().Versions, m_pStatus);
}

int CTolmarHardware::DisplayFirmwareVersion() {
  return m_pStatus == nullptr ? 1 : StoreDisplayFirmwareVersion(ReadPackages().Versions, m_pStatus);
}

void hardware::StoreVersions(QtSts::CStatus* status) {
  Packages packages = ReadPackages();
  StoreFirmwareVersion(packages.Versions, status);
  if (packages.Reading != Reading::kDone) {
    packages = ReadPackages();
  }
  StoreDisplayFirmwareVersion(packages.Versions, status);
}
