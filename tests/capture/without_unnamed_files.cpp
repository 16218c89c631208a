#include "tests/capture/without_unnamed_files.h"

#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <system_error>

#include "sandbox/descriptor.h"
#include "tests/support/paths.h"

namespace captured {
namespace {

using sandbox::Descriptor;

// What only files without names are opened with.
constexpr std::uint32_t kUnnamed = O_TMPFILE & ~O_DIRECTORY;

int Check(long result, const char* what) {
  if (result == -1) {
    throw std::system_error(errno, std::generic_category(), what);
  }
  return static_cast<int>(result);
}

// Keeps this process from such files and from modes, which they mostly have neither, and hands each
// fsync() over. Returns where those arrive.
int Restrict(int error) {
  const auto load = [](std::size_t offset) {
    return sock_filter BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<std::uint32_t>(offset));
  };
  const auto when = [](std::uint32_t value, std::uint8_t yes, std::uint8_t no) {
    return sock_filter BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, value, yes, no);
  };
  const auto fail = [](int number) {
    return sock_filter BPF_STMT(BPF_RET | BPF_K,
                                static_cast<std::uint32_t>(SECCOMP_RET_ERRNO | number));
  };
  std::array<sock_filter, 10> lines = {
      load(offsetof(seccomp_data, nr)),
      when(SYS_fsync, 5, 0),
      when(SYS_fchmod, 6, 0),
      when(SYS_openat, 0, 2),
      load(offsetof(seccomp_data, args) + 2 * sizeof(std::uint64_t)),
      sock_filter BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, kUnnamed, 2, 0),
      sock_filter BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
      sock_filter BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF),
      fail(error),
      fail(EPERM)};
  const sock_fprog program = {static_cast<unsigned short>(lines.size()), lines.data()};
  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  return static_cast<int>(
      syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_NEW_LISTENER, &program));
}

[[noreturn]] void BeProgram(const std::string& file, int error, int numbers, int go_on) {
  const int calls = Restrict(error);
  char byte = 0;
  if (write(numbers, &calls, sizeof calls) == sizeof calls && read(go_on, &byte, 1) == 1) {
    const std::string program = test_support::HostProgram();
    execl(program.c_str(), program.c_str(), "capture", file.c_str(), nullptr);
  }
  _exit(127);
}

// Lets each fsync() go on, after the signal has been sent to who calls it.
void Attend(const Descriptor& calls, int signal) {
  pollfd wanted = {calls.Number(), POLLIN, 0};
  while (poll(&wanted, 1, -1) == 1 && (wanted.revents & POLLIN) != 0) {
    struct {
      seccomp_notif Call;
      std::array<char, 512> Room;  // for a newer kernel
    } seen = {};
    if (ioctl(calls.Number(), SECCOMP_IOCTL_NOTIF_RECV, &seen) == 0) {
      if (signal != 0) {
        kill(static_cast<pid_t>(seen.Call.pid), signal);
      }
      seccomp_notif_resp response = {};
      response.id = seen.Call.id;
      response.flags = SECCOMP_USER_NOTIF_FLAG_CONTINUE;
      static_cast<void>(ioctl(calls.Number(), SECCOMP_IOCTL_NOTIF_SEND, &response));
    }
  }
}

struct Pipe {
  Pipe() {
    std::array<int, 2> ends = {};
    Check(pipe2(ends.data(), O_CLOEXEC), "a pipe");
    Read = Descriptor(ends[0]);
    Write = Descriptor(ends[1]);
  }
  Descriptor Read{-1};
  Descriptor Write{-1};
};

}  // namespace

int CaptureWithoutUnnamedFiles(const std::string& file, int error, int signal) {
  const Pipe numbers;
  const Pipe go_on;
  const pid_t child = Check(fork(), "a process");
  if (child == 0) {
    BeProgram(file, error, numbers.Write.Number(), go_on.Read.Number());
  }
  int number = -1;
  Check(read(numbers.Read.Number(), &number, sizeof number), "read");
  if (number == -1) {
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    throw std::system_error(EPERM, std::generic_category(), "seccomp");
  }
  const Descriptor process(Check(syscall(SYS_pidfd_open, child, 0), "the process"));
  const Descriptor calls(Check(syscall(SYS_pidfd_getfd, process.Number(), number, 0), "its calls"));
  Check(write(go_on.Write.Number(), "", 1), "write");
  Attend(calls, signal);
  int status = 0;
  Check(waitpid(child, &status, 0), "wait");
  return status;
}

}  // namespace captured
