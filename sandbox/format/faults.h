#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace sandbox {

// How a file fails; 0 stands for a call that does not.
struct FileFault {
  int Open = 0;                 // errno of open()
  int Status = 0;               // errno of stat() and fstat()
  int Read = 0;                 // errno of read()
  std::uint64_t ReadAfter = 0;  // bytes that are read before read() fails
  // It is no regular file: a named pipe, which opens at once for reading and writing. It stands for
  // everything that opens and is no regular file; a folder can be a folder.
  bool IsPipe = false;

  bool operator==(const FileFault&) const = default;
};

// What fails on a controller besides its device nodes.
struct Faults {
  std::map<std::string, FileFault> Files = {};        // by absolute path
  std::map<std::string, int> HardwareAddresses = {};  // errno of the question, by interface
  // SQLite's code of a query that fails though the database opens; 0: none. Whatever the code,
  // there is no table `status` then.
  int Query = 0;

  bool operator==(const Faults&) const = default;
};

// Reads the text form, in which `#` starts a comment:
//
//     /proc/meminfo        open 13            open() fails with this errno
//     /etc/resolv.conf     read 5 after 120   read() fails once 120 bytes (or 0) were read
//     /var/lib/dpkg/status status 13          stat() and fstat() fail
//     /etc/resolv.conf     type fifo          no regular file
//     eth0                 hardware-address 19
//     /dev/shm/status.db   query 1            there is no table of rows
//
// A path may have several lines. Throws std::runtime_error with the line number when a line is none
// of these.
Faults ParseFaults(std::string_view text);

// Writes it.
std::string FaultsText(const Faults& faults);

}  // namespace sandbox
