#include "sandbox/hardware_addresses.h"

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <net/if.h>
#include <netinet/ether.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <system_error>
#include <vector>

#include "sandbox/check.h"
#include "sandbox/descriptor.h"
#include "sandbox/enter.h"
#include "sandbox/files.h"
#include "sandbox/format/text.h"

namespace sandbox {
namespace {

// Lines of an interface, an errno and an address.
constexpr const char* kAnswers = "/.sandbox/hardware-addresses";

#if defined(__x86_64__)
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_AARCH64;
#else
constexpr std::uint32_t kArchitecture = 0;  // nothing is handed over
#endif

std::map<std::string, HardwareAnswer> ReadAnswers() {
  std::map<std::string, HardwareAnswer> answers;
  ForEachLine(ReadFile(kAnswers), [&answers](const std::vector<std::string>& words) {
    answers[words.at(0)] = {std::stoi(words.at(1)), words.at(2)};
  });
  return answers;
}

// Hands the question for a hardware address over, and lets everything else pass. Returns where the
// questions arrive, -1 when the kernel refuses.
int Divert() {
  const auto load = [](std::size_t offset) {
    return sock_filter BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<std::uint32_t>(offset));
  };
  const auto pass_unless = [](std::uint32_t value, std::uint8_t rest) {
    return sock_filter BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, value, 0, rest);
  };
  std::array<sock_filter, 8> lines = {load(offsetof(seccomp_data, arch)),
                                      pass_unless(kArchitecture, 5),
                                      load(offsetof(seccomp_data, nr)),
                                      pass_unless(SYS_ioctl, 3),
                                      load(offsetof(seccomp_data, args) + sizeof(std::uint64_t)),
                                      pass_unless(SIOCGIFHWADDR, 1),
                                      sock_filter BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF),
                                      sock_filter BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
  const sock_fprog program = {static_cast<unsigned short>(lines.size()), lines.data()};
  return static_cast<int>(
      syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_NEW_LISTENER, &program));
}

bool Copy(pid_t process, ifreq* request, std::uint64_t address, bool back) {
  const iovec here = {request, sizeof *request};
  iovec there = {nullptr, sizeof *request};
  std::memcpy(&there.iov_base, &address, sizeof there.iov_base);  // of the other process
  const auto copied = back ? process_vm_writev(process, &here, 1, &there, 1, 0)
                           : process_vm_readv(process, &here, 1, &there, 1, 0);
  return copied == static_cast<ssize_t>(sizeof *request);
}

void Answer(int questions, const seccomp_notif& asked) {
  seccomp_notif_resp response = {};
  response.id = asked.id;
  response.flags = SECCOMP_USER_NOTIF_FLAG_CONTINUE;
  ifreq request = {};
  const auto process = static_cast<pid_t>(asked.pid);
  if (Copy(process, &request, asked.data.args[2], false)) {
    const std::string name(request.ifr_name, strnlen(request.ifr_name, IFNAMSIZ));
    const auto answers = ReadAnswers();
    auto found = answers.find(name);
    if (found == answers.end()) {  // an alias is asked for its interface
      found = answers.find(name.substr(0, name.find(':')));
    }
    if (found != answers.end() && found->second.Error != 0) {
      response.flags = 0;
      response.error = -found->second.Error;
    } else if (found != answers.end()) {
      ether_addr address = {};
      ether_aton_r(found->second.Mac.c_str(), &address);
      std::memcpy(request.ifr_hwaddr.sa_data, &address, sizeof address);
      response.flags =
          Copy(process, &request, asked.data.args[2], true) ? 0 : SECCOMP_USER_NOTIF_FLAG_CONTINUE;
    }
  }
  static_cast<void>(ioctl(questions, SECCOMP_IOCTL_NOTIF_SEND, &response));
}

[[noreturn]] void Serve(int questions) {
  // It must not keep anybody's files open.
  const Descriptor nowhere(open("/dev/null", O_RDWR | O_CLOEXEC));
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    dup2(nowhere.Number(), stream);
  }
  dup2(questions, STDERR_FILENO + 1);
  close_range(STDERR_FILENO + 2, ~0U, 0);
  for (;;) {
    // A newer kernel may write more than this one is known to.
    struct {
      seccomp_notif Question;
      std::array<char, 512> Room;
    } asked = {};
    if (ioctl(STDERR_FILENO + 1, SECCOMP_IOCTL_NOTIF_RECV, &asked) == 0) {
      try {
        Answer(STDERR_FILENO + 1, asked.Question);
      } catch (const std::exception&) {
        _exit(EXIT_FAILURE);  // the question then fails
      }
    } else if (errno != ENOENT && errno != EINTR) {
      _exit(EXIT_SUCCESS);
    }
  }
}

// The process that answers is nobody's child but process 1's.
void StartServing() {
  const Descriptor questions(Divert());
  if (!questions) {
    throw Refused("hardware addresses: " + std::generic_category().message(errno));
  }
  const pid_t child = Check(fork(), "start what answers for hardware addresses");
  if (child == 0) {
    if (fork() == 0) {
      Serve(questions.Number());
    }
    _exit(EXIT_SUCCESS);
  }
  waitpid(child, nullptr, 0);
}

}  // namespace

void SetHardwareAddresses(const std::map<std::string, HardwareAnswer>& answers) {
  RequireInside();
  static bool serving = false;
  std::string text;
  for (const auto& [name, answer] : answers) {
    text += WordText(name) + " " + std::to_string(answer.Error) + " " +
            (answer.Mac.empty() ? "-" : answer.Mac) + "\n";
  }
  WriteFile(kAnswers, text);
  if (!serving && !answers.empty()) {
    StartServing();
    serving = true;
  }
}

}  // namespace sandbox
