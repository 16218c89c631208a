// Row handlers: each takes the document, a row's value and its key, and writes what the row says
// into the document or the scratch state. All return 0, or -1 when the number in a numbered key is
// malformed; the cycle ignores the result. A null value leaves the field as it was. Integers are
// decimal and wrap to the field's width, texts that are no number read as 0. Called on the thread
// of the cycle; both texts are the caller's.
#pragma once

#include "collector/state/export.h"
#include "model/document.h"

// Identity.
COLLECTOR_API int Status_GUID(QtSts::CStatus* status, char* value, char* key);
COLLECTOR_API int Status_ErrorFlags(QtSts::CStatus* status, char* value, char* key);
COLLECTOR_API int Status_CalculatedSunInfo(QtSts::CStatus* status, char* value, char* key);
COLLECTOR_API int Status_ProductFamily(QtSts::CStatus* status, char* value, char* key);

// Dimming, fans and ambient flags of output 0, which they create first if it is missing.
COLLECTOR_API int Status_DimmingLevel(QtSts::CStatus* status, char* value, char* key);
COLLECTOR_API int Status_ActualDimmingLevel(QtSts::CStatus* status, char* value, char* key);
COLLECTOR_API int Status_DimmingMode(QtSts::CStatus* status, char* value, char* key);
COLLECTOR_API int Status_FansEnabled(QtSts::CStatus* status, char* value, char* key);
COLLECTOR_API int Status_FansOverride(QtSts::CStatus* status, char* value, char* key);
COLLECTOR_API int Status_MdlsAmbientFailure(QtSts::CStatus* status, char* value, char* key);
COLLECTOR_API int Status_MdlsAmbientOverride(QtSts::CStatus* status, char* value, char* key);

// Known keys that nobody needs: they change nothing.
COLLECTOR_API int Status_ContentLevelAvg(QtSts::CStatus* status, char* value, char* key);
COLLECTOR_API int Status_ThermalScaler(QtSts::CStatus* status, char* value, char* key);

// T-table of output 0, which they create first if it is missing. The spellings of
// Status_TTableFaceCount and Status_TtableDevice are deliberate: they are exported under these
// names.
COLLECTOR_API int Status_TtableAuthor(QtSts::CStatus* status, char* value, char* key);
COLLECTOR_API int Status_TtableColumns(QtSts::CStatus* status, char* value, char* key);
COLLECTOR_API int Status_TtableContract(QtSts::CStatus* status, char* value, char* key);
COLLECTOR_API int Status_TtableDate(QtSts::CStatus* status, char* value, char* key);
COLLECTOR_API int Status_TtableDevice(QtSts::CStatus* status, char* value, char* key);
COLLECTOR_API int Status_TtableED(QtSts::CStatus* status, char* value, char* key);
COLLECTOR_API int Status_TTableFaceCount(QtSts::CStatus* status, char* value, char* key);
COLLECTOR_API int Status_TtableInterleaved(QtSts::CStatus* status, char* value, char* key);
COLLECTOR_API int Status_TtableModHeight(QtSts::CStatus* status, char* value, char* key);
COLLECTOR_API int Status_TtableModWidth(QtSts::CStatus* status, char* value, char* key);
COLLECTOR_API int Status_TtablePixelPitch(QtSts::CStatus* status, char* value, char* key);
COLLECTOR_API int Status_TtableRefreshRate(QtSts::CStatus* status, char* value, char* key);
COLLECTOR_API int Status_TtableRows(QtSts::CStatus* status, char* value, char* key);
COLLECTOR_API int Status_TtableTask(QtSts::CStatus* status, char* value, char* key);
COLLECTOR_API int Status_TtableTime(QtSts::CStatus* status, char* value, char* key);
COLLECTOR_API int Status_TtableTitle(QtSts::CStatus* status, char* value, char* key);

// DCIO devices: parks an attribute in the scratch state; the "Type" row completes the device, also
// with a null or unknown value.
COLLECTOR_API int Status_DCIO(QtSts::CStatus* status, char* value, char* key);
