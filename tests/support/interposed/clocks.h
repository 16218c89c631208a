// The clocks of this program can be fast.
#pragma once

// Seconds that the coarse clock and the thread's clock are fast, and that the coarse clock gains
// with each look at it.
extern int g_coarse_clock_shift;
extern int g_thread_clock_shift;
extern int g_coarse_clock_gain;
