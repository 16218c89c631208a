#include "sandbox/enter.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/statfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "sandbox/files.h"
#include "sandbox/scenario.h"
#include "tests/sandbox/outside.h"

namespace sandbox {
namespace {

namespace fs = std::filesystem;
using testing::IsEmpty;

using EnterTest = OutsideTest;

class Folder {
 public:
  Folder() {
    std::string pattern = fs::temp_directory_path() / "sandbox-XXXXXX";
    path_ = mkdtemp(pattern.data());
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() { fs::remove_all(path_); }

  [[nodiscard]] const fs::path& Path() const { return path_; }

 private:
  fs::path path_;
};

// A controller with everything that could stay behind.
std::string MakeMess() {
  Scenario scenario;
  scenario.Interface({.Name = "eth0", .Addresses = {{.Prefix = "10.0.0.5/8"}}}).Row("GUID", "abc");
  if (DevicesAvailable()) {
    scenario.Answer("travex", 1, 1);
  }
  scenario.Apply();
  LeaveProcessBehind();
  return OwnNamespaces();
}

TEST_F(EnterTest, TheResultOfTheBodyIsTheResult) {
  EXPECT_EQ(0, RunInside({}, [] { return 0; }));
  EXPECT_EQ(42, RunInside({}, [] { return 42; }));
}

TEST_F(EnterTest, ASignalDeathGives128PlusTheSignal) {
  EXPECT_EQ(128 + SIGKILL, RunInside({}, [] { return raise(SIGKILL); }));
  EXPECT_EQ(128 + SIGTERM, RunInside({}, [] { return raise(SIGTERM); }));
}

TEST_F(EnterTest, AnExceptionOfTheBodyEndsItThereAndDoesNotReachTheCaller) {
  EXPECT_EQ(128 + SIGABRT, RunInside({}, []() -> int { throw std::runtime_error("of the body"); }));
}

TEST_F(EnterTest, TheBodyIsNotProcessOne) {
  EXPECT_EQ(0, RunInside({}, [] { return getpid() > 1 && getppid() == 1 ? 0 : 1; }));
}

TEST_F(EnterTest, TheCallerStaysOutside) {
  const std::string before = OwnNamespaces();
  EXPECT_EQ(0, RunInside({}, [] { return Inside() ? 0 : 1; }));
  EXPECT_FALSE(Inside());
  EXPECT_EQ(before, OwnNamespaces());
}

TEST_F(EnterTest, EverySandboxIsANewOne) {
  EXPECT_EQ(0, RunInside({}, [] {
              WriteFile("/etc/left", "x");
              return 0;
            }));
  EXPECT_EQ(0, RunInside({}, [] { return fs::exists("/etc/left") ? 1 : 0; }));
}

TEST_F(EnterTest, TheEnvironmentPassesThrough) {
  setenv("OF_THE_CALLER", "here", 1);
  EXPECT_EQ(0, RunInside({}, [] {
              const char* value = std::getenv("OF_THE_CALLER");
              return value != nullptr && std::string(value) == "here" ? 0 : 1;
            }));
}

TEST_F(EnterTest, TheSizeOfTheRootCanBeChosen) {
  Options options;
  options.RootBytes = 1 << 20;
  EXPECT_EQ(0, RunInside(options, [] {
              struct statfs root = {};
              return statfs("/", &root) == 0 && root.f_blocks == 256 ? 0 : 1;
            }));
}

TEST_F(EnterTest, ProcessesHaveTheirFoldersUpToTheLastOneAskedFor) {
  Options options;
  options.LastProcess = 7;
  EXPECT_EQ(0, RunInside(options, [] {
              const bool linked = fs::exists("/proc/1/comm") && fs::is_symlink("/proc/7");
              return linked && !fs::exists(fs::symlink_status("/proc/8")) ? 0 : 1;
            }));
}

TEST_F(EnterTest, AWritableFolderTakesResultsOut) {
  const Folder folder;
  const std::string path = folder.Path() / "result";
  Options options;
  options.Writable = {folder.Path()};
  EXPECT_EQ(0, RunInside(options, [&path] {
              WriteFile(path, "from the inside");
              return 0;
            }));
  EXPECT_EQ("from the inside", ReadFile(path));
}

TEST_F(EnterTest, AWritableFolderMayLieInAReadOnlyTree) {
  Options options;
  options.Writable = {SourcePath("sandbox")};
  EXPECT_EQ(0, RunInside(options, [] {
              const bool inner = access(SourcePath("sandbox").c_str(), W_OK) == 0;
              const bool outer = access(SourcePath("model").c_str(), W_OK) == 0;
              return inner && !outer ? 0 : 1;
            }));
}

TEST_F(EnterTest, ApplyingAScenarioLeavesWritableFoldersAlone) {
  const Folder folder;
  const std::string path = folder.Path() / "kept";
  { Descriptor(open(path.c_str(), O_CREAT | O_WRONLY, 0644)); }
  Options options;
  options.Writable = {folder.Path()};
  EXPECT_EQ(0, RunInside(options, [] {
              Scenario().Apply();
              return 0;
            }));
  EXPECT_TRUE(fs::exists(path));
}

TEST_F(EnterTest, AMissingWritableFolderIsAnError) {
  Options options;
  options.Writable = {"/missing"};
  EXPECT_THROW(RunInside(options, [] { return 0; }), fs::filesystem_error);
}

TEST_F(EnterTest, TheWholeOutsideCannotBeMadeWritable) {
  Options options;
  options.Writable = {"/"};
  EXPECT_THROW(RunInside(options, [] { return 0; }), fs::filesystem_error);
}

TEST_F(EnterTest, AStepThatFailsIsReportedWithItsReason) {
  // Too few descriptors to hold what is bound.
  rlimit before = {};
  ASSERT_EQ(0, getrlimit(RLIMIT_NOFILE, &before));
  const rlimit few = {10, before.rlim_max};
  ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &few));
  std::string reason;
  try {
    RunInside({}, [] { return 0; });
  } catch (const Refused& refusal) {
    reason = refusal.what();
  }
  EXPECT_EQ(0, setrlimit(RLIMIT_NOFILE, &before));
  EXPECT_THAT(reason, testing::AllOf(testing::StartsWith("clone the mount of /"),
                                     testing::HasSubstr("Too many open files")));
}

TEST_F(EnterTest, TheInterruptKeyIsTheBodysBusiness) {
  std::array<int, 2> channel = {};
  ASSERT_EQ(0, pipe(channel.data()));
  const pid_t caller = fork();
  if (caller == 0) {
    setpgid(0, 0);
    _exit(RunInside({}, [&channel] {
      signal(SIGINT, [](int) { _exit(5); });
      return write(channel[1], "x", 1) == 1 ? pause() : 1;
    }));
  }
  char ready = 0;
  EXPECT_EQ(1, read(channel[0], &ready, 1));
  EXPECT_EQ(0, kill(-caller, SIGINT));
  int status = -1;
  EXPECT_EQ(caller, waitpid(caller, &status, 0));
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(5, WEXITSTATUS(status));
  close(channel[0]);
  close(channel[1]);
}

TEST_F(EnterTest, TheEnvironmentCanAskForWritableFolders) {
  setenv("SANDBOX_BIND", "/first::/second", 1);
  setenv("STATUS_UPDATE_GOLDEN", "1", 1);
  const Options options = OptionsFromEnvironment();
  unsetenv("SANDBOX_BIND");
  unsetenv("STATUS_UPDATE_GOLDEN");
  EXPECT_THAT(options.Writable,
              testing::ElementsAre(SourcePath("").parent_path(), "/first", "/second"));
  EXPECT_THAT(OptionsFromEnvironment().Writable, IsEmpty());
}

TEST_F(EnterTest, ASandboxCanBeEnteredInASandbox) {
  EXPECT_EQ(7, RunInside({}, [] { return RunInside({}, [] { return 7; }); }));
}

TEST_F(EnterTest, NothingStaysBehindAfterANormalEnd) {
  const std::string mounts = Mounts();
  const Outcome outcome = Tell(MakeMess);
  EXPECT_EQ(0, outcome.Status);
  EXPECT_EQ(6, std::count(outcome.Output.begin(), outcome.Output.end(), '\n'));
  EXPECT_THAT(StillAlive(outcome.Output), IsEmpty());
  EXPECT_EQ(mounts, Mounts());
}

TEST_F(EnterTest, NothingStaysBehindAfterACrashInside) {
  const std::string mounts = Mounts();
  std::array<int, 2> channel = {};
  ASSERT_EQ(0, pipe(channel.data()));
  EXPECT_EQ(128 + SIGKILL, RunInside({}, [&channel] {
              const std::string mess = MakeMess();
              return write(channel[1], mess.data(), mess.size()) == -1 ? 1 : raise(SIGKILL);
            }));
  std::array<char, 1024> text = {};
  const ssize_t count = read(channel[0], text.data(), text.size());
  ASSERT_LT(0, count);
  close(channel[0]);
  close(channel[1]);
  EXPECT_THAT(StillAlive({text.data(), static_cast<std::size_t>(count)}), IsEmpty());
  EXPECT_EQ(mounts, Mounts());
}

TEST_F(EnterTest, NothingStaysBehindAfterTheCallerIsKilled) {
  const std::string mounts = Mounts();
  ASSERT_EQ(0, prctl(PR_SET_CHILD_SUBREAPER, 1));  // the system's init may take its time to reap
  std::array<int, 2> channel = {};
  ASSERT_EQ(0, pipe(channel.data()));
  const pid_t caller = fork();
  if (caller == 0) {
    _exit(RunInside({}, [&channel] {
      const std::string mess = MakeMess();
      return write(channel[1], mess.data(), mess.size()) == -1 ? 1 : pause();
    }));
  }
  std::array<char, 1024> text = {};
  const ssize_t count = read(channel[0], text.data(), text.size());
  ASSERT_LT(0, count);
  kill(caller, SIGKILL);
  while (wait(nullptr) != -1) {
  }
  close(channel[0]);
  close(channel[1]);
  EXPECT_THAT(StillAlive({text.data(), static_cast<std::size_t>(count)}), IsEmpty());
  EXPECT_EQ(mounts, Mounts());
}

TEST_F(EnterTest, AProcessThatReadsADeviceDoesNotHoldTheEndUp) {
  const Outcome outcome = Tell([] {
    if (DevicesAvailable()) {
      SetAnswer("travex", 1, 1);
      if (open("/dev/travex", O_RDWR) == -1) {
        std::abort();
      }
    }
    return OwnNamespaces();
  });
  EXPECT_EQ(0, outcome.Status);
  EXPECT_THAT(StillAlive(outcome.Output), IsEmpty());
}

#ifdef __SANITIZE_ADDRESS__
TEST_F(EnterTest, LeaksAreFoundInside) {
  const Descriptor report(memfd_create("report", 0));
  EXPECT_NE(0, RunInside({}, [&report] {
              dup2(report.Number(), STDERR_FILENO);
              void* volatile leaked = std::malloc(100);
              leaked = nullptr;
              return leaked == nullptr ? 0 : 1;
            }));
  const std::string path = "/proc/self/fd/" + std::to_string(report.Number());
  EXPECT_THAT(ReadFile(path), testing::HasSubstr("100 byte(s) leaked in 1 allocation(s)"));
}
#endif

}  // namespace
}  // namespace sandbox
