#include "host/attention.h"

#include <charconv>
#include <cstdint>

#include "host/text_template.h"
#include "model/codes.h"

namespace host {
namespace {

bool IsFalse(const Element&, const std::string& text) { return text == "false"; }
bool IsZero(const Element&, const std::string& text) { return text == "0"; }
bool IsNotZero(const Element&, const std::string& text) { return text != "0"; }

template <std::uint32_t kFlag>
bool HasFlag(const Element&, const std::string& text) {
  std::uint32_t flags = 0;
  std::from_chars(text.data(), text.data() + text.size(), flags);
  return (flags & kFlag) != 0;
}

// "0x0000000000000000" has no error.
bool HasDigitAboveZero(const Element&, const std::string& text) {
  return text.find_first_of("123456789abcdefABCDEF") != std::string::npos;
}

bool HoldsZero(const Element&, const std::string& text) {
  return (" " + text + " ").find(" 0 ") != std::string::npos;
}

bool IsFalseWhileSelected(const Element& element, const std::string& text) {
  const Value* const selected = element.FindValue("MultiplexerSelected");
  return text == "false" && selected != nullptr && selected->Text == "true";
}

// A value of a class, its heirs included, that needs attention, and what to say then.
struct Rule {
  const char* Class;
  const char* Field;
  bool (*NeedsAttention)(const Element& element, const std::string& text);
  const char* What;
  // A sensor that is not connected reports nothing, so that its zeros tell nothing, nor do those of
  // its fans.
  bool OnlyWhileConnected = false;
};

constexpr Rule kRules[] = {
    {"Status", "ErrorFlags", &HasDigitAboveZero, "Error flags {ErrorFlags}"},
    {"Output", "StatusFlags", &HasFlag<QtSts::kFlagPowerOff>, "Display power is off"},
    {"Output", "StatusFlags", &HasFlag<QtSts::kFlagTrackerBlanked>,
     "Output blanked by the pixel tracker"},
    {"Output", "StatusFlags", &HasFlag<QtSts::kFlagAmbientFailure>, "Ambient sensor failed"},
    {"Output", "StatusFlags", &HasFlag<QtSts::kFlagWatchdogEvent>, "Watchdog event recorded"},
    {"Input", "SignalPresent", &IsFalseWhileSelected, "{Class} is selected without a signal"},
    {"DoorSwitch", "State", &IsNotZero, "Door open: {Class} {#}"},
    {"DoorSensorInputType", "State", &IsNotZero, "Door open: {Label}"},
    {"Sensor", "Connected", &IsFalse, "{Class} {#} is not connected"},
    {"CANFanRpmSensor", "CurrentRpm", &IsZero, "Fan stands still: {Class} {#}", true},
    {"FanRpm", "Rpm", &IsZero, "Fan {FanNumber} stands still", true},
    {"CANPsrbSensor", "HardwareErrors", &IsNotZero,
     "Power supply hardware errors {HardwareErrors:hex2}"},
    {"CANPsrbSensor", "InputVoltages", &HoldsZero, "Power supply input at 0 V", true},
    {"CANPsrbSensor", "OutputVoltages", &HoldsZero, "Power supply output at 0 V", true},
    {"CANIsolationBoardSensor", "InputVoltage", &IsZero, "Isolation board input at 0 V", true},
    {"CANIsolationBoardSensor", "OutputVoltage", &IsZero, "Isolation board output at 0 V", true},
    {"BeaconRecord", "ErrorFlags", &IsNotZero, "{Class} {#} reports errors {ErrorFlags:hex2}"},
    {"BeaconRecord", "RedLedErrorCount", &IsNotZero,
     "{Class} {#}: {RedLedErrorCount} red LEDs failed"},
    {"BeaconRecord", "AmberLedErrorCount", &IsNotZero,
     "{Class} {#}: {AmberLedErrorCount} amber LEDs failed"},
};

std::string Joined(const std::string& path, const char* name) {
  return path.empty() ? name : path + "/" + name;
}

// `connected`: whether the sensor is that `element` belongs to.
void Collect(const Element& element, const std::string& path, bool connected,
             std::vector<Note>* notes) {
  if (const Value* const own = element.FindValue("Connected")) {
    connected = own->Text == "true";
  }
  for (const Rule& rule : kRules) {
    const bool holds = element.IsA(rule.Class) && (connected || !rule.OnlyWhileConnected);
    const Value* const value = holds ? element.FindValue(rule.Field) : nullptr;
    if (value != nullptr && rule.NeedsAttention(element, value->Text)) {
      notes->push_back({Fill(rule.What, element).Text, Joined(path, rule.Field), value});
    }
  }
  for (const Element& child : element.Children) {
    const std::string at = element.IsList() ? path + "[" + std::to_string(child.Position) + "]"
                                            : Joined(path, child.Name);
    Collect(child, at, connected, notes);
  }
}

}  // namespace

std::vector<const char*> NoteTemplates() {
  std::vector<const char*> templates;
  for (const Rule& rule : kRules) {
    templates.push_back(rule.What);
  }
  return templates;
}

std::vector<Note> FindNotes(const Element& document) {
  std::vector<Note> notes;
  Collect(document, "", true, &notes);
  return notes;
}

}  // namespace host
