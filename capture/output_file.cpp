#include "capture/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <random>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace capture {
namespace {

constexpr mode_t kOwnerOnly = 0600;
constexpr int kPlace = O_PATH | O_CLOEXEC;
constexpr int kMostLinks = 40;  // as many as the kernel follows on one path

[[noreturn]] void Fail(const std::string& path) {
  throw std::runtime_error(path + ": " + std::generic_category().message(errno));
}

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor() {
    if (number_ != -1) {
      close(number_);
    }
  }
  int Number() const { return number_; }
  bool IsOpen() const { return number_ != -1; }
  int Release() { return std::exchange(number_, -1); }

 private:
  int number_;
};

// The target of the link `name` in `folder`. Throws for one that somebody else has put there.
std::string TargetOf(int folder, const std::string& name, const std::string& path) {
  const Descriptor link(openat(folder, name.c_str(), kPlace | O_NOFOLLOW));
  struct stat status = {};
  if (!link.IsOpen() || fstat(link.Number(), &status) == -1) {
    Fail(path);
  }
  if (!S_ISLNK(status.st_mode)) {
    errno = ENOTDIR;
    Fail(path);
  }
  if (status.st_uid != 0 && status.st_uid != geteuid()) {
    throw std::runtime_error(path + ": another user's link \"" + name +
                             "\" leads there; give the folder itself");
  }
  char target[PATH_MAX];
  const ssize_t length = readlinkat(link.Number(), "", target, sizeof target);
  if (length <= 0) {
    Fail(path);
  }
  return {target, static_cast<std::size_t>(length)};
}

// Opens the folder `rest`, name by name. `path` is for messages.
Descriptor OpenFolder(std::string rest, const std::string& path) {
  Descriptor folder(open(rest.starts_with('/') ? "/" : ".", kPlace | O_DIRECTORY));
  for (int links = 0; !rest.empty() && folder.IsOpen();) {
    const std::size_t slash = rest.find('/');
    const std::string name = rest.substr(0, slash);
    rest.erase(0, slash == std::string::npos ? slash : slash + 1);
    if (name.empty()) {
      continue;
    }
    Descriptor next(openat(folder.Number(), name.c_str(), kPlace | O_DIRECTORY | O_NOFOLLOW));
    if (next.IsOpen()) {
      folder = std::move(next);
      continue;
    }
    if (errno != ENOTDIR && errno != ELOOP) {
      Fail(path);
    }
    const std::string target = TargetOf(folder.Number(), name, path);
    if (++links > kMostLinks) {
      errno = ELOOP;
      Fail(path);
    }
    if (target.starts_with('/')) {
      folder = Descriptor(open("/", kPlace | O_DIRECTORY));
    }
    rest.insert(0, target + "/");
  }
  if (!folder.IsOpen()) {
    Fail(path);
  }
  return folder;
}

std::string TemporaryName() {
  std::random_device random;
  char name[40];
  std::snprintf(name, sizeof name, ".statuscollector.%08x%08x", random(), random());
  return name;
}

void WriteAll(int descriptor, std::string_view bytes, const std::string& path) {
  while (!bytes.empty()) {
    const ssize_t count = write(descriptor, bytes.data(), bytes.size());
    if (count == -1 && errno != EINTR) {
      Fail(path);
    }
    bytes.remove_prefix(count > 0 ? static_cast<std::size_t>(count) : 0);
  }
}

// A file without a name, so that nothing is left when the program is killed. Where the file system
// has none, it has the name `*name`.
Descriptor NewFile(int folder, std::string* name, const std::string& path) {
  Descriptor file(openat(folder, ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, kOwnerOnly));
  if (!file.IsOpen() && (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL)) {
    *name = TemporaryName();
    file = Descriptor(
        openat(folder, name->c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, kOwnerOnly));
  }
  if (!file.IsOpen()) {
    Fail(path);
  }
  return file;
}

// While it lives, what would end the program waits: a file that has a name would be left.
class SignalsHeld {
 public:
  SignalsHeld() {
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_BLOCK, &all, &before_);
  }
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;
  ~SignalsHeld() { sigprocmask(SIG_SETMASK, &before_, nullptr); }

 private:
  sigset_t before_ = {};
};

// Whatever the mask of the process is. A memory stick has no modes, and cannot do so.
bool IsForItsOwner(int file) {
  return fchmod(file, kOwnerOnly) == 0 || errno == EPERM || errno == EOPNOTSUPP;
}

}  // namespace

OutputFile::OutputFile(const std::string& path) : path_(path) {
  const std::size_t slash = path.rfind('/');
  name_ = path.substr(slash == std::string::npos ? 0 : slash + 1);
  Descriptor folder =
      OpenFolder(slash == std::string::npos ? "" : path.substr(0, slash + 1), path_);
  struct stat status = {};
  if (name_.empty() || name_ == "." || name_ == "..") {
    throw std::runtime_error(path_ + " is a folder; add the name of a file");
  }
  if (fstatat(folder.Number(), name_.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
    if (!S_ISREG(status.st_mode)) {
      throw std::runtime_error(path_ + " is not a regular file; give another name");
    }
  } else if (errno != ENOENT) {
    Fail(path_);
  }
  folder_ = folder.Release();
}

OutputFile::~OutputFile() { close(folder_); }

void OutputFile::Write(std::string_view bytes) {
  const SignalsHeld held;
  std::string temporary;
  try {
    const Descriptor file = NewFile(folder_, &temporary, path_);
    WriteAll(file.Number(), bytes, path_);
    if (!IsForItsOwner(file.Number()) || fsync(file.Number()) == -1) {
      Fail(path_);
    }
    const std::string same = "/proc/self/fd/" + std::to_string(file.Number());
    const auto link = [&](const std::string& name) {
      return linkat(AT_FDCWD, same.c_str(), folder_, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
    };
    // Only in place of another file it has another name first.
    bool done = temporary.empty() && link(name_);
    if (!done && temporary.empty() && errno == EEXIST) {
      const std::string name = TemporaryName();
      temporary = link(name) ? name : "";
    }
    done = done || (!temporary.empty() &&
                    renameat(folder_, temporary.c_str(), folder_, name_.c_str()) == 0);
    if (!done) {
      Fail(path_);
    }
  } catch (...) {
    if (!temporary.empty()) {
      unlinkat(folder_, temporary.c_str(), 0);
    }
    throw;
  }
  // The new name is safe on the disk only with its folder.
  const Descriptor folder(openat(folder_, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.IsOpen()) {
    fsync(folder.Number());
  }
}

void RequireNoTerminal() {
  if (isatty(STDOUT_FILENO) == 1) {
    throw std::runtime_error("a capture is not for a terminal; give a FILE or redirect it");
  }
}

void WriteToStandardOutput(std::string_view bytes) {
  WriteAll(STDOUT_FILENO, bytes, "standard output");
}

}  // namespace capture
