// A setting of the kernel, for the time of a test.
#pragma once

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

// Holds a number of /proc/sys while it lives. Settings are the whole machine's: other programs of
// this kind wait, and what was there comes back.
class KernelSetting {
 public:
  KernelSetting(const std::string& name, int value)
      : fd_(open(("/proc/sys/" + name).c_str(), O_RDWR | O_CLOEXEC)) {
    if (fd_ != -1 && flock(fd_, LOCK_EX) == 0) {
      before_ = Get();
      set_ = before_ == value || Put(value);
    }
  }
  KernelSetting(const KernelSetting&) = delete;
  KernelSetting& operator=(const KernelSetting&) = delete;
  ~KernelSetting() {
    if (fd_ != -1) {
      if (set_) {
        Put(before_);
      }
      close(fd_);
    }
  }

  // False when the kernel did not let it be set.
  bool Set() const { return set_; }

 private:
  int Get() const {
    char text[32] = "";
    return pread(fd_, text, sizeof text - 1, 0) > 0 ? std::atoi(text) : -1;
  }

  bool Put(int value) const {
    const std::string text = std::to_string(value);
    return pwrite(fd_, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()) &&
           Get() == value;
  }

  int fd_;
  int before_ = -1;
  bool set_ = false;
};
