// The output that the row handlers write to.
#pragma once

#include <span>

#include "collector/state/row_tables.h"
#include "model/document.h"
#include "model/lookup/verify.h"

// Returns output 0, the display's only one, which it creates first if it is missing.
inline QtSts::COutput* Output0(QtSts::CStatus* status) {
  Status_VerifyOutput(status, 0);
  return status->Outputs[0];
}

// Stores a value in fields of output 0, which is created for a null value, too. Always 0.
inline int StoreInOutput0(std::span<const rows::Field<QtSts::COutput>> fields,
                          QtSts::CStatus* status, const char* value) {
  QtSts::COutput* const output = Output0(status);
  if (output != nullptr && value != nullptr) {
    for (const rows::Field<QtSts::COutput>& field : fields) {
      rows::StoreField(field, *output, value);
    }
  }
  return 0;
}
