#include <cstring>

#include "collector/state/numbers.h"
#include "handlers/handlers.h"
#include "handlers/output0.h"

namespace {

using QtSts::CDimming;
using QtSts::COutput;
using QtSts::CStatus;

bool Is(const char* text, const char* wanted) {
  return text != nullptr && std::strcmp(text, wanted) == 0;
}

void StoreLevel(CStatus* status, float CDimming::*level, const char* value) {
  COutput* const output = Output0(status);
  if (output != nullptr && value != nullptr) {
    output->Dimming.*level = static_cast<float>(numbers::ParseDouble(value));
  }
}

// The code that stands for exactly this text; an unknown text leaves the code as it was.
void StoreCode(const QtSts::CodeTable& codes, const char* value, std::uint32_t* code) {
  for (const QtSts::Code& candidate : codes) {
    if (Is(value, candidate.Text)) {
      *code = candidate.Value;
      return;
    }
  }
}

// These rows deliberately only ever set their bit: "0" does not clear it.
void StoreFlag(CStatus* status, std::uint32_t flag, const char* value) {
  COutput* const output = Output0(status);
  if (output != nullptr && Is(value, "1")) {
    output->StatusFlags |= flag;
  }
}

}  // namespace

int Status_GUID(CStatus* status, char* value, char* /*key*/) {
  if (value != nullptr) {
    status->GUID = value;
  }
  return 0;
}

int Status_ErrorFlags(CStatus* status, char* value, char* key) {
  if (Is(key, "ErrorFlags") && value != nullptr) {
    status->ErrorFlags = value;
  }
  return 0;
}

int Status_CalculatedSunInfo(CStatus* status, char* value, char* key) {
  if (value == nullptr) {
    return 0;
  }
  if (Is(key, "CalculatedSunrise")) {
    status->SolarInfo.CalculatedSunrise = value;
  } else if (Is(key, "CalculatedSunset")) {
    status->SolarInfo.CalculatedSunset = value;
  }
  return 0;
}

int Status_ProductFamily(CStatus* status, char* value, char* /*key*/) {
  if (value == nullptr) {
    return 0;
  }
  // Deliberately without a code of its own: a text that names only "qtm2100" is of family 8 too.
  constexpr std::int32_t kUnknownFamily = 8;
  status->ProductFamily = kUnknownFamily;
  for (const QtSts::Code& family : QtSts::kProductFamilies) {
    if (std::strstr(value, family.Text) != nullptr) {
      status->ProductFamily = static_cast<std::int32_t>(family.Value);
      break;
    }
  }
  return 0;
}

int Status_DimmingLevel(CStatus* status, char* value, char* /*key*/) {
  StoreLevel(status, &CDimming::DimmingLevel, value);
  return 0;
}

int Status_ActualDimmingLevel(CStatus* status, char* value, char* /*key*/) {
  StoreLevel(status, &CDimming::ActualDimmingLevel, value);
  return 0;
}

int Status_DimmingMode(CStatus* status, char* value, char* /*key*/) {
  if (COutput* const output = Output0(status)) {
    StoreCode(QtSts::kDimmingModes, value, &output->Dimming.DimmingMode);
  }
  return 0;
}

int Status_FansEnabled(CStatus* status, char* value, char* /*key*/) {
  COutput* const output = Output0(status);
  if (output != nullptr && value != nullptr) {
    output->Fans.Enabled = Is(value, "true");
  }
  return 0;
}

int Status_FansOverride(CStatus* status, char* value, char* /*key*/) {
  if (COutput* const output = Output0(status)) {
    StoreCode(QtSts::kFansOverrides, value, &output->Fans.Override);
  }
  return 0;
}

int Status_MdlsAmbientFailure(CStatus* status, char* value, char* /*key*/) {
  StoreFlag(status, QtSts::kFlagAmbientFailure, value);
  return 0;
}

int Status_MdlsAmbientOverride(CStatus* status, char* value, char* /*key*/) {
  StoreFlag(status, QtSts::kFlagAmbientOverride, value);
  return 0;
}

int Status_ContentLevelAvg(CStatus* /*status*/, char* /*value*/, char* /*key*/) { return 0; }

int Status_ThermalScaler(CStatus* /*status*/, char* /*value*/, char* /*key*/) { return 0; }
