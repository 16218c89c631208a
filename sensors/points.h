// Moves the points of a DCIO board from the staging tables onto the board.
//
// Each staged entry becomes a point of the class that its type code stands for (no class: no point)
// and is offered to the board's lists in table order. Every entry that was present is empty
// afterwards, whether its point was made, had no class or was refused. Entries that are not present
// stay as they are. Called with a board that was just made, inputs first.
#pragma once

#include "collector/state/export.h"
#include "model/dcio_boards.h"

COLLECTOR_API void PopulateInputs(QtSts::CCANDcio* board);
COLLECTOR_API void PopulateOutputs(QtSts::CCANDcio* board);
