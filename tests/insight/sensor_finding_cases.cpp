#include <cmath>
#include <iterator>

#include "model/beacons.h"
#include "model/can_sensors.h"
#include "model/codes.h"
#include "model/dcio_boards.h"
#include "model/onboard_sensors.h"
#include "tests/insight/finding_cases.h"
#include "tests/insight/findings_fixture.h"

namespace {

using namespace QtSts;

// With three more of 24 V behind the same interface.
void AddIsolations(CStatus& status, float input, float output) {
  for (int others = 3; others > 0; --others) {
    AddIsolation(status);
  }
  CCANIsolationBoardSensor& board = AddIsolation(status);
  board.InputVoltage = input;
  board.OutputVoltage = output;
}

// With the times of a summer day in the zone of -06:00.
void SetTimes(CStatus& status, const char* local_time) {
  status.LocalTime = local_time;
  status.SolarInfo.CalculatedSunrise = "2026-06-19T05:31:00-06:00";
  status.SolarInfo.CalculatedSunset = "2026-06-19T20:58:00-06:00";
}

constexpr const char* kBlind = "light sensor sees nothing, though it is day: all it reads is 0";

const DocumentCase kCases[] = {
    {"PositionNotLocked", "position-not-locked", kWarning, "light sensor does not know where it is",
     [](CStatus& status) { AddSensor<CCANMultiDirectionalSensor>(status).LockState = 2; },
     [](CStatus& status) { AddSensor<CCANMultiDirectionalSensor>(status).LockState = 1; }},
    {"SurgeSuppressor", "surge-suppressor", kWarning, "surge suppressor is not active",
     [](CStatus& status) { AddPoint<SurgeSuppressorInputType>(status, false); },
     [](CStatus& status) { AddPoint<SurgeSuppressorInputType>(status, true); }},
    {"SupplyErrors", "power-supply-errors", kWarning, "power supply hardware errors 0x1f",
     [](CStatus& status) { *AddSupply(status).HardwareErrors = 0x1F; },
     [](CStatus& status) { AddSupply(status); }},
    {"SupplyInput", "power-supply-input", kWarning, "power supply input at 0 V: 230, 0 V",
     [](CStatus& status) {
       AddSupply(status).InputVoltages = {230, 0};
     },
     [](CStatus& status) {
       AddSupply(status).InputVoltages = {230, 229.5F};
     }},
    {"SupplyOutput", "power-supply-output", kCritical, "power supply output at 0 V: 0, 24 V",
     [](CStatus& status) {
       AddSupply(status).OutputVoltages = {0, 24};
     },
     [](CStatus& status) { AddSupply(status).OutputVoltages = {}; }},
    {"SupplyOutputLow", "output-voltage", kWarning,
     "output voltage 24, 18 V: the lowest above 0 is 75 % of the highest, below the limit of 90 %",
     [](CStatus& status) {
       AddSupply(status).OutputVoltages = {24, 18};
     },
     [](CStatus& status) {
       AddSupply(status).OutputVoltages = {20, 18};
     }},
    {"SupplyOutputGone", "output-voltage", kCritical,
     "output voltage 20, 1, 20 V: the lowest above 0 is 5 % of the highest, below the limit of 50 "
     "%",
     [](CStatus& status) {
       AddSupply(status).OutputVoltages = {20, 1, 20};
     },
     [](CStatus& status) { AddSupply(status).OutputVoltages = {20}; }},
    {"SupplyInputLow", "input-voltage", kWarning,
     "input voltage 115, 230 V: the lowest above 0 is 50 % of the highest, below the limit of 75 %",
     [](CStatus& status) {
       AddSupply(status).InputVoltages = {115, 230};
     },
     [](CStatus& status) {
       AddSupply(status).InputVoltages = {180, 230};
     }},
    {"IsolationOutputLow", "output-voltage", kWarning,
     "output voltage 18 V is 75 % of that of the other isolation boards, below the limit of 90 %",
     [](CStatus& status) { AddIsolations(status, 24, 18); },
     [](CStatus& status) { AddIsolations(status, 24, 23); }},
    {"IsolationInputLow", "input-voltage", kWarning,
     "input voltage 12 V is 50 % of that of the other isolation boards, below the limit of 75 %",
     [](CStatus& status) { AddIsolations(status, 12, 24); },
     [](CStatus& status) {
       AddIsolation(status).InputVoltage = 12;  // of two it is not known which one is wrong
       AddIsolation(status);
     }},
    {"IsolationInput", "isolation-input", kWarning, "isolation board input at 0 V",
     [](CStatus& status) { AddIsolation(status).InputVoltage = 0; },
     [](CStatus& status) { AddIsolation(status).InputVoltage = 4.5F; }},
    {"IsolationOutput", "isolation-output", kCritical, "isolation board output at 0 V",
     [](CStatus& status) { AddIsolation(status).OutputVoltage = 0; },
     [](CStatus& status) { AddIsolation(status).OutputVoltage = 4.5F; }},
    // They deviate from nothing, and used to be well.
    {"AllSupplyOutputsLow", "supply-volts", kWarning,
     "highest output voltage of the board 12.1 V, below the limit of 20 V",
     [](CStatus& status) {
       AddSupply(status).OutputVoltages = {12, 12.1F, 12};
     },
     [](CStatus& status) {
       AddSupply(status).OutputVoltages = {20, 19.9F, 20};
     }},
    {"LoneIsolationOutputLow", "isolation-volts", kCritical,
     "output voltage 2.1 V, below the limit of 3 V",
     [](CStatus& status) { AddIsolation(status).OutputVoltage = 2.1F; },
     [](CStatus& status) { AddIsolation(status).OutputVoltage = 5; }},
    {"LoneIsolationInputLow", "isolation-volts", kWarning,
     "input voltage 4.4 V, below the limit of 4.5 V",
     [](CStatus& status) { AddIsolation(status).InputVoltage = 4.4F; },
     [](CStatus& status) { AddIsolation(status).InputVoltage = 4.5F; }},
    {"BlindByDay", "light-lost", kWarning, kBlind,
     [](CStatus& status) {
       AddSensor<CCANLightSensor>(status);
       SetTimes(status, "2026-06-20T22:00:00+00:00");  // 16:00 where the sun times are from
     },
     [](CStatus& status) {
       AddSensor<CCANLightSensor>(status).OneMinAverage = 1;
       SetTimes(status, "2026-06-20T22:00:00+00:00");
     }},
    {"BlindAtNight", "light-lost", kWarning, kBlind,
     [](CStatus& status) {
       AddSensor<CCANLightLuxSensor>(status);
       SetTimes(status, "2026-06-20T12:31:00+00:00");  // an hour after sunrise
     },
     [](CStatus& status) {
       AddSensor<CCANLightLuxSensor>(status);
       SetTimes(status, "2026-06-20T12:30:59+00:00");
     }},
    {"BlindWithoutSunTimes", "light-lost", kWarning, kBlind,
     [](CStatus& status) {
       AddSensor<CCANMultiDirectionalSensor>(status).Ambient = 201;  // overridden
       status.LocalTime = "2026-06-20T14:59:59-06:00";
     },
     [](CStatus& status) {
       AddSensor<CCANMultiDirectionalSensor>(status);
       status.LocalTime = "2026-06-20T15:00:00-06:00";
     }},
    {"BlindBesideOneThatSees", "light-lost", kWarning, kBlind,
     [](CStatus& status) {
       AddSensor<CCANLightSensor>(status);
       AddSensor<CCANLightLuxSensor>(status).OneMinLuxAverage = 50;
     },
     [](CStatus& status) {
       AddSensor<CCANLightSensor>(status);
       AddSensor<CCANLightLuxSensor>(status).OneMinLuxAverage = 49;
     }},
    {"BlindWhileConnected", "light-lost", kWarning, kBlind,
     [](CStatus& status) {
       AddSensor<CCANLightSensor>(status);
       AddSensor<CCANMultiDirectionalSensor>(status).Back = 143;
     },
     [](CStatus& status) { AddSensor<CCANMultiDirectionalSensor>(status).Back = 143; }},
    {"MuchDarkerThanAskedFor", "brightness", kWarning,
     "brightness 5 % is 5 % of the one asked for, below the limit of 25 %",
     [](CStatus& status) { SetBrightness(status, 100, 5, kDimmingManual); },
     [](CStatus& status) { SetBrightness(status, 100, 25, kDimmingManual); }},
    {"MuchBrighterThanAskedFor", "brightness", kWarning,
     "brightness 100 % is 2000 % of the one asked for, above the limit of 400 %",
     [](CStatus& status) { SetBrightness(status, 5, 100, kDimmingManual); },
     [](CStatus& status) { SetBrightness(status, 1, 20, kDimmingManual); }},
    {"BrightThoughNoneIsAskedFor", "brightness", kWarning,
     "brightness 20 %, though 0 % is asked for",
     [](CStatus& status) { SetBrightness(status, 0, 20, kDimmingManual); },
     [](CStatus& status) { SetBrightness(status, 0, 19, kDimmingManual); }},
    {"DarkerThanAScheduleSays", "brightness", kWarning,
     "brightness 5 % is 5 % of the one asked for, below the limit of 25 %",
     [](CStatus& status) { SetBrightness(status, 100, 5, 4); },   // vmax
     [](CStatus& status) { SetBrightness(status, 100, 5, 2); }},  // schedule
    {"DarkerByDay", "brightness", kWarning,
     "brightness 5 % is 5 % of the one asked for, below the limit of 25 %",
     [](CStatus& status) {
       SetBrightness(status, 100, 5, 0);  // auto
       AddSensor<CCANLightSensor>(status).TenMinAverage = 50;
     },
     [](CStatus& status) {
       SetBrightness(status, 100, 5, 0);
       AddSensor<CCANLightSensor>(status).TenMinAverage = 49;
     }},
    {"LampErrors", "lamp-errors", kWarning, "lamp reports errors 0x80",
     [](CStatus& status) { AddSensor<CCANBeacon>(status).ErrorFlags = 0x80; },
     [](CStatus& status) { AddSensor<CCANBeacon>(status).StatusFlags = 0x80; }},
    {"RedLeds", "red-leds-failed", kWarning, "red LEDs failed: 1",
     [](CStatus& status) { AddSensor<CCANRoundel>(status).RedLedErrorCount = 1; },
     [](CStatus& status) { AddSensor<CCANRoundel>(status).RedLedErrorCount = 0; }},
    {"AmberLeds", "amber-leds-failed", kWarning, "amber LEDs failed: 12",
     [](CStatus& status) { AddSensor<CCANRoundel>(status).AmberLedErrorCount = 12; },
     [](CStatus& status) { AddSensor<CCANRoundel>(status).PerColorLedCount = 12; }},

    {"Hot", "temperature", kWarning, "temperature 65.5 °C, above the limit of 65 °C",
     [](CStatus& status) { AddSensor<CCANTempSensor>(status).Celsius = 65.5F; },
     [](CStatus& status) { AddSensor<CCANTempSensor>(status).Celsius = 65; }},
    {"TooHot", "temperature", kCritical, "temperature 80.25 °C, above the limit of 80 °C",
     [](CStatus& status) { AddSensor<COnboardTempSensor>(status).Celsius = 80.25F; },
     [](CStatus& status) { AddSensor<COnboardTempSensor>(status).Celsius = 65; }},
    {"Cold", "temperature", kWarning, "temperature -30.5 °C, below the limit of -30 °C",
     [](CStatus& status) { AddIsolation(status).Celsius = -30.5F; },
     [](CStatus& status) { AddIsolation(status).Celsius = -30; }},
    {"HotLamp", "temperature", kWarning, "temperature 65.85 °C, above the limit of 65 °C",
     [](CStatus& status) {
       AddSensor<CCANBeacon>(status).TemperatureKelvin = std::make_unique<std::uint16_t>(339);
     },
     [](CStatus& status) {
       AddSensor<CCANBeacon>(status).TemperatureKelvin = std::make_unique<std::uint16_t>(338);
     }},
    {"MemoryLow", "memory-free", kWarning,
     "free memory 9990 kB is 9.99 % of all, below the limit of 10 %",
     [](CStatus& status) { status.MemoryFree = 9990; },
     [](CStatus& status) { status.MemoryFree = 10000; }},
    {"MemoryGone", "memory-free", kCritical,
     "free memory 4990 kB is 4.99 % of all, below the limit of 5 %",
     [](CStatus& status) { status.MemoryFree = 4990; },
     [](CStatus& status) { status.MemoryTotal = 0; }},
    {"StorageLow", "storage-free", kWarning,
     "free storage 9000 kB is 9 % of all, below the limit of 10 %",
     [](CStatus& status) { status.StorageFree = 9000; },
     [](CStatus& status) { status.StorageFree = 10000; }},
    {"LinkErrors", "link-errors", kWarning, "link errors 1001, above the limit of 1000",
     [](CStatus& status) { AddNetworkDevice(status).Statistics.Second = 1001; },
     [](CStatus& status) { AddNetworkDevice(status).Statistics.Second = 1000; }},
    {"LinkTransitions", "link-transitions", kWarning,
     "link transitions 101, above the limit of 100",
     [](CStatus& status) { AddNetworkDevice(status).Statistics.First = 101; },
     [](CStatus& status) { AddNetworkDevice(status).Statistics.First = 100; }},
    {"NoLinkCounter", "link-transitions", kWarning, "link transitions 101, above the limit of 100",
     [](CStatus& status) { AddNetworkDevice(status).Statistics.First = 101; },
     [](CStatus& status) { AddNetworkDevice(status).Statistics.First = -1; }},
    {"SyncLosses", "sync-losses", kWarning, "synchronisation losses 101, above the limit of 100",
     [](CStatus& status) { AddSensor<CCANDoorSensor>(status).SyncLossCounter = 101; },
     [](CStatus& status) { AddSensor<CCANDoorSensor>(status).SyncLossCounter = 100; }},
    {"DeviceErrors", "device-errors", kWarning, "device errors 101, above the limit of 100",
     [](CStatus& status) {
       AddDevice<CGenericInput>(status, 1).ErrorCounter = std::make_unique<std::uint32_t>(101);
     },
     [](CStatus& status) {
       AddDevice<CGenericInput>(status, 1).ErrorCounter = std::make_unique<std::uint32_t>(100);
     }},

    {"ImpossiblyHot", "reading-impossible", kUnknown,
     "temperature 150.5 °C is not possible: outside of -60 to 150 °C",
     [](CStatus& status) { AddSensor<CCANTempSensor>(status).Celsius = 150.5F; },
     [](CStatus& status) { AddSensor<CCANTempSensor>(status).Celsius = 60; }},
    {"ImpossiblyCold", "reading-impossible", kUnknown,
     "temperature -60.5 °C is not possible: outside of -60 to 150 °C",
     [](CStatus& status) { AddSensor<COnboardTempSensor>(status).Celsius = -60.5F; },
     [](CStatus& status) { AddSensor<COnboardTempSensor>(status).Celsius = -20; }},
    {"ImpossiblyColdLamp", "reading-impossible", kUnknown,
     "temperature 0 K is not possible: outside of 213 to 423 K",
     [](CStatus& status) {
       AddSensor<CCANBeacon>(status).TemperatureKelvin = std::make_unique<std::uint16_t>(0);
     },
     [](CStatus& status) { AddSensor<CCANBeacon>(status).TemperatureKelvin = nullptr; }},
    {"ImpossiblyWet", "reading-impossible", kUnknown,
     "humidity 100.5 % is not possible: outside of 0 to 100 %",
     [](CStatus& status) { AddSensor<CCANHumiditySensor>(status).Humidity = 100.5F; },
     [](CStatus& status) { AddSensor<CCANHumiditySensor>(status).Humidity = 100; }},
    {"ImpossiblyWetLamp", "reading-impossible", kUnknown,
     "humidity 101 % is not possible: outside of 0 to 100 %",
     [](CStatus& status) {
       AddSensor<CCANRoundel>(status).Humidity = std::make_unique<std::uint8_t>(101);
     },
     [](CStatus& status) {
       AddSensor<CCANRoundel>(status).Humidity = std::make_unique<std::uint8_t>(100);
     }},
    {"ImpossiblyBright", "reading-impossible", kUnknown,
     "brightness 101 % is not possible: outside of 0 to 100 %",
     [](CStatus& status) { AddOutput(status).Dimming.ActualDimmingLevel = 101; },
     [](CStatus& status) { AddOutput(status).Dimming.ActualDimmingLevel = 100; }},
    {"ImpossiblyBrightWanted", "reading-impossible", kUnknown,
     "brightness that is asked for -1 % is not possible: outside of 0 to 100 %",
     [](CStatus& status) { AddOutput(status).Dimming.DimmingLevel = -1; },
     [](CStatus& status) { AddOutput(status).Dimming.DimmingLevel = 0; }},
    {"NoSuchLatitude", "reading-impossible", kUnknown,
     "latitude -91 ° is not possible: outside of -90 to 90 °",
     [](CStatus& status) { AddSensor<CCANMultiDirectionalSensor>(status).Latitude = -91; },
     [](CStatus& status) { AddSensor<CCANMultiDirectionalSensor>(status).Latitude = -90; }},
    {"NoSuchLongitude", "reading-impossible", kUnknown,
     "longitude 181 ° is not possible: outside of -180 to 180 °",
     [](CStatus& status) { AddSensor<CCANMultiDirectionalSensor>(status).Longitude = 181; },
     [](CStatus& status) { AddSensor<CCANMultiDirectionalSensor>(status).Longitude = 180; }},
    {"VoltageBelowZero", "reading-impossible", kUnknown,
     "output voltage 24, -0.5 V is not possible: below 0 V",
     [](CStatus& status) {
       AddSupply(status).OutputVoltages = {24, -0.5F};
     },
     [](CStatus& status) {
       AddSupply(status).OutputVoltages = {24, 22};
     }},
    {"IsolationBelowZero", "reading-impossible", kUnknown,
     "input voltage -1 V is not possible: below 0 V",
     [](CStatus& status) { AddIsolation(status).InputVoltage = -1; },
     [](CStatus& status) { AddIsolation(status).InputVoltage = 5; }},
    {"NoNumber", "reading-impossible", kUnknown,
     "temperature NaN °C is not possible: no finite number",
     [](CStatus& status) { AddSensor<CCANTempSensor>(status).Celsius = std::nanf(""); },
     [](CStatus& status) { AddSensor<CCANTempSensor>(status).Celsius = -0.0F; }},
    {"Infinite", "reading-impossible", kUnknown,
     "light averaged over one minute INF is not possible: no finite number",
     [](CStatus& status) { AddSensor<CCANLightSensor>(status).OneMinAverage = kInfinite; },
     [](CStatus& status) { AddSensor<CCANLightSensor>(status).OneMinAverage = 1e30F; }},
    {"InfiniteVoltage", "reading-impossible", kUnknown,
     "output voltage 24, INF V is not possible: no finite number",
     [](CStatus& status) {
       AddSupply(status).OutputVoltages = {24, kInfinite};
     },
     [](CStatus& status) {
       AddSupply(status).OutputVoltages = {1e30F, 1e30F};
     }},
    {"StandingClock", "reading-impossible", kUnknown,
     "vertical frequency INF Hz is not possible: no finite number",
     [](CStatus& status) { AddOutput(status).Frequency.Vertical = kInfinite; },
     [](CStatus& status) {
       AddInput(status, false);
       status.Inputs[0]->Frequency.Vertical = kInfinite;  // it has no signal
     }},
};

}  // namespace

std::vector<DocumentCase> SensorCases() { return {std::begin(kCases), std::end(kCases)}; }
