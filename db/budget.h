// What compiling a statement and running it may cost; private to this folder.
#pragma once

namespace sqlitedb {

// One for compiling a statement and its first run, and one for each further run. A table of
// 100,000 rows of full length takes well under two million steps, a second and 100 MiB, even where
// it has to be sorted first; an endless view takes all it is given. The clock is needed beside the
// steps, since one step may have to move a megabyte.
//
// Time is the processor time of this thread within SQLite: a slow handler of rows, a stopped
// process and waiting for locks and disks do not count. That clock costs a system call, so it is
// read only once a run has lasted a second, which counts whole, and then where the other clock
// says that the limit may be reached.
//
// Memory is what SQLite has in the whole process, less what it had when the run began: it does not
// count by connection. Where the host has turned its counting off, this limit does not hold.
class Budget {
 public:
  static constexpr int kSteps = 100'000'000;
  static constexpr int kSeconds = 10;
  static constexpr int kMebibytes = 128;
  static constexpr int kStepsPerCall = 100;
  static constexpr int kStepsPerCloseCall = 1;

  void Restart() noexcept;

  // Grows with each Restart(), never 0.
  unsigned Number() const noexcept { return number_; }

  // Around every call of SQLite that comes after the first since Restart().
  void Enter() noexcept {
    if (measures_) {
      entered_ = ThreadTime();
    }
  }
  void Leave() noexcept {
    if (measures_) {
      spent_ += ThreadTime() - entered_;
    }
  }

  // Progress handler of SQLite, called every kStepsPerCall steps: nonzero ends the run.
  static int Spend(void* budget) noexcept;

  // The same, called every kStepsPerCloseCall steps.
  static int SpendClosely(void* budget) noexcept;

 private:
  using Nanoseconds = long long;

  static Nanoseconds ThreadTime() noexcept;
  bool Late(Nanoseconds now) noexcept;
  int Spend(int steps) noexcept;

  unsigned number_ = 0;
  int steps_left_ = 0;
  long long memory_ = 0;  // In bytes, where the run ends.
  bool measures_ = false;
  Nanoseconds look_ = 0;     // Of the coarse clock: the limit is not reached before.
  Nanoseconds entered_ = 0;  // Of the thread's clock.
  Nanoseconds spent_ = 0;
};

}  // namespace sqlitedb
