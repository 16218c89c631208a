#include "sandbox/system_log.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <array>
#include <fstream>
#include <string_view>

#include "sandbox/check.h"
#include "sandbox/files.h"

namespace sandbox {
namespace {

// "<14>Nov 20 18:09:00 program[pid]: text"
SystemLog::Message Parse(const std::string& datagram) {
  constexpr std::size_t kTime = 16;  // with its blank
  const std::size_t angle = datagram.find('>');
  if (datagram.empty() || datagram[0] != '<' || angle == std::string::npos) {
    return {0, 0, datagram};
  }
  const int code = std::stoi(datagram.substr(1, angle - 1));
  const std::size_t colon = datagram.find(": ", angle + kTime);
  return {LOG_PRI(code), code & LOG_FACMASK,
          colon == std::string::npos ? datagram.substr(angle + 1) : datagram.substr(colon + 2)};
}

Descriptor Listen() {
  RemoveFile(kSystemLog);
  // A queue of ten, the kernel's default, would soon stop a program that logs and reads in turn.
  // Only the machine's own root may change it, for the sockets made from now on.
  // A text, since a number would get the marks of the locale.
  std::ofstream("/proc/sys/net/unix/max_dgram_qlen") << "1000";
  Descriptor listening(
      Check(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0), "open the log socket"));
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  std::string_view(kSystemLog).copy(address.sun_path, sizeof address.sun_path - 1);
  Check(bind(listening.Number(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
        "bind", kSystemLog);
  return listening;
}

}  // namespace

SystemLog::SystemLog() : socket_(Listen()) {}

SystemLog::~SystemLog() { unlink(kSystemLog); }

std::vector<SystemLog::Message> SystemLog::Read() {
  std::vector<Message> messages;
  std::array<char, 65536> buffer = {};
  for (;;) {
    const ssize_t count = recv(socket_.Number(), buffer.data(), buffer.size(), 0);
    if (count == -1) {
      return messages;
    }
    messages.push_back(Parse({buffer.data(), static_cast<std::size_t>(count)}));
  }
}

}  // namespace sandbox
