// The folder of the history: what is saved while the program runs.
#include "serve/history_store.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

#include "model/document.h"
#include "serve/history_file.h"
#include "serve/history_json.h"
#include "tests/serve/server.h"
#include "tests/support/temporary_folder.h"

namespace {

using serve::History;
using serve::HistoryStore;
using test_serve::Eventually;

constexpr std::chrono::seconds kInterval(10);
constexpr std::chrono::seconds kPatience(20);

insight::Snapshot CycleAt(std::int64_t seconds) {
  return {.Document = QtSts::DocumentTree(QtSts::CStatus()),
          .Began = std::chrono::system_clock::time_point(std::chrono::seconds(seconds)),
          .BeganSteady = std::chrono::steady_clock::time_point(std::chrono::seconds(seconds))};
}

std::size_t RowsIn(const std::string& folder) {
  std::ifstream file(folder + "/history", std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(file)), {});
  return file ? serve::ParseHistory(bytes, 10).Rows.All().size() : 0;
}

TEST(HistoryStore, SavesNowAndThenAndAtItsEnd) {
  const test_support::TemporaryFolder folder;
  History history(kInterval, "");
  HistoryStore store(folder.Path(), kInterval, &history, std::chrono::milliseconds(10));
  history.Add(CycleAt(1800000000));
  EXPECT_TRUE(Eventually([&] { return RowsIn(folder.Path()) == 1; }));
  history.Add(CycleAt(1800000010));
  EXPECT_TRUE(store.Stop(kPatience));
  EXPECT_EQ(RowsIn(folder.Path()), 2U);
}

TEST(HistoryStore, WritesNothingThatIsThereAlready) {
  const test_support::TemporaryFolder folder;
  History history(kInterval, "");
  HistoryStore store(folder.Path(), kInterval, &history);
  EXPECT_TRUE(store.Stop(kPatience));
  EXPECT_FALSE(std::filesystem::exists(folder.Path() + "/history"));
}

TEST(HistoryStore, GoesOnWhereTheProgramBefore) {
  const test_support::TemporaryFolder folder;
  for (std::size_t run = 1; run <= 3; ++run) {
    History history(kInterval, "boot");
    HistoryStore store(folder.Path(), kInterval, &history);
    history.Add(CycleAt(1800000000 + 100 * static_cast<std::int64_t>(run)));
    EXPECT_TRUE(store.Stop(kPatience));
    EXPECT_EQ(RowsIn(folder.Path()), run);
  }
}

TEST(HistoryStore, SavesWhileCyclesAndAnswersGoOn) {
  const test_support::TemporaryFolder folder;
  History history(kInterval, "");
  HistoryStore store(folder.Path(), kInterval, &history, std::chrono::milliseconds(1));
  constexpr std::int64_t kCycles = 300;
  std::atomic<bool> ended = false;
  std::thread answers([&] {
    const serve::Cycle cycle = {
        .Snapshot = CycleAt(0), .Xml = nullptr, .Trouble = "", .LastSuccess = std::nullopt};
    const serve::Identities identities(cycle.Snapshot.Document);
    while (!ended) {
      const std::string list = history.Look([&](const serve::HistoryData& data) {
        return serve::HistoryListOf(data, cycle, identities);
      });
      ASSERT_THAT(list, testing::HasSubstr("\"Findings\""));
    }
  });
  for (std::int64_t cycle = 0; cycle < kCycles; ++cycle) {
    history.Add(CycleAt(1800000000 + 10 * cycle));
    std::this_thread::sleep_for(std::chrono::microseconds(100));
  }
  ended = true;
  answers.join();
  EXPECT_TRUE(store.Stop(kPatience));
  EXPECT_EQ(RowsIn(folder.Path()), static_cast<std::size_t>(kCycles));
}

// A crash may leave it behind; a link would lead elsewhere.
TEST(HistoryStore, TakesNoFileThatItDidNotMake) {
  const test_support::TemporaryFolder folder;
  const std::string elsewhere = folder.Path() + "/elsewhere";
  std::ofstream(elsewhere) << "kept";
  std::filesystem::create_symlink(elsewhere, folder.Path() + "/history.new");
  std::filesystem::create_symlink(elsewhere, folder.Path() + "/history");
  History history(kInterval, "");
  testing::internal::CaptureStderr();
  {
    HistoryStore store(folder.Path(), kInterval, &history);
    history.Add(CycleAt(1800000000));
    EXPECT_TRUE(store.Stop(kPatience));
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "statuscollector: " + folder.Path() +
                "/history cannot be opened: Too many levels of symbolic links; the history begins "
                "anew, the file is now history.damaged\n");
  EXPECT_EQ(RowsIn(folder.Path()), 1U);
  EXPECT_FALSE(std::filesystem::is_symlink(folder.Path() + "/history"));
  EXPECT_EQ(std::filesystem::file_size(elsewhere), 4U);
}

TEST(HistoryStore, BelievesNoFileThatOthersMayWrite) {
  const test_support::TemporaryFolder folder;
  const std::string file = folder.Path() + "/history";
  for (const mode_t mode : {0620U, 0602U}) {
    History history(kInterval, "");
    std::ofstream(file) << "";
    chmod(file.c_str(), mode);
    testing::internal::CaptureStderr();
    HistoryStore store(folder.Path(), kInterval, &history);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "statuscollector: " + file +
                  " may be written by other users; the history begins anew, the file is now "
                  "history.damaged\n");
    EXPECT_TRUE(store.Stop(kPatience));
  }
}

TEST(HistoryStore, WaitsForNoFileThatIsAPipe) {
  const test_support::TemporaryFolder folder;
  ASSERT_EQ(mkfifo((folder.Path() + "/history").c_str(), 0600), 0);
  History history(kInterval, "");
  testing::internal::CaptureStderr();
  HistoryStore store(folder.Path(), kInterval, &history);
  EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("/history is no file; "));
  EXPECT_TRUE(store.Stop(kPatience));
}

}  // namespace
