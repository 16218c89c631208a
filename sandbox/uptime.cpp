#include "sandbox/uptime.h"

#include <fcntl.h>
#include <sched.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <ctime>
#include <sstream>
#include <string>

#include "sandbox/check.h"
#include "sandbox/descriptor.h"
#include "sandbox/files.h"

#ifndef CLONE_NEWTIME
#define CLONE_NEWTIME 0x00000080
#endif

namespace sandbox {
namespace {

constexpr const char* kOffsets = "/proc/self/timens_offsets";
constexpr std::int64_t kNanoseconds = 1'000'000'000;

std::int64_t Now() {
  timespec now = {};
  Check(clock_gettime(CLOCK_BOOTTIME, &now), "read the clock");
  return now.tv_sec * kNanoseconds + now.tv_nsec;
}

// The offset of the processes that are started now: lines of a clock's name, seconds and
// nanoseconds.
std::int64_t OffsetOfChildren() {
  std::istringstream lines(ReadFile(kOffsets));
  std::string clock;
  std::int64_t seconds = 0;
  std::int64_t nanoseconds = 0;
  while (lines >> clock >> seconds >> nanoseconds) {
    if (clock == "boottime") {
      return seconds * kNanoseconds + nanoseconds;
    }
  }
  return 0;
}

}  // namespace

bool SetUptime(std::chrono::seconds uptime) {
  RequireInside();
  // Of this process; the two part when it is left out.
  static std::int64_t own_offset = OffsetOfChildren();
  Check(unshare(CLONE_NEWTIME), "make a time namespace");
  const std::int64_t offset = own_offset + uptime.count() * kNanoseconds - Now();
  std::int64_t seconds = offset / kNanoseconds;
  std::int64_t nanoseconds = offset % kNanoseconds;
  if (nanoseconds < 0) {
    seconds -= 1;
    nanoseconds += kNanoseconds;
  }
  const std::string line =
      "boottime " + std::to_string(seconds) + " " + std::to_string(nanoseconds) + "\n";
  const Descriptor file(Check(open(kOffsets, O_WRONLY | O_CLOEXEC), "open", kOffsets));
  if (write(file.Number(), line.data(), line.size()) == -1) {
    Fail("set the uptime");
  }
  const Descriptor fresh(
      Check(open("/proc/self/ns/time_for_children", O_RDONLY | O_CLOEXEC), "open the namespace"));
  if (setns(fresh.Number(), CLONE_NEWTIME) == 0) {
    own_offset = offset;
    return true;
  }
  if (errno != EUSERS) {
    Fail("enter the time namespace");
  }
  return false;
}

}  // namespace sandbox
