#include "host/terminal.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <iterator>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "host/output.h"

namespace host {
namespace {

constexpr std::size_t kLeastColumns = 40;

constexpr ColourName kColourRows[] = {
    {"auto", Colour::kAuto}, {"always", Colour::kAlways}, {"never", Colour::kNever}};

// "" when it is not set.
std::string_view Variable(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : "";
}

// 0 for what is no number.
std::size_t NumberIn(std::string_view text) {
  std::size_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() ? number : 0;
}

// The environment of this process, with the variable where it is not set.
std::vector<std::string> EnvironmentWith(
    const std::vector<std::pair<const char*, const char*>>& defaults) {
  std::vector<std::string> all;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    all.emplace_back(*variable);
  }
  for (const auto& [name, value] : defaults) {
    if (std::getenv(name) == nullptr) {
      all.push_back(std::string(name) + "=" + value);
    }
  }
  return all;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

// The keys that end a program belong to the pager as long as it runs, and it may end before it has
// read all.
class SignalsLeftToPager {
 public:
  SignalsLeftToPager() {
    struct sigaction ignore = {};
    ignore.sa_handler = SIG_IGN;
    for (std::size_t i = 0; i < std::size(kSignals); ++i) {
      sigaction(kSignals[i], &ignore, &before_[i]);
    }
  }
  ~SignalsLeftToPager() {
    for (std::size_t i = 0; i < std::size(kSignals); ++i) {
      sigaction(kSignals[i], &before_[i], nullptr);
    }
  }
  SignalsLeftToPager(const SignalsLeftToPager&) = delete;
  SignalsLeftToPager& operator=(const SignalsLeftToPager&) = delete;

  static constexpr int kSignals[] = {SIGINT, SIGQUIT, SIGPIPE};

 private:
  struct sigaction before_[std::size(kSignals)] = {};
};

// Starts `command`, which reads what is written to `*input` and writes to `terminal`. Returns its
// process, or -1 when it cannot be started.
pid_t Start(std::vector<std::string> command, int terminal, int* input) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "pager");
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[0], STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, terminal, STDOUT_FILENO);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : SignalsLeftToPager::kSignals) {
    sigaddset(&signals, signal);
  }
  posix_spawnattr_setsigdefault(&attributes, &signals);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
  std::vector<std::string> environment =
      EnvironmentWith({{"LESS", "FRX"}, {"LESSCHARSET", "utf-8"}});
  pid_t process = -1;
  const int error = posix_spawnp(&process, command.front().c_str(), &actions, &attributes,
                                 Pointers(command).data(), Pointers(environment).data());
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[0]);
  if (error != 0) {
    close(ends[1]);
    return -1;
  }
  *input = ends[1];
  return process;
}

// A pager that ends early has shown what was wanted of the text.
void Feed(int input, std::string_view text) {
  try {
    WriteAll(input, text, "pager");
  } catch (const std::system_error& failure) {
    if (failure.code() != std::errc::broken_pipe) {
      close(input);
      throw;
    }
  }
  close(input);
}

}  // namespace

const std::span<const ColourName> kColourNames = kColourRows;

Window WindowOf(int descriptor) {
  Window window;
  struct winsize size = {};
  if (isatty(descriptor) != 1) {
    return window;
  }
  if (ioctl(descriptor, TIOCGWINSZ, &size) == 0) {
    window.Lines = size.ws_row;
  }
  const std::size_t columns = size.ws_col != 0 ? size.ws_col : NumberIn(Variable("COLUMNS"));
  window.Columns = columns != 0 ? std::max(columns, kLeastColumns) : kPipeColumns;
  return window;
}

bool WantsScreen(int descriptor) {
  return isatty(descriptor) == 1 && !Variable("TERM").empty() && Variable("TERM") != "dumb";
}

bool WantsColour(int descriptor, Colour when) {
  if (when != Colour::kAuto) {
    return when == Colour::kAlways;
  }
  return WantsScreen(descriptor) && Variable("NO_COLOR").empty();
}

bool ShowInPager(int descriptor, std::string_view text) {
  const Window window = WindowOf(descriptor);
  const char* const wanted = std::getenv("PAGER");
  const std::string pager = wanted != nullptr ? wanted : "less";
  const auto lines = static_cast<std::size_t>(std::ranges::count(text, '\n'));
  const bool fits = lines < window.Lines;  // with a line for the prompt of the shell
  if (!WantsScreen(descriptor) || fits || pager.empty() || pager == "cat") {
    return false;
  }
  const std::vector<std::string> command = wanted != nullptr
                                               ? std::vector<std::string>{"/bin/sh", "-c", pager}
                                               : std::vector<std::string>{pager};
  const SignalsLeftToPager signals;
  int input = -1;
  const pid_t process = Start(command, descriptor, &input);
  if (process == -1) {
    return false;
  }
  Feed(input, text);
  int status = 0;
  while (waitpid(process, &status, 0) == -1 && errno == EINTR) {
  }
  // The shell's way to say that there is no such program, or that it cannot be run.
  return !WIFEXITED(status) || (WEXITSTATUS(status) != 127 && WEXITSTATUS(status) != 126);
}

}  // namespace host
