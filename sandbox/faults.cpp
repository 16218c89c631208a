#include "sandbox/faults.h"

#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "sandbox/check.h"
#include "sandbox/device_server.h"
#include "sandbox/devices.h"
#include "sandbox/enter.h"
#include "sandbox/files.h"

namespace sandbox {
namespace {

namespace fs = std::filesystem;

bool Exists(const std::string& path) { return fs::exists(fs::symlink_status(path)); }

// A file that fails, by its number.
class Place {
 public:
  explicit Place(const std::string& number)
      : folder_(std::string(kFaultFolder) + "/" + number),
        node_(std::string(kDeviceNodes) + "/" + kFaultyNode + number) {}

  void Set(const std::string& named, const FileFault& fault) const {
    const std::string path = fs::weakly_canonical(named);
    if (!Exists(path)) {
      WriteFile(folder_ + "/made", "");
      WriteFile(path, "");
    }
    WriteFile(folder_ + "/path", path);
    if (fault.IsPipe) {
      const std::string pipe = folder_ + "/pipe";
      Check(mkfifo(pipe.c_str(), 0666), "make the pipe of", path);
      Cover(path, pipe);
      return;
    }
    if (!DevicesAvailable()) {
      throw Refused("no file can fail: " + DevicesRefusal());
    }
    struct stat status = {};
    Check(stat(path.c_str(), &status), "stat", path);
    WriteFile(folder_ + kBytes, ReadFile(path), status.st_mode & 07777U);
    WriteFile(folder_ + kFault, FaultsText({.Files = {{path, fault}}}));
    Cover(path, node_);
  }

  void Unset() const {
    const std::string path = ReadFile(folder_ + "/path");
    if (umount2(path.c_str(), MNT_DETACH | UMOUNT_NOFOLLOW) == -1 && errno != EINVAL &&
        errno != ENOENT) {
      Fail("take away", path);
    }
    if (Exists(folder_ + "/made")) {
      RemoveFile(path);
    }
    RemoveFile(folder_);
  }

 private:
  // What is at `path` stays there, out of sight.
  static void Cover(const std::string& path, const std::string& with) {
    Check(mount(with.c_str(), path.c_str(), "none", MS_BIND, nullptr), "cover", path);
  }

  std::string folder_;
  std::string node_;
};

}  // namespace

void SetFileFaults(const Faults& faults) {
  RequireInside();
  MakeFolder(kFaultFolder);
  std::vector<std::string> former;
  for (const fs::directory_entry& entry : fs::directory_iterator(kFaultFolder)) {
    former.push_back(entry.path().filename());
  }
  for (const std::string& number : former) {
    Place(number).Unset();
  }
  // A number is used once, since the kernel remembers files by it.
  static unsigned long next = 0;
  for (const auto& [path, fault] : faults.Files) {
    Place(std::to_string(getpid()) + "." + std::to_string(next++)).Set(path, fault);
  }
}

}  // namespace sandbox
