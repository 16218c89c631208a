#include "sensors/sensor_keys.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "collector/state/numbered_key.h"
#include "collector/state/numbers.h"
#include "collector/state/scratch.h"
#include "sensors/attributes.h"
#include "sensors/placements.h"
#include "sensors/record_builder.h"

namespace sensors {
namespace {

using observe::Fate;
using rows::Attribute;
using rows::Parked;
using rows::Row;

constexpr int CompareInAnyCase(const char* left, const char* right, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const unsigned char a = numbers::ToLower(static_cast<unsigned char>(left[i]));
    const unsigned char b = numbers::ToLower(static_cast<unsigned char>(right[i]));
    if (a != b) {
      return a < b ? -1 : 1;
    }
  }
  return 0;
}

// "Fan_3_Rpm" is 3 and "Rpm".
rows::Numbered SplitFamily(const char* attribute) {
  const char* const number = rows::AfterUnderscore(attribute);
  return number == nullptr ? rows::Numbered{} : rows::SplitNumber(number);
}

// An unknown text keeps the attachment of the sensor before.
constexpr rows::Parser kLocation = rows::Words(rows::kWordsOf<kAttachments>);
constexpr rows::Parser kLock =
    rows::WordsOr(rows::kWordsOf<QtSts::kLockStates>, QtSts::kLockUnknown);

// The ambient light that is reported while it is overridden.
constexpr rows::Parser kOverriddenReading = rows::Always(201);
constexpr rows::Entry kOverridden = {"Ambient", &kOverriddenReading};

// Output 0 is not created here: without one the reading stays.
void StoreAmbient(const Attribute& ambient, const Row& row) {
  rows::StoreParked(ambient, row.Value);
  const QtSts::COutput* const output = row.Status->Outputs[0];
  if (output != nullptr && output->Dimming.DimmingMode == QtSts::kDimmingManual &&
      (output->StatusFlags & QtSts::kFlagAmbientOverride) != 0) {
    rows::Store(kOverridden, ambient.Where->Is, ambient.Where->Address, row.Value);
  }
}

void CompleteSensor(const Attribute& type, const Row& row) {
  rows::StoreParked(type, row.Value);
  if (at_Type == kRouterCan || at_Type == kControlBoardCan) {
    Status_VerifyDisplayInterfaceSensor(row.Status, at_Type);
  } else {
    Status_VerifySensor(row.Status);
  }
}

template <auto kMember>
constexpr auto Part = &rows::InMember<DcioPoint, kMember>;

// Only "Type" makes the point present; what is stored without it waits for the point's next "Type".
constexpr rows::Parser kYes = rows::Always(1);
constexpr rows::Field<DcioPoint> kPointParts[] = {
    Part<&DcioPoint::Index>("Index", &rows::kInteger),
    Part<&DcioPoint::Label>("Label", &rows::kText),
    Part<&DcioPoint::State>("State", &rows::kInteger),
    Part<&DcioPoint::Present>("Type", &kYes),
    Part<&DcioPoint::Type>("Type", &rows::kInteger),
};

template <std::size_t kEntries>
void StorePoint(const Attribute& family, const Row& row) {
  const rows::Numbered point = SplitFamily(row.Attribute);
  const rows::Slot slot = {family.Where->Address, point.Number};
  if (point.Rest == nullptr) {
    return rows::ReportKept(Fate::kNoAttribute, family.Name, row.Attribute, slot);
  }
  if (point.Number < 0 || point.Number >= static_cast<long>(kEntries)) {
    return rows::ReportKept(Fate::kOutsideTable, point.Rest, row.Attribute, slot);
  }
  bool known = false;
  auto& entries = *static_cast<std::array<DcioPoint, kEntries>*>(family.Where->Address);
  for (const rows::Field<DcioPoint>& part : kPointParts) {
    if (part.Name == point.Rest) {
      rows::StoreField(part, entries[static_cast<std::size_t>(point.Number)], row.Value, slot);
      known = true;
    }
  }
  if (!known) {
    rows::ReportKept(Fate::kUnknownAttribute, point.Rest, row.Value, slot);
  }
}

// Deliberate: the first speed of a fan stays until a board takes it.
void StoreFan(const Attribute& family, const Row& row) {
  const rows::Numbered fan = SplitFamily(row.Attribute);
  rows::Slot slot = {family.Where->Address, fan.Number};
  if (fan.Rest == nullptr) {
    return rows::ReportKept(Fate::kNoAttribute, family.Name, row.Attribute, slot);
  }
  if (std::strcmp(fan.Rest, "Rpm") != 0) {
    return rows::ReportKept(Fate::kUnknownAttribute, fan.Rest, row.Value, slot);
  }
  auto& speeds = *static_cast<decltype(FanRpms)*>(family.Where->Address);
  const auto [speed, is_new] = speeds.try_emplace(numbers::Narrow<std::uint8_t>(fan.Number));
  slot.Index = speed->first;
  if (is_new) {
    rows::Store(family, family.Where->Is, &speed->second, row.Value, slot);
  } else {
    rows::ReportKept(Fate::kFirstStays, family.Name, row.Value, slot);
  }
}

// Voltages keep the order of their rows; the numbers in the attributes are deliberately not used.
void AppendVoltage(const Attribute& family, const Row& row) {
  auto& voltages = *static_cast<std::vector<float>*>(family.Where->Address);
  const rows::Slot slot = {&voltages, static_cast<long>(voltages.size())};
  if (std::strstr(row.Attribute, "Volts") != nullptr) {
    rows::Store(family, family.Where->Is, &voltages.emplace_back(), row.Value, slot);
  } else {
    rows::ReportKept(Fate::kNotVolts, family.Name, row.Attribute, slot);
  }
}

// Position is deliberately read in whole numbers: 44.9 gives 44.
constexpr Attribute kExact[] = {
    Parked<&u32_Address>("Address"),
    Parked<&dAltitude>("Altitude", &rows::kInteger),
    Parked<&u16_Ambient>("Ambient", &rows::kInteger, &StoreAmbient),
    Parked<&u16_AverageRpm>("AverageRpm"),
    Parked<&u32_Back>("Back"),
    Parked<&u32_Bus>("Bus"),
    Parked<&f_celsius>("Celsius"),
    Parked<&uiCompass>("Compass"),
    Parked<&b_Connected>("Connected", &rows::kTrue),
    Parked<&u16_CurrentRpm>("CurrentRpm"),
    Parked<&u16_DispInterfaceAddress>("DispInterfaceAddress"),
    Parked<&u32_DispInterfaceNumAttribute>("DispInterfaceNumber"),
    Parked<&u32_Face>("Face"),
    Parked<&u32_FansEnabled>("FansEnabled"),
    Parked<&u32_Front>("Front"),
    Parked<&u8_HardwareID>("HardwareID"),
    Parked<&f_Humidity_OneMinAverage>("HumidityOneMin"),
    Parked<&f_Humidity_TenMinAverage>("HumidityTenMin"),
    Parked<&u16_IdType>("IdType"),
    Parked<&f_celsiusTemperature>("IsoTemperature"),
    Parked<&f_inputVoltage>("IsoVin"),
    Parked<&f_outputVoltage>("IsoVout"),
    Parked<&dLatitude>("Latitude", &rows::kInteger),
    Parked<&at_Type>("Location", &kLocation),
    Parked<&Locked>("Locked", &kLock),
    Parked<&u16_LongTermAverage>("LongTermAverage"),
    Parked<&dLongitude>("Longitude", &rows::kInteger),
    Parked<&u32_NumAttribute>("NumAttribute"),
    Parked<&u16_OneMinAverage>("OneMin"),
    Parked<&u16_OneMinLuxAverage>("OneMinLux"),
    Parked<&u32_PortStatus>("PortStatus", &rows::kUnsigned),
    Parked<&s32_Revision>("Rev"),
    Parked<&uiSyncLossCounter>("SyncLossCounter"),
    Parked<&u16_TenMinAverage>("TenMin"),
    Parked<&u16_TenMinLuxAverage>("TenMinLux"),
    Parked<&st_Type>("Type", &kSensorTypeParser, &CompleteSensor),
};
// Each name smaller than the next, so that none stands twice.
static_assert(std::ranges::adjacent_find(kExact, std::ranges::greater_equal(), &Attribute::Name) ==
              std::end(kExact));

constexpr Attribute kPointFamilies[] = {
    Parked<&dcioInputs>("Input", nullptr, &StorePoint<dcioInputs.size()>),
    Parked<&dcioOutputs>("Output", nullptr, &StorePoint<dcioOutputs.size()>),
};

constexpr Attribute kFamilies[] = {
    Parked<&FanRpms>("Fan_", &rows::kInteger, &StoreFan),
    Parked<&f_Psrb_InputVoltages>("PsrbVin_", &rows::kNumber, &AppendVoltage),
    Parked<&f_Psrb_OutputVoltages>("PsrbVout_", &rows::kNumber, &AppendVoltage),
    Parked<&u8_Psrb_HardwareErrors>("Psrb_HwErrors"),
    Parked<&BeaconRoundel::TemperatureKelvin>("TemperatureKelvin"),
    Parked<&BeaconRoundel::Humidity>("Humidity"),
    Parked<&BeaconRoundel::RedDimLevel>("RedDimLevel"),
    Parked<&BeaconRoundel::AmberDimLevel>("AmberDimLevel"),
    Parked<&BeaconRoundel::ErrorFlags>("ErrorFlags"),
    Parked<&BeaconRoundel::RedLedErrorCount>("RedLedErrorCount"),
    Parked<&BeaconRoundel::AmberLedErrorCount>("AmberLedErrorCount"),
    Parked<&BeaconRoundel::StatusFlags>("StatusFlags"),
    Parked<&BeaconRoundel::SyncControlStartBit>("SyncControlStartBit"),
    Parked<&BeaconRoundel::PerColorLedCount>("PerColorLedCount"),
};

// The look-up of exact names: a hash table of their positions, which the compiler makes.
class ExactIndex {
 public:
  consteval ExactIndex() {
    positions_.fill(kFree);
    for (std::size_t position = 0; position < std::size(kExact); ++position) {
      std::size_t slot = Slot(kExact[position].Name);
      while (positions_[slot] != kFree) {
        slot = Next(slot);
      }
      positions_[slot] = static_cast<std::uint8_t>(position);
    }
  }

  const Attribute* Find(std::string_view name) const {
    if (name.empty()) {
      return nullptr;
    }
    for (std::size_t slot = Slot(name); positions_[slot] != kFree; slot = Next(slot)) {
      const Attribute& attribute = kExact[positions_[slot]];
      if (attribute.Name == name) {
        return &attribute;
      }
    }
    return nullptr;
  }

 private:
  static constexpr std::size_t kSlots = 64;
  static constexpr std::uint8_t kFree = 255;
  static_assert(std::size(kExact) < kSlots);  // so that a search ends at a free one

  // With these factors hardly any two of the names share a slot.
  static constexpr std::size_t Slot(std::string_view name) {
    const auto first = static_cast<unsigned char>(name.front());
    const auto last = static_cast<unsigned char>(name.back());
    return (first + 4U * last + name.size()) % kSlots;
  }
  static constexpr std::size_t Next(std::size_t slot) { return (slot + 1) % kSlots; }

  std::array<std::uint8_t, kSlots> positions_;
};
constexpr ExactIndex kExactIndex;

constexpr const Attribute* FindFamily(std::span<const Attribute> families, const char* attribute) {
  for (const Attribute& family : families) {
    if (CompareInAnyCase(attribute, family.Name.data(), family.Name.size()) == 0) {
      return &family;
    }
  }
  return nullptr;
}

// No exact name begins like that of a point, so that points may be looked for first.
static_assert(std::ranges::none_of(kExact, [](const Attribute& exact) {
  return FindFamily(kPointFamilies, exact.Name.data()) != nullptr;
}));

// Always inlined, since every row passes through it.
[[gnu::always_inline]] inline const Attribute* Find(const char* name) {
  if (const Attribute* const found = kExactIndex.Find(name)) {
    return found;
  }
  if (const Attribute* const found = FindFamily(kPointFamilies, name)) {
    return found;
  }
  return FindFamily(kFamilies, name);
}

}  // namespace

std::span<const Attribute> ExactAttributes() { return kExact; }
std::span<const Attribute> PointFamilies() { return kPointFamilies; }
std::span<const Attribute> AttributeFamilies() { return kFamilies; }
std::span<const rows::Field<DcioPoint>> PointParts() { return kPointParts; }

const Attribute* FindAttribute(const char* name) { return Find(name); }

}  // namespace sensors

int Status_Sensor(QtSts::CStatus* status, char* value, char* key) {
  const rows::NumberedKey numbered = rows::SplitKey(key, rows::kSensorPrefix);
  if (!numbered.IsNumbered) {
    return numbered.Result;
  }
  rows::StoreKeyNumber(numbered.Parts, key, rows::kSensorPrefix, &u32_SensorNumber);
  const char* const name = numbered.Parts.Rest;
  if (name == nullptr) {
    rows::ReportKept(observe::Fate::kNoAttribute, {}, key);
    return 0;
  }
  if (value == nullptr) {
    return 0;
  }
  if (const rows::Attribute* const attribute = sensors::Find(name)) {
    rows::Take(*attribute, {status, name, value});
  } else {
    rows::ReportKept(observe::Fate::kUnknownAttribute, name, value);
  }
  return 0;
}

int Strnicmp(const char* left, const char* right, unsigned int count) {
  return sensors::CompareInAnyCase(left, right, count);
}
