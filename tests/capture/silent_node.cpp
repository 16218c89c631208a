#include "tests/capture/silent_node.h"

#define FUSE_USE_VERSION 314
#include <fcntl.h>
#include <fuse3/fuse_lowlevel.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>
#include <thread>

#include "sandbox/files.h"

namespace captured {
namespace {

namespace fs = std::filesystem;

constexpr const char* kMount = "/.sandbox/silent";
constexpr fuse_ino_t kNode = FUSE_ROOT_ID + 1;

void Check(int result, const char* what) {
  if (result == -1) {
    throw std::system_error(errno, std::generic_category(), what);
  }
}

struct stat StatusOf(fuse_ino_t inode) {
  struct stat status = {};
  status.st_ino = inode;
  status.st_nlink = 1;
  status.st_mode = inode == FUSE_ROOT_ID ? S_IFDIR | 0755 : S_IFREG | 0666;
  return status;
}

void LookUp(fuse_req_t request, fuse_ino_t /*parent*/, const char* /*name*/) {
  fuse_entry_param entry = {};
  entry.ino = kNode;
  entry.attr = StatusOf(kNode);
  fuse_reply_entry(request, &entry);
}

void GetAttributes(fuse_req_t request, fuse_ino_t inode, fuse_file_info* /*file*/) {
  const struct stat status = StatusOf(inode);
  fuse_reply_attr(request, &status, 0);
}

void Open(fuse_req_t request, fuse_ino_t /*inode*/, fuse_file_info* file) {
  fuse_reply_open(request, file);
}

// Taken, so that the kernel waits for the answer, and never answered.
void Ioctl(fuse_req_t /*request*/, fuse_ino_t /*inode*/, unsigned int /*number*/,
           void* /*argument*/, fuse_file_info* /*file*/, unsigned int /*flags*/, const void* /*in*/,
           size_t /*in_size*/, size_t /*out_size*/) {}

[[noreturn]] void Serve(int fuse) {
  fuse_lowlevel_ops operations = {};
  operations.lookup = LookUp;
  operations.getattr = GetAttributes;
  operations.open = Open;
  operations.ioctl = Ioctl;
  std::string program = "silent-node";
  std::array<char*, 2> words = {program.data(), nullptr};
  fuse_args arguments = FUSE_ARGS_INIT(1, words.data());
  fuse_session* const session =
      fuse_session_new(&arguments, &operations, sizeof operations, nullptr);
  if (session != nullptr &&
      fuse_session_mount(session, ("/dev/fd/" + std::to_string(fuse)).c_str()) == 0) {
    fuse_session_loop(session);
  }
  _exit(1);
}

}  // namespace

SilentNode::SilentNode(const std::string& path) : path_(path) {
  sandbox::MakeFolder(kMount);
  const int fuse = open("/dev/fuse", O_RDWR | O_CLOEXEC);
  Check(fuse, "open /dev/fuse");
  const std::string options =
      "fd=" + std::to_string(fuse) + ",rootmode=40000,user_id=0,group_id=0,allow_other";
  Check(mount("silent", kMount, "fuse", MS_NOSUID | MS_NODEV, options.c_str()), "mount");
  server_ = fork();
  if (server_ == 0) {
    Serve(fuse);
  }
  close(fuse);
  Check(mount((std::string(kMount) + "/node").c_str(), path.c_str(), nullptr, MS_BIND, nullptr),
        "bind");
}

SilentNode::~SilentNode() {
  kill(server_, SIGKILL);  // who still waits is let go
  waitpid(server_, nullptr, 0);
  umount2(path_.c_str(), MNT_DETACH);
  umount2(kMount, MNT_DETACH);
}

bool CannotBeEnded(const std::string& name) {
  for (int turn = 0; turn < 1000; ++turn) {
    for (const fs::directory_entry& entry : fs::directory_iterator("/.proc")) {
      const std::string id = entry.path().filename();
      if (std::isdigit(static_cast<unsigned char>(id.front())) != 0) {
        std::ifstream file(entry.path() / "stat");
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        if (text.find(" (" + name + ") D ") != std::string::npos) {
          return true;
        }
      }
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return false;
}

}  // namespace captured
