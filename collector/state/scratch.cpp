#include "collector/state/scratch.h"

// Zero-initialised: no row has been read yet.
#define DEFINE(name, ...) __VA_ARGS__ name;
SCRATCH_VARIABLES(DEFINE)
#undef DEFINE

void Reset_Globals() { u32_TTableNumAttribute = 0; }
