// The output that the row handlers write to.
#pragma once

#include "model/document.h"
#include "model/lookup/verify.h"

// Makes sure of output 0, the display's only one, and returns it.
inline QtSts::COutput* Output0(QtSts::CStatus* status) {
  Status_VerifyOutput(status, 0);
  return status->Outputs[0];
}
