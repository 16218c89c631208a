#include "capture/file_walk.h"

#include <fcntl.h>

#include <filesystem>
#include <utility>

namespace capture {
namespace {

constexpr const char* kByDescriptor = "/proc/thread-self/fd/";

}  // namespace

std::string Normal(const std::string& path) {
  std::string normal = std::filesystem::path(path).lexically_normal();
  if (normal.size() > 1 && normal.ends_with('/')) {
    normal.pop_back();
  }
  return normal;
}

FileWalk::Step FileWalk::Open(const std::string& source, std::uint64_t flags, bool inside) {
  begins_ = false;
  if (source.starts_with(kByDescriptor)) {
    return Step::kFile;  // what was looked at is opened
  }
  const bool leads_on = std::exchange(followed_, false);  // from the root
  const Step step = (flags & O_PATH) == 0        ? Step::kFile
                    : (flags & O_DIRECTORY) != 0 ? Step::kFolder
                                                 : Step::kLook;
  begins_ = !inside && !leads_on && step != Step::kLook;
  if (begins_) {
    moved_.clear();
    links_.clear();
  }
  place_ = Normal(source);
  return step;
}

void FileWalk::Follow(const std::string& source, const std::string& target) {
  const std::string link = Normal(source);
  const std::string folder = link.substr(0, link.rfind('/') + 1);
  moved_.emplace_back(Normal(target.starts_with('/') ? target : folder + target), link);
  links_.push_back(link + " -> " + target);
  followed_ = true;
}

std::string FileWalk::Path() const {
  std::string path = place_;
  for (auto last = moved_.rbegin(); last != moved_.rend(); ++last) {
    const auto& [leads_to, link] = *last;
    if (path == leads_to) {
      path = link;
    } else if (path.starts_with(leads_to + "/")) {
      path.replace(0, leads_to.size(), link);
    }
  }
  return path;
}

}  // namespace capture
