#include "host/database.h"

#include <sys/stat.h>

#include "host/trouble.h"

namespace host {

Database::Identity Database::IdentityNow() {
  struct stat status = {};
  return stat(kDatabaseFile, &status) == 0 ? Identity(status.st_dev, status.st_ino) : Identity();
}

void Database::Open() {
  opened_ = IdentityNow();  // one that takes its place from here on is noticed
  collector_.InitDatabase(false);
}

void Database::OpenAnewIfNeeded(bool failed) {
  const Identity now = IdentityNow();
  if (now != opened_ || (failed && now != Identity())) {
    collector_.CloseDatabase();
    Open();
  }
}

}  // namespace host
