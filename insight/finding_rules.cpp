#include "insight/finding_rules.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string_view>

#include "insight/daylight.h"
#include "model/beacons.h"
#include "model/can_sensors.h"
#include "model/codes.h"
#include "model/dcio_boards.h"
#include "model/document.h"
#include "model/onboard_sensors.h"

namespace insight {
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

bool IsOverridden(const TreeElement&, const TreeValue& value) {
  return value.CodeName() != nullptr && std::string_view(value.CodeName()) == "override";
}

// A schedule may darken a display on purpose.
bool IsZeroUnscheduled(const TreeElement& element, const TreeValue& value) {
  const TreeValue* const mode = element.FindValue("DimmingMode");
  return value.Real() == 0 &&
         (mode->CodeName() == nullptr || std::string_view(mode->CodeName()) != "schedule");
}

// Of a run of letters, digits and underscores: whether it is a hexadecimal number above zero, which
// begins with "0x" or has a decimal digit. "face" is a word, whatever digits its letters could be.
bool IsHexAboveZero(std::string_view run) {
  const bool marked = run.starts_with("0x") || run.starts_with("0X");
  run.remove_prefix(marked ? 2 : 0);
  return (marked || run.find_first_of("0123456789") != std::string_view::npos) &&
         run.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos &&
         run.find_first_not_of('0') != std::string_view::npos;
}

// "0x0000000000000000" has no error.
bool HasNumberAboveZero(const TreeElement&, const TreeValue& value) {
  constexpr std::string_view kOfRuns =
      "_0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
  std::string_view rest = value.Text();
  while (!rest.empty()) {
    rest.remove_prefix(std::min(rest.find_first_of(kOfRuns), rest.size()));
    const std::string_view run = rest.substr(0, rest.find_first_not_of(kOfRuns));
    if (IsHexAboveZero(run)) {
      return true;
    }
    rest.remove_prefix(run.size());
  }
  return false;
}

bool HoldsZero(const TreeElement&, const TreeValue& value) {
  return std::ranges::any_of(value.Reals(),
                             [](float real) { return real == 0 && !std::signbit(real); });
}

// No controller of this kind is older; a clock without battery or time server begins in 1970.
bool IsLongAgo(const TreeElement&, const TreeValue& value) {
  return !value.Text().empty() && value.Text() < std::string_view("2020");
}

// Without power nothing is sent.
bool IsZeroWhilePowered(const TreeElement& element, const TreeValue& value) {
  return value.Written() == "0" &&
         !HasFlag<QtSts::kFlagPowerOff>(element, *element.FindValue("StatusFlags"));
}

bool IsOfFans(const TreeElement& element) {
  static constexpr const QtSts::ClassInfo* kClasses[] = {
      &QtSts::CCANFanRpmSensor::Class,
      &QtSts::FanRpm::Class,
      &QtSts::CIntakeFanOutputType::Class,
      &QtSts::CPixelFanOutputType::Class,
      &QtSts::CFrontFanOutputType::Class,
      &QtSts::CIntakeFanStatusRelayInputType::Class,
      &QtSts::CFrontFanStatusRelayInputType::Class,
      &QtSts::CPixelFanStatusRelayInputType::Class,
      &QtSts::CFanPowerSenseInputType::Class,
      &QtSts::COnboardCabinetFanControlSensor::Class,
  };
  return std::ranges::any_of(kClasses, [&](const auto* info) { return element.IsA(*info); });
}

// NOLINTNEXTLINE(misc-no-recursion): as deep as the document
bool HasFans(const TreeElement& element) {
  for (const TreeElement& child : element.Children()) {
    if (IsOfFans(child) || HasFans(child)) {
      return true;
    }
  }
  return false;
}

bool IsOn(const TreeElement& point) { return point.FindValue("StoredState")->Written() == "0"; }

// Inactive, though output 0 of the document says that fans are enabled.
bool IsZeroWhileFansAreEnabled(const TreeElement& element, const TreeValue& value) {
  const TreeElement* root = &element;
  while (root->Parent() != nullptr) {
    root = root->Parent();
  }
  const TreeValue* const enabled = root->FindValue("Outputs[0]/Fans/Enabled");
  return IsZero(element, value) && enabled != nullptr && enabled->Flag();
}

// So that there is no usual airflow to compare with.
bool IsAlwaysZeroWhileFansAreEnabled(const TreeElement& element, const TreeValue& value) {
  return IsZeroWhileFansAreEnabled(element, value) &&
         IsZero(element, *element.FindValue("LongTermAverage"));
}

// Inactive, though an output of `kClass` on the same board is on.
template <const QtSts::ClassInfo& kClass>
bool IsZeroWhileOn(const TreeElement& element, const TreeValue& value) {
  const TreeElement* const outputs = element.Parent()->Parent()->Parent()->Find("Outputs/Points");
  if (!IsZero(element, value) || outputs == nullptr) {
    return false;
  }
  for (const TreeElement& output : outputs->Children()) {
    if (output.IsA(kClass) && IsOn(output)) {
      return true;
    }
  }
  return false;
}

bool IsOfBlind(const TreeElement& element, const TreeValue&) { return IsBlind(element); }

bool IsNotLocked(const TreeElement&, const TreeValue& value) {
  return value.CodeName() != nullptr && std::string_view(value.CodeName()) == "locked_not_locked";
}

// A display without fans has none to enable.
bool IsFalseThoughThereAreFans(const TreeElement& element, const TreeValue& value) {
  const TreeElement* root = &element;
  while (root->Parent() != nullptr) {
    root = root->Parent();
  }
  return !value.Flag() && HasFans(*root);
}

bool IsFalseWhileSelected(const TreeElement& element, const TreeValue& value) {
  const TreeValue* const selected = element.FindValue("MultiplexerSelected");
  return !value.Flag() && selected != nullptr && selected->Flag();
}

constexpr Severity kCritical = Severity::kCritical;
constexpr Severity kWarning = Severity::kWarning;
constexpr When kAlways = When::kAlways;
constexpr When kWhileConnected = When::kWhileConnected;
constexpr When kByDay = When::kByDay;
constexpr const char* kNoRow = "";

constexpr const char* kScaler = "the frame controller and its driver, and the system log";
constexpr const char* kTtable = "the T-table of this display, and the program that writes its rows";
constexpr const char* kFans = "supply, fuse and contactor of the fans, and the fans";
constexpr const char* kBlind = "light sensor sees nothing, though it is day: all it reads is 0";
constexpr const char* kLightSensor = "the light sensor: covered, dirty or dead; its cable";
constexpr const char* kHeater = "supply, fuse and contactor of the heater, and the heater";

// Critical is what darkens the display or a part of it, or soon harms it.
constexpr ValueRule kValueRules[] = {
    {"error-flags", kWarning, kAlways, QtSts::CStatus::Class, "ErrorFlags", &HasNumberAboveZero,
     "error flags {} are set", "what they mean to the program that writes row ErrorFlags"},
    {"clock-wrong", kWarning, kAlways, QtSts::CStatus::Class, "LocalTime", &IsLongAgo,
     "the clock of the controller is wrong: {}", "its battery, and the server that gives the time"},
    {"power-off", kCritical, kAlways, QtSts::COutput::Class, "StatusFlags",
     &HasFlag<QtSts::kFlagPowerOff>, "display power is off",
     "switch, breaker and contactor of the display's power", kNoRow},
    {"output-blanked", kCritical, kAlways, QtSts::COutput::Class, "StatusFlags",
     &HasFlag<QtSts::kFlagTrackerBlanked>, "output blanked by the pixel tracker",
     "the content: it drove too many pixels too brightly; then the tracker's registers", kNoRow},
    {"output-stopped", kCritical, kAlways, QtSts::COutput::Class, "Frequency/Vertical",
     &IsZeroWhilePowered, "the output sends no pictures: frame rate {}",
     "the router and its driver, and the system log"},
    {"output-stopped", kCritical, kAlways, QtSts::COutput::Class, "ScalerOutputArea/Width",
     &IsZeroWhilePowered, "the scaler gives no picture: width {}", kScaler},
    {"output-stopped", kCritical, kAlways, QtSts::COutput::Class, "ScalerOutputArea/Height",
     &IsZeroWhilePowered, "the scaler gives no picture: height {}", kScaler},
    {"watchdog-event", kWarning, kAlways, QtSts::COutput::Class, "StatusFlags",
     &HasFlag<QtSts::kFlagWatchdogEvent>, "watchdog event recorded since the start",
     "the system log of that time: what hung", kNoRow},
    {"ambient-failed", kWarning, kAlways, QtSts::COutput::Class, "StatusFlags",
     &HasFlag<QtSts::kFlagAmbientFailure>, "ambient light sensor failed",
     "the light sensor and its cable", "MdlsAmbientFailure"},
    {"ambient-override", kWarning, kAlways, QtSts::COutput::Class, "StatusFlags",
     &HasFlag<QtSts::kFlagAmbientOverride>, "ambient light is overridden",
     "who has overridden it, and whether it is still wanted", "MdlsAmbientOverride"},
    {"dimming-override", kWarning, kAlways, QtSts::CDimming::Class, "DimmingMode", &IsOverridden,
     "brightness is overridden", "who has overridden it, and whether it is still wanted"},
    {"display-dark", kWarning, kAlways, QtSts::CDimming::Class, "ActualDimmingLevel",
     &IsZeroUnscheduled, "brightness in force is 0 %",
     "dimming mode, light sensors, and who asks for the level"},
    {"display-dark", kWarning, kAlways, QtSts::CDimming::Class, "OutputLevel", &IsZeroUnscheduled,
     "output level of the router is 0", "the router and its driver, and who asks for the level"},
    {"ttable-empty", kWarning, kAlways, QtSts::CTtable::Class, "Columns", &IsZero,
     "the T-table has no modules: 0 columns", kTtable},
    {"ttable-empty", kWarning, kAlways, QtSts::CTtable::Class, "Rows", &IsZero,
     "the T-table has no modules: 0 rows", kTtable},
    {"ttable-empty", kWarning, kAlways, QtSts::CTtable::Class, "FaceCount", &IsZero,
     "the T-table has no modules: 0 faces", kTtable},
    {"ttable-empty", kWarning, kAlways, QtSts::CTtable::Class, "ModuleWidth", &IsZero,
     "the modules of the T-table have no pixels: width {}", kTtable},
    {"ttable-empty", kWarning, kAlways, QtSts::CTtable::Class, "ModuleHeight", &IsZero,
     "the modules of the T-table have no pixels: height {}", kTtable},
    {"fans-disabled", kWarning, kAlways, QtSts::CFans::Class, "Enabled", &IsFalseThoughThereAreFans,
     "fans are disabled", "who or what has disabled them, and whether it is still wanted"},
    {"fans-disabled", kWarning, kWhileConnected, QtSts::COnboardCabinetFanControlSensor::Class,
     "FansEnabled", &IsZero, "cabinet fans are disabled",
     "who or what has disabled them, and whether it is still wanted"},
    {"fans-override", kWarning, kAlways, QtSts::CFans::Class, "Override", &IsNotZero,
     "fans are overridden: {}", "who has overridden them, and whether it is still wanted"},
    {"input-without-signal", kCritical, kAlways, QtSts::CInput::Class, "SignalPresent",
     &IsFalseWhileSelected, "selected input has no signal",
     "the player or the cable at this input, then the choice of the input"},
    {"door-open", kWarning, kAlways, QtSts::CDoorSwitch::Class, "State", &IsNotZero, "door open",
     "the door, then its switch"},
    {"door-open", kWarning, kAlways, QtSts::CDoorSensorInputType::Class, "State", &IsNotZero,
     "door open", "the door, then its contact"},
    {"power-monitor-inactive", kWarning, kAlways, QtSts::CPowerMonitor::Class, "State", &IsZero,
     "power monitor reports no power", "the supply or breaker that it monitors"},
    {"sensor-disconnected", kWarning, kAlways, QtSts::CSensor::Class, "Connected", &IsFalse,
     "sensor is not connected", "its plug, cable and address"},
    {"fan-stopped", kWarning, kWhileConnected, QtSts::CCANFanRpmSensor::Class, "CurrentRpm",
     &IsZero, "fan stands still", "the fan: blocked, unplugged or worn out"},
    {"fan-stopped", kWarning, kWhileConnected, QtSts::FanRpm::Class, "Rpm", &IsZero,
     "fan stands still", "the fan: blocked, unplugged or worn out"},
    {"power-supply-relay", kWarning, kWhileConnected,
     QtSts::CPowerSupplyStatusRelayInputType::Class, "State", &IsZero,
     "the status relay of a power supply is inactive",
     "the power supply at this input: its lamps, its input, its fuse"},
    {"fan-relay", kWarning, kWhileConnected, QtSts::CIntakeFanStatusRelayInputType::Class, "State",
     &IsZeroWhileFansAreEnabled, "intake fans are enabled, but their status relay is not active",
     kFans},
    {"fan-relay", kWarning, kWhileConnected, QtSts::CFrontFanStatusRelayInputType::Class, "State",
     &IsZeroWhileFansAreEnabled, "front fans are enabled, but their status relay is not active",
     kFans},
    {"fan-relay", kWarning, kWhileConnected, QtSts::CPixelFanStatusRelayInputType::Class, "State",
     &IsZeroWhileFansAreEnabled, "pixel fans are enabled, but their status relay is not active",
     kFans},
    {"fan-power", kWarning, kWhileConnected, QtSts::CFanPowerSenseInputType::Class, "State",
     &IsZeroWhileFansAreEnabled, "fans are enabled, but have no power", kFans},
    {"airflow-lost", kWarning, kWhileConnected, QtSts::AirflowSensorInputType::Class, "State",
     &IsZeroWhileFansAreEnabled, "fans are enabled, but an airflow sensor reports none",
     "filters and fans of the cabinet; the sensor itself"},
    {"airflow-lost", kWarning, kWhileConnected, QtSts::CCANAirflowSensor::Class, "OneMinAverage",
     &IsAlwaysZeroWhileFansAreEnabled,
     "fans are enabled, but the airflow sensor reads 0, also over the long term",
     "filters and fans of the cabinet; the sensor itself"},
    {"heater-relay", kWarning, kWhileConnected, QtSts::CHeaterStatusRelayInputType::Class, "State",
     &IsZeroWhileOn<QtSts::CHeaterOutputType::Class>,
     "heater is on, but its status relay is not active", kHeater},
    {"heater-relay", kWarning, kWhileConnected, QtSts::CMaintHeaterStatusRelayInputType::Class,
     "State", &IsZeroWhileOn<QtSts::CMaintHeaterOutputType::Class>,
     "maintenance heater is on, but its status relay is not active", kHeater},
    {"position-not-locked", kWarning, kWhileConnected, QtSts::CCANMultiDirectionalSensor::Class,
     "LockState", &IsNotLocked, "light sensor does not know where it is",
     "its view of the sky; brightness by mode gps needs it"},
    {"light-lost", kWarning, kByDay, QtSts::CCANLightSensor::Class, "TenMinAverage", &IsOfBlind,
     kBlind, kLightSensor},
    {"light-lost", kWarning, kByDay, QtSts::CCANLightLuxSensor::Class, "TenMinLuxAverage",
     &IsOfBlind, kBlind, kLightSensor},
    {"light-lost", kWarning, kByDay, QtSts::CCANMultiDirectionalSensor::Class, "Front", &IsOfBlind,
     kBlind, kLightSensor},
    {"surge-suppressor", kWarning, kWhileConnected, QtSts::SurgeSuppressorInputType::Class, "State",
     &IsZero, "surge suppressor is not active",
     "the surge suppressor at this input: spent ones are replaced; its contact"},
    {"power-supply-errors", kWarning, kAlways, QtSts::CCANPsrbSensor::Class, "HardwareErrors",
     &IsNotZero, "power supply hardware errors 0x{0x}", "the power supplies of this board"},
    {"power-supply-input", kWarning, kWhileConnected, QtSts::CCANPsrbSensor::Class, "InputVoltages",
     &HoldsZero, "power supply input at 0 V: {}", "fuse and wiring of that input"},
    {"power-supply-output", kCritical, kWhileConnected, QtSts::CCANPsrbSensor::Class,
     "OutputVoltages", &HoldsZero, "power supply output at 0 V: {}",
     "the power supply of that output, and its load"},
    {"isolation-input", kWarning, kWhileConnected, QtSts::CCANIsolationBoardSensor::Class,
     "InputVoltage", &IsZero, "isolation board input at 0 V", "the supply of the board"},
    {"isolation-output", kCritical, kWhileConnected, QtSts::CCANIsolationBoardSensor::Class,
     "OutputVoltage", &IsZero, "isolation board output at 0 V", "the board and what it feeds"},
    {"lamp-errors", kWarning, kAlways, QtSts::CBeaconRecord::Class, "ErrorFlags", &IsNotZero,
     "lamp reports errors 0x{0x}", "the lamp and its cable"},
    {"red-leds-failed", kWarning, kAlways, QtSts::CBeaconRecord::Class, "RedLedErrorCount",
     &IsNotZero, "red LEDs failed: {}", "the lamp"},
    {"amber-leds-failed", kWarning, kAlways, QtSts::CBeaconRecord::Class, "AmberLedErrorCount",
     &IsNotZero, "amber LEDs failed: {}", "the lamp"},
};

constexpr SourceRule kSourceRules[] = {
    {SourceState::kMissing, "source-missing", "is missing",
     "whether its driver is loaded, or the program that makes it runs"},
    {SourceState::kDenied, "source-denied", "may not be read by this user",
     "its owner, group and mode"},
    {SourceState::kNoAnswer, "source-silent", "does not answer", "its driver and its device"},
    {SourceState::kEmpty, "source-empty", "is empty", "its driver, or the program that writes it"},
    {SourceState::kMalformed, "source-malformed", "does not hold what is looked for",
     "its driver, or the program that writes it"},
    {SourceState::kLocked, "source-locked", "is locked by another program",
     "which program holds it, and for how long"},
    {SourceState::kFailed, "source-failed", "cannot be read", "the reason, and the system log"},
    {SourceState::kNotAsked, "source-not-asked", "was not asked", "the source that came before it"},
};

constexpr SourceRule kOtherFile = {
    SourceState::kFailed, "source-failed", "is not a regular file",
    "what stands there instead, such as a pipe or a folder, and what made it: remove it"};

constexpr SourceState kWithoutContent[] = {SourceState::kMissing, SourceState::kEmpty,
                                           SourceState::kMalformed};
constexpr SourceState kPassedOver[] = {SourceState::kNotAsked};

constexpr const char* kSettings =
    "whether this controller was ever set up: the file is written then";
constexpr const char* kKernelFiles = "whether /proc is mounted, and the system log";
constexpr const char* kAddresses =
    "the network devices: cable, link and address, and the server that gives addresses";

constexpr SourceHint kSourceHints[] = {
    {"database", kWithoutContent, "whether the programs that write rows run, and a host"},
    {"serial", kWithoutContent, kSettings},
    {"uuid", kWithoutContent, kSettings},
    {"meminfo", kWithoutContent, kKernelFiles},
    {"routes", kWithoutContent, kKernelFiles},
    {"routes", kPassedOver, kAddresses},
    {"interfaces", kWithoutContent, kAddresses},
    {"resolver", kWithoutContent, "the network configuration: it names no name server"},
    {"packages", kWithoutContent,
     "the list of installed packages, which has the firmware's version: restore its copy"},
};

constexpr SourceWords kSourceWords[] = {
    {"sysinfo", "the time since the start"},
    {"storage", "the file system of the controller"},
    {"interfaces", "the list of network interfaces"},
    {"clock", "the clock"},
};

}  // namespace

std::span<const SourceHint> SourceHints() { return kSourceHints; }
std::span<const SourceWords> SourcesInWords() { return kSourceWords; }
std::span<const ValueRule> ValueRules() { return kValueRules; }
std::span<const SourceRule> SourceRules() { return kSourceRules; }
const SourceRule& OtherFileRule() { return kOtherFile; }

}  // namespace insight
