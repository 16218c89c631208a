#include "tests/support/interposed/system_calls.h"

#include <fcntl.h>
#include <netdb.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdint>
#include <utility>

#include "tests/support/interposed/real.h"

namespace interposed {
namespace {

Opens* g_opens = nullptr;
std::size_t g_longest_read = SIZE_MAX;
std::function<void(ifaddrs*)> g_edit_interfaces;
int g_interface_lists = 0;
std::function<void(struct statfs*)> g_edit_storage;

std::string PathOf(int folder) {
  char path[PATH_MAX];
  const std::string link = "/proc/self/fd/" + std::to_string(folder);
  const ssize_t length = readlink(link.c_str(), path, sizeof path);
  return {path, length > 0 ? static_cast<std::size_t>(length) : 0};
}

// Whether a test refuses this open of a name in a folder. A place that is only walked through is
// not a file that is opened.
bool Refused(int folder, const char* name, int flags) {
  if (g_opens == nullptr || (flags & O_PATH) != 0 ||
      g_opens->Admit(folder == AT_FDCWD ? name : PathOf(folder) + "/" + name, flags)) {
    return false;
  }
  errno = EACCES;
  return true;
}

bool OpenFails(int folder, const char* name, int flags, const char* function) {
  return Fails(Call::kOpen, EMFILE, function) || Refused(folder, name, flags);
}

}  // namespace

Opens::Opens() { g_opens = this; }

Opens::~Opens() { g_opens = nullptr; }

void Opens::Refuse(const std::string& path, int nth) {
  refused_path_ = path;
  refused_from_ = nth;
}

std::vector<std::string> Opens::Paths() const {
  std::vector<std::string> paths;
  for (const File& file : files_) {
    paths.push_back(file.Path);
  }
  return paths;
}

bool Opens::Admit(const std::string& path, int flags) {
  files_.push_back({path, flags});
  const auto times = std::count_if(files_.begin(), files_.end(),
                                   [&path](const File& file) { return file.Path == path; });
  return path != refused_path_ || times < refused_from_;
}

ShortReads::ShortReads(std::size_t limit) { g_longest_read = limit; }

ShortReads::~ShortReads() { g_longest_read = SIZE_MAX; }

InterfaceEdit::InterfaceEdit(std::function<void(ifaddrs*)> edit) {
  g_edit_interfaces = std::move(edit);
}

InterfaceEdit::~InterfaceEdit() { g_edit_interfaces = nullptr; }

int InterfaceListsHeld() { return g_interface_lists; }

StorageEdit::StorageEdit(std::function<void(struct statfs*)> edit) {
  g_edit_storage = std::move(edit);
}

StorageEdit::~StorageEdit() { g_edit_storage = nullptr; }

}  // namespace interposed

using interposed::Call;
using interposed::Fails;
using interposed::OpenFails;

#pragma GCC visibility push(default)
extern "C" {

#define OPEN(name)                                              \
  int name(const char* path, int flags, ...) {                  \
    INTERPOSED_REAL(name);                                      \
    mode_t mode = 0;                                            \
    if ((flags & O_CREAT) != 0) {                               \
      std::va_list rest;                                        \
      va_start(rest, flags);                                    \
      mode = va_arg(rest, mode_t);                              \
      va_end(rest);                                             \
    }                                                           \
    const bool fails = OpenFails(AT_FDCWD, path, flags, #name); \
    return fails ? -1 : real(path, flags, mode);                \
  }
OPEN(open)
OPEN(open64)

int openat(int folder, const char* name, int flags, ...) {  // of files that are there
  INTERPOSED_REAL(openat);
  return OpenFails(folder, name, flags, __func__) ? -1 : real(folder, name, flags);
}

ssize_t read(int file, void* bytes, std::size_t count) {
  INTERPOSED_REAL(read);
  return Fails(Call::kRead, EIO, __func__)
             ? -1
             : real(file, bytes, std::min(count, interposed::g_longest_read));
}

ssize_t pread64(int file, void* bytes, std::size_t count, off64_t offset) {
  INTERPOSED_REAL(pread64);
  return Fails(Call::kRead, EIO, __func__) ? -1 : real(file, bytes, count, offset);
}

ssize_t pwrite64(int file, const void* bytes, std::size_t count, off64_t offset) {
  INTERPOSED_REAL(pwrite64);
  return Fails(Call::kWrite, ENOSPC, __func__) ? -1 : real(file, bytes, count, offset);
}

int ftruncate64(int file, off64_t length) noexcept {
  INTERPOSED_REAL(ftruncate64);
  return Fails(Call::kWrite, ENOSPC, __func__) ? -1 : real(file, length);
}

int ioctl(int file, unsigned long request, ...) noexcept {
  INTERPOSED_REAL(ioctl);
  std::va_list rest;
  va_start(rest, request);
  void* const argument = va_arg(rest, void*);
  va_end(rest);
  return Fails(Call::kIoctl, EIO, __func__) ? -1 : real(file, request, argument);
}

int socket(int domain, int type, int protocol) noexcept {
  INTERPOSED_REAL(socket);
  return Fails(Call::kSocket, EMFILE, __func__) ? -1 : real(domain, type, protocol);
}

int getifaddrs(ifaddrs** list) noexcept {
  INTERPOSED_REAL(getifaddrs);
  const int result = Fails(Call::kGetifaddrs, ENOBUFS, __func__) ? -1 : real(list);
  if (result != 0) {
    return result;
  }
  ++interposed::g_interface_lists;
  if (interposed::g_edit_interfaces) {
    interposed::g_edit_interfaces(*list);
  }
  return result;
}

void freeifaddrs(ifaddrs* list) noexcept {
  INTERPOSED_REAL(freeifaddrs);
  --interposed::g_interface_lists;
  real(list);
}

int getnameinfo(const sockaddr* address, socklen_t length, char* host, socklen_t host_size,
                char* service, socklen_t service_size, int flags) {
  INTERPOSED_REAL(getnameinfo);
  return Fails(Call::kGetnameinfo, ENOMEM, __func__)
             ? EAI_MEMORY
             : real(address, length, host, host_size, service, service_size, flags);
}

int stat(const char* path, struct stat* status) noexcept {
  INTERPOSED_REAL(stat);
  return Fails(Call::kFileStatus, EACCES, __func__) ? -1 : real(path, status);
}

int lstat(const char* path, struct stat* status) noexcept {
  INTERPOSED_REAL(lstat);
  return Fails(Call::kFileStatus, EACCES, __func__) ? -1 : real(path, status);
}

int fstat(int file, struct stat* status) noexcept {
  INTERPOSED_REAL(fstat);
  return Fails(Call::kFileStatus, EIO, __func__) ? -1 : real(file, status);
}

ssize_t readlinkat(int folder, const char* name, char* target, std::size_t size) noexcept {
  INTERPOSED_REAL(readlinkat);
  return Fails(Call::kFileStatus, EIO, __func__) ? -1 : real(folder, name, target, size);
}

int statfs(const char* path, struct statfs* storage) noexcept {
  INTERPOSED_REAL(statfs);
  const int result = Fails(Call::kStatfs, EIO, __func__) ? -1 : real(path, storage);
  if (result == 0 && interposed::g_edit_storage) {
    interposed::g_edit_storage(storage);
  }
  return result;
}

int sysinfo(struct sysinfo* system) noexcept {
  INTERPOSED_REAL(sysinfo);
  return Fails(Call::kSysinfo, EFAULT, __func__) ? -1 : real(system);
}

}  // extern "C"
#pragma GCC visibility pop
