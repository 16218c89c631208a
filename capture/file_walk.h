// Which file the cycle means when it opens names on the way to it.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace capture {

// `path` without "." and "..": the names of interfaces stand in some, and may have these in them.
std::string Normal(const std::string& path);

// The collector opens some paths name by name, and follows the links on them that it trusts. The
// file is then kept at the path that was asked for.
class FileWalk {
 public:
  enum class Step {
    kFile,    // the file itself is opened
    kFolder,  // a folder on the way
    kLook,    // a link, or a file that is going to be waited for, is looked at
  };

  // `source` is opened; `inside`: in a folder that was opened before.
  Step Open(const std::string& source, std::uint64_t flags, bool inside);

  // Whether the last step was the first on the way to a file.
  bool Begins() const { return begins_; }

  // The target of the link that was opened last.
  void Follow(const std::string& source, const std::string& target);

  // The path of what was opened last, as if no link had led there.
  std::string Path() const;

  // The links that led to it: "/home/Zet/.settings -> /data".
  const std::vector<std::string>& Links() const { return links_; }

 private:
  bool begins_ = false;
  bool followed_ = false;  // a link was the last
  std::string place_;
  std::vector<std::pair<std::string, std::string>> moved_;  // where a link leads, and its own path
  std::vector<std::string> links_;
};

}  // namespace capture
