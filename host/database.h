// The status database of a program that goes on running.
#pragma once

#include <sys/types.h>

#include <utility>

#include "collector/status_interface.h"

namespace host {

// The database of a collector, opened anew when another file, or none, stands at its name, and
// after a cycle that failed: by itself the library would go on reading a file that is deleted. The
// thread of the cycles makes it, calls it and destroys it.
class Database {
 public:
  explicit Database(CStatusInterface& collector) : collector_(collector) { Open(); }
  ~Database() { collector_.CloseDatabase(); }
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  // Before each cycle but the first one; `failed` says how the one before ended.
  void OpenAnewIfNeeded(bool failed);

 private:
  using Identity = std::pair<dev_t, ino_t>;  // zeros: there is no file

  static Identity IdentityNow();
  void Open();

  CStatusInterface& collector_;
  Identity opened_;
};

}  // namespace host
