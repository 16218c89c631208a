#include <cstring>

#include "handlers/fields.h"
#include "handlers/handlers.h"
#include "handlers/output0.h"

namespace {

using QtSts::CDimming;
using QtSts::CFans;
using QtSts::COutput;
using QtSts::CStatus;

// The first word that stands anywhere in the text. Deliberately "qtm2100" has no code of its own: a
// text that names only that is of family 8, like every unknown text.
rows::Reading ReadFamily(const rows::Parser& parser, const char* text) {
  for (const rows::Word& family : parser.Words) {
    if (std::strstr(text, family.Text.data()) != nullptr) {
      return rows::ReadWord(parser, family.Text.data());
    }
  }
  return rows::ReadNoWord(parser, text);
}
constexpr std::uint32_t kUnknownFamily = 8;
constexpr rows::Parser kFamily =
    rows::WordsOr(rows::kWordsOf<QtSts::kProductFamilies>, kUnknownFamily, &ReadFamily);

constexpr rows::Parser kDimmingMode = rows::Words(rows::kWordsOf<QtSts::kDimmingModes>);
constexpr rows::Parser kFansOverride = rows::Words(rows::kWordsOf<QtSts::kFansOverrides>);

// These rows deliberately only ever set their bit: "0" does not clear it.
constexpr rows::Word kFailureMark[] = {{"1", QtSts::kFlagAmbientFailure}};
constexpr rows::Word kOverrideMark[] = {{"1", QtSts::kFlagAmbientOverride}};
constexpr rows::Parser kFailure = rows::Words(kFailureMark);
constexpr rows::Parser kOverride = rows::Words(kOverrideMark);

template <auto... kMembers>
constexpr auto Root = &rows::InMember<CStatus, kMembers...>;
template <auto... kMembers>
constexpr auto Output = &rows::InMember<COutput, kMembers...>;

constexpr rows::Field<CStatus> kRoot[] = {
    Root<&CStatus::SolarInfo, &QtSts::CSolarInfo::CalculatedSunrise>("CalculatedSunrise",
                                                                     &rows::kText),
    Root<&CStatus::SolarInfo, &QtSts::CSolarInfo::CalculatedSunset>("CalculatedSunset",
                                                                    &rows::kText),
    Root<&CStatus::ErrorFlags>("ErrorFlags", &rows::kText),
    Root<&CStatus::GUID>("GUID", &rows::kText),
    Root<&CStatus::ProductFamily>("ProductFamily", &kFamily),
};

constexpr rows::Field<COutput> kOutput[] = {
    Output<&COutput::Dimming, &CDimming::ActualDimmingLevel>("ActualDimmingLevel", &rows::kNumber),
    Output<&COutput::Dimming, &CDimming::DimmingLevel>("DimmingLevel", &rows::kNumber),
    Output<&COutput::Dimming, &CDimming::DimmingMode>("DimmingMode", &kDimmingMode),
    Output<&COutput::Fans, &CFans::Enabled>("FansEnabled", &rows::kTrue),
    Output<&COutput::Fans, &CFans::Override>("FansOverride", &kFansOverride),
    rows::InBits<COutput, &COutput::StatusFlags>("MdlsAmbientFailure", &kFailure),
    rows::InBits<COutput, &COutput::StatusFlags>("MdlsAmbientOverride", &kOverride),
};

int StoreInRoot(std::span<const rows::Field<CStatus>> fields, CStatus* status, const char* value) {
  if (value != nullptr) {
    for (const rows::Field<CStatus>& field : fields) {
      rows::StoreField(field, *status, value);
    }
  }
  return 0;
}

bool Is(const char* key, const char* wanted) {
  return key != nullptr && std::strcmp(key, wanted) == 0;
}

}  // namespace

namespace handlers {

std::span<const rows::Field<CStatus>> RootFields() { return kRoot; }
std::span<const rows::Field<COutput>> OutputFields() { return kOutput; }

}  // namespace handlers

int Status_GUID(CStatus* status, char* value, char* /*key*/) {
  return StoreInRoot(rows::RowsOf(kRoot, "GUID"), status, value);
}

// Unlike other handlers these two look at the whole key.

int Status_ErrorFlags(CStatus* status, char* value, char* key) {
  if (Is(key, "ErrorFlags")) {
    return StoreInRoot(rows::RowsOf(kRoot, "ErrorFlags"), status, value);
  }
  rows::ReportKept(observe::Fate::kOtherKey, "ErrorFlags", value);
  return 0;
}

int Status_CalculatedSunInfo(CStatus* status, char* value, char* key) {
  static constexpr char kSunrise[] = "CalculatedSunrise";
  static constexpr char kSunset[] = "CalculatedSunset";
  if (Is(key, kSunrise)) {
    return StoreInRoot(rows::RowsOf(kRoot, kSunrise), status, value);
  }
  if (Is(key, kSunset)) {
    return StoreInRoot(rows::RowsOf(kRoot, kSunset), status, value);
  }
  const bool sunset = key != nullptr && std::strncmp(key, kSunset, sizeof kSunset - 1) == 0;
  rows::ReportKept(observe::Fate::kOtherKey, sunset ? kSunset : kSunrise, value);
  return 0;
}

int Status_ProductFamily(CStatus* status, char* value, char* /*key*/) {
  return StoreInRoot(rows::RowsOf(kRoot, "ProductFamily"), status, value);
}

int Status_DimmingLevel(CStatus* status, char* value, char* /*key*/) {
  return StoreInOutput0(rows::RowsOf(kOutput, "DimmingLevel"), status, value);
}

int Status_ActualDimmingLevel(CStatus* status, char* value, char* /*key*/) {
  return StoreInOutput0(rows::RowsOf(kOutput, "ActualDimmingLevel"), status, value);
}

int Status_DimmingMode(CStatus* status, char* value, char* /*key*/) {
  return StoreInOutput0(rows::RowsOf(kOutput, "DimmingMode"), status, value);
}

int Status_FansEnabled(CStatus* status, char* value, char* /*key*/) {
  return StoreInOutput0(rows::RowsOf(kOutput, "FansEnabled"), status, value);
}

int Status_FansOverride(CStatus* status, char* value, char* /*key*/) {
  return StoreInOutput0(rows::RowsOf(kOutput, "FansOverride"), status, value);
}

int Status_MdlsAmbientFailure(CStatus* status, char* value, char* /*key*/) {
  return StoreInOutput0(rows::RowsOf(kOutput, "MdlsAmbientFailure"), status, value);
}

int Status_MdlsAmbientOverride(CStatus* status, char* value, char* /*key*/) {
  return StoreInOutput0(rows::RowsOf(kOutput, "MdlsAmbientOverride"), status, value);
}

int Status_ContentLevelAvg(CStatus* /*status*/, char* /*value*/, char* /*key*/) { return 0; }

int Status_ThermalScaler(CStatus* /*status*/, char* /*value*/, char* /*key*/) { return 0; }
