// Calls of the C library that this program replaces, because no fixture can make them answer so:
// they fail (tests/support/interposed/failure.h), opens are recorded and refused, and the results
// of others are changed. Without an object of these classes and of Failure every call does what it
// always does.
#pragma once

#include <ifaddrs.h>
#include <sys/vfs.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/interposed/failure.h"

namespace interposed {

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
  const std::vector<File>& Files() const { return files_; }

  // Records the file; false when the open is to be refused.
  bool Admit(const std::string& path, int flags);

 private:
  std::vector<File> files_;
  std::string refused_path_;
  int refused_from_ = 0;
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

// How many lists of getifaddrs() have not been freed with freeifaddrs().
int InterfaceListsHeld();

// Changes what statfs() finds, while it lives.
class StorageEdit {
 public:
  explicit StorageEdit(std::function<void(struct statfs*)> edit);
  StorageEdit(const StorageEdit&) = delete;
  StorageEdit& operator=(const StorageEdit&) = delete;
  ~StorageEdit();
};

}  // namespace interposed
