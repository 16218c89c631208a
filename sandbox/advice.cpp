#include "sandbox/advice.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace sandbox {
namespace {

namespace fs = std::filesystem;

constexpr const char* kFuse = "/dev/fuse";

struct Switch {
  const char* Path;
  const char* Refuses;  // its value that keeps users from namespaces
  const char* Command;
};
constexpr Switch kSwitches[] = {
    {"/proc/sys/kernel/unprivileged_userns_clone", "0", "kernel.unprivileged_userns_clone=1"},
    {"/proc/sys/kernel/apparmor_restrict_unprivileged_userns", "1",
     "kernel.apparmor_restrict_unprivileged_userns=0"},
    {"/proc/sys/user/max_user_namespaces", "0", "user.max_user_namespaces=10000"},
    {"/proc/sys/user/max_mnt_namespaces", "0", "user.max_mnt_namespaces=10000"},
    {"/proc/sys/user/max_net_namespaces", "0", "user.max_net_namespaces=10000"},
    {"/proc/sys/user/max_pid_namespaces", "0", "user.max_pid_namespaces=10000"},
};

std::string FirstWord(const char* path) {
  std::string word;
  std::ifstream(path) >> word;
  return word;
}

}  // namespace

std::string WhyNoDevices() {
  if (access(kFuse, R_OK | W_OK) == 0) {
    return "";
  }
  return errno == ENOENT ? "there is no /dev/fuse, which device nodes and files that fail need; "
                           "load its driver "
                           "with modprobe fuse, or start the container with --device /dev/fuse"
                         : std::string("/dev/fuse, which device nodes and files that fail need: ") +
                               std::strerror(errno) +
                               "; run it as root, or let all users have it with chmod "
                               "666 /dev/fuse";
}

std::string HowToAllow() {
  const auto refusing = std::ranges::find_if(
      kSwitches, [](const Switch& each) { return FirstWord(each.Path) == each.Refuses; });
  if (refusing != std::end(kSwitches)) {
    return std::string("allow namespaces with sysctl -w ") + refusing->Command;
  }
  return geteuid() == 0 ? "in a container, start it with --privileged"
                        : "run it as root, or ask who keeps users from making namespaces here";
}

std::string FindProgram(const std::string& name) {
  const auto runs = [](const fs::path& path) {
    std::error_code error;
    return fs::is_regular_file(path, error) && access(path.c_str(), X_OK) == 0;
  };
  if (name.find('/') != std::string::npos) {
    return runs(name) ? fs::absolute(name).string() : "";
  }
  const char* const folders = std::getenv("PATH");
  const std::string list = folders != nullptr ? folders : "/usr/bin:/bin";
  for (std::size_t begin = 0; begin <= list.size();) {
    const std::size_t end = std::min(list.find(':', begin), list.size());
    const fs::path path = fs::path(list.substr(begin, end - begin)) / name;
    if (runs(path)) {
      return fs::absolute(path);
    }
    begin = end + 1;
  }
  return "";
}

std::string HowToBring(const std::string& name, const std::string& outside) {
  if (outside.empty()) {
    return name + " is not on this machine; give a program that is";
  }
  if (access(outside.c_str(), X_OK) == 0) {
    return outside + " is in the box, but what runs it is not; bring that with --bind FOLDER";
  }
  return outside + " is not in the box; bring its folder with --bind " +
         fs::path(outside).parent_path().string();
}

}  // namespace sandbox
