#include <memory>
#include <string>

#include "collector/state/numbered_key.h"
#include "collector/state/numbers.h"
#include "collector/state/scratch.h"
#include "handlers/handlers.h"
#include "handlers/output0.h"

namespace {

using QtSts::COutput;
using QtSts::CStatus;
using QtSts::CTtable;

int StoreNumber(CStatus* status, std::uint32_t CTtable::*number, const char* value) {
  COutput* const output = Output0(status);
  if (output != nullptr && value != nullptr) {
    output->Ttable.*number = numbers::Narrow<std::uint32_t>(numbers::ParseLong(value));
  }
  return 0;
}

// The number and, in the field beside it, one more, which wraps to 0 after the largest.
int StoreCount(CStatus* status, std::uint32_t CTtable::*number, std::uint32_t CTtable::*plus_one,
               const char* value) {
  StoreNumber(status, number, value);
  COutput* const output = status->Outputs[0];
  if (output != nullptr && value != nullptr) {
    output->Ttable.*plus_one = output->Ttable.*number + 1;
  }
  return 0;
}

int StoreFraction(CStatus* status, float CTtable::*number, const char* value) {
  COutput* const output = Output0(status);
  if (output != nullptr && value != nullptr) {
    output->Ttable.*number = static_cast<float>(numbers::ParseDouble(value));
  }
  return 0;
}

int StoreText(CStatus* status, std::string COutput::*text, const char* value) {
  COutput* const output = Output0(status);
  if (output != nullptr && value != nullptr) {
    output->*text = value;
  }
  return 0;
}

}  // namespace

int Status_TtableColumns(CStatus* status, char* value, char* /*key*/) {
  return StoreCount(status, &CTtable::Columns, &CTtable::ColumnsPlusOne, value);
}

int Status_TtableRows(CStatus* status, char* value, char* /*key*/) {
  return StoreCount(status, &CTtable::Rows, &CTtable::RowsPlusOne, value);
}

int Status_TTableFaceCount(CStatus* status, char* value, char* /*key*/) {
  return StoreNumber(status, &CTtable::FaceCount, value);
}

int Status_TtableInterleaved(CStatus* status, char* value, char* /*key*/) {
  return StoreNumber(status, &CTtable::Interleaved, value);
}

int Status_TtableModHeight(CStatus* status, char* value, char* /*key*/) {
  return StoreNumber(status, &CTtable::ModuleHeight, value);
}

int Status_TtableModWidth(CStatus* status, char* value, char* /*key*/) {
  return StoreNumber(status, &CTtable::ModuleWidth, value);
}

int Status_TtablePixelPitch(CStatus* status, char* value, char* /*key*/) {
  return StoreFraction(status, &CTtable::PixelPitch, value);
}

int Status_TtableRefreshRate(CStatus* status, char* value, char* /*key*/) {
  return StoreFraction(status, &CTtable::RefreshRate, value);
}

int Status_TtableTitle(CStatus* status, char* value, char* /*key*/) {
  return StoreText(status, &COutput::Title, value);
}

int Status_TtableAuthor(CStatus* status, char* value, char* /*key*/) {
  return StoreText(status, &COutput::Author, value);
}

int Status_TtableContract(CStatus* status, char* value, char* /*key*/) {
  return StoreText(status, &COutput::Contract, value);
}

int Status_TtableED(CStatus* status, char* value, char* /*key*/) {
  return StoreText(status, &COutput::ED, value);
}

int Status_TtableDate(CStatus* status, char* value, char* /*key*/) {
  return StoreText(status, &COutput::Date, value);
}

int Status_TtableTime(CStatus* status, char* value, char* /*key*/) {
  return StoreText(status, &COutput::Time, value);
}

int Status_TtableTask(CStatus* status, char* value, char* /*key*/) {
  return StoreText(status, &COutput::Task, value);
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
  auto device = std::make_unique<QtSts::CDevice>();
  device->Node = numbers::Narrow<std::int32_t>(numbered.Parts.Number);
  device->Value = numbers::Narrow<std::int32_t>(numbers::ParseLong(value));
  device->Index = u32_TTableNumAttribute;
  output->Devices.Add(device.release());
  ++u32_TTableNumAttribute;
  return 0;
}
