// Calls that this test program puts itself in front of: allocations are counted, what SQLite is
// told is noted, and calls of SQLite can be made to fail (they do their work all the same).
#pragma once

#include <cstddef>
#include <functional>

/// Allocations with new so far, of this program and of the library. SQLite itself uses malloc.
extern int g_allocations;

/// Bytes that are allocated with new, and the most that they were.
extern std::size_t g_bytes;
extern std::size_t g_most_bytes;

/// Result of the next call, 0 to leave it alone; back to 0 once it has been used.
extern int g_finalize_result;
extern int g_reset_result;
extern int g_close_result;

/// Flags of the last database that was opened.
extern int g_open_flags;

/// Called with the text of each statement that is compiled; empty: nothing happens.
extern std::function<void(char const*)> g_on_compile;

/// Seconds that the coarse clock and the thread's clock are fast, and that the coarse clock gains
/// with each look at it.
extern int g_coarse_clock_shift;
extern int g_thread_clock_shift;
extern int g_coarse_clock_gain;
