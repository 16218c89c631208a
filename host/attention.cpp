#include "host/attention.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <span>
#include <string_view>

#include "host/text_template.h"
#include "model/beacons.h"
#include "model/can_sensors.h"
#include "model/codes.h"
#include "model/dcio_boards.h"
#include "model/document.h"

namespace host {
namespace {

using QtSts::TreeElement;
using QtSts::TreeValue;

bool IsFalse(const TreeElement&, const TreeValue& value) { return !value.Flag(); }
bool IsZero(const TreeElement&, const TreeValue& value) { return value.Written() == "0"; }
bool IsNotZero(const TreeElement&, const TreeValue& value) { return value.Written() != "0"; }

template <std::uint32_t kFlag>
bool HasFlag(const TreeElement&, const TreeValue& value) {
  return (value.Unsigned() & kFlag) != 0;
}

// "0x0000000000000000" has no error.
bool HasDigitAboveZero(const TreeElement&, const TreeValue& value) {
  return value.Text().find_first_of("123456789abcdefABCDEF") != std::string_view::npos;
}

bool HoldsZero(const TreeElement&, const TreeValue& value) {
  const std::span<const float> reals = value.Reals();
  return std::any_of(reals.begin(), reals.end(),
                     [](float real) { return real == 0 && !std::signbit(real); });
}

bool IsFalseWhileSelected(const TreeElement& element, const TreeValue& value) {
  const TreeValue* const selected = element.FindValue("MultiplexerSelected");
  return !value.Flag() && selected != nullptr && selected->Flag();
}

// A value of a class, its heirs included, that needs attention, and what to say then.
struct Rule {
  const QtSts::ClassInfo& Class;
  const char* Field;
  bool (*NeedsAttention)(const TreeElement& element, const TreeValue& value);
  const char* What;
  // A sensor that is not connected reports nothing, so that its zeros tell nothing, nor do those of
  // its fans.
  bool OnlyWhileConnected = false;
};

constexpr Rule kRules[] = {
    {QtSts::CStatus::Class, "ErrorFlags", &HasDigitAboveZero, "Error flags {ErrorFlags}"},
    {QtSts::COutput::Class, "StatusFlags", &HasFlag<QtSts::kFlagPowerOff>, "Display power is off"},
    {QtSts::COutput::Class, "StatusFlags", &HasFlag<QtSts::kFlagTrackerBlanked>,
     "Output blanked by the pixel tracker"},
    {QtSts::COutput::Class, "StatusFlags", &HasFlag<QtSts::kFlagAmbientFailure>,
     "Ambient sensor failed"},
    {QtSts::COutput::Class, "StatusFlags", &HasFlag<QtSts::kFlagWatchdogEvent>,
     "Watchdog event recorded"},
    {QtSts::CInput::Class, "SignalPresent", &IsFalseWhileSelected,
     "{Class} is selected without a signal"},
    {QtSts::CDoorSwitch::Class, "State", &IsNotZero, "Door open: {Class} {#}"},
    {QtSts::CDoorSensorInputType::Class, "State", &IsNotZero, "Door open: {Label}"},
    {QtSts::CSensor::Class, "Connected", &IsFalse, "{Class} {#} is not connected"},
    {QtSts::CCANFanRpmSensor::Class, "CurrentRpm", &IsZero, "Fan stands still: {Class} {#}", true},
    {QtSts::FanRpm::Class, "Rpm", &IsZero, "Fan {FanNumber} stands still", true},
    {QtSts::CCANPsrbSensor::Class, "HardwareErrors", &IsNotZero,
     "Power supply hardware errors {HardwareErrors:hex2}"},
    {QtSts::CCANPsrbSensor::Class, "InputVoltages", &HoldsZero, "Power supply input at 0 V", true},
    {QtSts::CCANPsrbSensor::Class, "OutputVoltages", &HoldsZero, "Power supply output at 0 V",
     true},
    {QtSts::CCANIsolationBoardSensor::Class, "InputVoltage", &IsZero,
     "Isolation board input at 0 V", true},
    {QtSts::CCANIsolationBoardSensor::Class, "OutputVoltage", &IsZero,
     "Isolation board output at 0 V", true},
    {QtSts::CBeaconRecord::Class, "ErrorFlags", &IsNotZero,
     "{Class} {#} reports errors {ErrorFlags:hex2}"},
    {QtSts::CBeaconRecord::Class, "RedLedErrorCount", &IsNotZero,
     "{Class} {#}: {RedLedErrorCount} red LEDs failed"},
    {QtSts::CBeaconRecord::Class, "AmberLedErrorCount", &IsNotZero,
     "{Class} {#}: {AmberLedErrorCount} amber LEDs failed"},
};

// Whether the sensor is connected that `element` belongs to.
bool IsOfConnected(const TreeElement& element) {
  for (const TreeElement* holder = &element; holder != nullptr; holder = holder->Parent()) {
    if (const TreeValue* const connected = holder->FindValue("Connected")) {
      return connected->Flag();
    }
  }
  return true;
}

}  // namespace

std::vector<const char*> NoteTemplates() {
  std::vector<const char*> templates;
  for (const Rule& rule : kRules) {
    templates.push_back(rule.What);
  }
  return templates;
}

std::vector<Note> FindNotes(const QtSts::DocumentTree& document) {
  std::vector<Note> notes;
  for (const TreeElement& element : document.Elements()) {
    for (const Rule& rule : kRules) {
      const TreeValue* const value =
          element.IsA(rule.Class) ? element.FindValue(rule.Field) : nullptr;
      if (value != nullptr && rule.NeedsAttention(element, *value) &&
          (!rule.OnlyWhileConnected || IsOfConnected(element))) {
        notes.push_back({Fill(rule.What, element).Text, element.PathOf(*value), value});
      }
    }
  }
  return notes;
}

}  // namespace host
