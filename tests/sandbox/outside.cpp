#include "tests/sandbox/outside.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <sstream>
#include <thread>

#include "sandbox/files.h"

namespace sandbox {
namespace {

namespace fs = std::filesystem;

struct Pipe {
  Descriptor Read;
  Descriptor Write;
};

Pipe MakePipe() {
  std::array<int, 2> ends = {-1, -1};
  EXPECT_EQ(0, pipe2(ends.data(), O_CLOEXEC));
  return {Descriptor(ends[0]), Descriptor(ends[1])};
}

std::string Drain(const Descriptor& source) {
  std::string text;
  std::array<char, 4096> chunk = {};
  for (ssize_t count = 0; (count = read(source.Number(), chunk.data(), chunk.size())) > 0;) {
    text.append(chunk.data(), static_cast<std::size_t>(count));
  }
  return text;
}

std::set<std::string> LivingNamespaces() {
  std::set<std::string> living;
  for (const fs::directory_entry& process : fs::directory_iterator("/proc")) {
    std::error_code gone;
    for (const fs::directory_entry& entry : fs::directory_iterator(process.path() / "ns", gone)) {
      living.insert(fs::read_symlink(entry.path(), gone).string());
    }
  }
  return living;
}

}  // namespace

void OutsideTest::SetUp() {
  try {
    RunInside({}, [] { return 0; });
  } catch (const Refused& refusal) {
    Refuse(std::string("the sandbox is refused: ") + refusal.what());
  }
}

void OutsideTest::Refuse(const std::string& reason) {
  const char* guarded = std::getenv("CI");
  ASSERT_FALSE(guarded != nullptr && std::string(guarded) == "true") << reason;
  GTEST_SKIP() << reason;
}

Outcome Tell(const std::function<std::string()>& body, const Options& options) {
  Pipe channel = MakePipe();
  Outcome outcome;
  outcome.Status = RunInside(options, [&body, &channel] {
    const std::string text = body();
    return write(channel.Write.Number(), text.data(), text.size()) == -1 ? 1 : 0;
  });
  channel.Write.Close();
  outcome.Output = Drain(channel.Read);
  return outcome;
}

Outcome RunCommand(const std::string& line) {
  Pipe channel = MakePipe();
  const pid_t child = fork();
  if (child == 0) {
    dup2(channel.Write.Number(), STDOUT_FILENO);
    dup2(channel.Write.Number(), STDERR_FILENO);
    execl("/bin/sh", "sh", "-c", line.c_str(), nullptr);
    _exit(EXIT_FAILURE);
  }
  channel.Write.Close();
  Outcome outcome;
  outcome.Output = Drain(channel.Read);
  int status = 0;
  EXPECT_EQ(child, waitpid(child, &status, 0));
  outcome.Status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return outcome;
}

std::string OwnNamespaces() {
  std::string lines;
  for (const char* kind : {"mnt", "net", "pid", "ipc", "uts"}) {
    lines += fs::read_symlink(fs::path("/proc/self/ns") / kind).string() + "\n";
  }
  struct stat peers = {};
  if (stat("/.sandbox/peers", &peers) == 0) {
    lines += "net:[" + std::to_string(peers.st_ino) + "]\n";
  }
  return lines;
}

std::set<std::string> StillAlive(const std::string& namespaces) {
  std::set<std::string> found;
  for (int attempt = 0; attempt < 500; ++attempt) {
    found.clear();
    const std::set<std::string> living = LivingNamespaces();
    std::istringstream lines(namespaces);
    for (std::string line; std::getline(lines, line);) {
      if (living.contains(line)) {
        found.insert(line);
      }
    }
    if (found.empty()) {
      break;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return found;
}

std::string Mounts() { return ReadFile("/proc/self/mountinfo"); }

void LeaveProcessBehind() {
  if (fork() == 0) {
    setsid();
    if (fork() == 0) {
      for (;;) {
        pause();
      }
    }
    _exit(EXIT_SUCCESS);
  }
}

}  // namespace sandbox
