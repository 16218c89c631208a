#include "host/access.h"

#include <fcntl.h>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <iterator>
#include <limits>
#include <stdexcept>
#include <system_error>

#include "host/trouble.h"

namespace host {
namespace {

constexpr mode_t kGroupOrOthersWrite = S_IWGRP | S_IWOTH;

[[noreturn]] void Fail(const std::string& what) {
  throw std::system_error(errno, std::generic_category(), what);
}

// All of `text` as a number; nothing when it is none.
std::optional<unsigned> Number(const std::string& text, int base) {
  unsigned number = 0;
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number, base);
  return error == std::errc() && rest == end ? std::optional<unsigned>(number) : std::nullopt;
}

// Its owner reads and writes it, nobody runs it, and who writes it has to read it.
constexpr unsigned kModesOfDatabase[] = {0600, 0640, 0644, 0660, 0664, 0666};

mode_t ParseMode(const std::string& text) {
  const std::optional<unsigned> mode = Number(text, 8);
  if (!mode || std::ranges::find(kModesOfDatabase, *mode) == std::end(kModesOfDatabase)) {
    throw std::runtime_error(
        "--mode: " + text +
        " is no mode for a database; give 0600, 0640, 0644, 0660, 0664 or 0666");
  }
  return *mode;
}

gid_t ParseGroup(const std::string& text) {
  if (const group* const entry = getgrnam(text.c_str())) {
    return entry->gr_gid;
  }
  const std::optional<unsigned> number = Number(text, 10);
  if (!number || *number == std::numeric_limits<gid_t>::max()) {
    throw std::runtime_error("--group: there is no group " + text + "; `getent group` lists them");
  }
  return *number;
}

// Only root gives what is his to a group that he does not belong to.
bool MayGive(const struct stat& file, gid_t group) {
  const bool own_group = group == file.st_gid || group == getegid() || group_member(group) != 0;
  return geteuid() == 0 || (geteuid() == file.st_uid && own_group);
}

// What stands at a name. It is not opened for reading: closing it would drop the locks that SQLite
// has on it.
class PathFile {
 public:
  explicit PathFile(const std::string& name)
      : name_(name), descriptor_(open(name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC)) {
    if (descriptor_ != -1 && fstat(descriptor_, &status_) != 0) {
      status_ = {};
    }
  }
  ~PathFile() {
    if (descriptor_ != -1) {
      close(descriptor_);
    }
  }
  PathFile(const PathFile&) = delete;
  PathFile& operator=(const PathFile&) = delete;

  const struct stat& Status() const { return status_; }
  bool IsRegular() const { return S_ISREG(status_.st_mode) && status_.st_nlink == 1; }
  gid_t Group() const { return status_.st_gid; }
  mode_t Mode() const { return status_.st_mode & 0777; }

  // What is allowed before and afterwards; the group only if it stays the same.
  void Narrow(gid_t group, mode_t mode) const {
    SetMode(Mode() & mode & (group == Group() ? 0777U : ~static_cast<mode_t>(S_IRWXG)));
  }

  void Give(gid_t group, mode_t mode) const {
    if (group != Group() &&
        fchownat(descriptor_, "", static_cast<uid_t>(-1), group, AT_EMPTY_PATH) != 0) {
      Fail(name_ + " cannot be given to group " + std::to_string(group));
    }
    SetMode(mode);
  }

  void SetOwner(uid_t owner) const {
    if (owner != status_.st_uid &&
        fchownat(descriptor_, "", owner, static_cast<gid_t>(-1), AT_EMPTY_PATH) != 0) {
      Fail(name_);
    }
  }

 private:
  void SetMode(mode_t mode) const {
    if (chmod(("/proc/self/fd/" + std::to_string(descriptor_)).c_str(), mode) != 0) {
      Fail(name_);
    }
  }

  std::string name_;
  int descriptor_;
  struct stat status_ = {};
};

}  // namespace

Access ParseAccess(const std::string& mode, const std::string& group) {
  Access access;
  if (!mode.empty()) {
    access.Mode = ParseMode(mode);
  }
  if (!group.empty()) {
    access.Group = ParseGroup(group);
  }
  return access;
}

void MakeWithAccess(const Access& access) {
  if (!access.Group && !access.Mode) {
    return;
  }
  const int made = open(kDatabaseFile, O_CREAT | O_EXCL | O_RDWR | O_NOFOLLOW | O_CLOEXEC, 0600);
  if (made == -1) {
    return;  // it is there, or whoever opens it next reports why it cannot be made
  }
  const bool given = (!access.Group || fchown(made, static_cast<uid_t>(-1), *access.Group) == 0) &&
                     fchmod(made, access.Mode.value_or(0644)) == 0;
  const int error = errno;
  close(made);  // nobody has locked it yet, so that no lock goes with it
  if (!given) {
    unlink(kDatabaseFile);
    errno = error;
    Fail(kDatabaseFile);
  }
}

void SetAccess(const Access& access) {
  if (!access.Group && !access.Mode) {
    return;
  }
  const std::string file = kDatabaseFile;
  const PathFile database(file);
  const gid_t group = access.Group.value_or(database.Group());
  const mode_t mode = access.Mode.value_or(database.Mode());
  if (!database.IsRegular() || !MayGive(database.Status(), group)) {
    throw std::runtime_error(file + " keeps its group and mode; run the command as root");
  }
  const bool shared = (mode & kGroupOrOthersWrite) != 0;
  // Each commit removes the journal, which in this folder only its owner can: of several writers
  // each needs his own.
  if (const PathFile journal(file + "-journal");
      shared && journal.IsRegular() && journal.Status().st_size == 0) {
    unlink((file + "-journal").c_str());
  }
  const PathFile beside[] = {PathFile(file + "-journal"), PathFile(file + "-wal"),
                             PathFile(file + "-shm")};
  for (const PathFile& each : beside) {
    if (each.IsRegular()) {
      each.Narrow(group, mode);
    }
  }
  database.Narrow(group, mode);
  database.Give(group, mode);
  for (const PathFile& each : beside) {
    if (each.IsRegular()) {
      each.Give(group, mode);
      if (!shared && geteuid() == 0) {
        each.SetOwner(database.Status().st_uid);
      }
    }
  }
}

}  // namespace host
