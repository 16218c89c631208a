#include "sandbox/enter.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <poll.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/statfs.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "sandbox/check.h"
#include "sandbox/descriptor.h"
#include "sandbox/device_server.h"
#include "sandbox/devices.h"
#include "sandbox/interfaces.h"
#include "sandbox/root.h"

namespace sandbox {
namespace {

constexpr int kNamespaces = CLONE_NEWNS | CLONE_NEWPID | CLONE_NEWNET | CLONE_NEWIPC | CLONE_NEWUTS;

struct Pipe {
  Descriptor Read;
  Descriptor Write;
};

Pipe MakePipe() {
  std::array<int, 2> ends = {};
  Check(pipe2(ends.data(), O_CLOEXEC), "make a pipe");
  return {Descriptor(ends[0]), Descriptor(ends[1])};
}

// While it lives, the terminal's interrupt and quit keys are left to the body.
class TerminalKeysIgnored {
 public:
  TerminalKeysIgnored() {
    struct sigaction ignore = {};
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGINT, &ignore, &interrupt_);
    sigaction(SIGQUIT, &ignore, &quit_);
  }
  TerminalKeysIgnored(const TerminalKeysIgnored&) = delete;
  TerminalKeysIgnored& operator=(const TerminalKeysIgnored&) = delete;
  ~TerminalKeysIgnored() {
    sigaction(SIGINT, &interrupt_, nullptr);
    sigaction(SIGQUIT, &quit_, nullptr);
  }

 private:
  struct sigaction interrupt_ = {};
  struct sigaction quit_ = {};
};

// Exit status of `process` as a shell gives it; others that end meanwhile are reaped when it is -1.
int WaitFor(pid_t process, pid_t which) {
  for (;;) {
    int status = 0;
    const pid_t ended = waitpid(which, &status, 0);
    if (ended == -1 && errno != EINTR) {
      Fail("wait for the sandbox");
    }
    if (ended == process) {
      return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    }
  }
}

std::string ReadToEnd(const Descriptor& source) {
  std::string text;
  std::array<char, 512> chunk = {};
  for (;;) {
    const ssize_t count = read(source.Number(), chunk.data(), chunk.size());
    if (count > 0) {
      text.append(chunk.data(), static_cast<std::size_t>(count));
    } else if (count == 0 || errno != EINTR) {
      return text;
    }
  }
}

struct Identity {
  uid_t User;
  gid_t Group;
};

// In a user namespace the caller becomes root.
void MapToRoot(const Identity& caller) {
  const auto write = [](const char* path, const std::string& line) {
    std::ofstream file(path);
    file << line << std::flush;
    if (!file) {
      Fail("write", path);
    }
  };
  write("/proc/self/setgroups", "deny");
  write("/proc/self/uid_map", "0 " + std::to_string(caller.User) + " 1");
  write("/proc/self/gid_map", "0 " + std::to_string(caller.Group) + " 1");
}

// The end of the caller is the end of the sandbox. The caller holds the only reading end of
// `report`: a poll error on the writing end means that it went before it could be watched.
void EndWithCaller(const Descriptor& report) {
  Check(prctl(PR_SET_PDEATHSIG, SIGKILL), "ask for the signal of the caller's death");
  pollfd probe = {report.Number(), 0, 0};
  if (poll(&probe, 1, 0) > 0 && (probe.revents & POLLERR) != 0) {
    _exit(EXIT_FAILURE);
  }
}

// An exception of the body must not unwind into the caller's frames, of which this is a copy.
[[noreturn]] void RunBody(const std::function<int()>& body) noexcept { std::exit(body()); }

// Process 1: builds the sandbox, starts the body and reaps until the body is done. The kernel then
// kills whatever is left of the namespace.
[[noreturn]] void Init(const Options& options, const std::vector<Bind>& binds,
                       const Identity* caller, Descriptor report,
                       const std::function<int()>& body) noexcept {
  pid_t started = -1;
  try {
    EndWithCaller(report);
    if (caller != nullptr) {
      MapToRoot(*caller);
    }
    EnterRoot(binds, options.RootBytes, options.LastProcess);
    RaiseLoopback();
    StartDeviceServer();
    started = Check(fork(), "start the body");
  } catch (const std::exception& error) {
    dprintf(report.Number(), "%s", error.what());
    _exit(EXIT_FAILURE);
  }
  report.Close();
  if (started == 0) {
    RunBody(body);
  }
  _exit(WaitFor(started, -1));
}

// fork() into new namespaces. In the child the thread library's idea of the thread id is stale; the
// child only sets up, forks the body in the ordinary way and waits.
pid_t CloneInto(int namespaces) {
  return static_cast<pid_t>(
      syscall(SYS_clone, namespaces | SIGCHLD, nullptr, nullptr, nullptr, nullptr));
}

}  // namespace

Options OptionsFromEnvironment() {
  Options options;
  const auto value = [](const char* name) {
    const char* text = std::getenv(name);
    return std::string(text != nullptr ? text : "");
  };
  if (value("STATUS_UPDATE_GOLDEN") == "1") {
    options.Writable.push_back(SourcePath("").parent_path());
  }
  const std::string list = value("SANDBOX_BIND");
  for (std::size_t begin = 0; begin < list.size();) {
    const std::size_t end = std::min(list.find(':', begin), list.size());
    if (end > begin) {
      options.Writable.emplace_back(list.substr(begin, end - begin));
    }
    begin = end + 1;
  }
  return options;
}

bool Inside() {
  struct statfs root = {};
  return statfs("/", &root) == 0 && root.f_type == TMPFS_MAGIC && access(kDeviceFolder, F_OK) == 0;
}

int RunInside(const Options& options, const std::function<int()>& body) {
  const std::vector<Bind> binds = PlanBinds(options.Writable);
  const Identity caller = {geteuid(), getegid()};
  Pipe report = MakePipe();
  std::fflush(nullptr);  // or the body would write the caller's pending output again

  bool mapped = caller.User != 0;
  pid_t init = CloneInto(kNamespaces | (mapped ? CLONE_NEWUSER : 0));
  if (init == -1 && errno == EPERM && !mapped) {
    mapped = true;
    init = CloneInto(kNamespaces | CLONE_NEWUSER);
  }
  if (init == 0) {
    report.Read.Close();
    Init(options, binds, mapped ? &caller : nullptr, std::move(report.Write), body);
  }
  if (init == -1) {
    throw Refused("new namespaces: " + std::generic_category().message(errno));
  }
  const TerminalKeysIgnored ignored;
  report.Write.Close();
  const std::string refusal = ReadToEnd(report.Read);
  const int status = WaitFor(init, init);
  if (!refusal.empty()) {
    throw Refused(refusal);
  }
  return status;
}

}  // namespace sandbox
