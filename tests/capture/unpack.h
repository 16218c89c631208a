// A capture, unpacked in memory.
#pragma once

#include <map>
#include <string>

namespace captured {

struct Entry {
  std::string Bytes;
  unsigned Mode = 0;
  bool IsFolder = false;
};

// Entries by name, without the folder "capture/" in which all stand. Throws std::runtime_error when
// the archive cannot be read, has anything but files and folders, or anything outside of that
// folder.
using Entries = std::map<std::string, Entry>;
Entries Unpack(const std::string& archive);

// Writes them below `folder`, which is made.
void Write(const Entries& entries, const std::string& folder);

}  // namespace captured
