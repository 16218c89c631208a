// Where the history is kept when the program does not run.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "serve/history.h"

namespace serve {

// A folder with the file "history", which it alone uses. The file is written whole or not at all,
// by a thread of its own, so that neither cycles nor requests wait for the disk; its owner alone
// may read and write it.
class HistoryStore {
 public:
  static constexpr std::chrono::minutes kSaveEach{15};

  // Gives `history` what the file has, and saves it from then on, `each` apart and in Stop(). A
  // file that is no whole history of this version, or another user's, is renamed to
  // "history.damaged", and the program says so. Throws std::runtime_error when there is no such
  // folder, or another program uses it.
  HistoryStore(const std::string& folder, std::chrono::seconds interval, History* history,
               std::chrono::milliseconds each = kSaveEach);
  // Ends the process, as a failure, when the thread has not ended: a disk may not answer.
  ~HistoryStore();
  HistoryStore(const HistoryStore&) = delete;
  HistoryStore& operator=(const HistoryStore&) = delete;

  // Saves what there is, the last time. False: it is not over in time.
  bool Stop(std::chrono::milliseconds at_most);

 private:
  void Load(std::chrono::seconds interval);
  void PutAside(const std::string& why) const;
  void Run();
  void SaveNew();
  void Write() const;

  const std::string folder_;
  const int descriptor_;  // of the folder, locked
  History* const history_;
  const std::chrono::milliseconds each_;
  std::uint64_t saved_ = 0;  // the version of the history
  std::string said_;         // why the last save failed
  std::mutex mutex_;
  std::condition_variable changed_;
  bool stops_ = false;
  bool ended_ = false;
  std::thread thread_;  // begins when all else is there
};

}  // namespace serve
