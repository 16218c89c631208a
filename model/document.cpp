#include "model/document.h"

#include "model/listing_rows.h"

namespace QtSts {
namespace {

using listing::Of;
using listing::Root;

constexpr Field kSolarFields[] = {
    Of<&CSolarInfo::CalculatedSunrise>("CalculatedSunrise", "", "Calculated sunrise"),
    Of<&CSolarInfo::CalculatedSunset>("CalculatedSunset", "", "Calculated sunset"),
};

constexpr Field kStatusFields[] = {
    Of<&CStatus::Sensors>("Sensors", "", "Sensors on the controller's own buses"),
    Of<&CStatus::Network>("Network", "", "Network devices and name servers"),
    Of<&CStatus::DCIO>("DCIO", "", "Discrete I/O devices"),
    Of<&CStatus::Compositors>("Compositors", "", "What mixes the inputs"),
    Of<&CStatus::Inputs>("Inputs", "", "Video inputs: the player, then DVI"),
    Of<&CStatus::Outputs>("Outputs", "", "Video outputs; there is one"),
    Of<&CStatus::SolarInfo>("SolarInfo", "", "Sun events"),
    Of<&CStatus::DaylightSaving>("DaylightSaving", "", "Whether the local time is daylight saving"),
    Of<&CStatus::SecondFlag>("SecondFlag", "", "Not used"),
    Of<&CStatus::FirmwareVersion>("FirmwareVersion", "", "Version of the player distribution"),
    Of<&CStatus::DisplayFirmwareVersion>("DisplayFirmwareVersion", "",
                                         "Version of the display firmware package"),
    Of<&CStatus::ErrorFlags>("ErrorFlags", "", "Error flags as their row gives them"),
    Of<&CStatus::LocalTime>("LocalTime", "", "Local time of the cycle with its UTC offset"),
    Of<&CStatus::Uptime>("Uptime", "", "Time since the start as an ISO 8601 duration"),
    Of<&CStatus::ConfigurationTimestamp>("ConfigurationTimestamp", "",
                                         "When the configuration was last changed"),
    Of<&CStatus::GUID>("GUID", "", "Unique identifier of the controller"),
    Of<&CStatus::Version>("Version", "", "Version of the document"),
    Of<&CStatus::MemoryTotal>("MemoryTotal", "kB", "Memory"),
    Of<&CStatus::MemoryFree>("MemoryFree", "kB", "Free memory, page cache included"),
    Of<&CStatus::StorageTotal>("StorageTotal", "kB", "Size of the root file system"),
    Of<&CStatus::StorageFree>("StorageFree", "kB", "Free space of the root file system"),
    Of<&CStatus::HardwareID1>(
        "HardwareID1", "", "First hardware identifier, -1 without an answer, 0 without the driver"),
    Of<&CStatus::HardwareID2>(
        "HardwareID2", "",
        "Second hardware identifier, -1 without an answer, 0 without the driver"),
    Of<&CStatus::HardwareID3>(
        "HardwareID3", "", "Third hardware identifier, -1 without an answer, 0 without the driver"),
    Of<&CStatus::SerialNumber>("SerialNumber", "", "Serial number"),
    Of<&CStatus::ProductFamily>("ProductFamily", "", "Product family", kProductFamilies),
    Of<&CStatus::FurtherWord1>("FurtherWord1", "", "Not used"),
    Of<&CStatus::FurtherWord2>("FurtherWord2", "", "Not used"),
    Of<&CStatus::FurtherWord3>("FurtherWord3", "", "Not used"),
    Of<&CStatus::FurtherWord4>("FurtherWord4", "", "Not used"),
    Of<&CStatus::FurtherWord5>("FurtherWord5", "", "Not used"),
};

}  // namespace

constinit const ClassInfo CSolarInfo::Class =
    Root<CSolarInfo>("SolarInfo", "Sun events", kSolarFields);
constinit const ClassInfo CStatus::Class =
    Root<CStatus>("Status", "The whole controller", kStatusFields);

}  // namespace QtSts
