#include <iterator>

#include "model/can_sensors.h"
#include "model/codes.h"
#include "model/dcio_boards.h"
#include "model/onboard_sensors.h"
#include "tests/insight/finding_cases.h"
#include "tests/insight/findings_fixture.h"

namespace {

using namespace QtSts;

void AddFanSensor(CStatus& status, std::uint32_t speed) {
  auto& sensor = AddSensor<CCANFanRpmSensor>(status);
  sensor.CurrentRpm = speed;
  sensor.AverageRpm = 2000;
}

template <class Point>
void AddOutputPoint(CStatus& status) {
  auto* const point = new Point;
  point->Index = 1;
  AddBoard(status).Points.Add(point);
}

void AddFanControl(CStatus& status, std::uint32_t enabled) {
  auto& control = Add<COnboardCabinetFanControlSensor>(status.Sensors);
  control.Connected = true;
  control.FansEnabled = enabled;
}

// On a display whose fans are enabled, or not.
template <class Point>
void AddFanPoint(CStatus& status, bool enabled, bool active) {
  AddPoint<Point>(status, active);
  AddOutput(status).Fans.Enabled = enabled;
}

template <class Output, class Relay = CHeaterStatusRelayInputType>
void AddHeater(CStatus& status, bool on, bool active) {
  CCANDcioAndFanRpm& board = AddBoard(status);
  auto* const output = new Output;
  output->Index = 1;
  output->Set(on);
  board.Points.Add(output);
  auto* const relay = new Relay;
  relay->Index = 1;
  relay->Set(active);
  board.Points.Add(relay);
}

void AddAirflow(CStatus& status, std::uint32_t now, std::uint32_t usual) {
  auto& sensor = AddSensor<CCANAirflowSensor>(status);
  sensor.OneMinAverage = now;
  sensor.LongTermAverage = usual;
}

const DocumentCase kCases[] = {
    {"ErrorFlags", "error-flags", kWarning, "error flags 0x0000000000000010 are set",
     [](CStatus& status) { status.ErrorFlags = "0x0000000000000010"; },
     [](CStatus& status) { status.ErrorFlags = "0x0000000000000000"; }},
    {"PowerOff", "power-off", kCritical, "display power is off",
     [](CStatus& status) { AddOutput(status).StatusFlags = kFlagPowerOff; },
     [](CStatus& status) { AddOutput(status).StatusFlags = kFlagTrackerActive | 1; }},
    {"OutputBlanked", "output-blanked", kCritical, "output blanked by the pixel tracker",
     [](CStatus& status) { AddOutput(status).StatusFlags = kFlagTrackerBlanked; },
     [](CStatus& status) { AddOutput(status).StatusFlags = kFlagTrackerActive; }},
    {"NoPictures", "output-stopped", kCritical, "the output sends no pictures: frame rate 0 Hz",
     [](CStatus& status) { AddOutput(status).Frequency.Vertical = 0; },
     [](CStatus& status) { AddOutput(status).Frequency.Vertical = 0.001F; }},
    {"NoScaledPicture", "output-stopped", kCritical, "the scaler gives no picture: width 0 px",
     [](CStatus& status) { AddOutput(status).ScalerOutputArea.Width = 0; },
     [](CStatus& status) { AddOutput(status).ScalerOutputArea.Width = 1; }},
    {"FlatScaledPicture", "output-stopped", kCritical, "the scaler gives no picture: height 0 px",
     [](CStatus& status) { AddOutput(status).ScalerOutputArea.Height = 0; },
     [](CStatus& status) { AddOutput(status).ScalerOutputArea.Height = 1; }},
    {"WatchdogEvent", "watchdog-event", kWarning, "watchdog event recorded since the start",
     [](CStatus& status) { AddOutput(status).StatusFlags = kFlagWatchdogEvent; },
     [](CStatus& status) { AddOutput(status).StatusFlags = kFlagTrackerActive; }},
    {"AmbientFailed", "ambient-failed", kWarning, "ambient light sensor failed",
     [](CStatus& status) { AddOutput(status).StatusFlags = kFlagAmbientFailure; },
     [](CStatus& status) { AddOutput(status).StatusFlags = kFlagTrackerActive; }},
    {"AmbientOverride", "ambient-override", kWarning, "ambient light is overridden",
     [](CStatus& status) { AddOutput(status).StatusFlags = kFlagAmbientOverride; },
     [](CStatus& status) { AddOutput(status).StatusFlags = kFlagTrackerActive; }},
    {"DimmingOverride", "dimming-override", kWarning, "brightness is overridden",
     [](CStatus& status) { AddOutput(status).Dimming.DimmingMode = 6; },
     [](CStatus& status) { AddOutput(status).Dimming.DimmingMode = kDimmingManual; }},
    {"DisplayDark", "display-dark", kWarning, "brightness in force is 0 %",
     [](CStatus& status) { AddOutput(status).Dimming.ActualDimmingLevel = 0; },
     [](CStatus& status) {
       CDimming& dimming = AddOutput(status).Dimming;
       dimming.ActualDimmingLevel = 0;
       dimming.DimmingMode = 2;  // schedule
     }},
    {"DisplayNearlyDark", "display-dark", kWarning, "brightness in force is 0 %",
     [](CStatus& status) { AddOutput(status).Dimming.ActualDimmingLevel = 0; },
     [](CStatus& status) { AddOutput(status).Dimming.ActualDimmingLevel = 0.5F; }},
    {"RouterDark", "display-dark", kWarning, "output level of the router is 0",
     [](CStatus& status) { AddOutput(status).Dimming.OutputLevel = 0; },
     [](CStatus& status) { AddOutput(status).Dimming.OutputLevel = 1; }},
    {"NoColumns", "ttable-empty", kWarning, "the T-table has no modules: 0 columns",
     [](CStatus& status) { AddOutput(status).Ttable.Columns = 0; },
     [](CStatus& status) { AddOutput(status).Ttable.Columns = 1; }},
    {"NoLines", "ttable-empty", kWarning, "the T-table has no modules: 0 rows",
     [](CStatus& status) { AddOutput(status).Ttable.Rows = 0; },
     [](CStatus& status) { AddOutput(status).Ttable.Rows = 1; }},
    {"NoFaces", "ttable-empty", kWarning, "the T-table has no modules: 0 faces",
     [](CStatus& status) { AddOutput(status).Ttable.FaceCount = 0; },
     [](CStatus& status) { AddOutput(status).Ttable.FaceCount = 1; }},
    {"NoWidth", "ttable-empty", kWarning, "the modules of the T-table have no pixels: width 0 px",
     [](CStatus& status) { AddOutput(status).Ttable.ModuleWidth = 0; },
     [](CStatus& status) { AddOutput(status).Ttable.ModuleWidth = 1; }},
    {"NoHeight", "ttable-empty", kWarning, "the modules of the T-table have no pixels: height 0 px",
     [](CStatus& status) { AddOutput(status).Ttable.ModuleHeight = 0; },
     [](CStatus& status) { AddOutput(status).Ttable.ModuleHeight = 1; }},
    {"FansOverride", "fans-override", kWarning, "fans are overridden: thermal",
     [](CStatus& status) { AddOutput(status).Fans.Override = 2; },
     [](CStatus& status) { AddOutput(status).Fans.Override = 0; }},
    {"FansDisabled", "fans-disabled", kWarning, "fans are disabled",
     [](CStatus& status) {
       AddOutput(status).Fans.Enabled = false;
       AddFanSensor(status, 2000);
     },
     [](CStatus& status) {
       AddOutput(status).Fans.Enabled = true;
       AddFanSensor(status, 2000);
     }},
    {"FansOfAnOutputDisabled", "fans-disabled", kWarning, "fans are disabled",
     [](CStatus& status) {
       AddOutput(status).Fans.Enabled = false;
       AddOutputPoint<CPixelFanOutputType>(status);
     },
     [](CStatus& status) {
       AddOutput(status).Fans.Enabled = false;
       AddOutputPoint<CHeaterOutputType>(status);
     }},
    {"CabinetFansDisabled", "fans-disabled", kWarning, "cabinet fans are disabled",
     [](CStatus& status) { AddFanControl(status, 0); },
     [](CStatus& status) { AddFanControl(status, 2); }},
    {"InputWithoutSignal", "input-without-signal", kCritical, "selected input has no signal",
     [](CStatus& status) { AddInput(status, true); },
     [](CStatus& status) { AddInput(status, false); }},
    {"SignalLosses", "signal-losses", kWarning, "signal losses 101, above the limit of 100",
     [](CStatus& status) { AddInput(status, true, true).Statistics.First = 101; },
     [](CStatus& status) { AddInput(status, true, true).Statistics.First = 100; }},
    {"NothingPluggedIn", "signal-losses", kWarning,
     "pictures that were not valid 65535, above the limit of 100",
     [](CStatus& status) { AddInput(status, false, true).Statistics.Second = 65535; },
     [](CStatus& status) { AddInput(status, false).Statistics.Second = 65535; }},
    {"DoorSwitch", "door-open", kWarning, "door open",
     [](CStatus& status) { AddDevice<CDoorSwitch>(status, 1); },
     [](CStatus& status) { AddDevice<CDoorSwitch>(status, 0); }},
    {"OtherSwitch", "door-open", kWarning, "door open",
     [](CStatus& status) { AddDevice<CDoorSwitch>(status, 1); },
     [](CStatus& status) { AddDevice<CGenericInput>(status, 1); }},
    {"DoorContact", "door-open", kWarning, "door open",
     [](CStatus& status) { AddPoint<CDoorSensorInputType>(status, true); },
     [](CStatus& status) { AddPoint<CDoorSensorInputType>(status, false); }},
    {"PowerMonitor", "power-monitor-inactive", kWarning, "power monitor reports no power",
     [](CStatus& status) { AddDevice<CPowerMonitor>(status, 0); },
     [](CStatus& status) { AddDevice<CPowerMonitor>(status, 1); }},
    {"Disconnected", "sensor-disconnected", kWarning, "sensor is not connected",
     [](CStatus& status) { AddSensor<CCANTempSensor>(status).Connected = false; },
     [](CStatus& status) { AddSensor<CCANTempSensor>(status).Connected = true; }},
    {"FanSensor", "fan-stopped", kWarning, "fan stands still",
     [](CStatus& status) { AddSensor<CCANFanRpmSensor>(status).CurrentRpm = 0; },
     [](CStatus& status) { AddSensor<CCANFanRpmSensor>(status).CurrentRpm = 1; }},
    {"FanOfBoard", "fan-stopped", kWarning, "fan stands still",
     [](CStatus& status) { AddBoard(status).FanRpms.Add(new FanRpm(0, 3, 0)); },
     [](CStatus& status) { AddBoard(status).FanRpms.Add(new FanRpm(0, 3, 1)); }},
    {"SlowFanOfBoard", "fan-speed", kWarning,
     "fan speed 200 rpm is 10 % of that of the board's other fans, below the limit of 25 %",
     [](CStatus& status) {
       AddFans(status, {2000, 2200, 200, 1900});
     },
     [](CStatus& status) {
       AddFans(status, {2000, 2200, 500, 1900});
     }},
    {"SlowOfTwo", "fan-speed", kWarning,
     "fan speed 200 rpm is 10 % of that of the board's other fans, below the limit of 25 %",
     [](CStatus& status) {
       AddFans(status, {2000, 2000, 200});
     },
     [](CStatus& status) {
       AddFans(status, {2000, 200});
     }},
    {"SlowFanSensor", "fan-speed", kWarning,
     "fan speed 499 rpm is 24.95 % of its average, below the limit of 25 %",
     [](CStatus& status) { AddFanSensor(status, 499); },
     [](CStatus& status) { AddFanSensor(status, 500); }},
    {"ClockOf1970", "clock-wrong", kWarning,
     "the clock of the controller is wrong: 2019-12-31T23:59:59+00:00",
     [](CStatus& status) { status.LocalTime = "2019-12-31T23:59:59+00:00"; },
     [](CStatus& status) { status.LocalTime = "2020-01-01T00:00:00+00:00"; }},
    {"PowerRelay", "power-supply-relay", kWarning, "the status relay of a power supply is inactive",
     [](CStatus& status) { AddPoint<CPowerSupplyStatusRelayInputType>(status, false); },
     [](CStatus& status) { AddPoint<CPowerSupplyStatusRelayInputType>(status, true); }},
    {"OtherRelay", "power-supply-relay", kWarning, "the status relay of a power supply is inactive",
     [](CStatus& status) { AddPoint<CPowerSupplyStatusRelayInputType>(status, false); },
     [](CStatus& status) { AddPoint<CHeaterStatusRelayInputType>(status, false); }},
    {"IntakeFanRelay", "fan-relay", kWarning,
     "intake fans are enabled, but their status relay is not active",
     [](CStatus& status) { AddFanPoint<CIntakeFanStatusRelayInputType>(status, true, false); },
     [](CStatus& status) { AddFanPoint<CIntakeFanStatusRelayInputType>(status, true, true); }},
    {"FrontFanRelay", "fan-relay", kWarning,
     "front fans are enabled, but their status relay is not active",
     [](CStatus& status) { AddFanPoint<CFrontFanStatusRelayInputType>(status, true, false); },
     [](CStatus& status) { AddFanPoint<CFrontFanStatusRelayInputType>(status, true, true); }},
    {"PixelFanRelay", "fan-relay", kWarning,
     "pixel fans are enabled, but their status relay is not active",
     [](CStatus& status) { AddFanPoint<CPixelFanStatusRelayInputType>(status, true, false); },
     [](CStatus& status) { AddPoint<CPixelFanStatusRelayInputType>(status, false); }},
    {"FanPower", "fan-power", kWarning, "fans are enabled, but have no power",
     [](CStatus& status) { AddFanPoint<CFanPowerSenseInputType>(status, true, false); },
     [](CStatus& status) { AddFanPoint<CFanPowerSenseInputType>(status, true, true); }},
    {"AirflowContact", "airflow-lost", kWarning,
     "fans are enabled, but an airflow sensor reports none",
     [](CStatus& status) { AddFanPoint<AirflowSensorInputType>(status, true, false); },
     [](CStatus& status) { AddFanPoint<AirflowSensorInputType>(status, false, false); }},
    {"Airflow", "airflow", kWarning,
     "airflow 240 is 24 % of its long-term average, below the limit of 25 %",
     [](CStatus& status) { AddAirflow(status, 240, 1000); },
     [](CStatus& status) { AddAirflow(status, 250, 1000); }},
    {"NoAirflow", "airflow", kWarning,
     "airflow 0 is 0 % of its long-term average, below the limit of 25 %",
     [](CStatus& status) { AddAirflow(status, 0, 1); },
     [](CStatus& status) { AddAirflow(status, 0, 0); }},
    {"NoAirflowAtAll", "airflow-lost", kWarning,
     "fans are enabled, but the airflow sensor reads 0, also over the long term",
     [](CStatus& status) {
       AddAirflow(status, 0, 0);
       AddOutput(status);
     },
     [](CStatus& status) {
       AddAirflow(status, 1, 0);
       AddOutput(status);
     }},
    {"Dry", "humidity", kWarning, "humidity 0 %, below the limit of 1 %",
     [](CStatus& status) { AddSensor<CCANHumiditySensor>(status).Humidity = 0; },
     [](CStatus& status) { AddSensor<CCANHumiditySensor>(status).Humidity = 1; }},
    {"Heater", "heater-relay", kWarning, "heater is on, but its status relay is not active",
     [](CStatus& status) { AddHeater<CHeaterOutputType>(status, true, false); },
     [](CStatus& status) { AddHeater<CHeaterOutputType>(status, true, true); }},
    {"OtherHeater", "heater-relay", kWarning, "heater is on, but its status relay is not active",
     [](CStatus& status) { AddHeater<CHeaterOutputType>(status, true, false); },
     [](CStatus& status) { AddHeater<CMaintHeaterOutputType>(status, true, false); }},
    {"MaintenanceHeater", "heater-relay", kWarning,
     "maintenance heater is on, but its status relay is not active",
     [](CStatus& status) {
       AddHeater<CMaintHeaterOutputType, CMaintHeaterStatusRelayInputType>(status, true, false);
     },
     [](CStatus& status) {
       AddHeater<CMaintHeaterOutputType, CMaintHeaterStatusRelayInputType>(status, false, false);
     }},
};

}  // namespace

std::vector<DocumentCase> DisplayCases() { return {std::begin(kCases), std::end(kCases)}; }
