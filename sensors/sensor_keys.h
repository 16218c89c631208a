// "Sensor_" rows: "Sensor_", a sensor number, "_" and an attribute ("Sensor_07_Celsius").
#pragma once

#include "collector/state/export.h"
#include "model/document.h"

// Parks the attribute in the scratch state; the attribute "Type" completes the sensor: its record
// is built, or refused, at once. The writers of the rows make sure that it sorts last. Returns -1
// for a sensor number that begins with one of '(' to '/', and then changes nothing, otherwise 0.
// The number is stored even when the attribute is missing, unknown or has no value. Both texts are
// the caller's.
COLLECTOR_API int Status_Sensor(QtSts::CStatus* status, char* value, char* key);

// Compares `count` bytes without regard to the case of ASCII letters: -1, 0 or 1 as `left` is
// smaller, equal or larger. A terminating NUL does not end the comparison; 0 for no bytes.
COLLECTOR_API int Strnicmp(const char* left, const char* right, unsigned int count);
