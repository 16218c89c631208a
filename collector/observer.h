// How a host watches its cycles.
#pragma once

#include "collector/state/observer.h"
