#include "sandbox/root.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <set>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "sandbox/check.h"
#include "sandbox/descriptor.h"
#include "sandbox/enter.h"
#include "sandbox/rows.h"
#include "sandbox/system_log.h"

namespace sandbox {
namespace {

namespace fs = std::filesystem;

struct Link {
  const char* Path;
  const char* Target;
};

// Where the new root is put together before it becomes "/". Everything that is bound is held by
// descriptor before this path is covered, so a source tree below it does no harm.
constexpr const char* kStage = "/tmp";

// What /tmp is in the sandbox.
constexpr const char* kTemporary = "/.sandbox/tmp";

constexpr std::array kSystem = {"/usr", "/etc/alternatives", "/etc/ld.so.cache"};
// Links into /usr on most systems, folders on some.
constexpr std::array kBesideUsr = {"/bin", "/lib", "/lib32", "/lib64", "/libx32", "/sbin"};
constexpr std::array kNodes = {"/dev/null",    "/dev/zero", "/dev/full", "/dev/random",
                               "/dev/urandom", "/dev/tty",  "/dev/fuse"};
constexpr std::array kFolders = {"/dev/shm", "/etc", "/proc", "/sys"};
constexpr std::array kLinks = {
    Link{"/dev/fd", "/proc/self/fd"},       Link{"/dev/stdin", "/proc/self/fd/0"},
    Link{"/dev/stdout", "/proc/self/fd/1"}, Link{"/dev/stderr", "/proc/self/fd/2"},
    Link{"/proc/self", "/.proc/self"},      Link{"/proc/thread-self", "/.proc/thread-self"},
    Link{"/proc/sys", "/.proc/sys"},
};

bool IsBelow(std::string_view path, std::string_view folder) {
  return path.substr(0, folder.size()) == folder &&
         (path.size() == folder.size() || path[folder.size()] == '/');
}

// The folder of the running program's build tree: the one with the CMake cache above the program,
// or the program's own folder when it was installed.
fs::path BuildTree() {
  const fs::path program = fs::read_symlink("/proc/self/exe");
  for (fs::path folder = program.parent_path(); folder.has_relative_path();
       folder = folder.parent_path()) {
    if (fs::exists(folder / "CMakeCache.txt")) {
      return folder;
    }
  }
  return program.parent_path();
}

// Makes `path` something that can be mounted on: a folder or an empty file.
void MakeMountPoint(const std::string& path, bool folder) {
  if (fs::exists(path)) {
    return;
  }
  fs::create_directories(folder ? fs::path(path) : fs::path(path).parent_path());
  if (!folder) {
    Descriptor(Check(open(path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644), "create", path));
  }
}

void MountTmpfs(const std::string& path, const std::string& options) {
  Check(mount("tmpfs", path.c_str(), "tmpfs", MS_NOSUID, options.c_str()), "mount tmpfs on", path);
}

// A detached copy of a part of the outer file tree, to be attached in the new root.
class Clone {
 public:
  explicit Clone(const Bind& bind)
      : path_(bind.Path),
        tree_(Check(
            open_tree(AT_FDCWD, path_.c_str(), OPEN_TREE_CLONE | OPEN_TREE_CLOEXEC | AT_RECURSIVE),
            "clone the mount of", path_)) {
    if (!bind.Writable) {
      mount_attr attributes = {};
      attributes.attr_set = MOUNT_ATTR_RDONLY;
      Check(mount_setattr(tree_.Number(), "", AT_EMPTY_PATH | AT_RECURSIVE, &attributes,
                          sizeof attributes),
            "make read-only", path_);
    }
  }

  void AttachBelow(const std::string& stage) const {
    struct stat status = {};
    Check(fstat(tree_.Number(), &status), "stat", path_);
    const std::string target = stage + path_;
    MakeMountPoint(target, S_ISDIR(status.st_mode));
    Check(move_mount(tree_.Number(), "", AT_FDCWD, target.c_str(), MOVE_MOUNT_F_EMPTY_PATH), "bind",
          path_);
  }

 private:
  std::string path_;
  Descriptor tree_;
};

std::vector<Clone> CloneAll(const std::vector<Bind>& binds) {
  std::vector<Clone> clones;
  for (const char* node : kNodes) {
    if (fs::exists(node)) {
      clones.emplace_back(Bind{node, true});
    }
  }
  for (const Bind& bind : binds) {
    clones.emplace_back(bind);
  }
  return clones;
}

void MakeLink(const std::string& target, const std::string& path) {
  Check(symlink(target.c_str(), path.c_str()), "link", path);
}

// Fixtures live on the root file system, whose free space is therefore a matter of the scenario
// alone: what a running program writes to /dev/shm or /tmp and the sandbox's own notes do not
// count.
void BuildStage(const std::string& stage, std::uint64_t bytes, const std::vector<Clone>& clones) {
  std::vector<std::pair<std::string, std::string>> links;
  for (const char* path : kBesideUsr) {
    if (fs::is_symlink(path)) {
      links.emplace_back(fs::read_symlink(path), stage + path);
    }
  }
  MountTmpfs(stage, "mode=755,size=" + std::to_string(bytes));
  for (const char* folder : {"/.proc", "/.sandbox", "/dev", "/tmp"}) {
    fs::create_directory(stage + folder);
  }
  MountTmpfs(stage + "/.sandbox", "mode=755");
  MountTmpfs(stage + "/dev", "mode=755");
  // So what is bound in place of it is known for somebody else's.
  fs::create_directory(stage + kTemporary);
  fs::permissions(stage + kTemporary, fs::perms::all | fs::perms::sticky_bit);
  Check(mount((stage + kTemporary).c_str(), (stage + "/tmp").c_str(), nullptr, MS_BIND, nullptr),
        "mount", "/tmp");
  Check(
      mount("proc", (stage + "/.proc").c_str(), "proc", MS_NOSUID | MS_NODEV | MS_NOEXEC, nullptr),
      "mount the process file system");
  for (const char* folder : kFolders) {
    fs::create_directory(stage + folder);
  }
  for (const Link& link : kLinks) {
    links.emplace_back(link.Target, stage + link.Path);
  }
  for (const auto& [target, path] : links) {
    MakeLink(target, path);
  }
  for (const Clone& clone : clones) {
    clone.AttachBelow(stage);
  }
}

// /proc holds fixtures only; sanitizers and debuggers look processes up by number, so these lead to
// the real procfs.
void LinkProcesses(int last) {
  const Descriptor folder(Check(open("/proc", O_DIRECTORY | O_CLOEXEC), "open", "/proc"));
  for (int process = 1; process <= last; ++process) {
    const std::string name = std::to_string(process);
    Check(symlinkat(("/.proc/" + name).c_str(), folder.Number(), name.c_str()), "link process",
          name);
  }
}

// Whether this entry of the root file system or of /dev is no fixture.
bool Stays(const std::string& path) {
  static const std::set<std::string_view> kept = [] {
    std::set<std::string_view> paths(kFolders.begin(), kFolders.end());
    paths.insert(kBesideUsr.begin(), kBesideUsr.end());
    // These belong to an object of the running program: an open database, a bound socket.
    paths.insert(kDatabaseFiles.begin(), kDatabaseFiles.end());
    paths.insert(kSystemLog);
    for (const Link& link : kLinks) {
      paths.insert(link.Path);
    }
    return paths;
  }();
  return kept.contains(path) ||
         (IsBelow(path, "/proc") && path.find_first_not_of("0123456789", 6) == std::string::npos);
}

// Removes the entries of `folder` that `stays` does not name. What is on another file system than
// `device` is somebody else's; a folder that still holds such a thing stays too.
void Empty(const std::string& folder, dev_t device, bool (*stays)(const std::string&)) {
  std::vector<std::string> names;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
    names.push_back(entry.path());
  }
  for (const std::string& name : names) {
    struct stat status = {};
    Check(lstat(name.c_str(), &status), "stat", name);
    if (status.st_dev != device) {
      continue;
    }
    if (S_ISDIR(status.st_mode)) {
      Empty(name, device, stays);
    }
    if (!stays(name) && remove(name.c_str()) == -1 && errno != ENOTEMPTY && errno != EEXIST &&
        errno != EBUSY) {
      Fail("remove", name);
    }
  }
}

dev_t DeviceOf(const std::string& path) {
  struct stat status = {};
  Check(stat(path.c_str(), &status), "stat", path);
  return status.st_dev;
}

}  // namespace

fs::path SourcePath(const fs::path& relative) { return fs::path(SANDBOX_SOURCE_TREE) / relative; }

std::vector<Bind> PlanBinds(const std::vector<fs::path>& writable) {
  std::vector<Bind> wanted;
  wanted.reserve(kSystem.size() + kBesideUsr.size() + 2 + writable.size());
  for (const char* path : kSystem) {
    wanted.push_back({path, false});
  }
  for (const char* path : kBesideUsr) {
    wanted.push_back({path, false});
  }
  wanted.push_back({BuildTree(), false});
  wanted.push_back({SourcePath("").parent_path(), false});
  std::erase_if(
      wanted, [](const Bind& bind) { return fs::is_symlink(bind.Path) || !fs::exists(bind.Path); });
  for (const fs::path& path : writable) {
    wanted.push_back({fs::canonical(path), true});
    if (wanted.back().Path == "/" || wanted.back().Path == "/dev") {
      throw fs::filesystem_error("the root and /dev cannot be shared with a sandbox", path,
                                 std::make_error_code(std::errc::invalid_argument));
    }
  }
  std::stable_sort(wanted.begin(), wanted.end(), [](const Bind& left, const Bind& right) {
    return std::pair(left.Path, !left.Writable) < std::pair(right.Path, !right.Writable);
  });
  std::vector<Bind> binds;
  for (const Bind& bind : wanted) {
    const bool shown = std::any_of(binds.begin(), binds.end(), [&bind](const Bind& above) {
      return IsBelow(bind.Path, above.Path) && (above.Writable || !bind.Writable);
    });
    if (!shown) {
      binds.push_back(bind);
    }
  }
  return binds;
}

void EnterRoot(const std::vector<Bind>& binds, std::uint64_t bytes, int last_process) {
  std::error_code gone;
  const fs::path working_folder = fs::current_path(gone);
  umask(022);
  Check(mount("none", "/", "none", MS_REC | MS_PRIVATE, nullptr), "make the mounts private");
  BuildStage(kStage, bytes, CloneAll(binds));
  Check(chdir(kStage), "enter", kStage);
  if (syscall(SYS_pivot_root, ".", ".") == -1) {
    Fail("make the new root");
  }
  Check(umount2(".", MNT_DETACH), "detach the old root");
  if (working_folder.empty() || chdir(working_folder.c_str()) == -1) {
    Check(chdir("/"), "enter", "/");
  }
  LinkProcesses(last_process);
}

void ClearRoot() {
  for (const char* folder : {"/", "/dev"}) {
    Empty(folder, DeviceOf(folder), Stays);
  }
}

void RequireFixturePlace(const std::string& path) {
  const fs::path named(path);
  const fs::path plain = named.lexically_normal();
  bool own = named.is_absolute() && plain == named && named.has_filename();
  struct stat status = {};
  if (own && lstat(path.c_str(), &status) == -1) {
    fs::path folder = named.parent_path();
    while (stat(folder.c_str(), &status) == -1 && folder != "/") {
      folder = folder.parent_path();
    }
  }
  own = own &&
        (status.st_dev == DeviceOf("/") || status.st_dev == DeviceOf("/dev") ||
         (status.st_dev == DeviceOf(kTemporary) &&
          (path == "/tmp" || IsBelow(fs::weakly_canonical(named.parent_path()).native(), "/tmp"))));
  if (!own) {
    throw std::runtime_error(path + ": not a place for a file of a scenario");
  }
}

void RemoveTree(const std::string& path) {
  struct stat status = {};
  if (lstat(path.c_str(), &status) == -1) {
    return;
  }
  if (status.st_dev != DeviceOf(fs::path(path).parent_path())) {
    errno = EBUSY;
    Fail("remove the mount", path);
  }
  if (S_ISDIR(status.st_mode)) {
    Empty(path, status.st_dev, [](const std::string&) { return false; });
  }
  Check(remove(path.c_str()), "remove", path);
}

}  // namespace sandbox
