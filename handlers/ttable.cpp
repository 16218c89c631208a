#include <memory>

#include "collector/state/numbered_key.h"
#include "collector/state/report.h"
#include "collector/state/scratch.h"
#include "handlers/fields.h"
#include "handlers/handlers.h"
#include "handlers/output0.h"

namespace {

using QtSts::CDevice;
using QtSts::COutput;
using QtSts::CStatus;
using QtSts::CTtable;
using rows::kInteger;
using rows::kNumber;

template <auto kMember>
constexpr auto Number = &rows::InMember<COutput, &COutput::Ttable, kMember>;

template <auto kMember>
constexpr rows::Field<COutput> Text(std::string_view name) {
  return rows::InMember<COutput, kMember>(name, &rows::kText);
}

// Columns and rows are stored twice: as they are, and plus one.
constexpr rows::Field<COutput> kFields[] = {
    Text<&COutput::Author>("TtableAuthor"),
    Number<&CTtable::Columns>("TtableColumns", &kInteger),
    Number<&CTtable::ColumnsPlusOne>("TtableColumns", &rows::kIntegerPlusOne),
    Text<&COutput::Contract>("TtableContract"),
    Text<&COutput::Date>("TtableDate"),
    Text<&COutput::ED>("TtableED"),
    Number<&CTtable::FaceCount>("TtableFaceCnt", &kInteger),
    Number<&CTtable::Interleaved>("TtableInterleaved", &kInteger),
    Number<&CTtable::ModuleHeight>("TtableModHeight", &kInteger),
    Number<&CTtable::ModuleWidth>("TtableModWidth", &kInteger),
    Number<&CTtable::PixelPitch>("TtablePixelPitch", &kNumber),
    Number<&CTtable::RefreshRate>("TtableRefreshRate", &kNumber),
    Number<&CTtable::Rows>("TtableRows", &kInteger),
    Number<&CTtable::RowsPlusOne>("TtableRows", &rows::kIntegerPlusOne),
    Text<&COutput::Task>("TtableTask"),
    Text<&COutput::Time>("TtableTime"),
    Text<&COutput::Title>("TtableTitle"),
};

constexpr rows::Field<CDevice> kDeviceValue =
    rows::InMember<CDevice, &CDevice::Value>(rows::kDevicePrefix, &kInteger);

}  // namespace

std::span<const rows::Field<COutput>> handlers::TtableFields() { return kFields; }

int Status_TtableColumns(CStatus* status, char* value, char* /*key*/) {
  return StoreInOutput0(rows::RowsOf(kFields, "TtableColumns"), status, value);
}

int Status_TtableRows(CStatus* status, char* value, char* /*key*/) {
  return StoreInOutput0(rows::RowsOf(kFields, "TtableRows"), status, value);
}

int Status_TTableFaceCount(CStatus* status, char* value, char* /*key*/) {
  return StoreInOutput0(rows::RowsOf(kFields, "TtableFaceCnt"), status, value);
}

int Status_TtableInterleaved(CStatus* status, char* value, char* /*key*/) {
  return StoreInOutput0(rows::RowsOf(kFields, "TtableInterleaved"), status, value);
}

int Status_TtableModHeight(CStatus* status, char* value, char* /*key*/) {
  return StoreInOutput0(rows::RowsOf(kFields, "TtableModHeight"), status, value);
}

int Status_TtableModWidth(CStatus* status, char* value, char* /*key*/) {
  return StoreInOutput0(rows::RowsOf(kFields, "TtableModWidth"), status, value);
}

int Status_TtablePixelPitch(CStatus* status, char* value, char* /*key*/) {
  return StoreInOutput0(rows::RowsOf(kFields, "TtablePixelPitch"), status, value);
}

int Status_TtableRefreshRate(CStatus* status, char* value, char* /*key*/) {
  return StoreInOutput0(rows::RowsOf(kFields, "TtableRefreshRate"), status, value);
}

int Status_TtableTitle(CStatus* status, char* value, char* /*key*/) {
  return StoreInOutput0(rows::RowsOf(kFields, "TtableTitle"), status, value);
}

int Status_TtableAuthor(CStatus* status, char* value, char* /*key*/) {
  return StoreInOutput0(rows::RowsOf(kFields, "TtableAuthor"), status, value);
}

int Status_TtableContract(CStatus* status, char* value, char* /*key*/) {
  return StoreInOutput0(rows::RowsOf(kFields, "TtableContract"), status, value);
}

int Status_TtableED(CStatus* status, char* value, char* /*key*/) {
  return StoreInOutput0(rows::RowsOf(kFields, "TtableED"), status, value);
}

int Status_TtableDate(CStatus* status, char* value, char* /*key*/) {
  return StoreInOutput0(rows::RowsOf(kFields, "TtableDate"), status, value);
}

int Status_TtableTime(CStatus* status, char* value, char* /*key*/) {
  return StoreInOutput0(rows::RowsOf(kFields, "TtableTime"), status, value);
}

int Status_TtableTask(CStatus* status, char* value, char* /*key*/) {
  return StoreInOutput0(rows::RowsOf(kFields, "TtableTask"), status, value);
}

int Status_TtableDevice(CStatus* status, char* value, char* key) {
  const rows::NumberedKey numbered = rows::SplitKey(key, rows::kDevicePrefix);
  if (!numbered.IsNumbered) {
    return numbered.Result;
  }
  COutput* const output = Output0(status);
  if (output == nullptr || value == nullptr) {
    return 0;
  }
  auto device = std::make_unique<CDevice>();
  rows::StoreKeyNumber(numbered.Parts, key, rows::kDevicePrefix, &device->Node);
  rows::StoreField(kDeviceValue, *device, value);
  device->Index = u32_TTableNumAttribute;
  const CDevice* const added = device.get();
  output->Devices.Add(device.release());
  observe::ReportRecord(observe::Place::kTtableDevices, observe::Ending::kCompleted,
                        [&](observe::Record& event) {
                          event.Number = static_cast<std::uint32_t>(added->Node);
                          event.Position = output->Devices.Count() - 1;
                          event.Element = added;
                        });
  ++u32_TTableNumAttribute;
  return 0;
}
