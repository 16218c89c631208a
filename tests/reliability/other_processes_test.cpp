// The status database belongs to many programs: writers at full speed, writers that are killed, and
// files that are taken away, while cycles run.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <set>
#include <vector>

#include "tests/reliability/controller.h"

namespace {

namespace fs = std::filesystem;

using reliability::Foreign;
using reliability::Outcome;
using reliability::Process;
using reliability::Repetitions;
using testing::AnyOf;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kTable =
    "CREATE TABLE status(address TEXT PRIMARY KEY, value TEXT) WITHOUT ROWID;";
// Stamped rows with a page and more of others between them.
constexpr const char* kRows =
    "INSERT INTO status VALUES('CalculatedSunrise','0'),('GUID','0'),('TtableAuthor','0'),"
    "('TtableTitle','0');"
    "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c LIMIT 100) "
    "INSERT INTO status SELECT 'E' || x, hex(zeroblob(100)) FROM c;"
    "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c LIMIT 100) "
    "INSERT INTO status SELECT 'Q' || x, hex(zeroblob(100)) FROM c;";
constexpr const char* kStampedRows =
    "address IN ('CalculatedSunrise', 'GUID', 'TtableAuthor', 'TtableTitle')";

// Stamps the rows, in one transaction after the other, until it is killed.
int StampForEver(int writer) {
  Foreign connection;
  connection.Do("PRAGMA busy_timeout=60000; PRAGMA synchronous=OFF");
  for (int i = 1;; ++i) {
    const std::string stamp = std::to_string(writer) + "_" + std::to_string(i);
    const std::string failure =
        connection.Do("BEGIN IMMEDIATE; UPDATE status SET value='" + stamp + "' WHERE " +
                      kStampedRows + "; UPDATE status SET value=value WHERE address > 'P'; COMMIT");
    if (!failure.empty()) {
      return 1;
    }
  }
}

class OtherProcesses : public testing::Test {
 protected:
  OtherProcesses() { sandbox::Scenario().Apply(); }

  // The layer's own database, in write-ahead mode.
  void MakeOwn() {
    const Outcome made = reliability::Run(&quiet_, [] {
      CStatusInterface creator;
      return creator.InitDatabase(true);
    });
    ASSERT_EQ(made.Report, "");
    ASSERT_EQ(Foreign().Do(kRows), "");
  }

  static void MakeForeign(const std::string& file = sandbox::kDatabase) {
    ASSERT_EQ(Foreign(file).Do(std::string("PRAGMA journal_mode=DELETE;") + kTable + kRows), "");
  }

  void Open() {
    reliability::Run(&quiet_, [this] { return collector_.InitDatabase(false); });
  }

  Outcome Cycle() {
    return reliability::Run(&quiet_, [this] { return collector_.QueryDatabase(); });
  }

  // The one stamp of the document; "a mix" when it has several.
  std::string Stamp() {
    const QtSts::CStatus& status = collector_.m_Status;
    const QtSts::COutput* const output = status.Outputs[0];
    if (output == nullptr) {
      return "no output";
    }
    const std::set<std::string> stamps = {status.GUID, status.SolarInfo.CalculatedSunrise,
                                          output->Author, output->Title};
    return stamps.size() == 1 ? *stamps.begin() : "a mix";
  }

  void ExpectWhole(const std::string& stamp) {
    const Outcome cycle = Cycle();
    EXPECT_EQ(cycle.Result, 0) << cycle.Report;
    EXPECT_EQ(cycle.Report, "");
    EXPECT_EQ(Stamp(), stamp);
  }

  void ExpectFailure(const std::string& report) {
    const Outcome cycle = Cycle();
    EXPECT_EQ(cycle.Result, 1);
    EXPECT_EQ(cycle.Report, report);
  }

  reliability::Quiet quiet_;
  CStatusInterface collector_;
};

// Waits until the writer of that number has stamped the rows; false when it does not.
bool HasWritten(int writer) {
  const std::string begin = std::to_string(writer) + "_";
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  Foreign connection;
  while (connection.Get("SELECT value FROM status WHERE address='GUID'").rfind(begin, 0) != 0) {
    if (std::chrono::steady_clock::now() > end) {
      return false;
    }
    usleep(200);
  }
  return true;
}

constexpr const char* kGone = "14:database file was deleted or replaced\n";

std::vector<std::unique_ptr<Process>> StartWriters(int count) {
  std::vector<std::unique_ptr<Process>> writers;
  for (int writer = 1; writer <= count; ++writer) {
    writers.push_back(std::make_unique<Process>([writer] { return StampForEver(writer); }));
  }
  return writers;
}

}  // namespace

TEST_F(OtherProcesses, FourWritersAtFullSpeedNeverFailACycleNorShowItAMixInWriteAheadMode) {
  MakeOwn();
  const auto writers = StartWriters(4);
  Open();
  std::set<std::string> seen;
  // On a busy machine the writers may come late.
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  for (int i = 0;
       i < Repetitions(300, 10000) || (seen.size() <= 10 && std::chrono::steady_clock::now() < end);
       ++i) {
    const Outcome cycle = Cycle();
    ASSERT_EQ(cycle.Result, 0) << "cycle " << i << ": " << cycle.Report;
    ASSERT_NE(Stamp(), "a mix") << "cycle " << i;
    seen.insert(Stamp());
  }
  EXPECT_GT(seen.size(), 10U) << "the writers did not write";
}

TEST_F(OtherProcesses, FourWritersAtFullSpeedNeverShowAMixInRollbackMode) {
  MakeForeign();
  const auto writers = StartWriters(4);
  Open();
  int whole = 0;
  for (int i = 0; i < Repetitions(30, 500); ++i) {
    const Outcome cycle = Cycle();
    if (cycle.Result == 0) {
      ASSERT_NE(Stamp(), "a mix") << "cycle " << i;
      ++whole;
    } else {
      ASSERT_EQ(cycle.Report, "5:database is locked\n") << "cycle " << i;
    }
  }
  EXPECT_GT(whole, 0);
}

TEST_F(OtherProcesses, CycleWorksWithoutRepairAfterAWriterWasKilledInMidTransaction) {
  MakeOwn();
  Open();
  std::mt19937 random(20260304);
  for (int i = 0; i < Repetitions(50, 500); ++i) {
    Process writer([i] { return StampForEver(i); });
    ASSERT_TRUE(HasWritten(i)) << "writer " << i;
    usleep(static_cast<useconds_t>(500 + random() % 5000));
    writer.Kill();
    const Outcome cycle = Cycle();
    ASSERT_EQ(cycle.Result, 0) << "writer " << i << ": " << cycle.Report;
    ASSERT_THAT(Stamp(), StartsWith(std::to_string(i) + "_"));
  }
  EXPECT_EQ(Foreign().Get("PRAGMA integrity_check"), "ok");
}

// A hot journal is what a killed writer leaves in rollback mode; who may write rolls it back.
TEST_F(OtherProcesses, ForeignWriterKilledInRollbackModeIsRolledBack) {
  MakeForeign();
  Open();
  std::mt19937 random(20260305);
  int broken_off = 0;
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  for (int i = 0;
       i < Repetitions(20, 500) || (broken_off == 0 && std::chrono::steady_clock::now() < end);
       ++i) {
    Process writer([i] { return StampForEver(i); });
    ASSERT_TRUE(HasWritten(i)) << "writer " << i;
    usleep(static_cast<useconds_t>(500 + random() % 5000));
    writer.Kill();
    Outcome cycle = Cycle();
    if (cycle.Result != 0) {
      // The collector only reads: the next writer, or a host that opens for writing, repairs.
      ASSERT_EQ(reliability::ReportLines(cycle.Report), 1) << cycle.Report;
      ASSERT_EQ(Foreign().Get("SELECT count(*) FROM status"), "204");
      ++broken_off;
      cycle = Cycle();
    }
    ASSERT_EQ(cycle.Result, 0) << "writer " << i << ": " << cycle.Report;
    ASSERT_THAT(Stamp(), StartsWith(std::to_string(i) + "_"));
  }
  EXPECT_GT(broken_off, 0) << "no writer was killed in a transaction";
}

TEST_F(OtherProcesses, DeletedDatabaseIsReportedUntilAHostOpensItAgain) {
  MakeOwn();
  Open();
  ExpectWhole("0");
  sandbox::RemoveDatabase();
  ExpectFailure(kGone);
  MakeOwn();
  ExpectFailure(kGone);
  Open();
  ExpectWhole("0");
}

TEST_F(OtherProcesses, ReplacedDatabaseIsReportedUntilAHostOpensItAgain) {
  MakeForeign();
  Open();
  ExpectWhole("0");
  const std::string other = "/dev/shm/other.db";
  MakeForeign(other);
  ASSERT_EQ(Foreign(other).Do("UPDATE status SET value='other'"), "");
  fs::rename(other, sandbox::kDatabase);
  ExpectFailure(kGone);
  Open();
  ExpectWhole("other");
}

TEST_F(OtherProcesses, TruncatedDatabaseGivesAReportOrTheRowsItHad) {
  for (const std::uintmax_t size : {0, 1, 100, 512, 4096, 5000, 12288, 20480}) {
    SCOPED_TRACE(size);
    sandbox::RemoveDatabase();
    MakeForeign();
    Open();
    ExpectWhole("0");
    ASSERT_EQ(Foreign().Do("UPDATE status SET value='1' WHERE address < 'E'"), "");
    fs::resize_file(sandbox::kDatabase, size);
    const Outcome cycle = Cycle();
    if (cycle.Result == 0) {
      EXPECT_EQ(Stamp(), "a mix") << "all rows, of which one differs";
      EXPECT_EQ(collector_.m_Status.SolarInfo.CalculatedSunrise, "1");
    } else {
      EXPECT_EQ(reliability::ReportLines(cycle.Report), 1) << cycle.Report;
    }
    sandbox::RemoveDatabase();
    MakeForeign();
    Open();
    ExpectWhole("0");
  }
}

// What is made beside the database in such a folder used to be the first reader's.
TEST_F(OtherProcesses, UserWhoMayOnlyReadReadsWhileAHostRunsAndWhileNoneDoes) {
  const fs::perms before = fs::status("/dev/shm").permissions();
  fs::permissions("/dev/shm", fs::perms(01777));
  const auto read = [this](const std::string& stamp) {
    Process reader([this, &stamp] {
      constexpr unsigned kNobody = 65534;
      CStatusInterface own;
      const Outcome cycle = setgid(kNobody) != 0 || setuid(kNobody) != 0
                                ? Outcome{}
                                : reliability::Run(&quiet_, [&own] {
                                    own.InitDatabase(false);
                                    return own.QueryDatabase();
                                  });
      return cycle.Result == 0 && cycle.Report.empty() && own.m_Status.GUID == stamp ? 0 : 1;
    });
    return reader.Wait();
  };
  MakeForeign();
  EXPECT_EQ(read("0"), 0) << "in rollback mode";
  ASSERT_EQ(Foreign().Do("PRAGMA journal_mode=WAL; UPDATE status SET value='1'"), "");
  EXPECT_EQ(read("1"), 0) << "without a log";
  for (const char* suffix : {"-journal", "-wal", "-shm"}) {
    EXPECT_FALSE(fs::exists(std::string(sandbox::kDatabase) + suffix)) << suffix;
  }
  Open();
  ExpectWhole("1");
  ASSERT_EQ(Foreign().Do("UPDATE status SET value='2'"), "");
  EXPECT_EQ(read("2"), 0) << "while a host runs";
  collector_.CloseDatabase();
  EXPECT_EQ(read("2"), 0) << "after it";
  fs::permissions("/dev/shm", before);
}

TEST_F(OtherProcesses, UnreadableDatabaseIsReportedUntilItCanBeOpened) {
  MakeForeign();
  Process reader([this] {
    constexpr unsigned kNobody = 65534;
    fs::permissions(sandbox::kDatabase, fs::perms(0000));
    if (seteuid(kNobody) != 0) {
      return 1;
    }
    const Outcome opening =
        reliability::Run(&quiet_, [this] { return collector_.InitDatabase(false); });
    const Outcome cycle = Cycle();
    if (opening.Report != "14:unable to open database file\n" || cycle.Result != 1 ||
        reliability::ReportLines(cycle.Report) != 1 || seteuid(0) != 0) {
      return 2;
    }
    fs::permissions(sandbox::kDatabase, fs::perms(0644));
    if (seteuid(kNobody) != 0) {
      return 3;
    }
    Open();
    return Cycle().Result == 0 && Stamp() == "0" ? 0 : 4;
  });
  EXPECT_EQ(reader.Wait(), 0);
}

namespace {

// A /dev/shm of four megabytes, in the sandbox's own mount namespace.
class SmallSharedMemory {
 public:
  SmallSharedMemory() {
    sandbox::RequireInside();
    EXPECT_EQ(mount("tmpfs", "/dev/shm", "tmpfs", 0, "size=4m"), 0);
  }
  SmallSharedMemory(const SmallSharedMemory&) = delete;
  SmallSharedMemory& operator=(const SmallSharedMemory&) = delete;
  ~SmallSharedMemory() { umount2("/dev/shm", MNT_DETACH); }
};

// Takes all the room there is beside the database, until it is destroyed.
class FullFileSystem {
 public:
  FullFileSystem() {
    std::ofstream file(kPath, std::ios::binary);
    const std::string block(4096, 'x');
    while (file.write(block.data(), static_cast<std::streamsize>(block.size())).flush()) {
    }
    struct statvfs left = {};
    EXPECT_EQ(statvfs(kPath, &left), 0);
    EXPECT_EQ(left.f_bavail, 0U);
  }
  FullFileSystem(const FullFileSystem&) = delete;
  FullFileSystem& operator=(const FullFileSystem&) = delete;
  ~FullFileSystem() { fs::remove(kPath); }

 private:
  static constexpr const char* kPath = "/dev/shm/filler";
};

}  // namespace

TEST_F(OtherProcesses, FullFileSystemKeepsTheWriterOutAndTheReaderIn) {
  const SmallSharedMemory memory;
  MakeOwn();
  Open();
  ExpectWhole("0");
  {
    const FullFileSystem full;
    Foreign writer;
    std::string failure;
    for (int i = 0; i < 1000 && failure.empty(); ++i) {
      failure = writer.Do(std::string("UPDATE status SET value='full' WHERE ") + kStampedRows);
    }
    EXPECT_EQ(failure, "13:database or disk is full");
    const Outcome cycle = Cycle();
    EXPECT_EQ(cycle.Result, 0) << cycle.Report;
    EXPECT_THAT(Stamp(), AnyOf("0", "full"));
  }
  ASSERT_EQ(Foreign().Do(std::string("UPDATE status SET value='room' WHERE ") + kStampedRows), "");
  ExpectWhole("room");
}

TEST_F(OtherProcesses, DatabaseThatCannotBeMadeForWantOfRoomIsMadeLater) {
  const SmallSharedMemory memory;
  {
    const FullFileSystem full;
    const Outcome opening =
        reliability::Run(&quiet_, [this] { return collector_.InitDatabase(true); });
    EXPECT_EQ(opening.Result, 0);
    EXPECT_GT(reliability::ReportLines(opening.Report), 0) << opening.Report;
    const Outcome cycle = Cycle();
    EXPECT_EQ(cycle.Result, 1);
    EXPECT_EQ(reliability::ReportLines(cycle.Report), 1) << cycle.Report;
  }
  const Outcome opening =
      reliability::Run(&quiet_, [this] { return collector_.InitDatabase(true); });
  EXPECT_EQ(opening.Report, "");
  ASSERT_EQ(Foreign().Do(kRows), "");
  ExpectWhole("0");
}
