#include "tests/host/pseudo_terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utmp.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <regex>
#include <stdexcept>

namespace test_support {
namespace {

constexpr auto kPatience = std::chrono::minutes(1);
constexpr int kStepMilliseconds = 20;

winsize Window(WindowSize size) {
  winsize window = {};
  window.ws_col = size.Columns;
  window.ws_row = size.Lines;
  return window;
}

[[noreturn]] void Become(const std::vector<std::string>& arguments,
                         const std::vector<std::string>& environment) {
  for (const char* const name : {"NO_COLOR", "COLUMNS", "LINES", "PAGER", "LESS"}) {
    unsetenv(name);
  }
  setenv("TERM", "xterm", 1);
  for (const std::string& variable : environment) {
    putenv(const_cast<char*>(variable.c_str()));
  }
  std::vector<char*> argv;
  for (const std::string& argument : arguments) {
    argv.push_back(const_cast<char*>(argument.c_str()));
  }
  argv.push_back(nullptr);
  execvp(argv[0], argv.data());
  _exit(127);
}

}  // namespace

PseudoTerminal::PseudoTerminal(const std::vector<std::string>& arguments,
                               const std::vector<std::string>& environment, WindowSize size) {
  const winsize window = Window(size);
  if (openpty(&terminal_, &kept_, nullptr, nullptr, &window) != 0) {
    throw std::runtime_error("openpty");
  }
  fcntl(terminal_, F_SETFD, FD_CLOEXEC);
  process_ = fork();
  if (process_ == -1) {
    throw std::runtime_error("fork");
  }
  if (process_ == 0) {
    login_tty(kept_);
    Become(arguments, environment);
  }
}

PseudoTerminal::~PseudoTerminal() {
  if (!reaped_) {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
  }
  close(terminal_);
  close(kept_);
}

void PseudoTerminal::Resize(WindowSize size) const {
  const winsize window = Window(size);
  ioctl(terminal_, TIOCSWINSZ, &window);
}

void PseudoTerminal::Type(std::string_view keys) const {
  if (write(terminal_, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size())) {
    throw std::runtime_error("the terminal takes no keys");
  }
}

// False when nothing came within a step.
bool PseudoTerminal::ReadBlock() {
  pollfd ready = {.fd = terminal_, .events = POLLIN, .revents = 0};
  if (poll(&ready, 1, kStepMilliseconds) <= 0 || (ready.revents & POLLIN) == 0) {
    return false;
  }
  char block[4096];
  const ssize_t count = read(terminal_, block, sizeof block);
  if (count > 0) {
    output_.append(block, static_cast<std::size_t>(count));
  }
  return count > 0;
}

bool PseudoTerminal::WaitFor(std::string_view text) {
  const auto until = std::chrono::steady_clock::now() + kPatience;
  while (output_.find(text) == std::string::npos && std::chrono::steady_clock::now() < until) {
    if (!ReadBlock() && reaped_) {
      break;
    }
    reaped_ = reaped_ || waitpid(process_, &status_, WNOHANG) == process_;
  }
  return output_.find(text) != std::string::npos;
}

int PseudoTerminal::WaitForEnd(std::string_view keys) {
  const auto until = std::chrono::steady_clock::now() + kPatience;
  while (std::chrono::steady_clock::now() < until) {
    const bool silent = !ReadBlock();
    if (silent && reaped_) {
      break;
    }
    Type(silent ? keys : "");
    reaped_ = reaped_ || waitpid(process_, &status_, WNOHANG) == process_;
  }
  return reaped_ && WIFEXITED(status_) ? WEXITSTATUS(status_) : -1;
}

termios PseudoTerminal::Modes() const {
  termios modes = {};
  tcgetattr(kept_, &modes);
  return modes;
}

std::string WithoutEscapes(std::string_view text) {
  static const std::regex escape("\x1b(\\[[0-9;?]*[A-Za-z]|[=>])|\r");
  return std::regex_replace(std::string(text), escape, "");
}

}  // namespace test_support
