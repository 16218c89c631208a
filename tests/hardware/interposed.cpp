#include "tests/hardware/interposed.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <netdb.h>
#include <sys/socket.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdint>
#include <utility>

namespace {

Opens* g_opens = nullptr;
Call g_failing_call;
int g_calls_to_failure = 0;  // 0: none is going to fail
int g_error = 0;
std::size_t g_longest_read = SIZE_MAX;
std::function<void(ifaddrs*)> g_edit_interfaces;
int g_interface_lists = 0;
std::function<void(struct statfs*)> g_edit_storage;

// Whether this call fails, with errno set to its usual error unless the test wants another.
bool Fails(Call call, int usual_error) {
  const bool fails = g_calls_to_failure > 0 && call == g_failing_call && --g_calls_to_failure == 0;
  if (fails) {
    errno = g_error != 0 ? g_error : usual_error;
  }
  return fails;
}

template <class Function>
Function* Real(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

// Whether a test refuses this open. A place that is only walked through is not a file that is
// opened.
bool Refused(const std::string& path, int flags) {
  if (g_opens == nullptr || (flags & O_PATH) != 0 || g_opens->Admit(path, flags)) {
    return false;
  }
  errno = EACCES;
  return true;
}

std::string PathOf(int folder) {
  char path[PATH_MAX];
  const std::string link = "/proc/self/fd/" + std::to_string(folder);
  const ssize_t length = readlink(link.c_str(), path, sizeof path);
  return {path, length > 0 ? static_cast<std::size_t>(length) : 0};
}

}  // namespace

Opens::Opens() { g_opens = this; }

Opens::~Opens() { g_opens = nullptr; }

void Opens::Refuse(const std::string& path, int nth) {
  m_RefusedPath = path;
  m_RefusedFrom = nth;
}

std::vector<std::string> Opens::Paths() const {
  std::vector<std::string> paths;
  for (const File& file : m_Files) {
    paths.push_back(file.Path);
  }
  return paths;
}

bool Opens::Admit(const std::string& path, int flags) {
  m_Files.push_back({path, flags});
  const auto times = std::count_if(m_Files.begin(), m_Files.end(),
                                   [&path](const File& file) { return file.Path == path; });
  return path != m_RefusedPath || times < m_RefusedFrom;
}

Failure::Failure(Call call, int nth, int error) {
  g_failing_call = call;
  g_calls_to_failure = nth;
  g_error = error;
}

Failure::~Failure() { g_calls_to_failure = 0; }

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

extern "C" {

__attribute__((visibility("default"))) int open(const char* path, int flags, ...) {
  static const auto real = Real<int(const char*, int, ...)>("open");
  mode_t mode = 0;
  if ((flags & O_CREAT) != 0) {
    va_list arguments;
    va_start(arguments, flags);
    mode = va_arg(arguments, mode_t);
    va_end(arguments);
  }
  return Refused(path, flags) ? -1 : real(path, flags, mode);
}

// Without a mode: the libraries create no files.
__attribute__((visibility("default"))) int openat(int folder, const char* name, int flags, ...) {
  static const auto real = Real<int(int, const char*, int, ...)>("openat");
  return Refused(PathOf(folder) + "/" + name, flags) ? -1 : real(folder, name, flags);
}

__attribute__((visibility("default"))) ssize_t read(int file, void* bytes, std::size_t count) {
  if (Fails(Call::kRead, EIO)) {
    return -1;
  }
  static const auto real = Real<ssize_t(int, void*, std::size_t)>("read");
  return real(file, bytes, std::min(count, g_longest_read));
}

__attribute__((visibility("default"))) int getifaddrs(ifaddrs** list) noexcept {
  if (Fails(Call::kGetifaddrs, ENOBUFS)) {
    return -1;
  }
  static const auto real = Real<int(ifaddrs**)>("getifaddrs");
  const int result = real(list);
  if (result != 0) {
    return result;
  }
  ++g_interface_lists;
  if (g_edit_interfaces) {
    g_edit_interfaces(*list);
  }
  return result;
}

__attribute__((visibility("default"))) void freeifaddrs(ifaddrs* list) noexcept {
  --g_interface_lists;
  static const auto real = Real<void(ifaddrs*)>("freeifaddrs");
  real(list);
}

__attribute__((visibility("default"))) int getnameinfo(const sockaddr* address, socklen_t length,
                                                       char* host, socklen_t host_size,
                                                       char* service, socklen_t service_size,
                                                       int flags) {
  if (Fails(Call::kGetnameinfo, ENOMEM)) {
    return EAI_MEMORY;
  }
  static const auto real =
      Real<int(const sockaddr*, socklen_t, char*, socklen_t, char*, socklen_t, int)>("getnameinfo");
  return real(address, length, host, host_size, service, service_size, flags);
}

__attribute__((visibility("default"))) int socket(int domain, int type, int protocol) noexcept {
  if (Fails(Call::kSocket, EMFILE)) {
    return -1;
  }
  static const auto real = Real<int(int, int, int)>("socket");
  return real(domain, type, protocol);
}

__attribute__((visibility("default"))) int statfs(const char* path,
                                                  struct statfs* storage) noexcept {
  if (Fails(Call::kStatfs, EIO)) {
    return -1;
  }
  static const auto real = Real<int(const char*, struct statfs*)>("statfs");
  const int result = real(path, storage);
  if (result == 0 && g_edit_storage) {
    g_edit_storage(storage);
  }
  return result;
}

__attribute__((visibility("default"))) int sysinfo(struct sysinfo* system) noexcept {
  if (Fails(Call::kSysinfo, EFAULT)) {
    return -1;
  }
  static const auto real = Real<int(struct sysinfo*)>("sysinfo");
  return real(system);
}

}  // extern "C"
