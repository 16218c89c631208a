#include "sandbox/uptime.h"

#include <gtest/gtest.h>
#include <sys/sysinfo.h>
#include <sys/wait.h>
#include <unistd.h>

#include <ctime>

namespace sandbox {
namespace {

long Uptime() {
  struct sysinfo info = {};
  EXPECT_EQ(0, sysinfo(&info));
  return info.uptime;
}

// What the clock shows, in seconds.
double Read(clockid_t clock) {
  timespec now = {};
  EXPECT_EQ(0, clock_gettime(clock, &now));
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

TEST(Uptime, StartsAtTheFullSecondAndCountsOn) {
  for (const int uptime : {59, 93784, 0}) {
    const double before = Read(CLOCK_MONOTONIC);
    if (!SetUptime(std::chrono::seconds(uptime))) {
      GTEST_SKIP() << "this process has several threads";
    }
    const double age = Read(CLOCK_BOOTTIME) - uptime;
    EXPECT_LE(0, age) << uptime;
    EXPECT_GE(Read(CLOCK_MONOTONIC) - before, age) << uptime;
    EXPECT_LE(uptime, Uptime());
  }
}

TEST(Uptime, IsThatOfStartedProgramsToo) {
  constexpr int kUptime = 93784;
  constexpr int kPatience = 60;
  SetUptime(std::chrono::seconds(kUptime));
  const pid_t child = fork();
  if (child == 0) {
    const long uptime = Uptime();
    _exit(uptime >= kUptime && uptime < kUptime + kPatience ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(child, waitpid(child, &status, 0));
  EXPECT_EQ(0, status);
}

}  // namespace
}  // namespace sandbox
