#include <cstring>

#include "collector/state/numbered_key.h"
#include "collector/state/numbers.h"
#include "collector/state/scratch.h"
#include "handlers/handlers.h"
#include "model/lookup/verify.h"

namespace {

// The attributes that hold a number, and where it is parked.
constexpr struct {
  const char* Name;
  std::uint32_t* Destination;
} kNumbers[] = {
    {"State", &u32_DCIO_State},
    {"ErrCnt", &u32_DCIO_ErrCntr},
    {"NumAttribute", &u32_DCIO_NumAttr},
    {"Address", &u32_DCIO_Address},
};

// An unknown or missing text keeps the previous device's type, and completes the device all the
// same.
void CompleteDevice(QtSts::CStatus* status, const char* value) {
  for (const QtSts::Code& type : kDcioTypes) {
    if (value != nullptr && std::strcmp(value, type.Text) == 0) {
      st_DCIO_Type = static_cast<DcioType>(type.Value);
      break;
    }
  }
  Status_VerifyDCIO(status);
}

}  // namespace

int Status_DCIO(QtSts::CStatus* status, char* value, char* key) {
  const rows::NumberedKey numbered = rows::SplitKey(key, rows::kDcioPrefix);
  if (!numbered.IsNumbered) {
    return numbered.Result;
  }
  const auto [number, attribute] = numbered.Parts;
  u32_DCIO_SensorNumber = numbers::Narrow<std::uint32_t>(number);
  if (attribute == nullptr) {
    return 0;
  }
  if (std::strcmp(attribute, "Type") == 0) {
    CompleteDevice(status, value);
    return 0;
  }
  for (const auto& known : kNumbers) {
    if (value != nullptr && std::strcmp(attribute, known.Name) == 0) {
      *known.Destination = numbers::Narrow<std::uint32_t>(numbers::ParseLong(value));
      break;
    }
  }
  return 0;
}
