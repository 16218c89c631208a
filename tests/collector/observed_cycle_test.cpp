// What is reported to an observer about a cycle's sources and its database.
#include <sqlite3.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>

#include "sandbox/files.h"
#include "sandbox/rows.h"
#include "sandbox/testing.h"
#include "tests/collector/cycle_fixture.h"
#include "tests/collector/hooks.h"
#include "tests/collector/observed.h"
#include "tests/support/interposed/sqlite_calls.h"

namespace {

using interposed::Call;
using interposed::FailNext;
using sandbox::Scenario;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::SizeIs;
using testing::StartsWith;

class ObservedCycle : public CycleTest {
 protected:
  ~ObservedCycle() override {
    interposed::FailNone();
    g_on_call = nullptr;
  }

  // The lines of a cycle on this controller that begin with one of the `wanted` texts.
  std::vector<std::string> LinesOf(const Scenario& scenario,
                                   const std::vector<std::string>& wanted) {
    scenario.Apply();
    Observed observer;
    OutputOf([&] { collector_.QueryDatabase(); });
    return observer.Lines(wanted);
  }

  // The lines of the probe alone.
  std::vector<std::string> LinesOf(const Scenario& scenario, const std::string& probe) {
    std::vector<std::string> lines = LinesOf(scenario, std::vector<std::string>{""});
    const auto first = std::ranges::find(lines, "probe " + probe);
    const auto last = std::find_if(first, lines.end(), [&](const std::string& line) {
      return line.starts_with("probe ends " + probe + " ");
    });
    return {first, last};
  }

  std::vector<std::string> DatabaseLines() {
    Observed observer;
    Cycle();
    return observer.Lines({"asks database", "database"});
  }

  // The same of InitDatabase for writing.
  std::vector<std::string> InitLines() {
    Observed observer;
    errors_ = ErrorsOf([&] { EXPECT_EQ(collector_.InitDatabase(true), 0); });
    return observer.Lines({"asks database", "database"});
  }

  static std::string RepeatedLine(const std::string& line, int times) {
    std::string lines;
    for (int i = 0; i < times; ++i) {
      lines += line;
    }
    return lines;
  }

  std::string errors_;  // what InitLines left on standard error
};

Scenario Bare() { return Scenario().Database(); }

}  // namespace

TEST_F(ObservedCycle, ConsistsOfItsProbesAndTheDatabaseBetweenItsTwoEnds) {
  Open();
  EXPECT_THAT(
      LinesOf(Bare(), {"cycle", "probe", "asks database"}),
      ElementsAre("cycle begins", "probe Compositor", "probe ends Compositor 1", "probe OutputPort",
                  "probe ends OutputPort 1", "probe ContentLimit", "probe ends ContentLimit 1",
                  "probe InputGraphic", "probe ends InputGraphic 1", "probe InputDVI",
                  "probe ends InputDVI 1", "probe IDs", "probe ends IDs 1", "probe GUID",
                  "probe ends GUID 1", "probe SystemMemoryKB", "probe ends SystemMemoryKB 0",
                  "probe SystemStorageKB", "probe ends SystemStorageKB 0", "probe Network",
                  "probe ends Network 0", "probe DNS", "probe ends DNS 1", "probe Versions",
                  "probe ends Versions 0", "probe GetTime", "probe ends GetTime 0",
                  "asks database prepare", "asks database execute", "asks database rows",
                  "asks database finish", "asks database release", "cycle ends 0"));
}

TEST_F(ObservedCycle, NamesItsDocument) {
  Observed observer;
  const QtSts::CStatus* status = nullptr;
  observer.Then = [&](const observe::Event& event) {
    if (const auto* begins = event.As<observe::CycleBegins>()) {
      status = begins->Status;
    }
  };
  Cycle();
  EXPECT_EQ(status, &status_);
}

TEST_F(ObservedCycle, ReportsTheQuestionsAboutAFileAndItsBytes) {
  EXPECT_THAT(LinesOf(Bare().File("/home/Zet/.settings/uuid", "abc\n"), "GUID"),
              ElementsAre("probe GUID", StartsWith("asks open /home/Zet/, 0x"),
                          MatchesRegex("answers open /home/Zet/: [0-9]+"),
                          StartsWith("asks open /home/Zet/.settings, 0x"),
                          MatchesRegex("answers open /home/Zet/.settings: [0-9]+"),
                          StartsWith("asks open /home/Zet/.settings/uuid, 0x"),
                          MatchesRegex("answers open /home/Zet/.settings/uuid: [0-9]+"),
                          "asks file status /home/Zet/.settings/uuid",
                          "answers file status /home/Zet/.settings/uuid: 0, regular 644 of 0",
                          "asks read /home/Zet/.settings/uuid, offset 0, limit 128",
                          "answers read /home/Zet/.settings/uuid: 4, \"abc\n\""));
}

TEST_F(ObservedCycle, ReportsWhyAFileIsMissing) {
  EXPECT_THAT(LinesOf(Bare().Folder("/home/Zet/.settings"), "GUID").back(),
              "answers open /home/Zet/.settings/uuid: -1, No such file or directory");
  EXPECT_THAT(LinesOf(Bare(), "GUID"),
              ElementsAre("probe GUID", StartsWith("asks open /home/Zet/, 0x"),
                          "answers open /home/Zet/: -1, No such file or directory"));
}

TEST_F(ObservedCycle, FollowsALinkWithEachNameInItsFolder) {
  const std::string folder = "/home/Zet/.settings/";
  const Scenario scenario = Bare().File("/home/Zet/uuid", "abc").Link(folder + "uuid", "../uuid");
  std::vector<std::string> lines = LinesOf(scenario, "GUID");
  std::erase_if(lines, [](const std::string& line) { return !line.starts_with("answers "); });
  EXPECT_THAT(lines, ElementsAre(StartsWith("answers open /home/Zet/: "),
                                 StartsWith("answers open /home/Zet/.settings: "),
                                 StartsWith("answers open " + folder + "uuid: -1, "),
                                 StartsWith("answers open " + folder + "uuid: "),
                                 StartsWith("answers file status " + folder + "uuid: 0, "),
                                 "answers link target " + folder + "uuid: 7, \"../uuid\"",
                                 StartsWith("answers open " + folder + "..: "),
                                 StartsWith("answers open " + folder + "../uuid: "),
                                 StartsWith("answers file status " + folder + "uuid: 0, "),
                                 StartsWith("answers read " + folder + "uuid: 3, ")));
}

TEST_F(ObservedCycle, ReportsWhatIsNoFile) {
  EXPECT_THAT(LinesOf(Bare().Folder("/home/Zet/.settings/uuid"), "GUID"),
              Contains(MatchesRegex("answers file status .*uuid: 0, other [0-7]+ of 0")));
}

TEST_F(ObservedCycle, MarksAReadThatMayGoOn) {
  const std::string path = "/home/Zet/.settings/uuid";
  EXPECT_THAT(LinesOf(Bare().File(path, std::string(127, 'x')), "GUID"),
              Contains("answers read " + path + ": 127, \"" + std::string(127, 'x') + '"'));
  EXPECT_THAT(LinesOf(Bare().File(path, std::string(129, 'x')), "GUID"),
              Contains("answers read " + path + ": 128, \"" + std::string(128, 'x') + "\"..."));
}

TEST_F(ObservedCycle, ReportsTheRequestsToADeviceAndItsAnswers) {
  SANDBOX_NEEDS_DEVICES();
  EXPECT_THAT(LinesOf(Bare().Answer("travex", 0x8004DA63, 7).Answer("travex", 0x8004DA65, -1),
                      "ContentLimit"),
              ElementsAre("probe ContentLimit", StartsWith("asks open /dev/travex, 0x"),
                          MatchesRegex("answers open /dev/travex: [0-9]+"),
                          "asks request /dev/travex, 0x8004da63", "answers request /dev/travex: 7",
                          "asks request /dev/travex, 0x8004da65",
                          "answers request /dev/travex: -1, Operation not permitted",
                          "asks request /dev/travex, 0x8004da64",
                          "answers request /dev/travex: -1, Inappropriate ioctl for device"));
}

TEST_F(ObservedCycle, AsksForTheWatchdogsMark) {
  SANDBOX_NEEDS_DEVICES();
  const auto outcome = [&](const Scenario& scenario) {
    return LinesOf(Scenario(scenario)
                       .Device("travex")
                       .Device("zetdisplay")
                       .Device("diagnostics")
                       .File("/proc/driver/frame_control/registers", ""),
                   std::vector<std::string>{"answers path status"});
  };
  EXPECT_THAT(outcome(Bare()),
              ElementsAre("answers path status /var/run/wd_event: -1, No such file or directory"));
  EXPECT_THAT(outcome(Bare().File("/var/run/wd_event", "")),
              ElementsAre("answers path status /var/run/wd_event: 0, regular 644 of 0"));
}

TEST_F(ObservedCycle, ReportsTheSystemAndItsStorage) {
  EXPECT_THAT(LinesOf(Bare().Uptime(std::chrono::seconds(59)), "SystemMemoryKB"),
              Contains(StartsWith("answers system : 0, up ")));
  EXPECT_THAT(LinesOf(Bare(), "SystemStorageKB"),
              ElementsAre("probe SystemStorageKB", "asks storage /",
                          MatchesRegex("answers storage /: 0, [0-9]+ blocks")));
}

TEST_F(ObservedCycle, ReportsTheTimeInItsZone) {
  const std::vector<std::string> lines = LinesOf(Bare(), "GetTime");
  EXPECT_THAT(lines, Contains(MatchesRegex("answers time : [0-9]+")));
  EXPECT_THAT(lines, Contains(MatchesRegex("answers local time : 0, [0-9]+ at -?[0-9]+")));
  EXPECT_THAT(lines, Contains(MatchesRegex("answers UTC : 0, [0-9]+ at 0")));
}

TEST_F(ObservedCycle, ReportsTheWholeInterfaceListAndTheQuestionsAboutEach) {
  const std::vector<std::string> lines =
      LinesOf(Bare()
                  .Interface({"eth0",
                              "00:1A:2B:3C:4D:5E",
                              sandbox::LinkState::kUp,
                              {{"192.168.1.20/24", "192.168.1.255", ""}}})
                  .File("/sys/class/net/eth0/carrier", "1\n"),
              "Network");
  EXPECT_THAT(lines, Contains(AllOf(StartsWith("answers interfaces : 0, "), HasSubstr("lo/17"),
                                    HasSubstr("eth0/17"), HasSubstr("eth0/2"))));
  EXPECT_THAT(lines, Contains("asks host text eth0, family 2"));
  for (const char* text : {"192.168.1.20", "255.255.255.0", "192.168.1.255"}) {
    EXPECT_THAT(lines, Contains("answers host text eth0: 0, \"" + std::string(text) + '"'));
  }
  EXPECT_THAT(lines, Contains(MatchesRegex("answers socket : [0-9]+")));
  EXPECT_THAT(lines, Contains("answers hardware address eth0: 0, \"" +
                              std::string("\x00\x1A\x2B\x3C\x4D\x5E", 6) + '"'));
}

TEST_F(ObservedCycle, ReportsWhichLabelsAreMissing) {
  const Scenario scenario = Bare()
                                .File("/proc/meminfo", "MemTotal: 100 kB\nCached: 7 kB\n")
                                .File("/proc/driver/frame_control/registers",
                                      "dss_detected_rows: 0x438\nscale_input_width: 0x780\n")
                                .File("/etc/resolv.conf", "nameserver 8.8.8.8\n");
  const auto labels = [&](const std::string& probe) {
    std::vector<std::string> lines = LinesOf(scenario, probe);
    std::erase_if(lines, [](const std::string& line) { return !line.starts_with("label "); });
    return lines;
  };
  EXPECT_THAT(labels("SystemMemoryKB"),
              ElementsAre("label MemTotal:", "label MemFree: missing", "label Cached:"));
  EXPECT_THAT(
      labels("InputGraphic"),
      ElementsAre("label dss_detected_vsync:  missing", "label dss_detected_hsync:  missing",
                  "label dss_detected_columns:  missing", "label dss_detected_rows: ",
                  "label scale_input_height:  missing", "label scale_input_width: "));
  EXPECT_THAT(labels("DNS"), ElementsAre("label nameserver ", "label nameserver  missing"));
}

TEST_F(ObservedCycle, ReportsAgainADatabaseThatCouldNotBeOpened) {
  sandbox::RemoveDatabase();
  Observed observer;
  ErrorsOf([&] { collector_.InitDatabase(false); });
  EXPECT_THAT(observer.Lines({"asks database", "database"}),
              ElementsAre("asks database open",
                          "database fails open: 14, 14, No such file or directory, unable to open "
                          "database file"));
  for (int cycle = 0; cycle < 2; ++cycle) {
    EXPECT_THAT(DatabaseLines(),
                ElementsAre("database fails open before: 14, 14, No such file or directory, unable "
                            "to open database file",
                            "asks database prepare",
                            "database fails prepare: 21, 21, no error, bad parameter or other API "
                            "misuse"));
  }
}

// Used to be written to standard error only.
TEST_F(ObservedCycle, InitDatabaseReportsAFileThatItCannotSwitchToWriteAheadMode) {
  sandbox::WriteFile(sandbox::kDatabase, std::string(5000, 'x'));
  const std::string failure = ": 26, 26, no error, file is not a database";
  EXPECT_THAT(
      InitLines(),
      ElementsAre("asks database open", "database fails switch" + failure,
                  "asks database table status", "database fails table status" + failure,
                  "asks database table io", "database fails table io" + failure,
                  "asks database table packages", "database fails table packages" + failure,
                  "asks database trigger status", "database fails trigger status" + failure,
                  "asks database trigger io", "database fails trigger io" + failure,
                  "asks database trigger packages", "database fails trigger packages" + failure));
  EXPECT_EQ(errors_, RepeatedLine("26:file is not a database\n", 7));
}

TEST_F(ObservedCycle, InitDatabaseReportsTheTableAndTheTriggerThatItCannotMake) {
  sandbox::RunSql(
      "DROP TABLE status; CREATE TABLE status(other TEXT);"
      "CREATE INDEX io ON status(other);");
  EXPECT_THAT(
      InitLines(),
      ElementsAre("asks database open", "asks database table status", "asks database table io",
                  "database fails table io: 1, 1, no error, there is already an index named io",
                  "asks database table packages", "asks database trigger status",
                  "database fails trigger status: 1, 1, no error, no such column: address",
                  "asks database trigger io",
                  "database fails trigger io: 1, 1, no error, no such table: io",
                  "asks database trigger packages"));
  EXPECT_EQ(errors_,
            "1:there is already an index named io\n1:no such column: address\n"
            "1:no such table: io\n");
}

TEST_F(ObservedCycle, InitDatabaseReportsEachStepThatADatabaseWhichIsNotOpenFails) {
  sandbox::RemoveDatabase();
  sandbox::MakeFolder(sandbox::kDatabase);
  const std::vector<std::string> lines = InitLines();
  sandbox::RemoveFile(sandbox::kDatabase);
  EXPECT_THAT(lines[1], StartsWith("database fails open: 14, "));
  std::vector<std::string> failures = lines;
  std::erase_if(failures, [](const std::string& line) { return line.starts_with("asks"); });
  EXPECT_THAT(failures, SizeIs(7));
}

TEST_F(ObservedCycle, InitDatabaseReportsNoFailureOfADatabaseThatItMakes) {
  sandbox::RemoveDatabase();
  EXPECT_THAT(InitLines(), ElementsAre("asks database open", "asks database table status",
                                       "asks database table io", "asks database table packages",
                                       "asks database trigger status", "asks database trigger io",
                                       "asks database trigger packages"));
  EXPECT_EQ(errors_, "");
}

TEST_F(ObservedCycle, ReportsAtWhichStageTheDatabaseFails) {
  sandbox::SetRows({{"ThermalScaler", "1"}, {"TtableTitle", "title"}});
  Open();
  g_on_thermal_scaler = [](const DispatchedRow&) { FailNext(Call::kSqlFinalize); };
  EXPECT_THAT(DatabaseLines().back(), StartsWith("database fails release: 10, 10, "));
  EXPECT_THAT(DatabaseLines().back(), "asks database prepare") << "the pending code ends the cycle";
  g_on_thermal_scaler = [this](const DispatchedRow&) {
    collector_.m_LastError = 5;  // ends the loop before the last row
    FailNext(Call::kSqlReset);
  };
  EXPECT_THAT(DatabaseLines().back(), StartsWith("database fails finish: 10, 10, "));
  sandbox::SetRows({{"ThermalScaler", "1"}});  // the last row, after which the loop finalizes
  g_on_thermal_scaler = [](const DispatchedRow&) { FailNext(Call::kSqlReset); };
  EXPECT_THAT(DatabaseLines().back(), StartsWith("database fails rows: 10, 10, "));
  g_on_thermal_scaler = [](const DispatchedRow&) {
    throw CppSQLite3Exception(SQLITE_BUSY, "locked", SQLITE_BUSY_SNAPSHOT, EAGAIN);
  };
  EXPECT_THAT(DatabaseLines().back(),
              "database fails rows: 5, 517, Resource temporarily unavailable, locked");
  g_on_thermal_scaler = nullptr;
  MakeView("SELECT 'GUID' AS address, hex('x') AS value;");
  EXPECT_THAT(DatabaseLines().back(),
              "database fails execute: 1, 1, no error, table or view calls function hex");
  sandbox::RunSql("DROP VIEW status;");
  Open();
  EXPECT_THAT(DatabaseLines().back(),
              "database fails prepare: 1, 1, no error, no such table: status");
}

TEST_F(ObservedCycle, ReportsThatAnExceptionEndsIt) {
  Open();
  g_on_call = [](const char* call) {
    if (call == std::string("Reset_Globals")) {
      throw std::runtime_error("in the middle");
    }
  };
  Observed observer;
  EXPECT_THROW(Cycle(), std::runtime_error);
  EXPECT_EQ(observer.All.back(), "cycle ends 0, threw");
}
