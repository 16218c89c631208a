#include "capture/recording.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>

#include "capture/assembler.h"
#include "capture/recorder.h"
#include "collector/status_interface.h"
#include "model/xml.h"
#include "sandbox/format/limits.h"

namespace capture {
namespace {

using Clock = std::chrono::steady_clock;

[[noreturn]] void Fail(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

class Pipe {
 public:
  Pipe() {
    if (pipe2(ends_.data(), O_CLOEXEC) == -1) {
      Fail("a pipe");
    }
  }
  ~Pipe() {
    CloseReadingEnd();
    CloseWritingEnd();
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  int ReadingEnd() const { return ends_[0]; }
  int WritingEnd() const { return ends_[1]; }
  void CloseReadingEnd() { Close(&ends_[0]); }
  void CloseWritingEnd() { Close(&ends_[1]); }

 private:
  static void Close(int* end) {
    if (*end != -1) {
      close(std::exchange(*end, -1));
    }
  }

  std::array<int, 2> ends_ = {-1, -1};
};

// ---- The child

// Everything is written at once: what is asked next may never return.
void Send(int descriptor, const Observation& observation) {
  const std::string bytes = Encode(observation);
  for (std::size_t sent = 0; sent < bytes.size();) {
    const ssize_t count = write(descriptor, bytes.data() + sent, bytes.size() - sent);
    if (count == -1 && errno != EINTR) {
      _exit(EXIT_FAILURE);  // nobody keeps it any more
    }
    sent += count > 0 ? static_cast<std::size_t>(count) : 0;
  }
}

void RunCycles(const Plan& plan, int descriptor) {
  const Recorder recorder([descriptor](const Observation& seen) { Send(descriptor, seen); });
  CStatusInterface collector;
  // The limiter of the reports is as old as the process, and syslog() waits for a full log.
  collector.m_Hardware.m_bLogTrackerPixel = false;
  collector.InitDatabase(false);
  Clock::time_point next = Clock::now();
  for (int cycle = 0; cycle < plan.Cycles; ++cycle) {
    std::this_thread::sleep_until(next);
    next = std::max(next + plan.Interval, Clock::now());
    collector.QueryDatabase();
    Send(descriptor, {.What = Saw::kDocument, .Texts = {QtSts::WriteDocument(collector.m_Status)}});
  }
}

[[noreturn]] void BeChild(const Plan& plan, const Pipe& observations, const Pipe& prints) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  // A reader of this program's streams does not wait for a child that is left behind.
  dup2(prints.WritingEnd(), STDOUT_FILENO);
  dup2(prints.WritingEnd(), STDERR_FILENO);
  int status = EXIT_SUCCESS;
  try {
    RunCycles(plan, observations.WritingEnd());
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "%s\n", failure.what());
    status = EXIT_FAILURE;
  }
  std::fflush(stdout);
  _exit(status);
}

// ---- The parent

class Keeper {
 public:
  Keeper(const Plan& plan, pid_t child, Pipe& observations, Pipe& prints)
      : plan_(plan), child_(child), observations_(observations), prints_(prints) {}

  Recording Keep() {
    deadline_ = Clock::now() + plan_.Timeout;
    Recording recording;
    recording.Began = std::chrono::system_clock::now();
    while (observations_.ReadingEnd() != -1 && Clock::now() < deadline_) {
      Wait();
    }
    const bool late = observations_.ReadingEnd() != -1;
    const std::string end = late ? "" : EndOfChild();
    kill(child_, SIGKILL);
    const std::optional<Question> last = assembler_.Waiting();
    recording.Cycles = assembler_.TakeCycles();
    if (late) {
      recording.Stopped = {"no answer within " + std::to_string(plan_.Timeout.count()) + " s",
                           last};
    } else if (!end.empty()) {
      recording.Stopped = {end, last};
    }
    return recording;
  }

 private:
  void Wait() {
    std::array<pollfd, 2> wanted = {pollfd{observations_.ReadingEnd(), POLLIN, 0},
                                    pollfd{prints_.ReadingEnd(), POLLIN, 0}};
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline_ - Clock::now());
    if (poll(wanted.data(), wanted.size(), static_cast<int>(left.count()) + 1) == -1 &&
        errno != EINTR) {
      Fail("poll");
    }
    if (wanted[1].revents != 0) {
      Pass();
    }
    if (wanted[0].revents != 0) {
      Take();
    }
  }

  // Passes on what the collector prints.
  void Pass() {
    const std::string block = Block(prints_);
    std::fwrite(block.data(), 1, block.size(), stderr);
  }

  void Take() {
    const std::string block = Block(observations_);
    received_ += block.size();
    if (received_ > sandbox::kMostBytes) {
      throw std::runtime_error("a cycle was given more than " +
                               std::to_string(sandbox::kMostBytes >> 20) +
                               " MiB, more than a capture holds");
    }
    decoder_.Take(block);
    while (const std::optional<Observation> seen = decoder_.Next()) {
      const Clock::time_point now = Clock::now();
      assembler_.Take(*seen, now);
      if (seen->What == Saw::kCycleBegins) {
        deadline_ = now + plan_.Timeout;
        received_ = 0;
      } else if (seen->What == Saw::kDocument) {
        deadline_ = now + plan_.Timeout + plan_.Interval;
      }
    }
  }

  // What can be read at once. The end that is read is closed when there is nothing to come.
  static std::string Block(Pipe& pipe) {
    std::string block(std::size_t{64} << 10, '\0');
    const ssize_t count = read(pipe.ReadingEnd(), block.data(), block.size());
    if (count == 0 || (count == -1 && errno != EINTR)) {
      pipe.CloseReadingEnd();
    }
    block.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return block;
  }

  // Why the child ended before it was done; "" when it did all. It may still be on its way out.
  std::string EndOfChild() {
    int status = 0;
    pid_t ended = 0;
    while ((ended = waitpid(child_, &status, WNOHANG)) == 0 && Clock::now() < deadline_) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    while (prints_.ReadingEnd() != -1 && ended == child_) {
      Pass();
    }
    if (ended != child_) {
      return "";  // all of it has arrived
    }
    if (WIFSIGNALED(status)) {
      return "the cycle was ended by signal " + std::to_string(WTERMSIG(status));
    }
    return WEXITSTATUS(status) == EXIT_SUCCESS ? "" : "the cycle has failed";
  }

  const Plan& plan_;
  const pid_t child_;
  Pipe& observations_;
  Pipe& prints_;
  Decoder decoder_;
  Assembler assembler_;
  std::uint64_t received_ = 0;  // bytes of the cycle
  Clock::time_point deadline_;
};

}  // namespace

Recording Record(const Plan& plan) {
  Pipe observations;
  Pipe prints;
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == -1) {
    Fail("a process for the cycle");
  }
  if (child == 0) {
    BeChild(plan, observations, prints);
  }
  observations.CloseWritingEnd();
  prints.CloseWritingEnd();
  return Keeper(plan, child, observations, prints).Keep();
}

}  // namespace capture
