// What went wrong with the status database, in words: which file, what is wrong, what to do. One
// line takes the place of what the library reports of each step.
#pragma once

#include <string>

#include "collector/observer.h"
#include "host/library_lines.h"

namespace host {

// The database, as it is called in messages.
inline constexpr const char* kDatabaseFile = "/dev/shm/status.db";

enum class Opened { kForReading, kForWriting };

// Observes the collector as long as it lives, from before InitDatabase on; the observer before it
// sees the same. Meanwhile the library's own lines do not reach standard error.
class DatabaseTrouble : public observe::Observer {
 public:
  explicit DatabaseTrouble(Opened opened);
  ~DatabaseTrouble() override;
  DatabaseTrouble(const DatabaseTrouble&) = delete;
  DatabaseTrouble& operator=(const DatabaseTrouble&) = delete;

  void See(const observe::Event& event) override;

  // What failed first in the last cycle, or, before the first one, in InitDatabase:
  //
  //   /dev/shm/status.db does not exist; a host or `statuscollector init` creates it
  //
  // "" when nothing failed. The text is not printable as it is.
  std::string InWords() const;

  // Writes it as a line of this program to standard error; nothing when nothing failed.
  void Report() const;

 private:
  std::string WhyNotOpened() const;

  LibraryLines lines_;
  Opened opened_;
  observe::Observer* before_;
  bool failed_ = false;
  int code_ = 0;
  std::string message_;
};

}  // namespace host
