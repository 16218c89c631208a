#include "model/beacons.h"

#include "model/listing_rows.h"

namespace QtSts {
namespace {

using listing::Derived;
using listing::Of;

constexpr Field kBeaconFields[] = {
    Of<&CBeaconRecord::RedDimLevel>("RedDimLevel", "", "Dimming level of the red LEDs"),
    Of<&CBeaconRecord::AmberDimLevel>("AmberDimLevel", "", "Dimming level of the amber LEDs"),
    Of<&CBeaconRecord::ErrorFlags>("ErrorFlags", "", "Bit mask of errors"),
    Of<&CBeaconRecord::RedLedErrorCount>("RedLedErrorCount", "", "Red LEDs that failed"),
    Of<&CBeaconRecord::AmberLedErrorCount>("AmberLedErrorCount", "", "Amber LEDs that failed"),
    Of<&CBeaconRecord::StatusFlags>("StatusFlags", "", "Bit mask of states"),
    Of<&CBeaconRecord::SyncControlStartBit>("SyncControlStartBit", "",
                                            "First bit of the synchronisation control"),
    Of<&CBeaconRecord::PerColorLedCount>("PerColorLedCount", "", "LEDs of each colour"),
    Of<&CBeaconRecord::TemperatureKelvin>("TemperatureKelvin", "K", "Temperature"),
    Of<&CBeaconRecord::Humidity>("Humidity", "%", "Relative humidity"),
};

}  // namespace

constinit const ClassInfo CBeaconRecord::Class = Derived<CBeaconRecord, CCANSensor>(
    "BeaconRecord", "What beacons and roundels report alike", kBeaconFields);
constinit const ClassInfo CCANBeacon::Class =
    Derived<CCANBeacon, CBeaconRecord>("CANBeacon", "A beacon");
constinit const ClassInfo CCANRoundel::Class =
    Derived<CCANRoundel, CBeaconRecord>("CANRoundel", "A roundel");

}  // namespace QtSts
