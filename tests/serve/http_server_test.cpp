// The server in this process, so that what it does can be counted.
#include "serve/http_server.h"

#include <gtest/gtest.h>
#include <poll.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "model/can_sensors.h"
#include "model/document.h"
#include "tests/serve/server.h"

namespace {

using test_serve::Get;

constexpr std::chrono::seconds kInterval{10};
constexpr const char* kRpm = "/history.json?path=Sensors%5B0%5D/CurrentRpm";

// A cycle of a display with one fan.
std::shared_ptr<const serve::Cycle> OneCycle() {
  QtSts::CStatus status;
  auto fan = std::make_unique<QtSts::CCANFanRpmSensor>();
  fan->Connected = true;
  fan->CurrentRpm = 1200;
  status.Sensors.Add(fan.release());
  insight::Snapshot snapshot{.Document = QtSts::DocumentTree(status),
                             .Began = std::chrono::system_clock::now(),
                             .BeganSteady = std::chrono::steady_clock::now()};
  return std::make_shared<const serve::Cycle>(serve::Cycle{.Number = 1,
                                                           .Snapshot = std::move(snapshot),
                                                           .Xml = nullptr,
                                                           .Trouble = "",
                                                           .LastSuccess = std::nullopt});
}

class AServer : public testing::Test {
 protected:
  AServer() {
    const std::shared_ptr<const serve::Cycle> cycle = OneCycle();
    history_.Add(cycle->Snapshot);
    server_.Set({.Version = 1, .Latest = cycle});
    thread_ = std::thread([this] {
      while (!ends_) {
        std::vector<pollfd> descriptors;
        server_.AddDescriptors(&descriptors);
        constexpr int kMilliseconds = 10;
        poll(descriptors.data(), descriptors.size(), kMilliseconds);
        server_.Run();
        made_ = server_.BodiesMade();
      }
    });
  }
  ~AServer() override {
    ends_ = true;
    if (thread_.joinable()) {
      thread_.join();
    }
  }

  // How many bodies were made until now.
  std::uint64_t Made() {
    ends_ = true;
    thread_.join();
    return made_;
  }

  serve::History history_{kInterval, ""};
  serve::HttpServer server_{{serve::ParseListenAddress("127.0.0.1:9877")}, {}, kInterval, history_};
  std::atomic<bool> ends_ = false;
  std::atomic<std::uint64_t> made_ = 0;
  std::thread thread_;
};

TEST_F(AServer, MakesOneAnswerOfTheHistoryForOneRequest) {
  EXPECT_EQ(Get(kRpm).Status, 200);
  EXPECT_EQ(Get(kRpm).Status, 200);
  EXPECT_EQ(Made(), 2U);
}

TEST_F(AServer, MakesNoAnswerOfTheHistoryThatTheClientHas) {
  const std::string tag = Get(kRpm).Headers.at("etag");
  const std::string condition = "If-None-Match: " + tag + "\r\n";
  EXPECT_EQ(Get(kRpm, condition).Status, 304);
  EXPECT_EQ(Get("/history.json?path=nowhere", condition).Status, 404);
  EXPECT_EQ(Made(), 1U);
}

}  // namespace
