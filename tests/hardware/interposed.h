// Calls of the C library that this program puts itself in front of, because no fixture can bring
// about what they then tell: opens are recorded and refused, other calls refused or what they found
// changed. Without an object of these classes every call goes through untouched.
#pragma once

#include <ifaddrs.h>
#include <sys/vfs.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

// Records the files that are opened while it lives.
class Opens {
 public:
  struct File {
    std::string Path;
    int Flags;
  };

  Opens();
  Opens(const Opens&) = delete;
  Opens& operator=(const Opens&) = delete;
  ~Opens();

  // Makes open() of `path` fail from its `nth` time on, counted from 1.
  void Refuse(const std::string& path, int nth);

  std::vector<std::string> Paths() const;
  const std::vector<File>& Files() const { return m_Files; }

  // Records the file; false when it is to be refused.
  bool Admit(const std::string& path, int flags);

 private:
  std::vector<File> m_Files;
  std::string m_RefusedPath;
  int m_RefusedFrom = 0;
};

enum class Call { kGetifaddrs, kGetnameinfo, kRead, kSocket, kStatfs, kSysinfo };

// Makes the `nth` call from now on fail, counted from 1, while it lives. `error` is its errno; 0:
// the usual one of that call.
class Failure {
 public:
  explicit Failure(Call call, int nth = 1, int error = 0);
  Failure(const Failure&) = delete;
  Failure& operator=(const Failure&) = delete;
  ~Failure();
};

// Makes read() give at most `limit` bytes at a time, while it lives.
class ShortReads {
 public:
  explicit ShortReads(std::size_t limit);
  ShortReads(const ShortReads&) = delete;
  ShortReads& operator=(const ShortReads&) = delete;
  ~ShortReads();
};

// Changes the interfaces that getifaddrs() lists, while it lives.
class InterfaceEdit {
 public:
  explicit InterfaceEdit(std::function<void(ifaddrs*)> edit);
  InterfaceEdit(const InterfaceEdit&) = delete;
  InterfaceEdit& operator=(const InterfaceEdit&) = delete;
  ~InterfaceEdit();
};

// How many lists of getifaddrs() have not been given back to freeifaddrs().
int InterfaceListsHeld();

// Changes what statfs() finds, while it lives.
class StorageEdit {
 public:
  explicit StorageEdit(std::function<void(struct statfs*)> edit);
  StorageEdit(const StorageEdit&) = delete;
  StorageEdit& operator=(const StorageEdit&) = delete;
  ~StorageEdit();
};
