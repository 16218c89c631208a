// What the history takes of memory, by the allocator's own figures.
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>

#include "model/can_sensors.h"
#include "model/document.h"
#include "serve/history.h"

namespace {

using serve::History;
using serve::HistoryData;

constexpr std::size_t kReadings = 4;  // of a fan sensor
constexpr std::size_t kOfRoot = 4;

std::size_t InUse() {
  const struct mallinfo2 figures = mallinfo2();
  return figures.uordblks + figures.hblkhd;
}

// A cycle in which each number of each fan is another one than in the cycle before.
insight::Snapshot CycleOf(std::size_t fans, std::int64_t number) {
  QtSts::CStatus status;
  for (std::size_t at = 0; at < fans; ++at) {
    auto sensor = std::make_unique<QtSts::CCANFanRpmSensor>();
    sensor->Connected = true;
    sensor->Address = at + 1;
    sensor->CurrentRpm = static_cast<std::uint32_t>(at + static_cast<std::size_t>(number));
    sensor->AverageRpm = sensor->CurrentRpm * 2;
    sensor->SyncLossCounter = static_cast<std::uint32_t>(number);
    status.Sensors.Add(sensor.release());
  }
  const std::chrono::seconds time(10 * number);
  return {.Document = QtSts::DocumentTree(status),
          .Began = std::chrono::system_clock::time_point(std::chrono::seconds(1800000000) + time),
          .BeganSteady = std::chrono::steady_clock::time_point(time)};
}

// The most that the history had after any cycle.
std::size_t MostOf(std::size_t fans, int cycles, History* history) {
  const std::size_t before = InUse();
  std::size_t most = 0;
  for (int cycle = 1; cycle <= cycles; ++cycle) {
    history->Add(CycleOf(fans, cycle));
    const std::size_t now = InUse();
    most = std::max(most, now > before ? now - before : 0);
  }
  return most;
}

TEST(HistoryMemory, IsLittleForOneSensor) {
  History history(std::chrono::seconds(10), "");
  EXPECT_LE(MostOf(1, 10000, &history), std::size_t{2} << 20);
  history.Look([](const HistoryData& data) { EXPECT_EQ(data.Rows.All().size(), 8641U); });
}

TEST(HistoryMemory, IsEnoughForTenThousandSensors) {
  History history(std::chrono::seconds(10), "");
  EXPECT_LE(MostOf(10000, 80, &history), serve::kMostHistoryBytes);
  history.Look([](const HistoryData& data) {
    EXPECT_EQ(data.LeftOut, 0U);
    EXPECT_EQ(data.Names.size(), kReadings * 10000 + kOfRoot);
    EXPECT_GT(data.Rows.Step(), 10U);  // it was full
    EXPECT_GE(data.Rows.All().size(), 25U);
  });
}

TEST(HistoryMemory, IsNotExceededByMoreSensorsThanThereIsRoomFor) {
  History history(std::chrono::seconds(10), "");
  EXPECT_LE(MostOf(30000, 40, &history), serve::kMostHistoryBytes);
  history.Look([](const HistoryData& data) {
    EXPECT_EQ(data.LeftOut, kReadings * 30000 + kOfRoot - data.Names.size());
    EXPECT_GE(data.Names.size(), 60000U);
    EXPECT_GT(data.Rows.Step(), 10U);
    EXPECT_GE(data.Rows.All().size(), 8U);
  });
}

}  // namespace
