// The table of all listed classes, and look-up in it.
#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string_view>
#include <typeindex>
#include <unordered_map>

#include "model/beacons.h"
#include "model/can_sensors.h"
#include "model/dcio_boards.h"
#include "model/document.h"
#include "model/listing.h"
#include "model/onboard_sensors.h"

namespace QtSts {
namespace {

// All that are no family of sensors.
constexpr const ClassInfo* kPartClasses[] = {
    // document
    &CStatus::Class,
    &CSolarInfo::Class,
    // shared records
    &CArea::Class,
    &CFrequency::Class,
    &CStat::Class,
    // network
    &CNetwork::Class,
    &CDNS::Class,
    &CAddress::Class,
    &CNetworkDevice::Class,
    // discrete I/O devices
    &CDCIO::Class,
    &CDCIODevice::Class,
    &CDoorSwitch::Class,
    &CPowerMonitor::Class,
    &CRunLED::Class,
    &CGenericInput::Class,
    &CGenericOutput::Class,
    // inputs
    &CCompositor::Class,
    &CInput::Class,
    &CPlayerInput::Class,
    &CAnalogInput::Class,
    &CDigitalInput::Class,
    // outputs
    &COutput::Class,
    &CTravex6Output::Class,
    &CContent::Class,
    &CDimming::Class,
    &CFans::Class,
    &CTtable::Class,
    &CDevice::Class,
    &CDisplayInterface::Class,
    &CTravexRouterDisplayInterface::Class,
    &CSentrelControlBoardDisplayInterface::Class,
    // points
    &IOList::Class,
    &InputListType::Class,
    &OutputListType::Class,
    &BaseInputType::Class,
    &GeneralPurposeInputType::Class,
    &AirflowSensorInputType::Class,
    &CDoorSensorInputType::Class,
    &SurgeSuppressorInputType::Class,
    &CIntakeFanStatusRelayInputType::Class,
    &CFrontFanStatusRelayInputType::Class,
    &CPixelFanStatusRelayInputType::Class,
    &CFanPowerSenseInputType::Class,
    &CPowerSupplyStatusRelayInputType::Class,
    &CMaintHeaterStatusRelayInputType::Class,
    &CHeaterStatusRelayInputType::Class,
    &BaseOutputType::Class,
    &CIntakeFanOutputType::Class,
    &CPixelFanOutputType::Class,
    &CFrontFanOutputType::Class,
    &CMaintHeaterOutputType::Class,
    &CHeaterOutputType::Class,
    &CGeneralPurposeOutputType::Class,
    &CAuxiliaryOutputType::Class,
    &CFaultOkLedOutputType::Class,
    &CCurrentMessageOutputType::Class,
    // sensors
    &CSensor::Class,
    &CCANSensor::Class,
};

// The classes of all these, and a null pointer at the end.
template <std::size_t... kSizes>
consteval auto Joined(const ClassInfo* const (&... families)[kSizes]) {
  std::array<const ClassInfo*, (kSizes + ... + 1)> classes = {};
  auto place = classes.begin();
  ((place = std::ranges::copy(families, place).out), ...);
  return classes;
}

// Families of sensors list their classes in their headers.
constexpr auto kClasses = Joined(kPartClasses, kCanSensorClasses, kDcioBoardClasses, kBeaconClasses,
                                 kOnboardSensorClasses);

template <class Key, class KeyOf>
std::unordered_map<Key, const ClassInfo*> Index(KeyOf key_of) {
  std::unordered_map<Key, const ClassInfo*> index;
  for (const ClassInfo* const info : Classes()) {
    index.emplace(key_of(*info), info);
  }
  return index;
}

template <class Key>
const ClassInfo* Find(const std::unordered_map<Key, const ClassInfo*>& index, const Key& key) {
  const auto found = index.find(key);
  return found == index.end() ? nullptr : found->second;
}

}  // namespace

const ClassInfo* ClassOf(const CBaseStatus& object) {
  static const auto index =
      Index<std::type_index>([](const ClassInfo& info) { return std::type_index(*info.Type); });
  return Find(index, std::type_index(typeid(object)));
}

const ClassInfo* ClassNamed(std::string_view name) {
  static const auto index =
      Index<std::string_view>([](const ClassInfo& info) { return std::string_view(info.Name); });
  return Find(index, name);
}

const Field* FieldNamed(const ClassInfo& info, std::string_view name) {
  const Field* found = nullptr;
  VisitEveryField(info, [&found, name](const Field& field) {
    found = name == field.Name ? &field : nullptr;
    return found == nullptr;
  });
  return found;
}

std::span<const ClassInfo* const> Classes() {
  return std::span(kClasses).first(kClasses.size() - 1);
}

const ClassInfo* const* AllClasses() { return kClasses.data(); }

bool IsA(const ClassInfo& derived, const ClassInfo& base) {
  const ClassInfo* info = &derived;
  while (info != nullptr && info != &base) {
    info = info->Base;
  }
  return info != nullptr;
}

}  // namespace QtSts
