#include "host/permission.h"

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>

namespace host {
namespace {

// The name of a user or group, or its number where it has no name.
std::string UserName(uid_t user) {
  const passwd* const entry = getpwuid(user);
  return entry != nullptr ? entry->pw_name : std::to_string(user);
}

std::string GroupName(gid_t group) {
  const ::group* const entry = getgrgid(group);
  return entry != nullptr ? entry->gr_name : std::to_string(group);
}

bool IsDenied(const std::string& path, int access) {
  return faccessat(AT_FDCWD, path.c_str(), access, AT_EACCESS) != 0 && errno == EACCES;
}

const char* VerbOf(int access) {
  switch (access) {
    case X_OK:
      return "enter";
    case W_OK:
      return "write";
    case R_OK | W_OK:
      return "read and write";
    default:
      return "read";
  }
}

// What of `path` is denied: the path itself or a folder on the way; "" for nothing.
std::string DeniedPart(const std::string& path, int access, int* denied) {
  std::filesystem::path part;
  const std::filesystem::path folders = std::filesystem::path(path).parent_path();
  *denied = X_OK;
  for (const std::filesystem::path& name : folders) {
    part /= name;
    if (IsDenied(part.string(), X_OK)) {
      return part.string();
    }
  }
  *denied = access;
  return IsDenied(path, access) ? path : "";
}

}  // namespace

std::string WhyDenied(const std::string& path, int access) {
  int denied = 0;
  const std::string part = DeniedPart(path, access, &denied);
  struct stat status = {};
  if (part.empty() || stat(part.c_str(), &status) != 0) {
    return "";
  }
  char mode[8];
  std::snprintf(mode, sizeof mode, "%04o", status.st_mode & 07777U);
  const std::string owner = UserName(status.st_uid);
  const std::string group = GroupName(status.st_gid);
  // The bits of the group stand three above those of access().
  const bool group_may = (static_cast<int>(status.st_mode >> 3U) & denied) == denied;
  return "user " + UserName(geteuid()) + " may not " + VerbOf(denied) + " " + part + " (" + owner +
         ":" + group + ", mode " + mode + "); " +
         (group_may ? "members of group " + group + " may" : "user " + owner + " may");
}

}  // namespace host
