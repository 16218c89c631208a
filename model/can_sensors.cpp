#include "model/can_sensors.h"

#include "model/listing_rows.h"

namespace QtSts {
namespace {

using listing::Derived;
using listing::Of;

constexpr Field kTempFields[] = {
    Of<&CCANTempSensor::Celsius>("Celsius", "°C", "Temperature"),
};

constexpr Field kLightFields[] = {
    Of<&CCANLightSensor::OneMinAverage>("OneMinAverage", "", "Light averaged over one minute"),
    Of<&CCANLightSensor::TenMinAverage>("TenMinAverage", "", "Light averaged over ten minutes"),
};

constexpr Field kLightLuxFields[] = {
    Of<&CCANLightLuxSensor::OneMinAverage>("OneMinAverage", "", "Light averaged over one minute"),
    Of<&CCANLightLuxSensor::SpareAverage>("SpareAverage", "", "Not used"),
    Of<&CCANLightLuxSensor::OneMinLuxAverage>("OneMinLuxAverage", "lx",
                                              "Illuminance averaged over one minute"),
    Of<&CCANLightLuxSensor::TenMinAverage>("TenMinAverage", "", "Light averaged over ten minutes"),
    Of<&CCANLightLuxSensor::TenMinLuxAverage>("TenMinLuxAverage", "lx",
                                              "Illuminance averaged over ten minutes"),
};

constexpr Field kMultiDirectionalFields[] = {
    Of<&CCANMultiDirectionalSensor::Ambient>("Ambient", "",
                                             "Ambient light, 201 while it is overridden"),
    Of<&CCANMultiDirectionalSensor::Front>("Front", "", "Light from the front"),
    Of<&CCANMultiDirectionalSensor::Back>("Back", "", "Light from the back"),
    Of<&CCANMultiDirectionalSensor::LockState>(
        "LockState", "", "Lock of the position, 3 when it is unknown", kLockStates),
    Of<&CCANMultiDirectionalSensor::Latitude>("Latitude", "°", "Latitude in whole degrees"),
    Of<&CCANMultiDirectionalSensor::Longitude>("Longitude", "°", "Longitude in whole degrees"),
    Of<&CCANMultiDirectionalSensor::Altitude>("Altitude", "",
                                              "Altitude as the sensor reports it, a whole number"),
    Of<&CCANMultiDirectionalSensor::Compass>("Compass", "", "Heading as the sensor reports it"),
};

constexpr Field kHumidityFields[] = {
    Of<&CCANHumiditySensor::Humidity>("Humidity", "%",
                                      "Relative humidity averaged over one minute"),
};

constexpr Field kFanRpmFields[] = {
    Of<&CCANFanRpmSensor::AverageRpm>("AverageRpm", "rpm", "Average speed of the fan"),
    Of<&CCANFanRpmSensor::CurrentRpm>("CurrentRpm", "rpm", "Current speed of the fan"),
};

constexpr Field kAirflowFields[] = {
    Of<&CCANAirflowSensor::OneMinAverage>("OneMinAverage", "", "Airflow averaged over one minute"),
    Of<&CCANAirflowSensor::LongTermAverage>("LongTermAverage", "",
                                            "Airflow averaged over the long term"),
};

constexpr Field kIsolationBoardFields[] = {
    Of<&CCANIsolationBoardSensor::InputVoltage>("InputVoltage", "V", "Voltage at the input"),
    Of<&CCANIsolationBoardSensor::OutputVoltage>("OutputVoltage", "V", "Voltage at the output"),
    Of<&CCANIsolationBoardSensor::Celsius>("Celsius", "°C", "Temperature of the board"),
};

constexpr Field kPsrbFields[] = {
    Of<&CCANPsrbSensor::InputVoltages>("InputVoltages", "V",
                                       "Voltages at the inputs in order of arrival"),
    Of<&CCANPsrbSensor::OutputVoltages>("OutputVoltages", "V",
                                        "Voltages at the outputs in order of arrival"),
    Of<&CCANPsrbSensor::HardwareErrors>("HardwareErrors", "", "Bit mask of hardware errors"),
};

}  // namespace

constinit const ClassInfo CCANTempSensor::Class =
    Derived<CCANTempSensor, CCANSensor>("CANTempSensor", "A temperature sensor", kTempFields);
constinit const ClassInfo CCANLightSensor::Class =
    Derived<CCANLightSensor, CCANSensor>("CANLightSensor", "A light sensor", kLightFields);
constinit const ClassInfo CCANLightLuxSensor::Class = Derived<CCANLightLuxSensor, CCANSensor>(
    "CANLightLuxSensor", "A light sensor that reports lux too", kLightLuxFields);
constinit const ClassInfo CCANMultiDirectionalSensor::Class =
    Derived<CCANMultiDirectionalSensor, CCANSensor>(
        "CANMultiDirectionalSensor", "A light sensor that looks both ways and knows its position",
        kMultiDirectionalFields);
constinit const ClassInfo CCANDoorSensor::Class =
    Derived<CCANDoorSensor, CCANSensor>("CANDoorSensor", "A door sensor");
constinit const ClassInfo CCANHumiditySensor::Class = Derived<CCANHumiditySensor, CCANSensor>(
    "CANHumiditySensor", "A humidity sensor", kHumidityFields);
constinit const ClassInfo CCANFanRpmSensor::Class =
    Derived<CCANFanRpmSensor, CCANSensor>("CANFanRpmSensor", "A fan speed sensor", kFanRpmFields);
constinit const ClassInfo CCANAirflowSensor::Class =
    Derived<CCANAirflowSensor, CCANSensor>("CANAirflowSensor", "An airflow sensor", kAirflowFields);
constinit const ClassInfo CCANIsolationBoardSensor::Class =
    Derived<CCANIsolationBoardSensor, CCANSensor>("CANIsolationBoardSensor", "An isolation board",
                                                  kIsolationBoardFields);
constinit const ClassInfo CCANPsrbSensor::Class = Derived<CCANPsrbSensor, CCANSensor>(
    "CANPsrbSensor", "A power-supply redundancy board", kPsrbFields);

}  // namespace QtSts
