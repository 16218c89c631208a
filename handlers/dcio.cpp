#include <cstring>

#include "collector/state/numbers.h"
#include "collector/state/scratch.h"
#include "handlers/handlers.h"
#include "model/lookup/verify.h"

namespace {

constexpr char kPrefix[] = "DCIO_";
constexpr std::size_t kPrefixLength = sizeof(kPrefix) - 1;

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
  if (key == nullptr || std::strlen(key) < kPrefixLength) {
    return 0;
  }
  const char* const number = key + kPrefixLength;
  if (numbers::IsRefusedNumberStart(*number)) {
    return -1;
  }
  u32_DCIO_SensorNumber = numbers::Narrow<std::uint32_t>(numbers::ParseLong(number));
  const char* const underscore = std::strchr(number, '_');
  if (underscore == nullptr) {
    return 0;
  }
  const char* const attribute = underscore + 1;
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
