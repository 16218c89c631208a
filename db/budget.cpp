#include "db/budget.h"

#include <sqlite3.h>

#include <algorithm>
#include <ctime>

namespace sqlitedb {

namespace {

constexpr long long kSecond = 1'000'000'000;
constexpr long long kLimit = Budget::kSeconds * kSecond;
constexpr long long kShortest = kSecond / 100;  // between two looks

long long Read(clockid_t clock) noexcept {
  std::timespec now{};
  clock_gettime(clock, &now);
  return now.tv_sec * kSecond + now.tv_nsec;
}

long long Now() noexcept { return Read(CLOCK_MONOTONIC_COARSE); }

}  // namespace

Budget::Nanoseconds Budget::ThreadTime() noexcept { return Read(CLOCK_THREAD_CPUTIME_ID); }

void Budget::Restart() noexcept {
  ++number_;
  steps_left_ = kSteps;
  memory_ = sqlite3_memory_used() + (kMebibytes << 20);
  measures_ = false;
  look_ = Now() + kSecond;
}

int Budget::Spend(void* budget) noexcept {
  return static_cast<Budget*>(budget)->Spend(kStepsPerCall);
}

int Budget::SpendClosely(void* budget) noexcept {
  return static_cast<Budget*>(budget)->Spend(kStepsPerCloseCall);
}

int Budget::Spend(int steps) noexcept {
  const Nanoseconds now = Now();
  steps_left_ -= steps;
  const bool spent =
      steps_left_ < 0 || sqlite3_memory_used() > memory_ || (now >= look_ && Late(now));
  return spent ? 1 : 0;
}

// A thread's clock is never faster than the other, so that what is left cannot be spent sooner.
bool Budget::Late(Nanoseconds now) noexcept {
  if (!measures_) {
    measures_ = true;
    spent_ = kSecond;
    entered_ = ThreadTime();
  }
  const Nanoseconds left = kLimit - spent_ - (ThreadTime() - entered_);
  look_ = now + std::max(left, kShortest);
  return left <= 0;
}

}  // namespace sqlitedb
