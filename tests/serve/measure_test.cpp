// What the server promises in numbers, measured: it takes minutes, and ./test --long runs it, on
// what the preset release builds.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "sandbox/rows.h"
#include "tests/serve/demo.h"
#include "tests/serve/server.h"
#include "tests/support/paths.h"
#include "tests/support/temporary_folder.h"

namespace {

using std::chrono::seconds;
using test_serve::Connection;
using test_serve::Eventually;
using test_serve::Get;
using test_serve::Server;
using Clock = std::chrono::steady_clock;

constexpr const char* kPaths[] = {"/metrics",      "/status.json",   "/status.xml", "/",
                                  "/insight.json", "/overview.json", "/healthz"};
constexpr const char* kElsewhere = "192.168.0.20";  // of an interface of the box

std::string FileText(const std::string& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The number that `text` begins with, after blanks, whatever the locale.
double NumberIn(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  double number = -1;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  EXPECT_EQ(error, std::errc()) << text.substr(0, 40);
  return number;
}

// The number after `name` in `text`.
double NumberAfter(const std::string& text, const std::string& name) {
  const std::size_t at = text.find(name);
  EXPECT_NE(at, std::string::npos) << name;
  return at == std::string::npos ? -1 : NumberIn(std::string_view(text).substr(at + name.size()));
}

double ResidentMebibytes(const Server& server) {
  const std::string status = FileText("/.proc/" + std::to_string(server.Process()) + "/status");
  return NumberAfter(status, "VmRSS:") / 1024;
}

// Of the thread that answers.
double ProcessorMilliseconds(const Server& server) {
  const std::string process = std::to_string(server.Process());
  return NumberIn(FileText("/.proc/" + process + "/task/" + process + "/schedstat")) / 1e6;
}

// What was measured, with the load of the machine, for whoever reads the output.
template <typename Value>
void Report(const std::string& what, const Value& value, const std::string& unit) {
  const std::string load = FileText("/.proc/loadavg");
  std::cout << "measured: " << what << ": " << value << ' ' << unit << "  (load "
            << load.substr(0, load.find(' ')) << ")\n";
}

// The moments at which cycles began, by the server's own clock, as its metrics have them.
class Beginnings {
 public:
  void Look(const std::string& metrics) {
    const double cycle = NumberAfter(metrics, "\nstatuscollector_cycles_total ");
    const double began = NumberAfter(metrics, "\nstatuscollector_last_success_timestamp_seconds ");
    of_cycle_.emplace(cycle, began);
  }

  // By how many seconds an interval between two cycles differs from `interval` at most.
  double WorstDeviation(double interval) const {
    double worst = 0;
    for (auto one = of_cycle_.begin(), next = std::next(one); next != of_cycle_.end();
         one = next++) {
      EXPECT_EQ(next->first, one->first + 1) << "a cycle was not seen";
      worst = std::max(worst, std::abs(next->second - one->second - interval));
    }
    return worst;
  }

  std::size_t size() const { return of_cycle_.size(); }

 private:
  std::map<double, double> of_cycle_;
};

// A connection that asks again as soon as it is answered.
class Client {
 public:
  explicit Client(std::size_t first) : next_(first) { Ask(); }

  int Socket() const { return connection_.Socket(); }

  // Reads what is there. The body when an answer is whole; the next request is on its way then.
  std::optional<std::string> Read() {
    char block[65536];
    const ssize_t count = recv(Socket(), block, sizeof block, MSG_DONTWAIT);
    if (count <= 0) {
      EXPECT_EQ(count, -1) << "the connection was closed after " << asked_;
      ok_ = false;
      return std::nullopt;
    }
    read_.append(block, static_cast<std::size_t>(count));
    const std::size_t end = read_.find("\r\n\r\n");
    if (end == std::string::npos) {
      return std::nullopt;
    }
    const auto size = static_cast<std::size_t>(NumberAfter(read_, "Content-Length: "));
    if (read_.size() < end + 4 + size) {
      return std::nullopt;
    }
    EXPECT_TRUE(read_.starts_with("HTTP/1.1 200 ")) << asked_ << ": " << read_.substr(0, 40);
    ok_ = ok_ && read_.starts_with("HTTP/1.1 200 ");
    std::string body = read_.substr(end + 4, size);
    Ask();
    return body;
  }

  bool AsksForMetrics() const { return asked_ == kPaths[0]; }
  bool Ok() const { return ok_; }

 private:
  void Ask() {
    asked_ = kPaths[next_++ % std::size(kPaths)];
    read_.clear();
    ok_ = connection_.Send("GET " + asked_ + " HTTP/1.1\r\nHost: localhost\r\n\r\n") && ok_;
  }

  Connection connection_;
  std::size_t next_;
  std::string asked_;
  std::string read_;
  bool ok_ = true;
};

// What clients that ask without a pause got.
struct Load {
  long Answers = 0;
  Beginnings Cycles;

  // Lets `clients` ask for as long; stops at the first failure.
  void Run(std::vector<Client>* clients, seconds how_long) {
    for (const auto end = Clock::now() + how_long; Clock::now() < end;) {
      std::vector<pollfd> sockets;
      for (const Client& client : *clients) {
        sockets.push_back({.fd = client.Socket(), .events = POLLIN, .revents = 0});
      }
      ASSERT_GT(poll(sockets.data(), sockets.size(), 10000), 0) << "no answer for ten seconds";
      for (std::size_t i = 0; i < clients->size(); ++i) {
        if (sockets[i].revents != 0) {
          Take(&(*clients)[i]);
          ASSERT_TRUE((*clients)[i].Ok());
        }
      }
    }
  }

 private:
  void Take(Client* client) {
    const bool metrics = client->AsksForMetrics();
    if (const auto body = client->Read()) {
      ++Answers;
      if (metrics) {
        Cycles.Look(*body);
      }
    }
  }
};

std::vector<Client> Clients(std::size_t count) {
  std::vector<Client> clients;
  clients.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    clients.emplace_back(i);
  }
  return clients;
}

class Measured : public test_serve::OnTheDemo {
 protected:
  void SetUp() override {
    if (std::getenv("STATUS_LONG") == nullptr) {
      GTEST_SKIP() << "takes minutes; ./test --long runs it";
    }
    OnTheDemo::SetUp();
  }
};

bool IsHealthy() { return Get("/healthz").Status == 200; }

TEST_F(Measured, SixtyFourConnectionsAtFullSpeedChangeNeitherScheduleNorMemory) {
  constexpr double kInterval = 10;
  const Server server({"--interval", "10"});
  ASSERT_TRUE(Eventually(&IsHealthy));
  std::vector<Client> clients = Clients(64);
  Load load;
  ASSERT_NO_FATAL_FAILURE(load.Run(&clients, seconds(15)));  // a cycle's forms have been replaced
  const double before = ResidentMebibytes(server);
  ASSERT_NO_FATAL_FAILURE(load.Run(&clients, seconds(30)));
  const double growth = ResidentMebibytes(server) - before;
  Report("answers in 45 s", load.Answers, "");
  Report("worst deviation from the schedule", load.Cycles.WorstDeviation(kInterval) * 1000, "ms");
  Report("resident memory", before, "MiB");
  Report("growth in 30 s", growth, "MiB");
  EXPECT_GE(load.Cycles.size(), 4U);
  EXPECT_LE(load.Cycles.WorstDeviation(kInterval), kInterval / 100);
  EXPECT_LE(growth, 1);
}

TEST_F(Measured, AThousandHostileConnectionsChangeNothingForOthers) {
  constexpr double kInterval = 10;
  const Server server({"--interval", "10", "--listen", "0.0.0.0:9877", "--allow-remote"});
  ASSERT_TRUE(Eventually(&IsHealthy));
  std::vector<Client> clients = Clients(8);
  Load load;
  ASSERT_NO_FATAL_FAILURE(load.Run(&clients, seconds(15)));
  const double before = ResidentMebibytes(server);
  std::vector<Connection> hostile;
  for (int number = 0; number < 1000; ++number) {
    hostile.emplace_back(kElsewhere, kElsewhere);
    ASSERT_TRUE(hostile.back().IsOpen()) << number;
    hostile.back().Send(test_serve::HostileBytes(number));
    ASSERT_NO_FATAL_FAILURE(load.Run(&clients, seconds(number % 50 == 0 ? 1 : 0)));
  }
  for (int round = 0; round < 15; ++round) {
    for (const Connection& slow : hostile) {
      slow.Send("P");
    }
    ASSERT_NO_FATAL_FAILURE(load.Run(&clients, seconds(1)));
  }
  const double growth = ResidentMebibytes(server) - before;
  Report("answers beside 1,000 hostile connections", load.Answers, "");
  Report("worst deviation from the schedule", load.Cycles.WorstDeviation(kInterval) * 1000, "ms");
  Report("growth", growth, "MiB");
  EXPECT_GE(load.Cycles.size(), 4U);
  EXPECT_LE(load.Cycles.WorstDeviation(kInterval), kInterval / 100);
  EXPECT_LE(growth, 2);
}

// The first one after a cycle, for which the metrics are written.
TEST_F(Measured, AScrapeTakesAMillisecondOfTheProcessor) {
#ifndef NDEBUG
  GTEST_SKIP() << "of the preset release";
#endif
  constexpr std::size_t kScrapes = 31;
  const Server server;
  ASSERT_TRUE(Eventually(&IsHealthy));
  std::vector<double> costs;
  std::string seen;
  while (costs.size() < kScrapes) {
    const double before = ProcessorMilliseconds(server);
    const std::string tag = Get("/metrics").Headers.at("etag");
    const double cost = ProcessorMilliseconds(server) - before;
    if (tag != seen) {
      costs.push_back(cost);
    }
    seen = tag;
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
  }
  std::ranges::sort(costs);
  Report("a scrape of the demo, median", costs[kScrapes / 2], "ms");
  Report("a scrape of the demo, worst", costs.back(), "ms");
  EXPECT_LE(costs[kScrapes / 2], 1);
}

// More than a day of cycles, ten seconds apart, in a clock that goes faster.
TEST_F(Measured, TenThousandCyclesTakeTwentyFourMebibytes) {
  constexpr double kCycles = 10000;
  const test_support::TemporaryFolder state;
  setenv("STATE_DIRECTORY", state.Path().c_str(), 1);  // the history is kept there
  setenv("LD_PRELOAD", test_support::FastClock().c_str(), 1);
  setenv("FAST_CLOCK", "400", 1);
  const Server server({"--interval", "10"});
  unsetenv("LD_PRELOAD");
  double cycles = 0;
  const auto end = Clock::now() + seconds(1800);
  for (int round = 0; cycles < kCycles && Clock::now() < end; ++round) {
    // Readings change, and findings come and go.
    sandbox::SetRow("Sensor_00_Celsius", std::to_string(20 + round % 50));
    sandbox::SetRow("Sensor_08_Connected", round % 5 == 0 ? "false" : "true");
    for (const char* path : kPaths) {
      Get(path);  // the time that it may take passes faster, too
    }
    const std::string metrics = Get("/metrics").Body;
    if (metrics.find("\nstatuscollector_cycles_total ") != std::string::npos) {
      cycles = NumberAfter(metrics, "\nstatuscollector_cycles_total ");
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  EXPECT_TRUE(std::filesystem::exists(state.Path() + "/history"));
  const double resident = ResidentMebibytes(server);
  Report("cycles", cycles, "");
  Report("resident memory after them", resident, "MiB");
  EXPECT_GE(cycles, kCycles);
  EXPECT_LE(resident, 24);
}

}  // namespace
