// All that a host names: the collector, the document with its sensors, points and boards, its
// forms, and the version. Not among them: snapshots (insight/snapshot.h), which are a library of
// their own, and what a cycle works with inside (internals/).
#pragma once

#include <statuscollector/version.h>

#include "collector/observer.h"
#include "collector/status_interface.h"
#include "model/beacons.h"
#include "model/can_sensors.h"
#include "model/compare.h"
#include "model/copy.h"
#include "model/dcio_boards.h"
#include "model/document.h"
#include "model/json.h"
#include "model/json_text.h"
#include "model/listed_object.h"
#include "model/onboard_sensors.h"
#include "model/schema.h"
#include "model/text.h"
#include "model/tree.h"
#include "model/xml.h"
