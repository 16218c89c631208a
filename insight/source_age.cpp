#include "insight/source_age.h"

#include <sys/stat.h>

#include <algorithm>
#include <string>

#include "hardware/paths.h"

namespace insight {

void DatabaseAge::Look(DatabaseState* state) {
  using std::chrono::system_clock;
  const auto changed = [](const struct stat& file) {
    return system_clock::time_point(std::chrono::duration_cast<system_clock::duration>(
        std::chrono::seconds(file.st_mtim.tv_sec) +
        std::chrono::nanoseconds(file.st_mtim.tv_nsec)));
  };
  const std::string path = hardware::paths::kStatusDatabase;
  struct stat file {};
  struct stat log {};
  const bool is_file = stat(path.c_str(), &file) == 0;
  const bool is_log = stat((path + "-wal").c_str(), &log) == 0;
  const bool has_log = is_log && log.st_size > 0;
  state->EveryoneMayWrite =
      (is_file && (file.st_mode & S_IWOTH) != 0) || (is_log && (log.st_mode & S_IWOTH) != 0);
  if (!is_file && !has_log) {
    sight_.reset();
    return;
  }

  const Sight sight =
      has_log ? Sight{true, log.st_size, changed(log)} : Sight{false, file.st_size, changed(file)};
  const auto now = std::chrono::steady_clock::now();
  if (sight_ != sight) {
    // What the clock of the file says, but not before this recorder last saw it otherwise.
    auto age = std::max<system_clock::duration>(system_clock::now() - sight.Changed, {});
    if (sight_) {
      age = std::min<system_clock::duration>(age, now - looked_);
    }
    changed_ = now - age;
    sight_ = sight;
  }
  looked_ = now;
  state->LastChanged = sight.Changed;
  state->Unchanged = std::chrono::floor<std::chrono::seconds>(now - changed_);
}

}  // namespace insight
