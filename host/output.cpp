#include "host/output.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace host {
namespace {

[[noreturn]] void Fail(const std::string& what) {
  throw std::system_error(errno, std::generic_category(), what);
}

// A name in the folder of `path` for mkostemp. It does not grow with the file's own name, which may
// have the greatest length that the file system knows.
std::string TemporaryName(const std::string& path) {
  return std::filesystem::path(path).replace_filename(".statuscollector.XXXXXX").string();
}

// A new file beside `path`, gone again unless it took over the name.
class NewFile {
 public:
  explicit NewFile(std::string path) : path_(std::move(path)), temporary_(TemporaryName(path_)) {
    descriptor_ = mkostemp(temporary_.data(), O_CLOEXEC);
    if (descriptor_ == -1) {
      Fail(path_);
    }
  }
  ~NewFile() {
    if (descriptor_ != -1) {
      close(descriptor_);
    }
    if (!temporary_.empty()) {
      unlink(temporary_.c_str());
    }
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  void Fill(std::string_view text, mode_t mode) {
    WriteAll(descriptor_, text, path_);
    Require(fchmod(descriptor_, mode));
    Require(fsync(descriptor_));
    Require(close(std::exchange(descriptor_, -1)));
  }

  void TakeOverName() {
    Require(rename(temporary_.c_str(), path_.c_str()));
    temporary_.clear();
  }

 private:
  void Require(int result) const {
    if (result == -1) {
      Fail(path_);
    }
  }

  std::string path_;
  std::string temporary_;
  int descriptor_;
};

// The permissions that a file made by open(2) would have.
mode_t DefaultMode() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

// What the new file takes over of the permissions of the old one: never that programs run with the
// rights of its owner, and not that others may write it, where somebody else has allowed that.
mode_t KeptMode(const struct stat& status) {
  return status.st_mode & (status.st_uid == geteuid() ? 0777 : 0755);
}

// Whether the kernel follows a link of `owner` in `folder` where fs.protected_symlinks is set: in a
// folder where everybody makes files, only those of the effective user and of the folder's owner.
bool MayFollow(uid_t owner, const std::filesystem::path& folder) {
  struct stat status = {};
  if (stat(folder.empty() ? "." : folder.c_str(), &status) != 0) {
    return false;
  }
  const bool everybodys = (status.st_mode & S_ISVTX) != 0 && (status.st_mode & S_IWOTH) != 0;
  return !everybodys || owner == geteuid() || owner == status.st_uid;
}

// Where the symbolic link of this name leads; nothing when there is none. What is asked is asked of
// one link, whatever takes its place meanwhile.
std::optional<std::filesystem::path> LinkAt(const std::filesystem::path& path) {
  const int link = open(path.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC);
  if (link == -1) {
    return std::nullopt;
  }
  struct stat status = {};
  char target[PATH_MAX];
  const bool found = fstat(link, &status) == 0 && S_ISLNK(status.st_mode);
  const ssize_t length = found ? readlinkat(link, "", target, sizeof target) : 0;
  close(link);
  if (!found) {
    return std::nullopt;
  }
  if (length <= 0 || !MayFollow(status.st_uid, path.parent_path())) {
    errno = EACCES;
    Fail(path.string());
  }
  return std::string(target, static_cast<std::size_t>(length));
}

// Where the file of this name stands or is to stand: at the end of its symbolic links, whether
// there is a file or not.
std::string TargetOf(const std::string& path) {
  constexpr int kMostLinks = 40;  // as many as the kernel follows on one path
  std::filesystem::path target = path;
  for (int links = 0; const auto link = LinkAt(target); ++links) {
    if (links == kMostLinks) {
      errno = ELOOP;
      Fail(path);
    }
    target = target.parent_path() / *link;
  }
  return target.string();
}

// Whether a file stands at `path`, by `read`, which is stat or lstat.
bool IsThere(const std::string& path, const std::string& asked_for,
             int (*read)(const char*, struct stat*), struct stat* status) {
  const bool exists = read(path.c_str(), status) == 0;
  if (!exists && errno != ENOENT) {
    Fail(asked_for);  // links without an end, too
  }
  if (exists && !S_ISREG(status->st_mode)) {
    throw std::runtime_error(asked_for + " is not a regular file; give another name");
  }
  return exists;
}

// The new name is safe on the disk only with its folder.
void SyncFolder(const std::string& path) {
  const std::filesystem::path folder = std::filesystem::path(path).parent_path();
  const int descriptor = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor != -1) {
    fsync(descriptor);
    close(descriptor);
  }
}

}  // namespace

std::string WithoutDeviceNames(std::string_view text) {
  std::string rest;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end == std::string_view::npos ? end : end + 1);
    rest += line.starts_with("Dev Name ") ? "" : line;
    text.remove_prefix(line.size());
  }
  return rest;
}

void WriteAll(int descriptor, std::string_view text, const std::string& where) {
  while (!text.empty()) {
    const ssize_t count = write(descriptor, text.data(), text.size());
    if (count == -1 && errno != EINTR) {
      Fail(where);
    }
    text.remove_prefix(count > 0 ? static_cast<std::size_t>(count) : 0);
  }
}

StandardOutput::StandardOutput() : held_(memfd_create("statuscollector", MFD_CLOEXEC)) {
  std::fflush(stdout);
  descriptor_ = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  if (descriptor_ == -1 || dup2(held_ == -1 ? STDERR_FILENO : held_, STDOUT_FILENO) == -1) {
    Fail("standard output");
  }
}

StandardOutput::~StandardOutput() {
  PassOn();
  dup2(descriptor_, STDOUT_FILENO);
  close(descriptor_);
  if (held_ != -1) {
    close(held_);
  }
}

void StandardOutput::Write(std::string_view text) const {
  WriteAll(descriptor_, text, "standard output");
  PassOn();
}

std::string StandardOutput::Take() const {
  std::fflush(stdout);
  std::string held;
  if (held_ == -1) {
    return held;
  }
  char block[4096];
  lseek(held_, 0, SEEK_SET);
  for (ssize_t count = 0; (count = read(held_, block, sizeof block)) > 0;) {
    held.append(block, static_cast<std::size_t>(count));
  }
  lseek(held_, 0, SEEK_SET);
  static_cast<void>(!ftruncate(held_, 0));
  return held;
}

void StandardOutput::PassOn() const {
  std::string held = Take();
  if (isatty(STDERR_FILENO) == 1) {
    held = WithoutDeviceNames(held);
  }
  static_cast<void>(std::fwrite(held.data(), 1, held.size(), stderr));
}

void WriteFile(const std::string& path, std::string_view text) {
  struct stat status = {};
  IsThere(path, path, &stat, &status);
  const std::string target = TargetOf(path);
  const bool exists = IsThere(target, path, &lstat, &status);
  NewFile file(target);
  file.Fill(text, exists ? KeptMode(status) : DefaultMode());
  file.TakeOverName();
  SyncFolder(target);
}

}  // namespace host
