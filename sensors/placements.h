// Where the record of a sensor goes, once the scratch state describes the whole sensor.
//
// Deliberately positional: a list with an element at the position of the sensor's number has the
// sensor already, whatever that element is. An existing record is never updated, and a refused
// sensor takes nothing from the scratch state. Both return 0 always.
#pragma once

#include "collector/state/codes.h"
#include "collector/state/export.h"
#include "model/document.h"

// Into the document's own list.
COLLECTOR_API int Status_VerifySensor(QtSts::CStatus* status);

// Into the list of a display interface of output 0. Output and interface are made before anything
// is tested, so a sensor that is refused may leave an empty interface.
COLLECTOR_API int Status_VerifyDisplayInterfaceSensor(QtSts::CStatus* status,
                                                      AttachmentType attachment);
