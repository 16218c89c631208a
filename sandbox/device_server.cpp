#include "sandbox/device_server.h"

#define FUSE_USE_VERSION 314
#include <fcntl.h>
#include <fuse3/fuse_lowlevel.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "sandbox/check.h"
#include "sandbox/descriptor.h"
#include "sandbox/devices.h"
#include "sandbox/faults.h"
#include "sandbox/files.h"

namespace sandbox {
namespace {

// The driver side. One instance, in the server process; answer files are read anew for each
// request.
class Server {
 public:
  Server() : log_(open(kDeviceLog, O_WRONLY | O_APPEND | O_CLOEXEC)) {}

  void Log(fuse_ino_t inode, const std::string& what) const {
    const std::string line = NameOf(inode) + " " + what + "\n";
    if (write(log_.Number(), line.data(), line.size()) == -1) {
      std::perror("device log");
    }
  }

  fuse_ino_t InodeOf(const std::string& name) {
    const auto found = std::find(names_.begin(), names_.end(), name);
    const auto position = static_cast<fuse_ino_t>(found - names_.begin());
    if (found == names_.end()) {
      names_.push_back(name);
    }
    return kFirstInode + position;
  }

  [[nodiscard]] bool Exists(fuse_ino_t inode) const {
    return access(FileOf(inode).c_str(), F_OK) == 0;
  }

  // A file that fails; everything else is a device node.
  [[nodiscard]] bool IsFaulty(fuse_ino_t inode) const {
    return inode != FUSE_ROOT_ID && NameOf(inode).starts_with(kFaultyNode);
  }

  [[nodiscard]] FileFault Fault(fuse_ino_t inode) const {
    return ParseFile(FaultFolderOf(inode) + kFault, ParseFaults).Files.begin()->second;
  }

  [[nodiscard]] struct stat FaultyStatus(fuse_ino_t inode) const {
    struct stat status = {};
    Check(stat(FileOf(inode).c_str(), &status), "stat", FileOf(inode));
    status.st_ino = inode;
    return status;
  }

  [[nodiscard]] std::string Bytes(fuse_ino_t inode) const { return ReadFile(FileOf(inode)); }

  [[nodiscard]] DeviceAnswers Answers(fuse_ino_t inode) const {
    return ParseFile(FileOf(inode), DeviceAnswers::Parse);
  }

 private:
  static constexpr fuse_ino_t kFirstInode = FUSE_ROOT_ID + 1;

  [[nodiscard]] const std::string& NameOf(fuse_ino_t inode) const {
    return names_.at(inode - kFirstInode);
  }
  [[nodiscard]] std::string FaultFolderOf(fuse_ino_t inode) const {
    return std::string(kFaultFolder) + "/" +
           NameOf(inode).substr(std::string_view(kFaultyNode).size());
  }
  [[nodiscard]] std::string FileOf(fuse_ino_t inode) const {
    return IsFaulty(inode) ? FaultFolderOf(inode) + kBytes
                           : std::string(kDeviceFolder) + "/" + NameOf(inode);
  }

  Descriptor log_;
  std::vector<std::string> names_;
};

Server& ServerOf(fuse_req_t request) { return *static_cast<Server*>(fuse_req_userdata(request)); }

struct stat StatusOf(fuse_ino_t inode) {
  struct stat status = {};
  status.st_ino = inode;
  status.st_nlink = 1;
  status.st_mode = inode == FUSE_ROOT_ID ? S_IFDIR | 0755 : S_IFREG | 0666;
  return status;
}

// Nothing is cached: answer files come and go.
constexpr double kNotCached = 0;

void LookUp(fuse_req_t request, fuse_ino_t /*parent*/, const char* name) {
  fuse_entry_param entry = {};
  entry.ino = ServerOf(request).InodeOf(name);
  entry.attr = StatusOf(entry.ino);
  if (ServerOf(request).IsFaulty(entry.ino) && ServerOf(request).Exists(entry.ino)) {
    entry.attr = ServerOf(request).FaultyStatus(entry.ino);
  }
  if (ServerOf(request).Exists(entry.ino)) {
    fuse_reply_entry(request, &entry);
  } else {
    fuse_reply_err(request, ENOENT);
  }
}

void GetAttributes(fuse_req_t request, fuse_ino_t inode, fuse_file_info* /*file*/) {
  const Server& server = ServerOf(request);
  if (server.IsFaulty(inode)) {
    const struct stat status = server.FaultyStatus(inode);
    if (const int error = server.Fault(inode).Status; error != 0) {
      fuse_reply_err(request, error);
    } else {
      fuse_reply_attr(request, &status, kNotCached);
    }
    return;
  }
  const struct stat status = StatusOf(inode);
  if (inode == FUSE_ROOT_ID || ServerOf(request).Exists(inode)) {
    fuse_reply_attr(request, &status, kNotCached);
  } else {
    fuse_reply_err(request, ENOENT);
  }
}

// Opening for writing may truncate; nothing else of a node can be set.
void SetAttributes(fuse_req_t request, fuse_ino_t inode, struct stat* /*status*/, int /*which*/,
                   fuse_file_info* file) {
  GetAttributes(request, inode, file);
}

void OpenFaulty(fuse_req_t request, fuse_ino_t inode, fuse_file_info* file) {
  if (const int error = ServerOf(request).Fault(inode).Open; error != 0) {
    fuse_reply_err(request, error);
  } else {
    file->direct_io = 1;  // each read() arrives as it is
    fuse_reply_open(request, file);
  }
}

void Read(fuse_req_t request, fuse_ino_t inode, size_t size, off_t offset,
          fuse_file_info* /*file*/) {
  const Server& server = ServerOf(request);
  if (!server.IsFaulty(inode)) {
    fuse_reply_err(request, ENOSYS);
    return;
  }
  const FileFault fault = server.Fault(inode);
  const std::string bytes = server.Bytes(inode);
  const auto begin = static_cast<std::uint64_t>(offset);
  const std::uint64_t end = fault.Read == 0 ? bytes.size() : fault.ReadAfter;
  if (fault.Read != 0 && begin >= end) {
    fuse_reply_err(request, fault.Read);
    return;
  }
  const std::string_view rest =
      std::string_view(bytes).substr(0, end).substr(std::min<std::uint64_t>(begin, bytes.size()));
  fuse_reply_buf(request, rest.data(), std::min(size, rest.size()));
}

void Open(fuse_req_t request, fuse_ino_t inode, fuse_file_info* file) {
  const Server& server = ServerOf(request);
  if (server.IsFaulty(inode)) {
    OpenFaulty(request, inode, file);
    return;
  }
  if (!server.Exists(inode)) {
    fuse_reply_err(request, ENOENT);
  } else if (const int error = server.Answers(inode).OpenError; error != 0) {
    server.Log(inode, "open refused");
    fuse_reply_err(request, error);
  } else {
    server.Log(inode, "open");
    fuse_reply_open(request, file);
  }
}

void Answer(fuse_req_t request, std::int32_t value) {
  // Results that the C library takes for errors are sent as errors. Which one does not matter, but
  // the kernel accepts only those below 512.
  constexpr std::int32_t kLowestError = -4095;
  constexpr std::int32_t kLowestSent = -511;
  if (value < 0 && value >= kLowestError) {
    fuse_reply_err(request, -std::max(value, kLowestSent));
  } else {
    fuse_reply_ioctl(request, value, nullptr, 0);
  }
}

void Ioctl(fuse_req_t request, fuse_ino_t inode, unsigned int number, void* /*argument*/,
           fuse_file_info* /*file*/, unsigned int /*flags*/, const void* /*in*/, size_t /*in_size*/,
           size_t /*out_size*/) {
  const Server& server = ServerOf(request);
  std::array<char, 32> text = {};
  std::snprintf(text.data(), text.size(), "ioctl 0x%08X", number);
  server.Log(inode, text.data());
  if (!server.Exists(inode)) {
    fuse_reply_err(request, ENODEV);
    return;
  }
  const DeviceAnswers answers = server.Answers(inode);
  const auto found = answers.Values.find(number);
  if (found == answers.Values.end()) {
    fuse_reply_err(request, ENOTTY);
  } else {
    Answer(request, found->second);
  }
}

// Sent at close(), before close() returns; the final release comes later.
void Flush(fuse_req_t request, fuse_ino_t inode, fuse_file_info* /*file*/) {
  if (!ServerOf(request).IsFaulty(inode)) {
    ServerOf(request).Log(inode, "close");
  }
  fuse_reply_err(request, 0);
}

// A malformed answer file, which a test or a scenario got wrong, is reported on standard error; the
// request fails with EIO.
template <auto kOperation, class... Arguments>
void Guarded(fuse_req_t request, Arguments... arguments) {
  try {
    kOperation(request, arguments...);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "device file system: %s\n", error.what());
    fuse_reply_err(request, EIO);
  }
}

[[noreturn]] void Serve(int fuse) {
  Server server;
  fuse_lowlevel_ops operations = {};
  operations.lookup = Guarded<LookUp>;
  operations.getattr = Guarded<GetAttributes>;
  operations.setattr = Guarded<SetAttributes>;
  operations.open = Guarded<Open>;
  operations.read = Guarded<Read>;
  operations.ioctl = Guarded<Ioctl>;
  operations.flush = Guarded<Flush>;
  std::string program = "device-server";
  std::array<char*, 2> words = {program.data(), nullptr};
  fuse_args arguments = FUSE_ARGS_INIT(1, words.data());
  fuse_session* session = fuse_session_new(&arguments, &operations, sizeof operations, &server);
  if (session == nullptr ||
      fuse_session_mount(session, ("/dev/fd/" + std::to_string(fuse)).c_str()) != 0) {
    _exit(EXIT_FAILURE);
  }
  _exit(fuse_session_loop(session) == 0 ? EXIT_SUCCESS : EXIT_FAILURE);
}

}  // namespace

void StartDeviceServer() {
  Check(mkdir(kDeviceFolder, 0755), "make", kDeviceFolder);
  Check(mkdir(kDeviceNodes, 0755), "make", kDeviceNodes);
  WriteFile(kDeviceLog, "");
  const Descriptor fuse(open("/dev/fuse", O_RDWR | O_CLOEXEC));
  const std::string options =
      "fd=" + std::to_string(fuse.Number()) + ",rootmode=40000,user_id=0,group_id=0,allow_other";
  if (!fuse ||
      mount("devices", kDeviceNodes, "fuse", MS_NOSUID | MS_NODEV, options.c_str()) == -1) {
    WriteFile(kDeviceRefusal,
              std::string(fuse ? "mount a FUSE file system: " : "open /dev/fuse: ") +
                  std::generic_category().message(errno));
    return;
  }
  if (Check(fork(), "start the device server") == 0) {
    setsid();  // the terminal's keys are not for the server
    Serve(fuse.Number());
  }
}

}  // namespace sandbox
