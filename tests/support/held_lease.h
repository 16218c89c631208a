// A file that keeps its readers waiting.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>

namespace test_support {

// As long as it lives, whoever opens the file at `path` waits, for 45 seconds at most: it is under
// a write lease of this process, which is not given back.
class HeldLease {
 public:
  explicit HeldLease(const char* path) : file_(open(path, O_RDWR | O_CLOEXEC)) {
    static_cast<void>(std::signal(SIGIO, SIG_IGN));
    EXPECT_EQ(fcntl(file_, F_SETLEASE, F_WRLCK), 0) << path;
  }
  HeldLease(const HeldLease&) = delete;
  HeldLease& operator=(const HeldLease&) = delete;
  ~HeldLease() { close(file_); }

 private:
  int file_;
};

}  // namespace test_support
