#include "serve/history_store.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "host/failure_text.h"
#include "host/output.h"
#include "host/printable.h"
#include "serve/history_file.h"

namespace serve {
namespace {

constexpr const char* kName = "history";
constexpr const char* kNewName = "history.new";
constexpr const char* kDamagedName = "history.damaged";

[[noreturn]] void Fail(const std::string& what) {
  throw std::system_error(errno, std::generic_category(), what);
}

void Say(const std::string& text) {
  std::fprintf(stderr, "statuscollector: %s\n", host::Printable(text).c_str());
}

class File {
 public:
  explicit File(int descriptor) : descriptor_(descriptor) {}
  ~File() {
    if (descriptor_ != -1) {
      close(descriptor_);
    }
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  int Descriptor() const { return descriptor_; }
  int Close() { return close(std::exchange(descriptor_, -1)); }

 private:
  int descriptor_;
};

int OpenFolder(const std::string& folder) {
  const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor == -1) {
    throw std::runtime_error("--state: " + folder +
                             " cannot be opened: " + std::generic_category().message(errno) +
                             "; make the folder, or give another");
  }
  if (flock(descriptor, LOCK_EX | LOCK_NB) == -1) {
    const int error = errno;
    close(descriptor);
    throw std::runtime_error(
        "--state: " + folder +
        (error == EWOULDBLOCK ? std::string(" is used by another serve; give another folder")
                              : " cannot be locked: " + std::generic_category().message(error)));
  }
  return descriptor;
}

// All of a file; throws NoHistory where it cannot be one.
std::string Contents(const File& file) {
  struct stat status = {};
  if (fstat(file.Descriptor(), &status) == -1 || !S_ISREG(status.st_mode)) {
    throw NoHistory("is no file");
  }
  if (status.st_uid != geteuid() || (status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
    throw NoHistory("may be written by other users");
  }
  if (status.st_size > static_cast<off_t>(kMostHistoryFileBytes)) {
    throw NoHistory("is no history");
  }
  std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
  std::size_t read_bytes = 0;
  while (read_bytes < bytes.size()) {
    const ssize_t count =
        read(file.Descriptor(), bytes.data() + read_bytes, bytes.size() - read_bytes);
    if (count == 0 || (count == -1 && errno != EINTR)) {
      throw NoHistory("cannot be read");
    }
    read_bytes += count > 0 ? static_cast<std::size_t>(count) : 0;
  }
  return bytes;
}

}  // namespace

HistoryStore::HistoryStore(const std::string& folder, std::chrono::seconds interval,
                           History* history, std::chrono::milliseconds each)
    : folder_(folder), descriptor_(OpenFolder(folder)), history_(history), each_(each) {
  Load(interval);
  thread_ = std::thread([this] { Run(); });
}

HistoryStore::~HistoryStore() {
  if (!Stop({})) {
    std::fflush(nullptr);
    _exit(EXIT_FAILURE);
  }
  thread_.join();
  close(descriptor_);
}

void HistoryStore::Load(std::chrono::seconds interval) {
  const File file(openat(descriptor_, kName, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (file.Descriptor() == -1 && errno == ENOENT) {
    return;
  }
  try {
    if (file.Descriptor() == -1) {
      throw NoHistory("cannot be opened: " + std::generic_category().message(errno));
    }
    history_->Restore(ParseHistory(Contents(file), static_cast<std::uint32_t>(interval.count())));
  } catch (const NoHistory& reason) {
    PutAside(reason.what());
  }
}

void HistoryStore::PutAside(const std::string& why) const {
  const bool renamed = renameat(descriptor_, kName, descriptor_, kDamagedName) == 0;
  Say(folder_ + "/" + kName + " " + why + "; the history begins anew" +
      (renamed ? std::string(", the file is now ") + kDamagedName : ""));
}

bool HistoryStore::Stop(std::chrono::milliseconds at_most) {
  std::unique_lock lock(mutex_);
  stops_ = true;
  changed_.notify_all();
  return changed_.wait_for(lock, at_most, [this] { return ended_; });
}

void HistoryStore::Run() {
  bool stops = false;
  while (!stops) {
    {
      std::unique_lock lock(mutex_);
      stops = changed_.wait_for(lock, each_, [this] { return stops_; });
    }
    SaveNew();
  }
  const std::lock_guard lock(mutex_);
  ended_ = true;
  changed_.notify_all();
}

// A failure is said once, and again when it is another one.
void HistoryStore::SaveNew() {
  const std::uint64_t version = history_->Version();
  if (version == saved_) {
    return;
  }
  std::string failure;
  history_->SetHeld(true);
  try {
    Write();
    saved_ = version;
  } catch (const std::exception& error) {
    failure = host::InWords(error);
    unlinkat(descriptor_, kNewName, 0);
  }
  history_->SetHeld(false);
  if (!failure.empty() && failure != said_) {
    Say("the history is not saved: " + failure);
  }
  said_ = failure;
}

void HistoryStore::Write() const {
  const HistoryImage image =
      history_->Look([](const HistoryData& data) { return HistoryImage(data); });
  const std::string where = folder_ + "/" + kNewName;
  unlinkat(descriptor_, kNewName, 0);
  File file(openat(descriptor_, kNewName, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                   S_IRUSR | S_IWUSR));
  if (file.Descriptor() == -1) {
    Fail(where);
  }
  image.Write([&](std::string_view bytes) { host::WriteAll(file.Descriptor(), bytes, where); });
  if (fsync(file.Descriptor()) == -1 || file.Close() == -1 ||
      renameat(descriptor_, kNewName, descriptor_, kName) == -1) {
    Fail(where);
  }
  fsync(descriptor_);
}

}  // namespace serve
