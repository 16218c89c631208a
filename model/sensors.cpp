#include "model/sensors.h"

#include "model/listing_rows.h"

namespace QtSts {
namespace {

using listing::Derived;
using listing::Of;
using listing::Root;

constexpr Field kSensorFields[] = {
    Of<&CSensor::NumberOfAttributes>("NumberOfAttributes", "", "Number of attribute rows"),
    Of<&CSensor::Connected>("Connected", "", "Whether the sensor reports connected"),
    Of<&CSensor::SyncLossCounter>("SyncLossCounter", "", "Losses of synchronisation"),
};

constexpr Field kCanSensorFields[] = {
    Of<&CCANSensor::Address>("Address", "", "Bus address"),
    Of<&CCANSensor::Bus>("Bus", "", "Bus number"),
    Of<&CCANSensor::Face>("Face", "", "Face of the display that the sensor belongs to"),
    Of<&CCANSensor::Revision>("Revision", "", "Hardware revision"),
    Of<&CCANSensor::IdType>("IdType", "", "Identification type"),
    Of<&CCANSensor::HardwareID>("HardwareID", "", "Hardware identifier"),
};

}  // namespace

constinit const ClassInfo CSensor::Class = Root<CSensor>("Sensor", "A sensor", kSensorFields);
constinit const ClassInfo CCANSensor::Class =
    Derived<CCANSensor, CSensor>("CANSensor", "A sensor on a CAN bus", kCanSensorFields);

}  // namespace QtSts
