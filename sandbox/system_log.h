#pragma once

#include <string>
#include <vector>

#include "sandbox/descriptor.h"

namespace sandbox {

inline constexpr const char* kSystemLog = "/dev/log";

// The system log of the sandbox: while it lives, syslog() of every process is received here. Some
// hundred messages are kept for Read(); beyond, syslog() waits.
class SystemLog {
 public:
  struct Message {
    int Priority;      // such as LOG_INFO
    int Facility;      // such as LOG_USER
    std::string Text;  // what was passed to syslog(), formatted; without time and program name
  };

  SystemLog();
  SystemLog(const SystemLog&) = delete;
  SystemLog& operator=(const SystemLog&) = delete;
  ~SystemLog();

  // The messages received since the last call, oldest first.
  std::vector<Message> Read();

 private:
  Descriptor socket_;
};

}  // namespace sandbox
