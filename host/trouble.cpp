#include "host/trouble.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "host/permission.h"
#include "host/printable.h"

namespace host {
namespace {

// SQLite's result codes, of which this program uses no header.
enum Code : int {
  kError = 1,
  kBusy = 5,
  kLocked = 6,
  kOutOfMemory = 7,
  kReadOnly = 8,
  kInterrupted = 9,
  kInputOutput = 10,
  kCorrupt = 11,
  kFull = 13,
  kCannotOpen = 14,
  kProtocol = 15,
  kNoDatabase = 26,
};

constexpr const char* kFolder = "/dev/shm";

// Of what cannot be repaired.
constexpr const char* kMoveAway =
    "; move it away, then a host or `statuscollector init` creates a new one";

constexpr const char* kSeeLog = "; see the system log";

constexpr const char* kWhoHasIt = "; `fuser -v` of it names who has it open";

constexpr struct {
  int Code;
  const char* Message;  // the library's; null: any, and it follows what is wrong
  const char* What;     // follows the name of the file
  const char* Cure;
} kWords[] = {
    {kError, "no such table: status", " has no table status",
     "; `statuscollector init` creates it"},
    {kError, nullptr, " cannot be read",
     "; statuscollector-rows(5) says what its table status may be"},
    {kBusy, "database is locked", " is locked by another program", kWhoHasIt},
    {kLocked, "database table is locked", " is locked by another program", kWhoHasIt},
    {kProtocol, "locking protocol", " is locked by another program", kWhoHasIt},
    {kOutOfMemory, nullptr, " cannot be read", "; see which program takes the memory"},
    {kReadOnly, nullptr, " cannot be written", "; see its owner, group and mode"},
    {kInterrupted, nullptr, " cannot be read", "; it takes too long or too much memory"},
    {kInputOutput, nullptr, " cannot be read", kSeeLog},
    {kCorrupt, "database disk image is malformed", " is damaged", kMoveAway},
    {kFull, nullptr, " cannot grow", "; make room in /dev/shm"},
    {kNoDatabase, "file is not a database", " is no database", kMoveAway},
};

// What stands at `path` is neither missing nor a regular file.
const char* OtherFile(const struct stat& status) {
  switch (status.st_mode & S_IFMT) {
    case S_IFREG:
      return nullptr;
    case S_IFDIR:
      return " is a folder";
    case S_IFLNK:
      return " is a symbolic link";
    case S_IFIFO:
      return " is a pipe";
    default:
      return " is no regular file";
  }
}

// Why the database or what SQLite keeps beside it may not be reached; "" when it may.
std::string Denied(int access) {
  for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
    std::string why = WhyDenied(std::string(kDatabaseFile) + suffix, access);
    if (!why.empty()) {
      return why;
    }
  }
  return "";
}

}  // namespace

DatabaseTrouble::DatabaseTrouble(Opened opened)
    : opened_(opened), before_(observe::SetObserver(this)) {}

DatabaseTrouble::~DatabaseTrouble() { observe::SetObserver(before_); }

void DatabaseTrouble::See(const observe::Event& event) {
  if (event.As<observe::CycleBegins>() != nullptr) {
    failed_ = false;
  }
  if (const auto* const fails = event.As<observe::DatabaseFails>(); fails && !failed_) {
    code_ = fails->Code;
    message_ = fails->Message;
    failed_ = true;
  }
  if (before_ != nullptr) {
    before_->See(event);
  }
}

std::string DatabaseTrouble::InWords() const {
  if (!failed_) {
    return "";
  }
  if (code_ == kCannotOpen) {
    return WhyNotOpened();
  }
  const std::string file = kDatabaseFile;
  for (const auto& words : kWords) {
    if (words.Code == code_ && (words.Message == nullptr || message_ == words.Message)) {
      return file + words.What + (words.Message == nullptr ? ": " + message_ : "") + words.Cure;
    }
  }
  return file + " cannot be read: " + message_ + kSeeLog;
}

// SQLite's code does not say why.
std::string DatabaseTrouble::WhyNotOpened() const {
  const std::string file = kDatabaseFile;
  const bool write = opened_ == Opened::kForWriting;
  struct stat status = {};
  if (lstat(kDatabaseFile, &status) != 0 && errno == ENOENT) {
    const std::string denied = write ? WhyDenied(kFolder, W_OK) : "";
    return !write ? file + " does not exist; a host or `statuscollector init` creates it"
                  : file + " cannot be created: " + (denied.empty() ? message_ + kSeeLog : denied);
  }
  if (const char* const other = OtherFile(status)) {
    return file + other + kMoveAway;
  }
  const std::string denied = Denied(write ? R_OK | W_OK : R_OK);
  return file + " cannot be opened: " + (denied.empty() ? message_ + kSeeLog : denied);
}

void DatabaseTrouble::Report() const {
  if (failed_) {
    std::fprintf(stderr, "statuscollector: %s\n", Printable(InWords()).c_str());
  }
}

}  // namespace host
