// Whose journal, write-ahead log and index are used in a folder where everybody makes files.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>

#include "db/sql_database.h"
#include "tests/db/companions_fixture.h"
#include "tests/support/interposed/sqlite_calls.h"

namespace {

using testing::ElementsAre;
using testing::Pair;
using testing::StartsWith;

namespace fs = std::filesystem;

constexpr const char* kCantOpen = "14:unable to open database file";

std::string g_pipe;

int PutPipeAndOpen(const char* name, int flags, int mode) {
  if (name == g_pipe && mkfifo(name, 0644) == 0 && (flags & O_CREAT) != 0) {
    errno = EACCES;  // as where fs.protected_fifos is set; SQLite then opens it for reading alone
    return -1;
  }
  return open(name, flags, mode);
}

// A stranger's pipe stands at `name`, if nothing else does, when SQLite opens that.
void PutPipeBeforeSqliteOpens(const std::string& name) {
  g_pipe = name;
  sqlite3_vfs* const files = sqlite3_vfs_find("unix");
  files->xSetSystemCall(files, "open", reinterpret_cast<sqlite3_syscall_ptr>(&PutPipeAndOpen));
}

}  // namespace

// After one look of another user's at the database, its log and index were his.
TEST_F(Companions, HostIsNotEndedByAUserWhoMayNotWriteTheDatabase) {
  MakeWriteAhead();
  Signal ready;
  Signal shrink;
  Signal shrunk;
  Child stranger([&] {
    if (!Become(kStranger)) {
      return 1;
    }
    Foreign foreign(file_);
    foreign.Get("SELECT count(*) FROM status");
    const int index = open(Path("-shm").c_str(), O_RDWR);
    ready.Send();
    shrink.Await();
    const bool done = ftruncate(index, 0) == 0;
    shrunk.Send();
    pause();
    return done ? 0 : 2;
  });
  ready.Await();
  Child host([&] {
    bool open = false;
    Stderr([&] { open = OpenReader() == 0; });
    const std::string first = open ? Thrown([&] { ReadRows(reader_); }) : "not open";
    shrink.Send();
    shrunk.Await();
    const std::string second = open ? Thrown([&] { ReadRows(reader_); }) : "not open";
    return first == second ? 0 : 3;
  });
  EXPECT_EQ(host.Wait(), 0) << "-1 when a signal ended it";
}

// SQLite used to wait in open for the other end of the pipe.
TEST_F(Companions, PipeThatComesAfterTheLookDoesNotHoldAHost) {
  struct {
    const char* Suffix;
    bool WriteAhead;
  } const rows[] = {{"-journal", false}, {"-journal", true}, {"-wal", true}, {"-shm", true}};
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.Suffix << (row.WriteAhead ? " in WAL mode" : ""));
    row.WriteAhead ? MakeWriteAhead() : MakeRollback();
    Child host([&] {
      alarm(10);
      if (OpenReader() != 0) {
        return 1;
      }
      // A writer's commit takes the journal away, and the stranger was waiting for that.
      const std::string name = Path(row.Suffix);
      g_on_compile = [&](const char*) {
        unlink(name.c_str());
        mkfifo(name.c_str(), 0644);
        chown(name.c_str(), kStranger.Id, kStranger.Group);
      };
      const std::string failure = Thrown([&] { ReadRows(reader_); });
      g_on_compile = nullptr;
      const std::string next = Thrown([&] { ReadRows(reader_); });
      return failure == kCantOpen && next == Refused(name,
                                                     "is not a regular file and belongs to "
                                                     "user 65534")
                 ? 0
                 : 2;
    });
    EXPECT_EQ(host.Wait(), 0) << "-1 when it was held";
    RemoveAll();
  }
}

// A host that finds no database asks again and again, and the stranger was waiting for that.
TEST_F(Companions, PipeThatComesInPlaceOfAMissingDatabaseDoesNotHoldAHost) {
  for (const bool write : {false, true}) {
    SCOPED_TRACE(write ? "for writing" : "for reading");
    Child host([&] {
      alarm(10);
      PutPipeBeforeSqliteOpens(file_);
      CSQLdatabase database;
      const std::string report = Stderr([&] {
        write ? database.OpenDatabaseWrite(file_.c_str(), kNoMutex, 0)
              : database.OpenDatabaseReadOnly(file_.c_str(), kNoMutex);
      });
      return report == (write ? "" : kCantOpen + std::string("\n")) ? 0 : 1;
    });
    EXPECT_EQ(host.Wait(), 0) << "-1 when it was held";
    EXPECT_EQ(fs::is_regular_file(file_), write);
    RemoveAll();
  }
}

TEST_F(Companions, FileOfAStrangerIsNeverOpenedWhatever) {
  struct {
    const char* Suffix;
    User Who;
    mode_t Mode;
    std::string Why;
  } const rows[] = {
      {"-journal", kStranger, 0644, "belongs to user 65534, who may not write the database"},
      {"-wal", kStranger, 0644, "belongs to user 65534, who may not write the database"},
      {"-shm", kStranger, 0600, "belongs to user 65534, who may not write the database"},
      {"-wal",
       {0, 0},
       0646,
       "belongs to user 0 and may be written by everybody, unlike the "
       "database"},
      {"-shm",
       {0, 0},
       0666,
       "belongs to user 0 and may be written by everybody, unlike the "
       "database"},
      {"-journal",
       {0, 0},
       0646,
       "belongs to user 0 and may be written by everybody, unlike the "
       "database"},
      {"-shm",
       {0, 65534},
       0664,
       "belongs to user 0 and may be written by group 65534, unlike the "
       "database"},
  };
  for (const bool write_ahead : {false, true}) {
    for (const auto& row : rows) {
      SCOPED_TRACE(testing::Message() << row.Suffix << " " << row.Why);
      write_ahead ? MakeWriteAhead() : MakeRollback();
      Put(row.Suffix, row.Who, row.Mode, "bytes");
      EXPECT_EQ(Stderr([&] { EXPECT_EQ(OpenReader(), 14); }),
                Refused(Path(row.Suffix), row.Why) + "\n");
      fs::remove(Path(row.Suffix));
      ASSERT_EQ(OpenReader(), 0);
      EXPECT_THAT(ReadRows(reader_), ElementsAre(Pair("a", "1")));
      fs::remove(Path(row.Suffix));
      Put(row.Suffix, row.Who, row.Mode, "bytes");
      EXPECT_EQ(Thrown([&] { ReadRows(reader_); }), Refused(Path(row.Suffix), row.Why));
      RemoveAll();
    }
  }
}

// The kernel may let everybody give a second name to a file of root's that he may write, or to any.
TEST_F(Companions, FileWithASecondNameIsRefused) {
  MakeWriteAhead();
  for (const char* suffix : {"-wal", "-shm", "-journal"}) {
    std::ofstream(dir_ / "other") << "bytes";
    fs::create_hard_link(dir_ / "other", Path(suffix));
    EXPECT_EQ(Stderr([&] { EXPECT_EQ(OpenReader(), 14); }),
              Refused(Path(suffix), "belongs to user 0 and has a second name") + "\n");
    for (const auto& name : Files()) {
      if (name != "status.db") {
        fs::remove(dir_ / name);
      }
    }
  }
}

// Else, one link would stop a host that runs for years.
TEST_F(Companions, SecondNameOfWhatIsOpenStopsNoHost) {
  MakeWriteAhead();
  ASSERT_EQ(OpenReader(), 0);
  EXPECT_EQ(ReadRows(reader_).size(), 1U);
  for (const char* suffix : kSuffixes) {
    fs::create_hard_link(Path(suffix), std::string(dir_ / "other") + suffix);
    EXPECT_EQ(Thrown([&] { EXPECT_EQ(ReadRows(reader_).size(), 1U); }), "") << suffix;
  }
}

// A journal of a stranger's would be rolled back into the database.
TEST_F(Companions, JournalOfAStrangerIsNotRolledBack) {
  MakeRollback();
  Signal ready;
  Child writer([&] {
    Foreign foreign(file_);
    const std::string failure = foreign.Do(
        "PRAGMA synchronous=FULL; PRAGMA cache_spill=1; PRAGMA cache_size=1; BEGIN;"
        "UPDATE status SET value='2';"
        "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c LIMIT 2000) "
        "INSERT INTO status SELECT 'k'||x, hex(zeroblob(100)) FROM c");
    ready.Send();
    pause();
    return failure.empty() ? 0 : 1;
  });
  ready.Await();
  fs::copy_file(Path("-journal"), dir_ / "kept");
  writer.Kill();
  writer.Wait();
  ASSERT_EQ(Foreign(file_).Get("SELECT value FROM status"), "1") << "rolled back";
  ASSERT_EQ(Foreign(file_).Do("UPDATE status SET value='3'"), "");
  fs::remove(Path("-journal"));
  fs::rename(dir_ / "kept", Path("-journal"));
  Own(Path("-journal"), kStranger, 0644);
  EXPECT_EQ(
      Stderr([&] {
        CSQLdatabase database;
        EXPECT_EQ(database.OpenDatabaseWrite(file_.c_str(), kNoMutex, 0), 14);
      }),
      Refused(Path("-journal"), "belongs to user 65534, who may not write the database") + "\n");
  fs::remove(Path("-journal"));
  EXPECT_EQ(Foreign(file_).Get("SELECT value FROM status"), "3");
}

TEST_F(Companions, EmptyFileOfAStrangerIsRemovedByRootWithOneLine) {
  for (const bool write_ahead : {false, true}) {
    for (const char* suffix : kSuffixes) {
      for (const bool before_opening : {true, false}) {
        SCOPED_TRACE(testing::Message() << suffix << (write_ahead ? " in WAL mode" : "")
                                        << (before_opening ? ", before opening" : ""));
        write_ahead ? MakeWriteAhead() : MakeRollback();
        const std::string line =
            "27:removed " + Path(suffix) + ", which was empty and belonged to user 65534\n";
        if (before_opening) {
          Put(suffix, kStranger, 0666);
          EXPECT_EQ(Stderr([&] { EXPECT_EQ(OpenReader(), 0); }), line);
        } else {
          ASSERT_EQ(OpenReader(), 0);
          fs::remove(Path(suffix));
          Put(suffix, kStranger, 0666);
          EXPECT_EQ(Stderr([&] { EXPECT_EQ(ReadRows(reader_).size(), 1U); }), line);
        }
        EXPECT_EQ(Owner(Path(suffix)), "0:0 644");
        EXPECT_EQ(Stderr([&] { EXPECT_EQ(ReadRows(reader_).size(), 1U); }), "");
        RemoveAll();
      }
    }
  }
}

TEST_F(Companions, EmptyJournalOfAStrangerStopsNobodyEvenWhileItCannotBeReplaced) {
  MakeRollback();
  Put("-journal", kStranger, 0666);
  Foreign other(file_);
  ASSERT_EQ(other.Do("BEGIN; SELECT * FROM status"), "");
  EXPECT_EQ(ReadAll(file_), "");
  EXPECT_EQ(Owner(Path("-journal")), "65534:65534 666") << "the database is in use";
  EXPECT_EQ(As(kWriter, [&] { return ReadAll(file_); }), "");
  ASSERT_EQ(other.Do("COMMIT"), "");
  EXPECT_THAT(ReadAll(file_), StartsWith("27:removed "));
  EXPECT_EQ(ReadAll(file_), "");
}

TEST_F(Companions, EmptyLogOfAStrangerIsRefusedWhileTheDatabaseIsInUse) {
  MakeRollback();
  Put("-wal", kStranger, 0666);
  Foreign other(file_);
  ASSERT_EQ(other.Do("BEGIN; SELECT * FROM status"), "");
  EXPECT_EQ(ReadAll(file_),
            Refused(Path("-wal"), "belongs to user 65534, who may not write the database") + "\n");
  ASSERT_EQ(other.Do("COMMIT"), "");
  EXPECT_THAT(ReadAll(file_), StartsWith("27:removed "));
}

namespace {

// While it lives, the process opens databases without locks, unless it names the files to use.
class DefaultFilesWithoutLocks {
 public:
  DefaultFilesWithoutLocks() { sqlite3_vfs_register(sqlite3_vfs_find("unix-none"), 1); }
  DefaultFilesWithoutLocks(const DefaultFilesWithoutLocks&) = delete;
  DefaultFilesWithoutLocks& operator=(const DefaultFilesWithoutLocks&) = delete;
  ~DefaultFilesWithoutLocks() { sqlite3_vfs_register(before_, 1); }

 private:
  sqlite3_vfs* before_ = sqlite3_vfs_find(nullptr);
};

}  // namespace

// Whether the database is in use used to be asked through what the host has made its default.
TEST_F(Companions, HostWithOtherDefaultFilesLeavesWhatIsInUse) {
  MakeRollback();
  Put("-wal", kStranger, 0666);
  Foreign other(file_);
  ASSERT_EQ(other.Do("BEGIN; SELECT * FROM status"), "");
  const DefaultFilesWithoutLocks files;
  EXPECT_EQ(ReadAll(file_),
            Refused(Path("-wal"), "belongs to user 65534, who may not write the database") + "\n");
  ASSERT_EQ(other.Do("COMMIT"), "");
  EXPECT_THAT(ReadAll(file_), StartsWith("27:removed "));
}
