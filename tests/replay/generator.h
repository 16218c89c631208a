// Controllers that nobody has seen yet.
#pragma once

#include "sandbox/tree.h"

namespace replay {

// A scenario folder, the same for the same `seed`: nodes that are missing, refuse to open or answer
// anything; files that are missing, long, of any bytes, of another kind, or fail; interfaces with
// aliases, ends of point-to-point links and several addresses; rows of every kind, texts that are
// not UTF-8 included; and up to three steps, in which some of this changes.
sandbox::Tree Generate(unsigned int seed);

}  // namespace replay
