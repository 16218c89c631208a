#include <algorithm>

#include "collector/state/numbered_key.h"
#include "collector/state/scratch.h"
#include "handlers/fields.h"
#include "handlers/handlers.h"
#include "model/lookup/verify.h"

namespace {

using rows::Parked;

// An unknown or missing text keeps the previous device's type, and completes the device all the
// same.
void CompleteDevice(const rows::Attribute& type, const rows::Row& row) {
  if (row.Value != nullptr) {
    rows::StoreParked(type, row.Value);
  }
  Status_VerifyDCIO(row.Status);
}

constexpr rows::Parser kType = rows::Words(rows::kWordsOf<kDcioTypes>);

constexpr rows::Attribute kAttributes[] = {
    Parked<&u32_DCIO_Address>("Address"),
    Parked<&u32_DCIO_ErrCntr>("ErrCnt"),
    Parked<&u32_DCIO_NumAttr>("NumAttribute"),
    Parked<&u32_DCIO_State>("State"),
    Parked<&st_DCIO_Type>("Type", &kType, &CompleteDevice),
};

}  // namespace

std::span<const rows::Attribute> handlers::DcioAttributes() { return kAttributes; }

int Status_DCIO(QtSts::CStatus* status, char* value, char* key) {
  const rows::NumberedKey numbered = rows::SplitKey(key, rows::kDcioPrefix);
  if (!numbered.IsNumbered) {
    return numbered.Result;
  }
  rows::StoreKeyNumber(numbered.Parts, key, rows::kDcioPrefix, &u32_DCIO_SensorNumber);
  const char* const name = numbered.Parts.Rest;
  if (name == nullptr) {
    rows::ReportKept(observe::Fate::kNoAttribute, {}, key);
    return 0;
  }
  const auto* const attribute =
      std::ranges::find(kAttributes, std::string_view(name), &rows::Attribute::Name);
  if (attribute == std::end(kAttributes)) {
    rows::ReportKept(observe::Fate::kUnknownAttribute, name, value);
  } else if (value != nullptr || attribute->Handle != nullptr) {
    rows::Take(*attribute, {status, name, value});
  }
  return 0;
}
