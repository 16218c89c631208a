// What the server says to the service manager that started it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <string>
#include <thread>

#include "tests/serve/demo.h"
#include "tests/serve/server.h"
#include "tests/support/held_lease.h"
#include "tests/support/temporary_folder.h"

namespace {

using test_serve::Eventually;
using test_serve::Get;
using test_serve::Server;

constexpr int kPatienceMilliseconds = 20000;

// The socket of a service manager: a path, or "@" and a name. The programs that are started from
// now on find it.
class Manager {
 public:
  explicit Manager(const std::string& name) : socket_(socket(AF_UNIX, SOCK_DGRAM, 0)) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    name.copy(address.sun_path, sizeof address.sun_path - 1);
    if (name.starts_with('@')) {
      address.sun_path[0] = '\0';
    }
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
    EXPECT_EQ(bind(socket_, reinterpret_cast<const sockaddr*>(&address), size), 0) << name;
    setenv("NOTIFY_SOCKET", name.c_str(), 1);
  }
  Manager(const Manager&) = delete;
  Manager& operator=(const Manager&) = delete;
  ~Manager() {
    close(socket_);
    for (const char* name : {"NOTIFY_SOCKET", "WATCHDOG_USEC", "WATCHDOG_PID"}) {
      unsetenv(name);
    }
  }

  // The next message; "" when none comes in time.
  std::string Next(int milliseconds = kPatienceMilliseconds) const {
    pollfd asked = {.fd = socket_, .events = POLLIN, .revents = 0};
    char text[256];
    const ssize_t count =
        poll(&asked, 1, milliseconds) == 1 ? recv(socket_, text, sizeof text, 0) : 0;
    return {text, static_cast<std::size_t>(count < 0 ? 0 : count)};
  }

  // Throws away what has come.
  void Forget() const {
    while (!Next(0).empty()) {
    }
  }

 private:
  int socket_;
};

class Service : public test_serve::OnTheDemo {
 protected:
  const test_support::TemporaryFolder folder_;
};

TEST_F(Service, SaysWhenItAnswersAndWhenItEnds) {
  for (const std::string& name : {folder_.Path() + "/notify", std::string("@notify")}) {
    const Manager manager(name);
    Server server;
    EXPECT_EQ(manager.Next(), "READY=1") << name;
    EXPECT_EQ(server.End(SIGTERM), 0);
    EXPECT_EQ(manager.Next(), "STOPPING=1") << name;
    EXPECT_EQ(manager.Next(0), "");  // nobody watches
  }
}

TEST_F(Service, FeedsTheWatchdogWhileASourceHangs) {
  const Manager manager(folder_.Path() + "/notify");
  setenv("WATCHDOG_USEC", "500000", 1);
  const Server server;
  EXPECT_EQ(manager.Next(), "READY=1");
  EXPECT_EQ(manager.Next(), "WATCHDOG=1");
  const test_support::HeldLease lease("/proc/meminfo");
  ASSERT_TRUE(Eventually([] { return Get("/healthz").Body.starts_with("hanging: "); }));
  manager.Forget();
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(manager.Next(), "WATCHDOG=1");
  }
  EXPECT_EQ(Get("/healthz").Status, 503);
}

TEST_F(Service, FeedsNoWatchdogWhileItDoesNotAnswer) {
  const Manager manager(folder_.Path() + "/notify");
  setenv("WATCHDOG_USEC", "500000", 1);
  const Server server;
  ASSERT_EQ(kill(server.Process(), SIGSTOP), 0);
  while (!manager.Next(2000).empty()) {
  }
  EXPECT_EQ(manager.Next(1000), "");
  ASSERT_EQ(kill(server.Process(), SIGCONT), 0);
  EXPECT_EQ(manager.Next(), "WATCHDOG=1");
}

TEST_F(Service, FeedsTheWatchdogOfNoOtherProcess) {
  const Manager manager(folder_.Path() + "/notify");
  setenv("WATCHDOG_USEC", "500000", 1);
  setenv("WATCHDOG_PID", "1", 1);
  const Server server;
  EXPECT_EQ(manager.Next(), "READY=1");
  EXPECT_EQ(manager.Next(2000), "");
}

// The queue of such a socket is short.
TEST_F(Service, AnswersAlsoWhenNobodyReadsWhatItSays) {
  const Manager manager(folder_.Path() + "/notify");
  setenv("WATCHDOG_USEC", "2000", 1);
  const Server server;
  for (int i = 0; i < 50; ++i) {
    EXPECT_NE(Get("/healthz").Status, 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
}

TEST_F(Service, NeedsNoManager) {
  for (const char* name : {"", "relative", "/nobody/is/there"}) {
    setenv("NOTIFY_SOCKET", name, 1);
    setenv("WATCHDOG_USEC", "0x", 1);
    const Server server;
    EXPECT_NE(Get("/healthz").Status, 0) << name;
  }
  unsetenv("NOTIFY_SOCKET");
  unsetenv("WATCHDOG_USEC");
}

}  // namespace
