// Puts cycles together out of what was observed.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "capture/cycle.h"
#include "capture/file_walk.h"
#include "capture/observation.h"

namespace capture {

class Assembler {
 public:
  Assembler() = default;
  Assembler(const Assembler&) = delete;
  Assembler& operator=(const Assembler&) = delete;

  // The next observation, which came at `now`.
  void Take(const Observation& seen, std::chrono::steady_clock::time_point now);

  // All cycles, the last one perhaps without its end.
  std::vector<Cycle> TakeCycles();

  // What was asked last and has not answered.
  const std::optional<Question>& Waiting() const { return waiting_; }

 private:
  void TakeEnd(const Observation& seen, std::chrono::steady_clock::time_point now);
  void TakeAnswer(const Observation& seen);
  void TakeSystem(const Observation& seen);
  void TakeOpen(const Observation& seen);
  void TakeDeviceOpen(const Observation& seen);
  void TakeFileOpen(const Observation& seen);
  void TakeFileStatus(const Observation& seen);
  void TakePathStatus(const Observation& seen);
  void TakeRead(const Observation& seen);
  void TakeRow(const Observation& seen);
  void FinishWalk();
  Reading* Current();

  std::vector<Cycle> cycles_;
  Cycle* cycle_ = &before_;  // that runs, or ran last
  Cycle before_;             // what is seen before the first cycle; a cycle reports it once more
  std::optional<Question> waiting_;
  std::chrono::steady_clock::time_point began_;
  std::string probe_;
  FileWalk walk_;
  std::string current_;  // the path of the file that was opened last, "" for none
  bool opens_anew_ = false;
  int walk_error_ = 0;  // errno of a folder on the way that could not be opened
};

// Whether `path` is a device node of the collector.
bool IsDevice(const std::string& path);

}  // namespace capture
