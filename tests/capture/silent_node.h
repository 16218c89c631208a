// A device node whose driver never answers, so that not even SIGKILL ends who asks it.
#pragma once

#include <sys/types.h>

#include <string>

namespace captured {

// Stands in place of the node at `path` as long as it lives. Throws std::system_error.
class SilentNode {
 public:
  explicit SilentNode(const std::string& path);
  SilentNode(const SilentNode&) = delete;
  SilentNode& operator=(const SilentNode&) = delete;
  ~SilentNode();

 private:
  std::string path_;
  pid_t server_ = -1;
};

// Waits until the kernel does not let go a process of this name that was killed; false when that
// takes longer than ten seconds.
bool CannotBeEnded(const std::string& name);

}  // namespace captured
