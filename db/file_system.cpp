#include "db/file_system.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace sqlitedb {

namespace {

bool GiveAway(int fd, uid_t owner, gid_t group, mode_t mode) noexcept {
  constexpr uid_t kUnchanged = static_cast<uid_t>(-1);
  return fchown(fd, geteuid() == 0 ? owner : kUnchanged, group) == 0 && fchmod(fd, mode) == 0;
}

// Without a privilege, only the link in /proc gives a name to a descriptor.
bool GiveName(int fd, const char* name) noexcept {
  char own[32];
  std::snprintf(own, sizeof own, "/proc/self/fd/%d", fd);
  return linkat(fd, "", AT_FDCWD, name, AT_EMPTY_PATH) == 0 || errno == EEXIST ||
         linkat(AT_FDCWD, own, AT_FDCWD, name, AT_SYMLINK_FOLLOW) == 0 || errno == EEXIST;
}

bool MakeWithoutName(const std::string& name, uid_t owner, gid_t group, mode_t mode) {
  const int fd = open(FolderOf(name).c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, S_IRUSR | S_IWUSR);
  if (fd == -1) {
    return false;
  }
  const bool done = !GiveAway(fd, owner, group, mode) || GiveName(fd, name.c_str());
  close(fd);
  return done;
}

// Until it is given away, nobody else can open it.
void MakeWithName(const std::string& name, uid_t owner, gid_t group, mode_t mode) noexcept {
  const int fd =
      open(name.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
  if (fd != -1) {
    if (!GiveAway(fd, owner, group, mode)) {
      unlink(name.c_str());
    }
    close(fd);
  }
}

}  // namespace

std::string FolderOf(const std::string& name) {
  const auto slash = name.rfind('/');
  return slash == std::string::npos ? "." : name.substr(0, slash + 1);
}

void MakeEmptyFile(const std::string& name, uid_t owner, gid_t group, mode_t mode) {
  if (!MakeWithoutName(name, owner, group, mode)) {
    MakeWithName(name, owner, group, mode);
  }
}

}  // namespace sqlitedb
