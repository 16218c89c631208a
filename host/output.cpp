#include "host/output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace host {
namespace {

[[noreturn]] void Fail(const std::string& what) {
  throw std::system_error(errno, std::generic_category(), what);
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

bool IsSet(const char* variable) {
  const char* const value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

// A name in the folder of `path` for mkostemp. It does not grow with the file's own name, which may
// have the greatest length that the file system knows.
std::string TemporaryName(const std::string& path) {
  return std::filesystem::path(path).replace_filename(".statuscollector.XXXXXX").string();
}

// A new file beside `path`, gone again unless it took over the name.
class NewFile {
 public:
  explicit NewFile(std::string path) : m_Path(std::move(path)), m_Temporary(TemporaryName(m_Path)) {
    m_Descriptor = mkostemp(m_Temporary.data(), O_CLOEXEC);
    if (m_Descriptor == -1) {
      Fail(m_Path);
    }
  }
  ~NewFile() {
    if (m_Descriptor != -1) {
      close(m_Descriptor);
    }
    if (!m_Temporary.empty()) {
      unlink(m_Temporary.c_str());
    }
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  void Fill(std::string_view text, mode_t mode) {
    WriteAll(m_Descriptor, text, m_Path);
    Require(fchmod(m_Descriptor, mode));
    Require(fsync(m_Descriptor));
    Require(close(std::exchange(m_Descriptor, -1)));
  }

  void TakeOverName() {
    Require(rename(m_Temporary.c_str(), m_Path.c_str()));
    m_Temporary.clear();
  }

 private:
  void Require(int result) const {
    if (result == -1) {
      Fail(m_Path);
    }
  }

  std::string m_Path;
  std::string m_Temporary;
  int m_Descriptor;
};

// The permissions that a file made by open(2) would have.
mode_t DefaultMode() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

// Where the file of this name stands or is to stand: at the end of its symbolic links, whether
// there is a file or not.
std::string TargetOf(const std::string& path) {
  namespace fs = std::filesystem;
  fs::path target = path;
  while (fs::is_symlink(fs::symlink_status(target))) {
    target = target.parent_path() / fs::read_symlink(target);
  }
  return target.string();
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

StandardOutput::StandardOutput() {
  std::fflush(stdout);
  m_Descriptor = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  if (m_Descriptor == -1 || dup2(STDERR_FILENO, STDOUT_FILENO) == -1) {
    Fail("standard output");
  }
}

StandardOutput::~StandardOutput() {
  std::fflush(stdout);
  dup2(m_Descriptor, STDOUT_FILENO);
  close(m_Descriptor);
}

void StandardOutput::Write(std::string_view text) const {
  // What the probe printed comes first, also where both streams lead to one place.
  std::fflush(stdout);
  WriteAll(m_Descriptor, text, "standard output");
}

bool StandardOutput::WantsColour() const {
  const char* const terminal = std::getenv("TERM");
  return isatty(m_Descriptor) == 1 && !IsSet("NO_COLOR") && terminal != nullptr &&
         std::string_view(terminal) != "dumb";
}

void WriteFile(const std::string& path, std::string_view text) {
  struct stat status = {};
  const bool exists = stat(path.c_str(), &status) == 0;
  if (!exists && errno != ENOENT) {
    Fail(path);  // links without an end, too
  }
  if (exists && !S_ISREG(status.st_mode)) {
    throw std::runtime_error(path + " is not a regular file");
  }
  const std::string target = TargetOf(path);
  NewFile file(target);
  file.Fill(text, exists ? status.st_mode & 07777 : DefaultMode());
  file.TakeOverName();
  SyncFolder(target);
}

}  // namespace host
