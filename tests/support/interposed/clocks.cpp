#include "tests/support/interposed/clocks.h"

#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

int g_coarse_clock_shift = 0;
int g_thread_clock_shift = 0;
int g_coarse_clock_gain = 0;

extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock,
                                                                    timespec* now) noexcept {
  const int result = static_cast<int>(syscall(SYS_clock_gettime, clock, now));
  if (clock == CLOCK_MONOTONIC_COARSE) {
    now->tv_sec += g_coarse_clock_shift += g_coarse_clock_gain;
  } else if (clock == CLOCK_THREAD_CPUTIME_ID) {
    now->tv_sec += g_thread_clock_shift;
  }
  return result;
}
