#include "views/metric_table.h"

#include "model/beacons.h"
#include "model/can_sensors.h"
#include "model/dcio_boards.h"
#include "model/document.h"
#include "model/onboard_sensors.h"
#include "views/cycle_metrics.h"
#include "views/document_metrics.h"

namespace views {
namespace {

constexpr bool kGauge = false;
constexpr bool kCounter = true;
constexpr const char* kNone = "";
constexpr const char* kElement = "element kind";
constexpr double kKilobyte = 1024;
constexpr double kPercent = 0.01;
constexpr double kPerMinute = 1.0 / 60;
constexpr double kZeroCelsius = -273.15;  // from kelvin
constexpr double kMillimetre = 0.001;

constexpr Metric kMetrics[] = {
    // The program and its cycles.
    {"collector_info", kGauge, "The version of the collector, always 1", "version",
     &CollectVersion},
    {"cycle_interval_seconds", kGauge, "From the beginning of a cycle to that of the next", kNone,
     &CollectInterval},
    {"cycles_total", kCounter, "Cycles that are over", kNone, &CollectCycles},
    {"cycles_failed_total", kCounter, "Cycles that did not read all rows", kNone, &CollectFailed},
    {"last_success_timestamp_seconds", kGauge, "When the latest cycle began that has read all rows",
     kNone, &CollectLastSuccess},
    {"cycle_hanging", kGauge,
     "1 when a cycle is not over when the next one should begin, and after three seconds; else 0",
     kNone, &CollectHanging},
    {"cycle_hanging_since_timestamp_seconds", kGauge,
     "When the cycle that hangs began, and what it asked last", "asked", &CollectHangingSince},
    {"cycle_success", kGauge, "1 when the latest cycle has read all rows, else 0", kNone,
     &CollectSuccess},
    {"cycle_timestamp_seconds", kGauge, "When the latest cycle began", kNone, &CollectBegan},
    {"cycle_duration_seconds", kGauge, "How long the latest cycle took", kNone, &CollectDuration},
    {"source_up", kGauge, "1 when the source answered the latest cycle, else 0", "source required",
     &CollectSources},
    {"findings", kGauge, "What needs attention, by severity", "severity", &CollectSeverities},
    {"finding", kGauge, "What needs attention, by identifier; only what there is", "id severity",
     &CollectFindings},
    {"rows", kGauge, "Rows of the database that the latest cycle saw", kNone, &CollectRowCount},
    {"row_errors", kGauge, "Rows that are in error", kNone, &CollectRowErrors},
    {"row_notices", kGauge, "Rows of which something is perhaps not meant", kNone,
     &CollectRowNotices},
    {"database_unchanged_seconds", kGauge, "For how long the database has not changed", kNone,
     &CollectUnchanged},

    // The controller.
    {"display_info", kGauge, "The controller and its display, always 1",
     "guid title serial_number firmware_version display_firmware_version", &CollectDisplay},
    {"uptime_seconds", kGauge, "Time since the start of the controller", kNone, &CollectUptime,
     &QtSts::CStatus::Class, "Uptime"},
    {"memory_size_bytes", kGauge, "Memory", kNone, &CollectValues, &QtSts::CStatus::Class,
     "MemoryTotal", kKilobyte},
    {"memory_free_bytes", kGauge, "Free memory, page cache included", kNone, &CollectValues,
     &QtSts::CStatus::Class, "MemoryFree", kKilobyte},
    {"storage_size_bytes", kGauge, "Size of the root file system", kNone, &CollectValues,
     &QtSts::CStatus::Class, "StorageTotal", kKilobyte},
    {"storage_free_bytes", kGauge, "Free space of the root file system", kNone, &CollectValues,
     &QtSts::CStatus::Class, "StorageFree", kKilobyte},
    {"network_link_transitions_total", kCounter,
     "How often the link of a network device came or went", "element device", &CollectOfDevices,
     &QtSts::CNetworkDevice::Class, "Statistics/First", 1, 0, 0},
    {"network_link_errors_total", kCounter, "Errors of a network device", "element device",
     &CollectOfDevices, &QtSts::CNetworkDevice::Class, "Statistics/Second", 1, 0, 0},

    // Inputs and outputs.
    {"input_signal_present", kGauge, "1 when the input has a signal, else 0", kElement,
     &CollectValues, &QtSts::CInput::Class, "SignalPresent"},
    {"input_selected", kGauge, "1 when the video multiplexer routes the input, else 0", kElement,
     &CollectValues, &QtSts::CInput::Class, "MultiplexerSelected"},
    {"input_width_pixels", kGauge, "Width of the picture that was detected", kElement,
     &CollectValues, &QtSts::CInput::Class, "DetectedArea/Width"},
    {"input_height_pixels", kGauge, "Height of the picture that was detected", kElement,
     &CollectValues, &QtSts::CInput::Class, "DetectedArea/Height"},
    {"input_frame_rate_hertz", kGauge, "Vertical frequency that was detected", kElement,
     &CollectValues, &QtSts::CInput::Class, "Frequency/Vertical"},
    {"input_signal_losses_total", kCounter, "How often the signal of the input was lost", kElement,
     &CollectValues, &QtSts::CInput::Class, "Statistics/First", 1, 0, 0},
    {"input_invalid_pictures_total", kCounter, "Pictures of the input that were not valid",
     kElement, &CollectValues, &QtSts::CInput::Class, "Statistics/Second", 1, 0, 0},
    {"output_state", kGauge, "Status flags of the output, 1 for each that is set, else 0",
     "element kind state", &CollectFlags, &QtSts::COutput::Class, "StatusFlags"},
    {"output_frame_rate_hertz", kGauge, "Frame rate of the output", kElement, &CollectValues,
     &QtSts::COutput::Class, "Frequency/Vertical"},
    {"dimming_level_ratio", kGauge, "Brightness that is asked for", kElement, &CollectValues,
     &QtSts::COutput::Class, "Dimming/DimmingLevel", kPercent},
    {"dimming_level_in_force_ratio", kGauge, "Brightness in force", kElement, &CollectValues,
     &QtSts::COutput::Class, "Dimming/ActualDimmingLevel", kPercent},
    {"dimming_output_level", kGauge, "Output level as the router answers it", kElement,
     &CollectValues, &QtSts::COutput::Class, "Dimming/OutputLevel"},
    {"dimming_mode", kGauge, "How the brightness is chosen, 1 for that state, else 0",
     "element kind state", &CollectCodes, &QtSts::COutput::Class, "Dimming/DimmingMode"},
    {"fans_enabled", kGauge, "1 when the fans are enabled, else 0", kElement, &CollectValues,
     &QtSts::COutput::Class, "Fans/Enabled"},
    {"fans_override", kGauge, "Who overrides the fans, 1 for that state, else 0",
     "element kind state", &CollectCodes, &QtSts::COutput::Class, "Fans/Override"},
    {"module_rows", kGauge, "Rows of modules", kElement, &CollectValues, &QtSts::COutput::Class,
     "Ttable/Rows"},
    {"module_columns", kGauge, "Columns of modules", kElement, &CollectValues,
     &QtSts::COutput::Class, "Ttable/Columns"},
    {"faces", kGauge, "Faces of the display", kElement, &CollectValues, &QtSts::COutput::Class,
     "Ttable/FaceCount"},
    {"pixel_pitch_meters", kGauge, "Distance of two pixels", kElement, &CollectValues,
     &QtSts::COutput::Class, "Ttable/PixelPitch", kMillimetre},
    {"module_refresh_rate_hertz", kGauge, "Refresh rate of the modules", kElement, &CollectValues,
     &QtSts::COutput::Class, "Ttable/RefreshRate"},

    // Sensors; readings of those that are connected.
    {"sensor_info", kGauge, "Address, bus and face of the sensor, always 1",
     "element kind address bus face", &CollectSensors, &QtSts::CSensor::Class, "Connected", 1, 0, 0,
     true},
    {"sensor_connected", kGauge, "1 when the sensor is connected, else 0", kElement, &CollectValues,
     &QtSts::CSensor::Class, "Connected", 1, 0, 0, true},
    {"sensor_sync_losses_total", kCounter, "Losses of synchronisation of the sensor", kElement,
     &CollectValues, &QtSts::CSensor::Class, "SyncLossCounter"},
    {"temperature_celsius", kGauge, "Temperature of a temperature sensor on a bus", kElement,
     &CollectValues, &QtSts::CCANTempSensor::Class, "Celsius"},
    {"temperature_celsius", kGauge, "", kElement, &CollectValues, &QtSts::COnboardTempSensor::Class,
     "Celsius"},
    {"temperature_celsius", kGauge, "", kElement, &CollectValues,
     &QtSts::CCANIsolationBoardSensor::Class, "Celsius"},
    {"temperature_celsius", kGauge, "", kElement, &CollectValues, &QtSts::CBeaconRecord::Class,
     "TemperatureKelvin", 1, kZeroCelsius},
    {"humidity_ratio", kGauge, "Relative humidity", kElement, &CollectValues,
     &QtSts::CCANHumiditySensor::Class, "Humidity", kPercent},
    {"humidity_ratio", kGauge, "", kElement, &CollectValues, &QtSts::CBeaconRecord::Class,
     "Humidity", kPercent},
    {"illuminance_lux", kGauge, "Illuminance averaged over one minute", kElement, &CollectValues,
     &QtSts::CCANLightLuxSensor::Class, "OneMinLuxAverage"},
    {"light_level", kGauge, "Light averaged over one minute, as the sensor reports it", kElement,
     &CollectValues, &QtSts::CCANLightSensor::Class, "OneMinAverage"},
    {"light_level", kGauge, "", kElement, &CollectValues, &QtSts::CCANLightLuxSensor::Class,
     "OneMinAverage"},
    {"airflow", kGauge, "Airflow averaged over one minute, as the sensor reports it", kElement,
     &CollectValues, &QtSts::CCANAirflowSensor::Class, "OneMinAverage"},
    {"airflow_long_term", kGauge, "Airflow averaged over the long term", kElement, &CollectValues,
     &QtSts::CCANAirflowSensor::Class, "LongTermAverage"},
    {"fan_speed_hertz", kGauge, "Turns of the fan in a second", kElement, &CollectValues,
     &QtSts::CCANFanRpmSensor::Class, "CurrentRpm", kPerMinute},
    {"fan_speed_hertz", kGauge, "", kElement, &CollectValues, &QtSts::FanRpm::Class, "Rpm",
     kPerMinute},
    {"fan_speed_average_hertz", kGauge, "Turns of the fan in a second, on average", kElement,
     &CollectValues, &QtSts::CCANFanRpmSensor::Class, "AverageRpm", kPerMinute},
    {"isolation_input_volts", kGauge, "Voltage at the input of an isolation board", kElement,
     &CollectValues, &QtSts::CCANIsolationBoardSensor::Class, "InputVoltage"},
    {"isolation_output_volts", kGauge, "Voltage at the output of an isolation board", kElement,
     &CollectValues, &QtSts::CCANIsolationBoardSensor::Class, "OutputVoltage"},
    {"power_supply_input_volts", kGauge, "Voltages at the inputs of a power-supply board",
     "element kind index", &CollectRows, &QtSts::CCANPsrbSensor::Class, "InputVoltages"},
    {"power_supply_output_volts", kGauge, "Voltages at the outputs of a power-supply board",
     "element kind index", &CollectRows, &QtSts::CCANPsrbSensor::Class, "OutputVoltages"},
    {"power_supply_hardware_errors", kGauge, "Bit mask of hardware errors of a power-supply board",
     kElement, &CollectValues, &QtSts::CCANPsrbSensor::Class, "HardwareErrors"},
    {"red_leds_failed", kGauge, "Red LEDs of a beacon or roundel that failed", kElement,
     &CollectValues, &QtSts::CBeaconRecord::Class, "RedLedErrorCount"},
    {"amber_leds_failed", kGauge, "Amber LEDs of a beacon or roundel that failed", kElement,
     &CollectValues, &QtSts::CBeaconRecord::Class, "AmberLedErrorCount"},

    // Points and devices.
    {"point_active", kGauge, "1 when the input point of a board is active, else 0", kElement,
     &CollectValues, &QtSts::BaseInputType::Class, "State"},
    {"point_on", kGauge, "1 when the output point of a board is on, else 0", kElement,
     &CollectOutputPoints, &QtSts::BaseOutputType::Class, "StoredState"},
    {"device_active", kGauge, "1 when the discrete I/O device is active, else 0", kElement,
     &CollectValues, &QtSts::CDCIODevice::Class, "State"},
    {"device_errors_total", kCounter, "Errors that the discrete I/O device counts", kElement,
     &CollectValues, &QtSts::CDCIODevice::Class, "ErrorCounter"},
};

}  // namespace

std::span<const Metric> MetricTable() { return kMetrics; }

}  // namespace views
