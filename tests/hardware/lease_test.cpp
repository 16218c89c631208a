// Files that another process holds a write lease on, as file servers do for their clients.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "sandbox/scenario.h"
#include "tests/hardware/probe_fixture.h"

namespace {

using sandbox::Scenario;

// Another process that holds a write lease on a file, and gives it back when the kernel asks for
// it: when somebody opens the file.
class LeaseHolder {
 public:
  explicit LeaseHolder(const char* path) {
    int ready[2];
    EXPECT_EQ(pipe(ready), 0);
    process_ = fork();
    if (process_ == 0) {
      Hold(path, ready[1]);
    }
    close(ready[1]);
    char held = 0;
    EXPECT_EQ(read(ready[0], &held, 1), 1) << "no lease on " << path;
    close(ready[0]);
  }
  LeaseHolder(const LeaseHolder&) = delete;
  LeaseHolder& operator=(const LeaseHolder&) = delete;
  ~LeaseHolder() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
  }

 private:
  [[noreturn]] static void Hold(const char* path, int ready) {
    sigset_t asked;
    sigemptyset(&asked);
    sigaddset(&asked, SIGIO);
    sigprocmask(SIG_BLOCK, &asked, nullptr);
    const int file = open(path, O_RDWR | O_CLOEXEC);
    if (fcntl(file, F_SETLEASE, F_WRLCK) != 0 || write(ready, "h", 1) != 1) {
      _exit(1);
    }
    int signal = 0;
    sigwait(&asked, &signal);
    fcntl(file, F_SETLEASE, F_UNLCK);
    pause();
    _exit(0);
  }

  pid_t process_;
};

class Lease : public ProbeTest {};

// The open used to be refused: the document kept what it had.
TEST_F(Lease, OnTheIdentityIsWaitedFor) {
  Scenario().File(kUuid, "abc").Apply();
  const LeaseHolder holder(kUuid);
  EXPECT_EQ(probe_.GUID(), 0);
  EXPECT_EQ(status_.GUID, "abc");
}

TEST_F(Lease, OnAFileThatALinkLeadsToIsWaitedFor) {
  Scenario().File("/data/uuid", "abc").Link(kUuid, "/data/uuid").Apply();
  const LeaseHolder holder("/data/uuid");
  EXPECT_EQ(probe_.GUID(), 0);
  EXPECT_EQ(status_.GUID, "abc");
}

TEST_F(Lease, OnThePackagesIsWaitedFor) {
  Scenario().File(kPackages, "Package: qtm-distro\nVersion: 4.1\n").Apply();
  const LeaseHolder holder(kPackages);
  EXPECT_EQ(probe_.FirmwareVersion(), 0);
  EXPECT_EQ(status_.FirmwareVersion, "4.1");
}

}  // namespace
