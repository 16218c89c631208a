#include "sandbox/devices.h"

#include <sys/mount.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <stdexcept>

#include "sandbox/check.h"
#include "sandbox/device_server.h"
#include "sandbox/enter.h"
#include "sandbox/files.h"
#include "sandbox/text.h"

namespace sandbox {
namespace {

namespace fs = std::filesystem;

std::string AnswerFile(const std::string& node) { return std::string(kDeviceFolder) + "/" + node; }

// Requests and answers are 32 bits wide; both signs are accepted and the bits count.
std::uint32_t ParseNumber(const std::string& word) {
  std::size_t used = 0;
  const long long value = std::stoll(word, &used, word.find('x') == std::string::npos ? 10 : 16);
  if (used != word.size() || value < std::numeric_limits<std::int32_t>::min() ||
      value > std::numeric_limits<std::uint32_t>::max()) {
    throw std::runtime_error("not a number of 32 bits: " + word);
  }
  return static_cast<std::uint32_t>(value);
}

// Shows the node of the device file system at /dev.
void Expose(const std::string& node) {
  const std::string path = "/dev/" + node;
  if (fs::exists(fs::symlink_status(path))) {
    return;
  }
  WriteFile(path, "");
  Check(mount((std::string(kDeviceNodes) + "/" + node).c_str(), path.c_str(), "none", MS_BIND,
              nullptr),
        "bind the device node", node);
}

}  // namespace

DeviceAnswers DeviceAnswers::Parse(std::string_view text) {
  DeviceAnswers answers;
  ForEachLine(text, [&answers](const std::vector<std::string>& words) {
    if (words.size() != 2) {
      throw std::runtime_error("expected a request and its answer, or \"open\" and an errno");
    }
    const auto value = static_cast<std::int32_t>(ParseNumber(words[1]));
    if (words[0] == "open") {
      answers.OpenError = value;
    } else {
      answers.Values[ParseNumber(words[0])] = value;
    }
  });
  return answers;
}

std::string DeviceAnswers::Text() const {
  std::string text;
  if (OpenError != 0) {
    text += "open " + std::to_string(OpenError) + "\n";
  }
  for (const auto& [request, value] : Values) {
    std::array<char, 40> line = {};
    std::snprintf(line.data(), line.size(), "0x%08X %d\n", request, value);
    text += line.data();
  }
  return text;
}

bool DevicesAvailable() { return access(kDeviceRefusal, F_OK) == -1; }

std::string DevicesRefusal() { return DevicesAvailable() ? "" : ReadFile(kDeviceRefusal); }

void SetDevice(const std::string& node, const DeviceAnswers& answers) {
  RequireInside();
  if (!DevicesAvailable()) {
    throw Refused("no device nodes: " + DevicesRefusal());
  }
  WriteFile(AnswerFile(node), answers.Text());
  Expose(node);
}

void SetAnswer(const std::string& node, std::uint32_t request, std::int32_t value) {
  DeviceAnswers answers;
  if (fs::exists(AnswerFile(node))) {
    answers = ParseFile(AnswerFile(node), DeviceAnswers::Parse);
  }
  answers.Values[request] = value;
  SetDevice(node, answers);
}

void SetOpenError(const std::string& node, int error) {
  DeviceAnswers answers = ParseFile(AnswerFile(node), DeviceAnswers::Parse);
  answers.OpenError = error;
  SetDevice(node, answers);
}

void RemoveDevice(const std::string& node) {
  RequireInside();
  const std::string path = "/dev/" + node;
  if (fs::exists(AnswerFile(node))) {
    // A program that only wrote the answer file has nothing at /dev yet.
    if (umount2(path.c_str(), MNT_DETACH) == -1 && errno != EINVAL && errno != ENOENT) {
      Fail("take away", path);
    }
    RemoveFile(path);
    RemoveFile(AnswerFile(node));
  }
}

void RemoveDevices() {
  std::vector<std::string> nodes;
  for (const fs::directory_entry& entry : fs::directory_iterator(kDeviceFolder)) {
    nodes.push_back(entry.path().filename());
  }
  for (const std::string& node : nodes) {
    RemoveDevice(node);
  }
}

std::vector<std::string> DeviceLog() {
  std::vector<std::string> lines;
  ForEachRawLine(ReadFile(kDeviceLog),
                 [&lines](const std::string& line) { lines.push_back(line); });
  return lines;
}

void ClearDeviceLog() { WriteFile(kDeviceLog, ""); }

}  // namespace sandbox
