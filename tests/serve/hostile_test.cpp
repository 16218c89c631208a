// Clients that mean ill, or are broken, beside one that is not.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/serve/demo.h"
#include "tests/serve/server.h"

namespace {

using test_serve::Connection;
using test_serve::Eventually;
using test_serve::Get;
using test_serve::Server;

constexpr int kHostile = 1000;

class HostileClients : public test_serve::OnTheDemo {};

// Resident memory of a process in kB.
long ResidentOf(pid_t process) {
  std::ifstream file("/.proc/" + std::to_string(process) + "/status");
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("VmRSS:")) {
      return std::stol(line.substr(6));
    }
  }
  return -1;
}

TEST_F(HostileClients, ChangeNothingForOthers) {
  // The address of an interface of the box: not the loopback, so that it counts as another machine.
  const std::string from = "192.168.0.20";
  const Server server({"--listen", "0.0.0.0:9877", "--allow-remote"});
  ASSERT_TRUE(Eventually([] { return Get("/healthz").Status == 200; }));
  const long before = ResidentOf(server.Process());
  std::vector<Connection> hostile;
  int good = 0;
  for (int number = 0; number < kHostile; ++number) {
    hostile.emplace_back(from, from);
    ASSERT_TRUE(hostile.back().IsOpen()) << number;
    hostile.back().Send(test_serve::HostileBytes(number));
    if (number % 50 == 0) {
      good += Get("/status.json").Status == 200 ? 1 : 0;
    }
  }
  EXPECT_EQ(good, kHostile / 50);
  EXPECT_EQ(Get("/insight.json").Status, 200);
  EXPECT_LT(ResidentOf(server.Process()) - before, 12 * 1024);
  hostile.clear();
  EXPECT_EQ(Get("/healthz").Status, 200);
}

TEST_F(HostileClients, AreNotWaitedForLongerThanAnybody) {
  if (std::getenv("STATUS_LONG") == nullptr) {
    GTEST_SKIP() << "takes a minute; ./test --long runs it";
  }
  const Server server;
  ASSERT_TRUE(Eventually([] { return Get("/healthz").Status == 200; }));
  // A byte each second keeps a connection from being idle.
  Connection slow;
  const auto began = std::chrono::steady_clock::now();
  slow.Send("GET / HTTP/1.1\r\nX: ");
  while (slow.Send("x") && !slow.IsClosed(std::chrono::seconds(1))) {
    ASSERT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(150));
  }
  EXPECT_GE(std::chrono::steady_clock::now() - began, std::chrono::seconds(50));
}

}  // namespace
