#include "sandbox/format/faults.h"

#include <cerrno>
#include <stdexcept>
#include <vector>

#include "sandbox/format/text.h"

namespace sandbox {
namespace {

constexpr const char* kOpen = "open";
constexpr const char* kStatus = "status";
constexpr const char* kRead = "read";
constexpr const char* kAfter = "after";
constexpr const char* kType = "type";
constexpr const char* kPipe = "fifo";
constexpr const char* kHardwareAddress = "hardware-address";
constexpr const char* kDatabase = "/dev/shm/status.db";
constexpr const char* kQuery = "query";

int ErrorOf(const std::string& word) {
  constexpr std::uint64_t kMost = 511;  // more the kernel does not take from a file system
  const auto error = static_cast<int>(NumberOf(word, kMost));
  if (error == 0) {
    throw std::runtime_error("0 is no error");
  }
  return error;
}

// The words after the path.
using Words = std::vector<std::string>;

void ReadFileFault(const Words& words, FileFault& fault) {
  const std::string& what = words[1];
  if (what == kOpen && words.size() == 3) {
    fault.Open = ErrorOf(words[2]);
  } else if (what == kStatus && words.size() == 3) {
    fault.Status = ErrorOf(words[2]);
  } else if (what == kType && words.size() == 3 && words[2] == kPipe) {
    fault.IsPipe = true;
  } else if (what == kRead && (words.size() == 3 || (words.size() == 5 && words[3] == kAfter))) {
    fault.Read = ErrorOf(words[2]);
    fault.ReadAfter = words.size() == 5 ? NumberOf(words[4]) : 0;
    if (fault.Read == EINTR) {
      throw std::runtime_error("who is interrupted reads again, and would do so without end");
    }
  } else {
    throw std::runtime_error(
        "expected \"open ERRNO\", \"read ERRNO after BYTES\", \"status ERRNO\" or \"type fifo\"");
  }
}

void ReadFault(const Words& words, Faults& faults) {
  if (words.size() == 3 && words[0] == kDatabase && words[1] == kQuery) {
    faults.Query = ErrorOf(words[2]);
  } else if (words[0].starts_with('/') && words.size() > 2) {
    ReadFileFault(words, faults.Files[words[0]]);
  } else if (words.size() == 3 && words[1] == kHardwareAddress) {
    faults.HardwareAddresses[words[0]] = ErrorOf(words[2]);
  } else {
    throw std::runtime_error(
        "expected an absolute path and how it fails, or an interface and "
        "\"hardware-address ERRNO\"");
  }
}

}  // namespace

Faults ParseFaults(std::string_view text) {
  Faults faults;
  ForEachLine(text, [&faults](const Words& words) { ReadFault(words, faults); });
  return faults;
}

std::string FaultsText(const Faults& faults) {
  std::string text;
  const auto add = [&text](const std::string& subject, const char* what, const std::string& how) {
    text.append(WordText(subject)).append(" ").append(what).append(" ").append(how).append("\n");
  };
  for (const auto& [path, fault] : faults.Files) {
    if (fault.Open != 0) {
      add(path, kOpen, std::to_string(fault.Open));
    }
    if (fault.Status != 0) {
      add(path, kStatus, std::to_string(fault.Status));
    }
    if (fault.Read != 0) {
      const std::string after =
          fault.ReadAfter == 0 ? ""
                               : " " + std::string(kAfter) + " " + std::to_string(fault.ReadAfter);
      add(path, kRead, std::to_string(fault.Read) + after);
    }
    if (fault.IsPipe) {
      add(path, kType, kPipe);
    }
  }
  for (const auto& [name, error] : faults.HardwareAddresses) {
    add(name, kHardwareAddress, std::to_string(error));
  }
  if (faults.Query != 0) {
    add(kDatabase, kQuery, std::to_string(faults.Query));
  }
  return text;
}

}  // namespace sandbox
