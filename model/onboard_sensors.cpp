#include "model/onboard_sensors.h"

#include "model/listing_rows.h"

namespace QtSts {
namespace {

using listing::Derived;
using listing::Of;

constexpr Field kTempFields[] = {
    Of<&COnboardTempSensor::Celsius>("Celsius", "°C", "Temperature"),
};

constexpr Field kFanControlFields[] = {
    Of<&COnboardCabinetFanControlSensor::FansEnabled>("FansEnabled", "",
                                                      "Fans-enabled word of the cabinet"),
};

}  // namespace

constinit const ClassInfo COnboardTempSensor::Class = Derived<COnboardTempSensor, CSensor>(
    "OnboardTempSensor", "The on-board temperature sensor", kTempFields);
constinit const ClassInfo COnboardCabinetFanControlSensor::Class =
    Derived<COnboardCabinetFanControlSensor, CSensor>(
        "OnboardCabinetFanControlSensor", "The on-board cabinet fan control", kFanControlFields);

}  // namespace QtSts
