#include "model/dcio.h"

#include "model/listing_rows.h"

namespace QtSts {
namespace {

using listing::Derived;
using listing::Of;
using listing::Root;

constexpr Field kDeviceFields[] = {
    Of<&CDCIODevice::NumberOfAttributes>("NumberOfAttributes", "", "Number of attribute rows"),
    Of<&CDCIODevice::State>("State", "", "1 when the device is active, else 0"),
    Of<&CDCIODevice::ErrorCounter>("ErrorCounter", "", "Errors counted by the device"),
    Of<&CDCIODevice::Address>("Address", "", "Bus address"),
};

constexpr Field kDcioFields[] = {
    Of<&CDCIO::Devices>("Devices", "", "The discrete I/O devices in order of their rows"),
};

}  // namespace

constinit const ClassInfo CDCIODevice::Class =
    Root<CDCIODevice>("DCIODevice", "A discrete I/O device", kDeviceFields);
constinit const ClassInfo CDoorSwitch::Class =
    Derived<CDoorSwitch, CDCIODevice>("DoorSwitch", "A door switch");
constinit const ClassInfo CPowerMonitor::Class =
    Derived<CPowerMonitor, CDCIODevice>("PowerMonitor", "A power monitor");
constinit const ClassInfo CRunLED::Class = Derived<CRunLED, CDCIODevice>("RunLED", "The run LED");
constinit const ClassInfo CGenericInput::Class =
    Derived<CGenericInput, CDCIODevice>("GenericInput", "A generic input");
constinit const ClassInfo CGenericOutput::Class =
    Derived<CGenericOutput, CDCIODevice>("GenericOutput", "A generic output");
constinit const ClassInfo CDCIO::Class =
    Root<CDCIO>("DCIO", "The discrete I/O devices", kDcioFields);

}  // namespace QtSts
