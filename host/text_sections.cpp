#include "host/text_sections.h"

#include "model/beacons.h"
#include "model/can_sensors.h"
#include "model/dcio_boards.h"
#include "model/onboard_sensors.h"

namespace host {
namespace {

constexpr Align kRight = Align::kRight;

constexpr Column kIdentity[] = {
    {"GUID", "{GUID}"},
    {"Serial number", "{SerialNumber:hex8}"},
    {"Product family", "{ProductFamily}"},
    {"Hardware identifiers", "{HardwareID1:-1=}, {HardwareID2:-1=}, {HardwareID3:-1=}"},
    {"Firmware", "{FirmwareVersion}"},
    {"Display firmware", "{DisplayFirmwareVersion}"},
    {"Error flags", "{ErrorFlags}"},
    {"Document version", "{Version}"},
};

constexpr Column kTime[] = {
    {"Local time", "{LocalTime}"},
    {"Daylight saving", "{DaylightSaving}"},
    {"Uptime", "{Uptime:duration}"},
    {"Configuration", "{ConfigurationTimestamp}"},
    {"Sunrise", "{SolarInfo/CalculatedSunrise:nil=}"},
    {"Sunset", "{SolarInfo/CalculatedSunset:nil=}"},
};

constexpr Column kResources[] = {
    {"Memory", "{MemoryFree} free of {MemoryTotal}"},
    {"Storage", "{StorageFree} free of {StorageTotal}"},
};

constexpr Column kAddresses[] = {
    {"Device", "{Name}"},
    {"IPv4 address", "{IPv4Address:0.0.0.0=}"},
    {"Netmask", "{Netmask}"},
    {"Gateway", "{Gateway:0.0.0.0=none}"},
    {"MAC address", "{MACAddress}"},
};

constexpr Column kLinks[] = {
    {"Device", "{Name}"},
    {"Link transitions", "{Statistics/First:-1=}", kRight},
    {"Link errors", "{Statistics/Second:-1=}", kRight},
    {"IPv6 address", "{IPv6Address:::1/128=}"},
};

constexpr Column kNameServers[] = {
    {"#", "{Index}", kRight},
    {"Name server", "{Address}"},
};

constexpr Column kInputs[] = {
    {"#", "{#}", kRight},
    {"Input", "{Class}"},
    {"Signal", "{SignalPresent}"},
    {"Selected", "{MultiplexerSelected}"},
    {"Detected", "{DetectedArea/Width:bare} x {DetectedArea/Height}"},
    {"Into the scaler", "{ScalerInputArea/Width:bare} x {ScalerInputArea/Height}"},
};

constexpr Column kInputTimings[] = {
    {"#", "{#}", kRight},
    {"Vertical", "{Frequency/Vertical}", kRight},
    {"Horizontal", "{Frequency/Horizontal}", kRight},
    {"Pixel clock", "{Frequency/PixelClock}", kRight},
    {"Signal losses", "{Statistics/First}", kRight},
    {"Not valid", "{Statistics/Second}", kRight},
};

constexpr Column kCompositors[] = {
    {"#", "{#}", kRight},
    {"Compositor state", "{State}"},
};

constexpr Column kOutput[] = {
    {"Kind", "{Class}"},
    {"Status flags", "{StatusFlags:flags}"},
    {"Frame rate", "{Frequency/Vertical}"},
    {"Out of the scaler", "{ScalerOutputArea/Width:bare} x {ScalerOutputArea/Height}"},
};

constexpr Column kOutputStatistics[] = {
    {"Statistic", "{Number}", kRight},
    {"First count", "{First}", kRight},
    {"Second count", "{Second}", kRight},
};

constexpr Column kInterfaces[] = {
    {"#", "{#}", kRight},
    {"Display interface", "{Class}"},
    {"Rows", "{NumberOfAttributes}", kRight},
    {"Address", "{Address}", kRight},
};

constexpr Column kDimming[] = {
    {"Mode", "{DimmingMode}"},
    {"Level asked for", "{DimmingLevel}"},
    {"Level in force", "{ActualDimmingLevel}"},
    {"Output level", "{OutputLevel}"},
    {"Content limits",
     "{Content/First:65535=}, {Content/Second:65535=}, {Content/Third:4294967295=}"},
};

constexpr Column kFans[] = {
    {"Enabled", "{Enabled}"},
    {"Override", "{Override}"},
};

constexpr Column kTtable[] = {
    {"Title", "{Title}"},
    {"Task", "{Task}"},
    {"Contract", "{Contract}"},
    {"ED", "{ED}"},
    {"Author", "{Author}"},
    {"Date", "{Date}"},
    {"Time", "{Time}"},
    {"Faces", "{Ttable/FaceCount}"},
    {"Modules", "{Ttable/Columns} columns, {Ttable/Rows} rows"},
    {"Module", "{Ttable/ModuleWidth:bare} x {Ttable/ModuleHeight}"},
    {"Pixel pitch", "{Ttable/PixelPitch}"},
    {"Refresh rate", "{Ttable/RefreshRate}"},
    {"Interleaved", "{Ttable/Interleaved}"},
};

constexpr Column kNodes[] = {
    {"#", "{Index}", kRight},
    {"Device node", "{Node}", kRight},
    {"Value", "{Value}", kRight},
};

constexpr Column kReadingsBefore[] = {
    {"#", "{#}", kRight},
    {"Sensor", "{Class}"},
    {"Connected", "{Connected}"},
};

constexpr Column kSensorAddressColumns[] = {
    {"#", "{#}", kRight},
    {"Bus", "{Bus}", kRight},
    {"Address", "{Address}", kRight},
    {"Face", "{Face}", kRight},
    {"Revision", "{Revision}", kRight},
    {"Sync losses", "{SyncLossCounter}", kRight},
    {"Rows", "{NumberOfAttributes}", kRight},
};

constexpr Column kInputPoints[] = {
    {"#", "{Index}", kRight},
    {"Input", "{Class}"},
    {"State", "{State:0=inactive,1=active}"},
    {"Label", "{Label}"},
};

constexpr Column kOutputPoints[] = {
    {"#", "{Index}", kRight},
    {"Output", "{Class}"},
    {"State", "{StoredState:0=on,1=off}"},
    {"Label", "{Label}"},
};

constexpr Column kFanSpeedColumns[] = {
    {"#", "{Ordinal}", kRight},
    {"Fan", "{FanNumber}", kRight},
    {"Speed", "{Rpm}", kRight},
};

constexpr Column kDcioDevices[] = {
    {"#", "{#}", kRight},
    {"Device", "{Class}"},
    {"State", "{State:0=inactive,1=active}"},
    {"Errors", "{ErrorCounter}", kRight},
    {"Address", "{Address}", kRight},
    {"Rows", "{NumberOfAttributes}", kRight},
};

// The display at a glance.
constexpr Column kDisplay[] = {
    {"Title", "{Title}"},
    {"Power", "{StatusFlags:power}"},
    {"Brightness",
     "{Dimming/ActualDimmingLevel}, asked for {Dimming/DimmingLevel}, mode {Dimming/DimmingMode}"},
    {"Frame rate", "{Frequency/Vertical}"},
    {"Modules",
     "{Ttable/Columns} columns, {Ttable/Rows} rows of {Ttable/ModuleWidth:bare} x "
     "{Ttable/ModuleHeight}"},
};

constexpr Block kIdentityBlocks[] = {{"Identity", "", kIdentity}};
constexpr Block kTimeBlocks[] = {{"Time", "", kTime}};
constexpr Block kResourceBlocks[] = {{"Resources", "", kResources}};
constexpr Block kNetworkBlocks[] = {
    {"Network", "Network/Devices", kAddresses},
    {nullptr, "Network/Devices", kLinks},
    {nullptr, "Network/DNS/Addresses", kNameServers},
};
constexpr Block kInputBlocks[] = {
    {"Inputs", "Inputs", kInputs},
    {nullptr, "Inputs", kInputTimings},
    {nullptr, "Compositors", kCompositors},
};

constexpr Block kOutputBlocks[] = {
    {"Output", "", kOutput},
    {nullptr, "Statistics", kOutputStatistics},
    {nullptr, "DisplayInterfaces", kInterfaces},
};
constexpr Block kDimmingBlocks[] = {{"Dimming", "Dimming", kDimming}};
constexpr Block kFanBlocks[] = {{"Fans", "Fans", kFans}};
constexpr Block kTtableBlocks[] = {
    {"T-table", "", kTtable},
    {nullptr, "Devices", kNodes},
};

constexpr Block kDcioBlocks[] = {{"DCIO devices", "DCIO/Devices", kDcioDevices}};

constexpr Block kPointBlockRows[] = {
    {nullptr, "Inputs/Points", kInputPoints},
    {nullptr, "Outputs/Points", kOutputPoints},
};

constexpr Section kDocumentSectionRows[] = {
    {"identity", kIdentityBlocks}, {"time", kTimeBlocks},    {"resources", kResourceBlocks},
    {"network", kNetworkBlocks},   {"inputs", kInputBlocks},
};

constexpr Section kOutputSectionRows[] = {
    {"output", kOutputBlocks},
    {"dimming", kDimmingBlocks},
    {"fans", kFanBlocks},
    {"ttable", kTtableBlocks},
};

constexpr Section kClosingSectionRows[] = {{"dcio", kDcioBlocks}};

constexpr const char* kTemperature = "temperature";

constexpr const char* kInputVoltage = "input-voltage";
constexpr const char* kOutputVoltage = "output-voltage";
constexpr const char* kIsolationVolts = "isolation-volts";
constexpr const char* kTempSensor = "temperature sensor {#}";
constexpr const char* kIsolationBoard = "isolation board {#}";
constexpr const char* kSupplyBoard = "power-supply board {#}";

constexpr Measured kMeasuredRows[] = {
    {QtSts::CCANTempSensor::Class, kTempSensor, "{Celsius}", kTemperature},
    {QtSts::COnboardTempSensor::Class, "on-board sensor {#}", "{Celsius}", kTemperature},
    {QtSts::CCANIsolationBoardSensor::Class, kIsolationBoard, "{Celsius}", kTemperature},
    {QtSts::CCANIsolationBoardSensor::Class, kIsolationBoard, "in {InputVoltage}", kIsolationVolts},
    {QtSts::CCANIsolationBoardSensor::Class, kIsolationBoard, "out {OutputVoltage}",
     kIsolationVolts},
    {QtSts::CCANPsrbSensor::Class, kSupplyBoard, "in {InputVoltages}", kInputVoltage},
    {QtSts::CCANPsrbSensor::Class, kSupplyBoard, "out {OutputVoltages}", kOutputVoltage,
     "supply-volts"},
    {QtSts::CCANBeacon::Class, "beacon {#}", "{TemperatureKelvin:celsius}", kTemperature},
    {QtSts::CCANRoundel::Class, "roundel {#}", "{TemperatureKelvin:celsius}", kTemperature},
};

constexpr Reading kReadingRows[] = {
    {QtSts::CCANTempSensor::Class, "{Celsius}"},
    {QtSts::CCANLightSensor::Class, "{OneMinAverage} over 1 min, {TenMinAverage} over 10 min"},
    {QtSts::CCANLightLuxSensor::Class,
     "{OneMinLuxAverage} ({OneMinAverage}) over 1 min, {TenMinLuxAverage} ({TenMinAverage}) over "
     "10 min"},
    {QtSts::CCANMultiDirectionalSensor::Class,
     "ambient {Ambient:201=overridden}, front {Front}, back {Back}; {LockState}, latitude "
     "{Latitude}, longitude {Longitude}, altitude {Altitude}, compass {Compass}"},
    {QtSts::CCANDoorSensor::Class, "connection only"},
    {QtSts::CCANHumiditySensor::Class, "{Humidity}"},
    {QtSts::CCANFanRpmSensor::Class, "{CurrentRpm}, on average {AverageRpm}"},
    {QtSts::CCANAirflowSensor::Class,
     "{OneMinAverage} over 1 min, {LongTermAverage} over the long term"},
    {QtSts::CCANIsolationBoardSensor::Class, "in {InputVoltage}, out {OutputVoltage}, {Celsius}"},
    {QtSts::CCANPsrbSensor::Class,
     "in {InputVoltages}; out {OutputVoltages}; hardware errors {HardwareErrors:0=none}"},
    {QtSts::CBeaconRecord::Class,
     "dimmed to red {RedDimLevel}, amber {AmberDimLevel}; failed LEDs: red {RedLedErrorCount}, "
     "amber {AmberLedErrorCount} of {PerColorLedCount} each; {TemperatureKelvin}, humidity "
     "{Humidity}; status {StatusFlags:hex2}, errors {ErrorFlags:hex2}; sync bit "
     "{SyncControlStartBit}, id type {IdType}, hardware {HardwareID}"},
    {QtSts::CCANDcio::Class, "port status {PortStatus:hex}"},
    {QtSts::COnboardTempSensor::Class, "{Celsius}"},
    {QtSts::COnboardCabinetFanControlSensor::Class, "fans enabled: {FansEnabled}"},
    {QtSts::CSensor::Class, "connection only"},
};

}  // namespace

const Sections kDocumentSections = kDocumentSectionRows;
const Sections kOutputSections = kOutputSectionRows;
const Sections kClosingSections = kClosingSectionRows;
const Columns kDisplayFacts = kDisplay;
const Blocks kPointBlocks = kPointBlockRows;
const Columns kSensorReadings = kReadingsBefore;
const Columns kSensorAddresses = kSensorAddressColumns;
const Columns kFanSpeeds = kFanSpeedColumns;
const std::span<const Reading> kReadings = kReadingRows;
const std::span<const Measured> kMeasured = kMeasuredRows;

}  // namespace host
