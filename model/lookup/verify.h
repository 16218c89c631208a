// Find or create: how every probe and row handler reaches a list element of the document.
//
// Part of libstatuscollector, since some of them read the scratch state. Two patterns, and the
// difference is deliberate:
// - by position (compositor, output, statistics, DCIO): an element at the position is left alone,
//   otherwise exactly one is appended, however far the position lies beyond the end;
// - by key (input by type, network device by name, display interface by attribute count): the first
//   match from the front, otherwise one is appended; the result is its position. A null element,
//   which only a host can add, ends the search.
// An existing element is never updated. None reports an error; an unknown type appends nothing, so
// that the position returned may be empty. Called on the thread of the cycle.
#pragma once

#include "collector/state/codes.h"
#include "collector/state/export.h"
#include "model/document.h"

// Always 0.
COLLECTOR_API int Status_VerifyCompositor(QtSts::CStatus* status, int position);
COLLECTOR_API int Status_VerifyOutput(QtSts::CStatus* status, int position);

// The position of the first input of this type.
COLLECTOR_API int Status_VerifyInput(QtSts::CStatus* status, QtSts::InputType type);

// The position of the device with exactly this name; a null name makes an unnamed device.
COLLECTOR_API int Status_VerifyNetwork(QtSts::CStatus* status, const char* name);

// Always 0. The output must exist already; without it nothing is made.
COLLECTOR_API int Status_VerifyOutputStats(QtSts::CStatus* status, int output, int stat);

// Always 0. Makes the DCIO device that the scratch state describes unless the list reaches as far
// as its number.
COLLECTOR_API int Status_VerifyDCIO(QtSts::CStatus* status);

// The position of the display interface whose attribute count is u32_DispInterfaceNumAttribute,
// whatever its class. The output must exist already; without it the result is 0 and nothing is
// made.
COLLECTOR_API int Status_VerifyDisplayInterface(QtSts::CStatus* status, int output,
                                                AttachmentType type);

// Empties the six lists that every cycle rebuilds; the name servers are not among them.
COLLECTOR_API void Status_ClearLists(QtSts::CStatus* status);
