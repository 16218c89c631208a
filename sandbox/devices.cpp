#include "sandbox/devices.h"

#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "sandbox/check.h"
#include "sandbox/device_server.h"
#include "sandbox/enter.h"
#include "sandbox/files.h"
#include "sandbox/format/text.h"

namespace sandbox {
namespace {

namespace fs = std::filesystem;

std::string AnswerFile(const std::string& node) { return std::string(kDeviceFolder) + "/" + node; }

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
