#include "sandbox/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <stdexcept>

#include "sandbox/check.h"
#include "sandbox/descriptor.h"
#include "sandbox/enter.h"
#include "sandbox/root.h"

namespace sandbox {
namespace {

// Makes room for a new `path`: its folders exist and it does not.
void Prepare(const std::string& path) {
  RequireInside();
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  RemoveTree(path);
}

}  // namespace

void RequireInside() {
  if (!Inside()) {
    throw std::logic_error("fixtures are for a sandbox only");
  }
}

std::string ReadFile(const std::string& path) {
  const Descriptor file(Check(open(path.c_str(), O_RDONLY | O_CLOEXEC), "open", path));
  std::string text;
  std::array<char, 4096> chunk = {};
  for (;;) {
    const ssize_t count = read(file.Number(), chunk.data(), chunk.size());
    if (count > 0) {
      text.append(chunk.data(), static_cast<std::size_t>(count));
    } else if (count == 0) {
      return text;
    } else if (errno != EINTR) {
      Fail("read", path);
    }
  }
}

// An existing file keeps its identity, so that a program that holds it open sees the new contents.
void WriteFile(const std::string& path, std::string_view bytes, mode_t mode) {
  struct stat status = {};
  if (lstat(path.c_str(), &status) == -1 || !S_ISREG(status.st_mode)) {
    Prepare(path);
  }
  RequireInside();
  const Descriptor file(
      Check(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, mode), "create", path));
  Check(fchmod(file.Number(), mode), "change the mode of", path);
  while (!bytes.empty()) {
    const ssize_t count = write(file.Number(), bytes.data(), bytes.size());
    if (count == -1) {
      Fail("write", path);
    }
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

void MakeFolder(const std::string& path) {
  struct stat status = {};
  if (lstat(path.c_str(), &status) == -1 || !S_ISDIR(status.st_mode)) {
    Prepare(path);
    Check(mkdir(path.c_str(), 0755), "make", path);
  }
}

void MakeLink(const std::string& path, const std::string& target) {
  Prepare(path);
  Check(symlink(target.c_str(), path.c_str()), "link", path);
}

void MakeUnopenable(const std::string& path) {
  Prepare(path);
  Check(mknod(path.c_str(), S_IFSOCK | 0666, 0), "make", path);
}

void RemoveFile(const std::string& path) {
  RequireInside();
  RemoveTree(path);
}

}  // namespace sandbox
