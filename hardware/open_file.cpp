#include "hardware/open_file.h"

#include <unistd.h>

#include <cerrno>
#include <climits>
#include <optional>
#include <utility>

#include "hardware/descriptor.h"
#include "hardware/system_calls.h"

namespace hardware {
namespace {

constexpr int kMostLinks = 40;  // as many as the kernel follows on one path
constexpr int kPlace = O_PATH | O_CLOEXEC;

constexpr int kNoFolder = -1;

int Open(int folder, const char* path, int flags) {
  return folder == kNoFolder ? calls::Open(path, flags) : calls::OpenIn(folder, path, flags);
}

// Opens `path`, in `folder` unless that is kNoFolder, even when another process holds a write lease
// on it. Such a file cannot be opened without waiting. Only a regular file is waited for: the
// kernel ends its lease after /proc/sys/fs/lease-break-time.
int OpenLeased(int folder, const char* path, int flags) {
  const int file = Open(folder, path, flags);
  if (file >= 0 || errno != EWOULDBLOCK) {
    return file;
  }
  const Descriptor place(Open(folder, path, kPlace | (flags & O_NOFOLLOW)));
  struct stat status;
  if (!place.IsOpen() || calls::FileStatus(place.Number(), path, &status) != 0 ||
      !S_ISREG(status.st_mode)) {
    return -1;
  }
  // Opens the file that was examined, even if another one has its name by now.
  const std::string same = "/proc/thread-self/fd/" + std::to_string(place.Number());
  int waited;
  do {
    waited = calls::Open(same.c_str(), flags & ~(O_NONBLOCK | O_NOFOLLOW));
  } while (waited == -1 && errno == EINTR);
  return waited;
}

// The target of the link in `folder` that is the last name of `path`; nothing when that is no link,
// or not a trusted one.
std::optional<std::string> TrustedTarget(const Descriptor& folder, const char* path) {
  const Descriptor link(calls::OpenIn(folder.Number(), path, kPlace | O_NOFOLLOW));
  struct stat status;
  if (!link.IsOpen() || calls::FileStatus(link.Number(), path, &status) != 0 ||
      !S_ISLNK(status.st_mode) || (status.st_uid != 0 && status.st_uid != geteuid())) {
    return std::nullopt;
  }
  char target[PATH_MAX];
  const ssize_t length = calls::LinkTarget(link.Number(), path, target, sizeof target);
  if (length <= 0) {
    return std::nullopt;
  }
  return std::string(target, static_cast<std::size_t>(length));
}

// Removes the first name from `path` and returns it; "." when `path` begins with a slash or is
// empty.
std::string TakeName(std::string* path) {
  const std::size_t slash = path->find('/');
  std::string name = path->substr(0, slash);
  path->erase(0, slash == std::string::npos ? slash : slash + 1);
  return name.empty() ? "." : name;
}

// Opens `path`, which begins in the folder `above`, name by name, so that nobody can put a link in
// place of a name that was already examined. `above` ends with a slash.
int OpenByTrustedLinks(std::string above, std::string path, int flags) {
  Descriptor folder(calls::Open(above.c_str(), kPlace | O_DIRECTORY));
  for (int links = 0; links <= kMostLinks && folder.IsOpen();) {
    const bool last = path.find('/') == std::string::npos;
    const std::string place = above + TakeName(&path);
    Descriptor found(OpenLeased(folder.Number(), place.c_str(),
                                O_NOFOLLOW | (last ? flags : kPlace | O_DIRECTORY)));
    if (found.IsOpen()) {
      if (last) {
        return found.Release();
      }
      folder = std::move(found);
      above = place + '/';
      continue;
    }
    if (errno != ELOOP && errno != ENOTDIR) {
      return -1;
    }
    auto target = TrustedTarget(folder, place.c_str());
    if (!target) {
      return -1;
    }
    if (target->starts_with('/')) {
      above = "/";
      folder = Descriptor(calls::Open(above.c_str(), kPlace | O_DIRECTORY));
    }
    path = target->append(last ? "" : "/").append(path);
    ++links;
  }
  return -1;
}

}  // namespace

int OpenFile(const std::string& path, Access mode, Links links) {
  const int flags = static_cast<int>(mode);
  if (links == Links::kAnyones) {
    return OpenLeased(kNoFolder, path.c_str(), flags);
  }
  const std::size_t folder = path.rfind('/', path.rfind('/') - 1) + 1;  // where its name begins
  return OpenByTrustedLinks(path.substr(0, folder), path.substr(folder), flags);
}

}  // namespace hardware
