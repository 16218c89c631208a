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

// How many processes of this name the kernel does not let go.
int ProcessesThatCannotBeEnded(const std::string& name);

}  // namespace captured
