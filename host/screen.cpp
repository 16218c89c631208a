#include "host/screen.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <iterator>
#include <system_error>
#include <utility>
#include <vector>

#include "host/printable.h"
#include "host/terminal.h"

namespace host {
namespace {

constexpr std::string_view kEnter = "\x1b[?1049h\x1b[?25l";
constexpr std::string_view kLeave = "\x1b[0m\x1b[?25h\x1b[?1049l";  // a line may be highlighted
constexpr std::string_view kHome = "\x1b[H";
constexpr std::string_view kRestOfLine = "\x1b[K\n";
constexpr std::string_view kRestOfScreen = "\x1b[J";
constexpr std::string_view kHighlight = "\x1b[7m";
constexpr std::string_view kPlain = "\x1b[0m";

constexpr int kEndings[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

// What the handlers of signals use.
volatile sig_atomic_t g_terminal = -1;
volatile sig_atomic_t g_interrupted = 0;

void WriteSequence(std::string_view sequence) {
  static_cast<void>(!write(g_terminal, sequence.data(), sequence.size()));
}

void Handle(int signal, void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  sigaction(signal, &action, nullptr);  // without SA_RESTART, so that a wait ends
}

// Ends the program as the signal does, after the terminal is as it was.
void OnEnding(int signal) {
  WriteSequence(kLeave);
  Handle(signal, SIG_DFL);
  raise(signal);  // blocked until the handler returns
}

// Ctrl-Z: the shell gets the terminal as it was.
void OnStop(int /*signal*/) {
  const int error = errno;
  WriteSequence(kLeave);
  raise(SIGSTOP);
  WriteSequence(kEnter);
  g_interrupted = 1;
  errno = error;
}

void OnChange(int /*signal*/) { g_interrupted = 1; }

void HandleAll(bool ours) {
  for (const int signal : kEndings) {
    Handle(signal, ours ? &OnEnding : SIG_DFL);
  }
  Handle(SIGTSTP, ours ? &OnStop : SIG_DFL);
  Handle(SIGWINCH, ours ? &OnChange : SIG_DFL);
}

// Holds back the signals that are handled, as long as it lives.
class SignalsHeldBack {
 public:
  SignalsHeldBack() {
    sigset_t held;
    sigemptyset(&held);
    for (const int signal : kEndings) {
      sigaddset(&held, signal);
    }
    sigaddset(&held, SIGTSTP);
    sigaddset(&held, SIGWINCH);
    sigprocmask(SIG_BLOCK, &held, &before_);
  }
  ~SignalsHeldBack() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
  SignalsHeldBack(const SignalsHeldBack&) = delete;
  SignalsHeldBack& operator=(const SignalsHeldBack&) = delete;

 private:
  sigset_t before_;
};

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    lines.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return lines;
}

}  // namespace

Screen::Screen(const StandardOutput& output) : output_(output) {
  errors_ = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (errors_ == -1 || nowhere == -1) {
    throw std::system_error(errno, std::generic_category(), "screen");
  }
  std::fflush(stderr);
  dup2(nowhere, STDERR_FILENO);
  dup2(nowhere, STDOUT_FILENO);
  close(nowhere);
  g_terminal = output.Descriptor();
  const SignalsHeldBack held_back;
  HandleAll(true);
  WriteSequence(kEnter);
}

// A signal ends the program either before this, by its handler, or when the terminal is as it was.
Screen::~Screen() {
  const SignalsHeldBack held_back;
  WriteSequence(kLeave);
  HandleAll(false);
  std::fflush(stdout);
  dup2(errors_, STDERR_FILENO);
  dup2(errors_, STDOUT_FILENO);  // as StandardOutput has it
  close(errors_);
}

void Screen::Draw(const std::string& title, const std::string& text, const std::string& known) {
  const Window window = WindowOf(output_.Descriptor());
  const std::vector<std::string> lines = LinesOf(text);
  const std::size_t room = window.Lines > 1 ? window.Lines - 1 : lines.size();
  std::string screen(kHome);
  screen.append(Truncated(title, window.Columns)).append(kRestOfLine);
  std::vector<std::string> known_lines = LinesOf(known);
  std::ranges::sort(known_lines);
  const bool cut = lines.size() > room;
  const std::size_t shown = cut ? room - 1 : lines.size();
  for (std::size_t i = 0; i < shown; ++i) {
    const bool is_new = !known.empty() && !std::ranges::binary_search(known_lines, lines[i]);
    // A highlighted line has no other style.
    screen.append(is_new ? kHighlight : "").append(lines[i]).append(is_new ? kPlain : "");
    screen.append(kRestOfLine);
  }
  if (cut) {
    screen += "(" + std::to_string(lines.size() - shown) + " more lines)";
  } else {
    screen.pop_back();  // the last line feed, which would scroll a full window
  }
  screen.append(kRestOfScreen);
  output_.Write(screen);
}

bool WaitUntil(std::chrono::steady_clock::time_point time, const StandardOutput& output) {
  // Let in while it waits only: a signal between the question and the wait would not end it.
  sigset_t interrupting;
  sigset_t before;
  sigemptyset(&interrupting);
  sigaddset(&interrupting, SIGWINCH);
  sigaddset(&interrupting, SIGTSTP);
  sigprocmask(SIG_BLOCK, &interrupting, &before);
  while (g_interrupted == 0) {
    const auto rest = std::max(time - std::chrono::steady_clock::now(),
                               std::chrono::steady_clock::duration::zero());
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(rest);
    const timespec timeout = {seconds.count(), std::chrono::nanoseconds(rest - seconds).count()};
    // Without an event of its own a pipe reports when its reader is gone.
    pollfd reader = {.fd = output.Descriptor(), .events = 0, .revents = 0};
    const int ready = ppoll(&reader, 1, &timeout, &before);
    if (ready == 0) {
      break;
    }
    if (ready > 0) {
      sigprocmask(SIG_SETMASK, &before, nullptr);
      throw std::system_error(EPIPE, std::generic_category(), "standard output");
    }
  }
  sigprocmask(SIG_SETMASK, &before, nullptr);
  return std::exchange(g_interrupted, 0) == 0;
}

}  // namespace host
