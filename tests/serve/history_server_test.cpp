// The history of a server that runs on a controller in a box, and is started again.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/fanotify.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>

#include "sandbox/rows.h"
#include "tests/serve/demo.h"
#include "tests/serve/server.h"
#include "tests/support/held_lease.h"
#include "tests/support/paths.h"
#include "tests/support/run_program.h"
#include "tests/support/temporary_folder.h"

namespace {

using nlohmann::json;
using test_serve::Eventually;
using test_serve::Get;
using test_serve::Response;
using test_serve::Server;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kCelsius = "/history.json?path=Sensors%5B0%5D/Celsius";

class ServedHistory : public test_serve::OnTheDemo {
 protected:
  std::string File() const { return folder_.Path() + "/history"; }

  test_support::TemporaryFolder folder_;
};

bool IsHealthy() { return Get("/healthz").Status == 200; }

json Overview() { return json::parse(Get("/overview.json").Body); }

// The finding of this kind; null when there is none.
json FindingOf(const json& findings, const std::string& id) {
  for (const json& finding : findings) {
    if (finding.at("Id") == id) {
      return finding;
    }
  }
  return nullptr;
}

TEST_F(ServedHistory, HasEachNumberThatWasRead) {
  const Server server;
  ASSERT_TRUE(Eventually(&IsHealthy));
  sandbox::SetRow("Sensor_00_Celsius", "12.25");
  ASSERT_TRUE(Eventually([] { return Get(kCelsius).Body.find("12.25") != std::string::npos; }));
  const json history = json::parse(Get(kCelsius).Body);
  EXPECT_EQ(history.at("Step"), 1);
  const json& series = history.at("Series").at(0);
  EXPECT_EQ(series.at("Path"), "Sensors[0]/Celsius");
  EXPECT_EQ(series.at("Values").front(), 41.5);
  EXPECT_EQ(series.at("Values").back(), 12.25);
  EXPECT_EQ(series.at("Values").size(), history.at("Times").size());
  const json list = json::parse(Get("/history.json").Body);
  EXPECT_THAT(list.at("Series"), testing::Contains(json("Outputs[0]/Dimming/DimmingLevel")));
  EXPECT_EQ(list.at("LeftOut"), 0);
}

TEST_F(ServedHistory, RefusesQuestionsWithAReason) {
  const Server server({"--interval", "3600"});
  ASSERT_TRUE(Eventually(&IsHealthy));
  const Response unknown = Get("/history.json?path=Sensors%5B0%5D/Celsius&path=Sensors[0]/Celsiu");
  EXPECT_EQ(unknown.Status, 404);
  EXPECT_EQ(unknown.Body,
            "there is no history of Sensors[0]/Celsiu; the nearest is Sensors[0]/Celsius\n");
  EXPECT_EQ(Get("/history.json?path=%1B%5B31m").Body, "there is no history of \uFFFD[31m\n");
  for (const char* query : {"?Path=GUID", "?path=", "?path", "?path=GUID&x=1", "?x"}) {
    const Response bad = Get(std::string("/history.json") + query);
    EXPECT_EQ(bad.Status, 400) << query;
    EXPECT_THAT(bad.Body, StartsWith("a query has nothing but path=PATH here")) << query;
  }
  const std::string tag = Get(kCelsius).Headers.at("etag");
  EXPECT_EQ(Get(kCelsius, "If-None-Match: " + tag + "\r\n").Status, 304);
}

TEST_F(ServedHistory, KnowsAfterARestartSinceWhenAFindingHasBeenThere) {
  const std::string id = "sensor-disconnected";
  json before;
  {
    Server server({"--state", folder_.Path()});
    ASSERT_TRUE(Eventually(&IsHealthy));
    sandbox::SetRow("Sensor_07_Connected", "false");
    ASSERT_TRUE(Eventually([&] { return !FindingOf(Overview().at("Findings"), id).is_null(); }));
    before = FindingOf(Overview().at("Findings"), id);
    EXPECT_EQ(before.at("Before"), false);
    EXPECT_EQ(server.End(SIGTERM), 0);
    EXPECT_EQ(server.Errors(), "");
  }
  std::this_thread::sleep_for(std::chrono::seconds(2));
  const Server server({"--state", folder_.Path()});
  ASSERT_TRUE(Eventually(&IsHealthy));
  EXPECT_EQ(FindingOf(Overview().at("Findings"), id), before);
  const json insight = json::parse(Get("/insight.json").Body).at("Insight");
  EXPECT_EQ(FindingOf(insight.at("Findings"), id).at("Since"), before.at("Since"));
  sandbox::SetRow("Sensor_07_Connected", "true");
  ASSERT_TRUE(Eventually([&] { return FindingOf(Overview().at("Findings"), id).is_null(); }));
  const json ended = FindingOf(Overview().at("Ended"), id);
  EXPECT_EQ(ended.at("Begin"), before.at("Since"));
  EXPECT_GT(ended.at("End"), before.at("Since"));
  EXPECT_EQ(FindingOf(json::parse(Get("/history.json").Body).at("Findings"), id), ended);
}

TEST_F(ServedHistory, IsSavedWhileACycleHangs) {
  {
    Server server({"--state", folder_.Path()});
    ASSERT_TRUE(Eventually(&IsHealthy));
    const test_support::HeldLease lease("/proc/meminfo");
    ASSERT_TRUE(Eventually([] { return Get("/healthz").Body.starts_with("hanging: "); }));
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(server.End(SIGTERM), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(15));
  }
  struct stat status = {};
  ASSERT_EQ(stat(File().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0600U);
  EXPECT_FALSE(std::filesystem::exists(File() + ".new"));
}

TEST_F(ServedHistory, SaysThatTheLastSaveTookTooLong) {
  Server server({"--state", folder_.Path()});
  ASSERT_TRUE(Eventually(&IsHealthy));
  // Whoever opens a file of the folder waits until this is closed.
  const int gate = fanotify_init(FAN_CLASS_CONTENT | FAN_CLOEXEC, O_RDONLY);
  ASSERT_NE(gate, -1);
  ASSERT_EQ(fanotify_mark(gate, FAN_MARK_ADD, FAN_OPEN_PERM | FAN_EVENT_ON_CHILD, AT_FDCWD,
                          folder_.Path().c_str()),
            0);
  EXPECT_EQ(server.End(SIGTERM), 0);
  close(gate);
  EXPECT_EQ(server.Errors(),
            "statuscollector: the history is not saved: the disk does not answer; what is newer "
            "than the file is lost\n");
}

TEST_F(ServedHistory, BeginsAnewWhereTheFileIsDamaged) {
  std::ofstream(File()) << "something else";
  Server server({"--state", folder_.Path()});
  ASSERT_TRUE(Eventually(&IsHealthy));
  EXPECT_EQ(server.Errors(), "statuscollector: " + File() +
                                 " is no history; the history begins anew, the file is now "
                                 "history.damaged\n");
  EXPECT_TRUE(std::filesystem::exists(File() + ".damaged"));
  EXPECT_EQ(server.End(SIGTERM), 0);
  EXPECT_TRUE(std::filesystem::exists(File()));
}

TEST_F(ServedHistory, IsKeptInTheFolderThatAServiceIsGiven) {
  setenv("STATE_DIRECTORY", (folder_.Path() + ":/nowhere").c_str(), 1);
  {
    Server server;
    ASSERT_TRUE(Eventually(&IsHealthy));
    EXPECT_EQ(server.End(SIGTERM), 0);
  }
  unsetenv("STATE_DIRECTORY");
  EXPECT_TRUE(std::filesystem::exists(File()));
}

TEST_F(ServedHistory, NeedsAFolderOfItsOwn) {
  const auto refused = [](const std::string& folder) {
    return test_support::RunProgram({"timeout", "20", test_support::HostProgram(), "serve",
                                     "--listen", "127.0.0.1:9878", "--state", folder});
  };
  const test_support::ProgramResult missing = refused("/nowhere");
  EXPECT_EQ(missing.ExitCode, 2);
  EXPECT_EQ(missing.Errors,
            "statuscollector: serve: --state: /nowhere cannot be opened: No such file or "
            "directory; make the folder, or give another\n");
  const Server server({"--state", folder_.Path()});
  const test_support::ProgramResult used = refused(folder_.Path());
  EXPECT_EQ(used.ExitCode, 2);
  EXPECT_EQ(used.Errors, "statuscollector: serve: --state: " + folder_.Path() +
                             " is used by another serve; give another folder\n");
}

TEST_F(ServedHistory, IsWholeOrNotThereWhereTheDiskIsFull) {
  ASSERT_EQ(mount("tmpfs", folder_.Path().c_str(), "tmpfs", 0, "size=8k"), 0);
  std::ofstream(folder_.Path() + "/other") << std::string(4096, 'x');
  {
    Server server({"--state", folder_.Path()});
    ASSERT_TRUE(Eventually(&IsHealthy));
    EXPECT_EQ(server.End(SIGTERM), 0);
    EXPECT_EQ(server.Errors(), "statuscollector: the history is not saved: " + File() +
                                   ".new: No space left on device; make room, or write "
                                   "elsewhere\n");
  }
  EXPECT_FALSE(std::filesystem::exists(File()));
  EXPECT_FALSE(std::filesystem::exists(File() + ".new"));
  umount(folder_.Path().c_str());
}

}  // namespace
