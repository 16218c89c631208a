// Captures of several cycles, and of a controller that changes meanwhile.
#include <gmock/gmock.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <regex>
#include <thread>

#include "sandbox/files.h"
#include "sandbox/rows.h"
#include "tests/capture/capture_fixture.h"

namespace {

using captured::CaptureNow;
using captured::CaptureTest;
using captured::Description;
using captured::Entries;
using captured::Load;
using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::Key;
using testing::Not;
using testing::StartsWith;

// Calls `change` over and over in a thread, as long as it lives.
class Changing {
 public:
  explicit Changing(std::function<void(int)> change)
      : thread_([this, change] {
          for (int number = 1; !over_; ++number) {
            change(number);
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
          }
        }) {}
  Changing(const Changing&) = delete;
  Changing& operator=(const Changing&) = delete;
  ~Changing() {
    over_ = true;
    thread_.join();
  }

 private:
  std::atomic<bool> over_ = false;
  std::thread thread_;
};

std::string Folder(int cycle) { return cycle == 0 ? "" : "steps/0" + std::to_string(cycle) + "/"; }

std::string Title(const std::string& document) {
  std::smatch match;
  return std::regex_search(document, match, std::regex(" Title=\"([^\"]*)\"")) ? match[1].str()
                                                                               : "";
}

TEST_F(CaptureTest, HasAStepForEachFurtherCycleWithWhatIsDifferent) {
  Load("demo").Row("TtableTitle", "title 0").Apply();
  Entries capture;
  {
    const Changing rows(
        [](int number) { sandbox::SetRow("TtableTitle", "title " + std::to_string(number)); });
    capture = CaptureNow({"--cycles", "3", "--interval", "1"});
  }
  EXPECT_EQ(Description(capture).at("cycles").size(), 3U);
  std::string rows;  // of the cycle
  for (int cycle = 0; cycle < 3; ++cycle) {
    if (capture.contains(Folder(cycle) + "rows.tsv")) {
      EXPECT_NE(rows, capture.at(Folder(cycle) + "rows.tsv").Bytes) << cycle;
      rows = capture.at(Folder(cycle) + "rows.tsv").Bytes;
    }
    const std::string title = Title(capture.at(Folder(cycle) + "document.xml").Bytes);
    EXPECT_THAT(title, StartsWith("title ")) << cycle;
    EXPECT_THAT(rows, HasSubstr("TtableTitle\t" + title + "\n")) << cycle;
  }
  EXPECT_THAT(capture,
              AllOf(Not(Contains(Key("steps/01/root/proc/meminfo"))),
                    Not(Contains(Key("steps/01/devices/travex"))),
                    Not(Contains(Key("steps/02/interfaces"))), Not(Contains(Key("steps/03")))));
}

// One process that writes the same value to all rows, in one transaction after the other.
pid_t StartWriter(int number) {
  const pid_t child = fork();
  if (child != 0) {
    return child;
  }
  sqlite3* database = nullptr;
  sqlite3_open(sandbox::kDatabase, &database);
  sqlite3_busy_timeout(database, 60'000);
  for (int round = 0;; ++round) {
    const std::string value = std::to_string(number) + "." + std::to_string(round);
    const std::string sql = "UPDATE status SET value = '" + value + "';";
    sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr);
  }
}

TEST_F(CaptureTest, IsOneConsistentSnapshotWhileFourWritersAreAtWork) {
  sandbox::Scenario scenario = Load("bare");
  for (int row = 0; row < 2000; ++row) {
    scenario.Row("Key" + std::to_string(row), "at first");
  }
  scenario.Row("GUID", "at first").Row("TtableTitle", "at first").Apply();
  std::vector<pid_t> writers;
  for (int number = 0; number < 4; ++number) {
    writers.push_back(StartWriter(number));
  }
  std::set<std::string> seen;
  for (int turn = 0; turn < 5 || (seen.size() == 1 && turn < 1000); ++turn) {
    const Entries capture = CaptureNow();
    std::set<std::string> values;
    for (const auto& [key, value] : sandbox::ParseRows(capture.at("rows.tsv").Bytes)) {
      values.insert(std::get<std::string>(value));
    }
    ASSERT_EQ(values.size(), 1U);
    EXPECT_THAT(capture.at("document.xml").Bytes, HasSubstr("GUID=\"" + *values.begin() + "\""));
    seen.insert(*values.begin());
  }
  for (const pid_t writer : writers) {
    kill(writer, SIGKILL);
    waitpid(writer, nullptr, 0);
  }
  EXPECT_GT(seen.size(), 1U);
}

TEST_F(CaptureTest, KeepsBothReadingsOfAFileThatChangesDuringTheCycle) {
  Load("demo").Apply();
  const std::string before = sandbox::ReadFile("/proc/driver/video_mux/registers");
  const Changing file([&](int number) {
    sandbox::WriteFile("/proc/driver/video_mux/registers",
                       std::to_string(number % 1000 + 1000) + before);
  });
  for (int turn = 0; turn < 300; ++turn) {
    const Entries capture = CaptureNow();
    const auto again = capture.find("again/2/root/proc/driver/video_mux/registers");
    if (again == capture.end()) {
      continue;
    }
    EXPECT_NE(again->second.Bytes, capture.at("root/proc/driver/video_mux/registers").Bytes);
    EXPECT_THAT(capture.at("capture.json").Bytes,
                AllOf(HasSubstr("\"Inputs[1]/MultiplexerSelected\""),
                      Not(HasSubstr("\"Inputs[0]/MultiplexerSelected\""))));
    return;
  }
  ADD_FAILURE() << "the file never changed between its two readings";
}

TEST_F(CaptureTest, NamesWhatIsGoneInTheNextCycle) {
  Load("demo").Apply();
  // Gone and there by turns, so that one of some cycles finds it and the next one does not.
  const std::string uuid = "/home/Zet/.settings/uuid";
  for (int turn = 0; turn < 30; ++turn) {
    Entries capture;
    {
      const Changing file([&](int /*number*/) {
        sandbox::RemoveFile(uuid);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        sandbox::WriteFile(uuid, "there");
      });
      capture = CaptureNow({"--cycles", "8", "--interval", "0"});
    }
    for (int cycle = 1; cycle < 8; ++cycle) {
      const auto removed = capture.find(Folder(cycle) + "removed");
      if (removed != capture.end()) {
        EXPECT_EQ(removed->second.Bytes, "root" + uuid + "\n");
        return;
      }
    }
  }
  ADD_FAILURE() << "the file was always there";
}

}  // namespace
