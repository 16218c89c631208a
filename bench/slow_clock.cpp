// With each look at the coarse clock of this program it loses a second. Linked where instructions
// are counted, which takes long: the libraries would take a cycle for a long one and do more than
// usual.
#include "tests/support/interposed/clocks.h"

namespace {

[[maybe_unused]] const int kGain = g_coarse_clock_gain = -1;

}  // namespace
