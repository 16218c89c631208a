#include "insight/places.h"

#include <algorithm>
#include <iterator>
#include <type_traits>
#include <unordered_map>

#include "model/beacons.h"
#include "model/can_sensors.h"
#include "model/dcio_boards.h"
#include "model/document.h"
#include "model/onboard_sensors.h"

namespace insight {
namespace {

using QtSts::TreeElement;
using QtSts::TreeValue;

// " 3" or " at address 17"; "" when the value is absent, or empty or 0, which stand for none.
std::string Named(const char* before, const TreeElement& element, const char* field) {
  const TreeValue* const value = element.FindValue(field);
  const std::string written = value == nullptr ? "" : value->Written();
  return written.empty() || written == "0" ? "" : before + written;
}

std::string Number(const TreeElement& element) { return " " + std::to_string(element.Position()); }

std::string Word(const TreeElement&) { return ""; }

std::string NumberAndAddress(const TreeElement& element) {
  return Number(element) + Named(" at address ", element, "Address") +
         Named(" on face ", element, "Face");
}

// The address of an interface may be 0.
std::string InterfaceAddress(const TreeElement& element) {
  const TreeValue* const address = element.FindValue("Address");
  return address == nullptr ? Number(element) : " at address " + address->Written();
}

std::string FanNumber(const TreeElement& element) {
  return " " + element.FindValue("FanNumber")->Written();
}

std::string IndexAndLabel(const TreeElement& element) {
  const std::string label = Named("", element, "Label");
  return " " + element.FindValue("Index")->Written() + (label.empty() ? "" : " \"" + label + "\"");
}

std::string Name(const TreeElement& element) { return Named(" ", element, "Name"); }

// The first one that fits holds.
constexpr struct {
  const QtSts::ClassInfo& Class;  // the classes derived from it included
  const char* Words;
  std::string (*Which)(const TreeElement& element);
} kThings[] = {
    {QtSts::CCANTempSensor::Class, "temperature sensor", &NumberAndAddress},
    {QtSts::CCANLightSensor::Class, "light sensor", &NumberAndAddress},
    {QtSts::CCANLightLuxSensor::Class, "lux sensor", &NumberAndAddress},
    {QtSts::CCANMultiDirectionalSensor::Class, "multi-directional light sensor", &NumberAndAddress},
    {QtSts::CCANDoorSensor::Class, "door sensor", &NumberAndAddress},
    {QtSts::CCANHumiditySensor::Class, "humidity sensor", &NumberAndAddress},
    {QtSts::CCANFanRpmSensor::Class, "fan sensor", &NumberAndAddress},
    {QtSts::CCANAirflowSensor::Class, "airflow sensor", &NumberAndAddress},
    {QtSts::CCANIsolationBoardSensor::Class, "isolation board", &NumberAndAddress},
    {QtSts::CCANPsrbSensor::Class, "power-supply redundancy board", &NumberAndAddress},
    {QtSts::CCANBeacon::Class, "beacon", &NumberAndAddress},
    {QtSts::CCANRoundel::Class, "roundel", &NumberAndAddress},
    {QtSts::CCANDcio::Class, "I/O board", &NumberAndAddress},
    {QtSts::COnboardTempSensor::Class, "on-board temperature sensor", &Number},
    {QtSts::COnboardCabinetFanControlSensor::Class, "cabinet fan control", &Number},
    {QtSts::CSensor::Class, "sensor", &NumberAndAddress},
    {QtSts::FanRpm::Class, "fan", &FanNumber},
    {QtSts::BaseInputType::Class, "input", &IndexAndLabel},
    {QtSts::BaseOutputType::Class, "output", &IndexAndLabel},
    {QtSts::CTravexRouterDisplayInterface::Class, "router", &InterfaceAddress},
    {QtSts::CSentrelControlBoardDisplayInterface::Class, "control board", &InterfaceAddress},
    {QtSts::CDisplayInterface::Class, "display interface", &InterfaceAddress},
    {QtSts::CDoorSwitch::Class, "door switch", &NumberAndAddress},
    {QtSts::CPowerMonitor::Class, "power monitor", &NumberAndAddress},
    {QtSts::CRunLED::Class, "run LED", &NumberAndAddress},
    {QtSts::CGenericInput::Class, "generic input", &NumberAndAddress},
    {QtSts::CGenericOutput::Class, "generic output", &NumberAndAddress},
    {QtSts::CDCIODevice::Class, "DCIO device", &NumberAndAddress},
    {QtSts::CPlayerInput::Class, "player input", &Word},
    {QtSts::CAnalogInput::Class, "analog input", &Word},
    {QtSts::CDigitalInput::Class, "DVI input", &Word},
    {QtSts::CNetworkDevice::Class, "network device", &Name},
};

using Thing = std::remove_extent_t<decltype(kThings)>;

// By class; the rest are no things of their own.
std::unordered_map<const QtSts::ClassInfo*, const Thing*> ThingsByClass() {
  std::unordered_map<const QtSts::ClassInfo*, const Thing*> things;
  for (const QtSts::ClassInfo* const info : QtSts::Classes()) {
    const auto* const thing = std::ranges::find_if(
        kThings, [info](const Thing& each) { return QtSts::IsA(*info, each.Class); });
    if (thing != std::end(kThings)) {
      things.emplace(info, thing);
    }
  }
  return things;
}

}  // namespace

std::string PlaceOf(const TreeElement& element) {
  std::string place;
  bool sensor = false;  // the last part is one
  for (const TreeElement* holder = &element; holder != nullptr; holder = holder->Parent()) {
    static const auto kThingsByClass = ThingsByClass();
    const auto thing = kThingsByClass.find(holder->Class());
    if (thing != kThingsByClass.end()) {
      place += place.empty() ? "" : sensor ? " behind the " : " of the ";
      place += thing->second->Words + thing->second->Which(*holder);
      sensor = holder->IsA(QtSts::CSensor::Class);
    }
  }
  return place + (sensor ? " on the controller" : "");
}

}  // namespace insight
