// The calls through which the collector asks the system, each reported to the observer. Results and
// errno are those of the system. The collector makes these calls nowhere else, except that the log
// limiter asks for the time.
#pragma once

#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <sys/stat.h>
#include <sys/sysinfo.h>
#include <sys/types.h>
#include <sys/vfs.h>

#include <cstddef>
#include <cstdint>
#include <ctime>

namespace hardware::calls {

int Open(const char* path, int flags);

// openat: opens the last name of `path` in `folder`, which the names before it lead to.
int OpenIn(int folder, const char* path, int flags);

// `offset`: how much of `path` was read through this descriptor before.
ssize_t Read(int descriptor, const char* path, std::uint64_t offset, char* bytes,
             std::size_t limit);

// fstat and stat.
int FileStatus(int descriptor, const char* path, struct stat* status);
int PathStatus(const char* path, struct stat* status);

// readlinkat: the target of a link that was opened with O_PATH.
ssize_t LinkTarget(int descriptor, const char* path, char* target, std::size_t limit);

// ioctl without an argument.
int Request(int descriptor, const char* path, unsigned long request);

int Storage(const char* path, struct statfs* storage);
int System(struct sysinfo* system);

// getifaddrs.
int Interfaces(ifaddrs** first);

// A datagram socket.
int Socket();

// The hardware address of the interface that `request` names.
int HardwareAddress(int descriptor, ifreq* request);

// getnameinfo: the address as numbers.
int HostText(const char* interface, const sockaddr* address, socklen_t bytes, char* text,
             socklen_t limit);

std::time_t Now();
void LocalTime(std::time_t time, std::tm* broken_down);
void UtcTime(std::time_t time, std::tm* broken_down);

}  // namespace hardware::calls
