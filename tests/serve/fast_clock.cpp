// A library to be loaded before others (LD_PRELOAD), which lets time pass faster for a program:
// FAST_CLOCK times as fast from the moment on when it is loaded. Clocks and waits for conditions
// only; what a program waits for in poll() takes as long as ever.
#include <dlfcn.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

namespace {

constexpr std::int64_t kNanosecondsInASecond = 1000000000;

std::int64_t Nanoseconds(const timespec& time) {
  return time.tv_sec * kNanosecondsInASecond + time.tv_nsec;
}

timespec TimeOf(std::int64_t nanoseconds) {
  return {.tv_sec = nanoseconds / kNanosecondsInASecond,
          .tv_nsec = nanoseconds % kNanosecondsInASecond};
}

timespec RealTime(clockid_t clock) {
  timespec now = {};
  syscall(SYS_clock_gettime, clock, &now);
  return now;
}

struct Beginning {
  std::int64_t Factor = 1;
  std::int64_t Wall = Nanoseconds(RealTime(CLOCK_REALTIME));
  std::int64_t Steady = Nanoseconds(RealTime(CLOCK_MONOTONIC));

  Beginning() {
    const char* const factor = std::getenv("FAST_CLOCK");
    Factor = factor == nullptr ? 1 : std::atoll(factor);
  }
  std::int64_t Of(clockid_t clock) const { return clock == CLOCK_REALTIME ? Wall : Steady; }
};

const Beginning& Began() {
  static const Beginning beginning;
  return beginning;
}

timespec Fast(clockid_t clock, const timespec& real) {
  const std::int64_t began = Began().Of(clock);
  return TimeOf(began + (Nanoseconds(real) - began) * Began().Factor);
}

timespec Real(clockid_t clock, const timespec& fast) {
  const std::int64_t began = Began().Of(clock);
  return TimeOf(began + (Nanoseconds(fast) - began) / Began().Factor);
}

using ClockWait = int (*)(pthread_cond_t*, pthread_mutex_t*, clockid_t, const timespec*);

}  // namespace

#define EXPORTED extern "C" __attribute__((visibility("default")))

EXPORTED int clock_gettime(clockid_t clock, timespec* now) noexcept {
  const auto result = static_cast<int>(syscall(SYS_clock_gettime, clock, now));
  if (clock == CLOCK_REALTIME || clock == CLOCK_MONOTONIC) {
    *now = Fast(clock, *now);
  }
  return result;
}

EXPORTED time_t time(time_t* into) noexcept {
  const time_t now = Fast(CLOCK_REALTIME, RealTime(CLOCK_REALTIME)).tv_sec;
  if (into != nullptr) {
    *into = now;
  }
  return now;
}

EXPORTED int pthread_cond_clockwait(pthread_cond_t* condition, pthread_mutex_t* mutex,
                                    clockid_t clock, const timespec* until) {
  static const auto kWait = reinterpret_cast<ClockWait>(dlsym(RTLD_NEXT, "pthread_cond_clockwait"));
  const timespec real = Real(clock, *until);
  return kWait(condition, mutex, clock, &real);
}
