#include "hardware/system_calls.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>

#include "collector/state/report.h"
#include "hardware/requests.h"

namespace hardware::calls {
namespace {

using observe::Answers;
using observe::Ask;
using observe::Asks;
using observe::Call;

Asks About(Call call, const char* source, int descriptor = -1) {
  Asks question;
  question.What = call;
  question.Source = source;
  question.Descriptor = descriptor;
  return question;
}

void AskTime(Call call, std::time_t time, std::tm* broken_down,
             std::tm* (*convert)(const std::time_t*, std::tm*)) {
  Ask(
      About(call, ""), [&] { return convert(&time, broken_down) == nullptr ? -1 : 0; },
      [&](int, Answers& answer) { answer.Time = broken_down; });
}

}  // namespace

int Open(const char* path, int flags) {
  Asks question = About(Call::kOpen, path);
  question.Number = static_cast<unsigned long>(flags);
  return Ask(question, [&] { return open(path, flags); });
}

int OpenIn(int folder, const char* path, int flags) {
  Asks question = About(Call::kOpen, path, folder);
  question.Number = static_cast<unsigned long>(flags);
  return Ask(question, [&] { return openat(folder, std::strrchr(path, '/') + 1, flags); });
}

ssize_t Read(int descriptor, const char* path, std::uint64_t offset, char* bytes,
             std::size_t limit) {
  Asks question = About(Call::kRead, path, descriptor);
  question.Offset = offset;
  question.Limit = limit;
  return Ask(
      question, [&] { return read(descriptor, bytes, limit); },
      [&](ssize_t count, Answers& answer) {
        answer.Bytes = {bytes, count > 0 ? static_cast<std::size_t>(count) : 0};
      });
}

int FileStatus(int descriptor, const char* path, struct stat* status) {
  return Ask(
      About(Call::kFileStatus, path, descriptor), [&] { return fstat(descriptor, status); },
      [&](int result, Answers& answer) { answer.Status = result == 0 ? status : nullptr; });
}

int PathStatus(const char* path, struct stat* status) {
  return Ask(
      About(Call::kPathStatus, path), [&] { return stat(path, status); },
      [&](int result, Answers& answer) { answer.Status = result == 0 ? status : nullptr; });
}

ssize_t LinkTarget(int descriptor, const char* path, char* target, std::size_t limit) {
  Asks question = About(Call::kLinkTarget, path, descriptor);
  question.Limit = limit;
  return Ask(
      question, [&] { return readlinkat(descriptor, "", target, limit); },
      [&](ssize_t length, Answers& answer) {
        answer.Bytes = {target, length > 0 ? static_cast<std::size_t>(length) : 0};
      });
}

int Request(int descriptor, const char* path, unsigned long request) {
  Asks question = About(Call::kRequest, path, descriptor);
  question.Number = request;
  return Ask(question, [&] { return ioctl(descriptor, request); });
}

int Storage(const char* path, struct statfs* storage) {
  return Ask(
      About(Call::kStorage, path), [&] { return statfs(path, storage); },
      [&](int result, Answers& answer) { answer.Storage = result == 0 ? storage : nullptr; });
}

int System(struct sysinfo* system) {
  return Ask(
      About(Call::kSystem, ""), [&] { return sysinfo(system); },
      [&](int result, Answers& answer) { answer.System = result == 0 ? system : nullptr; });
}

int Interfaces(ifaddrs** first) {
  return Ask(
      About(Call::kInterfaces, ""), [&] { return getifaddrs(first); },
      [&](int result, Answers& answer) { answer.Interfaces = result == 0 ? *first : nullptr; });
}

int Socket() {
  return Ask(About(Call::kSocket, ""),
             [] { return socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0); });
}

int HardwareAddress(int descriptor, ifreq* request) {
  return Ask(
      About(Call::kHardwareAddress, request->ifr_name, descriptor),
      [&] { return ioctl(descriptor, requests::socket::kHardwareAddress, request); },
      [&](int, Answers& answer) {
        answer.Bytes = {request->ifr_hwaddr.sa_data, IFHWADDRLEN};
      });
}

int HostText(const char* interface, const sockaddr* address, socklen_t bytes, char* text,
             socklen_t limit) {
  Asks question = About(Call::kHostText, interface);
  question.Address = address;
  question.AddressBytes = bytes;
  return Ask(
      question,
      [&] { return getnameinfo(address, bytes, text, limit, nullptr, 0, NI_NUMERICHOST); },
      [&](int result, Answers& answer) {
        if (result == 0) {
          answer.Bytes = text;
        } else if (result != EAI_SYSTEM) {
          answer.Error = 0;
        }
      });
}

std::time_t Now() {
  return Ask(About(Call::kTime, ""), [] { return std::time(nullptr); });
}

void LocalTime(std::time_t time, std::tm* broken_down) {
  AskTime(Call::kLocalTime, time, broken_down, localtime_r);
}

void UtcTime(std::time_t time, std::tm* broken_down) {
  AskTime(Call::kUtcTime, time, broken_down, gmtime_r);
}

}  // namespace hardware::calls
