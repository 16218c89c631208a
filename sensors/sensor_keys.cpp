#include "sensors/sensor_keys.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <type_traits>

#include "collector/state/numbered_key.h"
#include "collector/state/numbers.h"
#include "collector/state/scratch.h"
#include "sensors/placements.h"
#include "sensors/record_builder.h"

namespace sensors {
namespace {

// The ambient light that is reported while it is overridden.
constexpr std::uint16_t kOverriddenAmbient = 201;

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
  return number == nullptr ? rows::Numbered{0, nullptr} : rows::SplitNumber(number);
}

// Integers wrap to their width, floats are read as such.
template <class T>
void StoreNumber(const Row& row, void* destination) {
  T& number = *static_cast<T*>(destination);
  if constexpr (std::is_integral_v<T>) {
    number = numbers::Narrow<T>(numbers::ParseLong(row.Value));
  } else {
    number = static_cast<T>(numbers::ParseDouble(row.Value));
  }
}

void StoreUnsigned(const Row& row, void* destination) {
  *static_cast<std::uint32_t*>(destination) =
      numbers::Narrow<std::uint32_t>(numbers::ParseUnsignedLong(row.Value));
}

// Deliberately whole: 44.9 gives 44.
void StoreWhole(const Row& row, void* destination) {
  *static_cast<double*>(destination) = static_cast<double>(numbers::ParseLong(row.Value));
}

void StoreFlag(const Row& row, void* destination) {
  *static_cast<bool*>(destination) = std::strcmp(row.Value, "true") == 0;
}

const QtSts::Code* FindCode(QtSts::CodeTable codes, std::string_view text) {
  const auto* const found = std::ranges::find(codes, text, &QtSts::Code::Text);
  return found == codes.end() ? nullptr : found;
}

// An unknown text keeps the attachment of the sensor before.
void StoreLocation(const Row& row, void* destination) {
  if (const QtSts::Code* const code = FindCode(kAttachments, row.Value)) {
    *static_cast<AttachmentType*>(destination) = static_cast<AttachmentType>(code->Value);
  }
}

void StoreLock(const Row& row, void* destination) {
  const QtSts::Code* const code = FindCode(QtSts::kLockStates, row.Value);
  *static_cast<LockState*>(destination) =
      static_cast<LockState>(code == nullptr ? QtSts::kLockUnknown : code->Value);
}

// Output 0 is read as it is: without one the reading stays.
void StoreAmbient(const Row& row, void* destination) {
  StoreNumber<std::uint16_t>(row, destination);
  const QtSts::COutput* const output = row.Status->Outputs[0];
  if (output != nullptr && output->Dimming.DimmingMode == QtSts::kDimmingManual &&
      (output->StatusFlags & QtSts::kFlagAmbientOverride) != 0) {
    *static_cast<std::uint16_t*>(destination) = kOverriddenAmbient;
  }
}

// Deliberate: an unknown text, unlike an unknown location, does not keep the old code.
void CompleteSensor(const Row& row, void* destination) {
  const auto kinds = SensorKinds();
  const auto kind = std::ranges::find(kinds, std::string_view(row.Value), &SensorKind::Text);
  *static_cast<SensorType*>(destination) = kind == kinds.end() ? kUnknownSensor : kind->Code;
  if (at_Type == kRouterCan || at_Type == kControlBoardCan) {
    Status_VerifyDisplayInterfaceSensor(row.Status, at_Type);
  } else {
    Status_VerifySensor(row.Status);
  }
}

// The attributes of a point ("Input_3_Label"). Only "Type" makes the point present; what is stored
// without it waits for the point's next "Type".
constexpr struct {
  std::string_view Name;
  void (*Store)(const char* value, DcioPoint* point);
} kPointAttributes[] = {
    {"Type",
     [](const char* value, DcioPoint* point) {
       point->Present = 1;
       point->Type = numbers::Narrow<std::uint32_t>(numbers::ParseLong(value));
     }},
    {"Index",
     [](const char* value, DcioPoint* point) {
       point->Index = numbers::Narrow<std::int32_t>(numbers::ParseLong(value));
     }},
    {"Label", [](const char* value, DcioPoint* point) { point->Label = value; }},
    {"State",
     [](const char* value, DcioPoint* point) {
       point->State = numbers::Narrow<std::int32_t>(numbers::ParseLong(value));
     }},
};

template <std::size_t kEntries>
void StorePoint(const Row& row, void* destination) {
  const rows::Numbered point = SplitFamily(row.Attribute);
  if (point.Rest == nullptr || point.Number < 0 || point.Number >= static_cast<long>(kEntries)) {
    return;
  }
  auto& entries = *static_cast<std::array<DcioPoint, kEntries>*>(destination);
  for (const auto& attribute : kPointAttributes) {
    if (attribute.Name == point.Rest) {
      attribute.Store(row.Value, &entries[static_cast<std::size_t>(point.Number)]);
    }
  }
}

// Deliberate: the first speed of a fan stays until a board takes it.
void StoreFan(const Row& row, void* destination) {
  const rows::Numbered fan = SplitFamily(row.Attribute);
  if (fan.Rest != nullptr && std::strcmp(fan.Rest, "Rpm") == 0) {
    static_cast<decltype(FanRpms)*>(destination)
        ->emplace(numbers::Narrow<std::uint8_t>(fan.Number),
                  numbers::Narrow<std::uint16_t>(numbers::ParseLong(row.Value)));
  }
}

// Voltages keep the order of their rows; the numbers in the attributes are deliberately not used.
void AppendVoltage(const Row& row, void* destination) {
  if (std::strstr(row.Attribute, "Volts") != nullptr) {
    static_cast<std::vector<float>*>(destination)
        ->push_back(static_cast<float>(numbers::ParseDouble(row.Value)));
  }
}

template <class T>
constexpr Attribute Number(std::string_view name, T* destination) {
  return {name, &StoreNumber<T>, destination};
}

template <std::size_t kEntries>
constexpr Attribute Points(std::string_view name, std::array<DcioPoint, kEntries>* destination) {
  return {name, &StorePoint<kEntries>, destination};
}

constexpr Attribute kExact[] = {
    Number("Address", &u32_Address),
    {"Altitude", &StoreWhole, &dAltitude},
    {"Ambient", &StoreAmbient, &u16_Ambient},
    Number("AverageRpm", &u16_AverageRpm),
    Number("Back", &u32_Back),
    Number("Bus", &u32_Bus),
    Number("Celsius", &f_celsius),
    Number("Compass", &uiCompass),
    {"Connected", &StoreFlag, &b_Connected},
    Number("CurrentRpm", &u16_CurrentRpm),
    Number("DispInterfaceAddress", &u16_DispInterfaceAddress),
    Number("DispInterfaceNumber", &u32_DispInterfaceNumAttribute),
    Number("Face", &u32_Face),
    Number("FansEnabled", &u32_FansEnabled),
    Number("Front", &u32_Front),
    Number("HardwareID", &u8_HardwareID),
    Number("HumidityOneMin", &f_Humidity_OneMinAverage),
    Number("HumidityTenMin", &f_Humidity_TenMinAverage),
    Number("IdType", &u16_IdType),
    Number("IsoTemperature", &f_celsiusTemperature),
    Number("IsoVin", &f_inputVoltage),
    Number("IsoVout", &f_outputVoltage),
    {"Latitude", &StoreWhole, &dLatitude},
    {"Location", &StoreLocation, &at_Type},
    {"Locked", &StoreLock, &Locked},
    Number("LongTermAverage", &u16_LongTermAverage),
    {"Longitude", &StoreWhole, &dLongitude},
    Number("NumAttribute", &u32_NumAttribute),
    Number("OneMin", &u16_OneMinAverage),
    Number("OneMinLux", &u16_OneMinLuxAverage),
    {"PortStatus", &StoreUnsigned, &u32_PortStatus},
    Number("Rev", &s32_Revision),
    Number("SyncLossCounter", &uiSyncLossCounter),
    Number("TenMin", &u16_TenMinAverage),
    Number("TenMinLux", &u16_TenMinLuxAverage),
    {"Type", &CompleteSensor, &st_Type},
};
// Each name smaller than the next, so that none stands twice.
static_assert(std::ranges::adjacent_find(kExact, std::ranges::greater_equal(), &Attribute::Name) ==
              std::end(kExact));

constexpr Attribute kPointFamilies[] = {
    Points("Input", &dcioInputs),
    Points("Output", &dcioOutputs),
};

constexpr Attribute kFamilies[] = {
    {"Fan_", &StoreFan, &FanRpms},
    {"PsrbVin_", &AppendVoltage, &f_Psrb_InputVoltages},
    {"PsrbVout_", &AppendVoltage, &f_Psrb_OutputVoltages},
    Number("Psrb_HwErrors", &u8_Psrb_HardwareErrors),
    Number("TemperatureKelvin", &beaconRoundel.TemperatureKelvin),
    Number("Humidity", &beaconRoundel.Humidity),
    Number("RedDimLevel", &beaconRoundel.RedDimLevel),
    Number("AmberDimLevel", &beaconRoundel.AmberDimLevel),
    Number("ErrorFlags", &beaconRoundel.ErrorFlags),
    Number("RedLedErrorCount", &beaconRoundel.RedLedErrorCount),
    Number("AmberLedErrorCount", &beaconRoundel.AmberLedErrorCount),
    Number("StatusFlags", &beaconRoundel.StatusFlags),
    Number("SyncControlStartBit", &beaconRoundel.SyncControlStartBit),
    Number("PerColorLedCount", &beaconRoundel.PerColorLedCount),
};

// The look-up of exact names: a hash table of their positions, which the compiler makes.
class ExactIndex {
 public:
  consteval ExactIndex() {
    m_Positions.fill(kFree);
    for (std::size_t position = 0; position < std::size(kExact); ++position) {
      std::size_t slot = Slot(kExact[position].Name);
      while (m_Positions[slot] != kFree) {
        slot = Next(slot);
      }
      m_Positions[slot] = static_cast<std::uint8_t>(position);
    }
  }

  const Attribute* Find(std::string_view name) const {
    if (name.empty()) {
      return nullptr;
    }
    for (std::size_t slot = Slot(name); m_Positions[slot] != kFree; slot = Next(slot)) {
      const Attribute& attribute = kExact[m_Positions[slot]];
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

  std::array<std::uint8_t, kSlots> m_Positions;
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

// No exact name begins like a point's, so that they may be looked for first.
static_assert(std::ranges::none_of(kExact, [](const Attribute& exact) {
  return FindFamily(kPointFamilies, exact.Name.data()) != nullptr;
}));

const Attribute* Find(const char* attribute) {
  if (const Attribute* const found = kExactIndex.Find(attribute)) {
    return found;
  }
  if (const Attribute* const found = FindFamily(kPointFamilies, attribute)) {
    return found;
  }
  return FindFamily(kFamilies, attribute);
}

}  // namespace

std::span<const Attribute> ExactAttributes() { return kExact; }
std::span<const Attribute> PointFamilies() { return kPointFamilies; }
std::span<const Attribute> AttributeFamilies() { return kFamilies; }

}  // namespace sensors

int Status_Sensor(QtSts::CStatus* status, char* value, char* key) {
  const rows::NumberedKey numbered = rows::SplitKey(key, rows::kSensorPrefix);
  if (!numbered.IsNumbered) {
    return numbered.Result;
  }
  const auto [number, name] = numbered.Parts;
  u32_SensorNumber = numbers::Narrow<std::uint32_t>(number);
  if (name == nullptr || value == nullptr) {
    return 0;
  }
  if (const sensors::Attribute* const attribute = sensors::Find(name)) {
    attribute->Store({status, name, value}, attribute->Destination);
  }
  return 0;
}

int Strnicmp(char const* left, char const* right, unsigned int count) {
  return sensors::CompareInAnyCase(left, right, count);
}
