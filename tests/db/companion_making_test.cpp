// Who makes the journal, the write-ahead log and its index, and who works beside them.
#include <gmock/gmock.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <fstream>
#include <memory>

#include "db/sql_database.h"
#include "tests/db/companions_fixture.h"
#include "tests/db/kernel_setting.h"

namespace {

using testing::ElementsAre;
using testing::Pair;

namespace fs = std::filesystem;

// What the kernel's protection of files in folders of everybody's is set to.
class ProtectedFolder : public Companions, public testing::WithParamInterface<int> {
 protected:
  void SetUp() override {
    Companions::SetUp();
    setting_ = std::make_unique<KernelSetting>("fs/protected_regular", GetParam());
    if (!setting_->Set()) {
      GTEST_SKIP() << "fs.protected_regular cannot be set to " << GetParam() << " here";
    }
  }

 private:
  std::unique_ptr<KernelSetting> setting_;
};

INSTANTIATE_TEST_SUITE_P(Setting, ProtectedFolder, testing::Values(0, 2),
                         [](const auto& test) { return std::to_string(test.param); });

}  // namespace

TEST_P(ProtectedFolder, RootMakesThemWithThePermissionsOfTheDatabase) {
  struct {
    User Who;
    mode_t Mode;
    std::string Journal;
    std::string Others;
  } const rows[] = {
      {{0, 0}, 0644, "0:0 644", "0:0 644"},
      {{0, 0}, 0600, "0:0 600", "0:0 600"},
      {{1, 1}, 0640, "1:1 640", "1:1 640"},
      {{1, 65534}, 0644, "1:65534 644", "1:65534 644"},
      // Only its owner can take a journal away, which each commit does.
      {{0, 1}, 0664, "missing", "0:1 664"},
      // The kernel may refuse a file of user 1's to another writer of the group; root's it does
      // not.
      {{1, 1}, 0664, "missing", "0:1 664"},
      {{1, 65534}, 0666, "missing", "0:65534 666"},
  };
  for (const auto& row : rows) {
    for (const bool write_ahead : {false, true}) {
      SCOPED_TRACE(testing::Message() << row.Who.Id << ":" << row.Who.Group << " " << std::oct
                                      << row.Mode << (write_ahead ? " in WAL mode" : ""));
      write_ahead ? MakeWriteAhead() : MakeRollback();
      Own(file_, row.Who, row.Mode);
      ASSERT_EQ(OpenReader(), 0);
      EXPECT_EQ(Owner(Path("-journal")), row.Journal);
      EXPECT_EQ(Owner(Path("-wal")), row.Others);
      EXPECT_EQ(Owner(Path("-shm")), row.Others);
      EXPECT_EQ(Thrown([&] { EXPECT_EQ(ReadRows(reader_).size(), 1U); }), "");
      RemoveAll();
    }
  }
}

TEST_P(ProtectedFolder, MissingOnesComeBeforeEachCycleAndAfterTheSwitch) {
  MakeRollback();
  ASSERT_EQ(OpenReader(), 0);
  ASSERT_EQ(Foreign(file_).Do("UPDATE status SET value='2'"), "");
  EXPECT_EQ(Owner(Path("-journal")), "missing") << "a commit takes it away";
  EXPECT_EQ(ReadRows(reader_).size(), 1U);
  EXPECT_EQ(Owner(Path("-journal")), "0:0 644");
  ASSERT_EQ(reader_.OpenDatabaseWrite(file_.c_str(), kNoMutex, 0), 0);
  for (const char* suffix : kSuffixes) {
    EXPECT_EQ(Owner(Path(suffix)), "0:0 644") << suffix;
  }
}

TEST_P(ProtectedFolder, NewDatabaseHasItsCompanionsFromTheStart) {
  ASSERT_EQ(reader_.OpenDatabaseWrite(file_.c_str(), kNoMutex, 0), 0);
  EXPECT_EQ(reader_.CreateTable("status", 100), 0);
  for (const char* suffix : kSuffixes) {
    EXPECT_EQ(Owner(Path(suffix)), Owner(file_)) << suffix;
  }
}

TEST_P(ProtectedFolder, UserWhoMayOnlyReadMakesNoneAndReadsInEveryMode) {
  MakeRollback();
  EXPECT_EQ(As(kStranger, [&] { return ReadAll(file_); }), "");
  EXPECT_THAT(Files(), ElementsAre("status.db"));
  fs::remove(file_);
  // A foreign writer that was the last took the log away.
  MakeWriteAhead();
  EXPECT_EQ(As(kStranger, [&] { return ReadAll(file_); }), "");
  EXPECT_THAT(Files(), ElementsAre("status.db"));
  // A host of root's has been there.
  EXPECT_EQ(ReadAll(file_), "");
  EXPECT_EQ(As(kStranger, [&] { return ReadAll(file_); }), "");
  // And runs.
  ASSERT_EQ(OpenReader(), 0);
  EXPECT_EQ(ReadRows(reader_).size(), 1U);
  Foreign writer(file_);
  ASSERT_EQ(writer.Do("UPDATE status SET value='2'"), "");
  EXPECT_EQ(As(kStranger, [&] { return ReadAll(file_, {{"a", "2"}}); }), "");
  for (const char* suffix : kSuffixes) {
    EXPECT_EQ(Owner(Path(suffix)), "0:0 644") << suffix;
  }
}

TEST_P(ProtectedFolder, WriterOfTheGroupAndHostOfRootWorkSideBySide) {
  for (const bool write_ahead : {false, true}) {
    for (const bool writer_first : {false, true}) {
      SCOPED_TRACE(testing::Message() << (write_ahead ? "WAL" : "rollback") << " mode, "
                                      << (writer_first ? "writer" : "host") << " first");
      write_ahead ? MakeWriteAhead() : MakeRollback();
      Own(file_, {0, kWriter.Group}, 0664);
      if (!writer_first) {
        ASSERT_EQ(OpenReader(), 0);
        EXPECT_EQ(ReadRows(reader_).size(), 1U);
      }
      Signal go;
      Signal done;
      Child writer([&] {
        if (!Become(kWriter)) {
          return 1;
        }
        Foreign foreign(file_);
        foreign.Do("PRAGMA busy_timeout=5000");
        std::string failure;
        for (int i = 0; i < 3; ++i) {
          failure += foreign.Do("UPDATE status SET value='w" + std::to_string(i) + "'");
          done.Send();
          go.Await();
        }
        return failure.empty() ? 0 : 2;
      });
      for (int i = 0; i < 3; ++i) {
        done.Await();
        if (reader_.m_DB.readOnly() || OpenReader() == 0) {
          EXPECT_EQ(Thrown([&] {
                      EXPECT_THAT(ReadRows(reader_),
                                  ElementsAre(Pair("a", "w" + std::to_string(i))));
                    }),
                    "");
        }
        go.Send();
      }
      EXPECT_EQ(writer.Wait(), 0) << "2 when the writer failed";
      RemoveAll();
    }
  }
}

TEST_P(ProtectedFolder, WriterOfTheGroupIsKnownByTheListOfItsMembers) {
  MakeWriteAhead();
  Own(file_, {0, 777}, 0664);
  Child with_own_users([&] {
    std::ofstream(dir_ / "passwd") << "root:x:0:0::/:/bin/sh\nlisted:x:2000:2000::/:/bin/sh\n"
                                      "other:x:2001:2001::/:/bin/sh\nloose:x:2002:100::/:/bin/sh\n";
    std::ofstream(dir_ / "group") << "root:x:0:\nlisted:x:2000:\nother:x:2001:\nusers:x:100:\n"
                                     "display:x:777:listed,loose\n";
    if (unshare(CLONE_NEWNS) != 0 || mount("", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount((dir_ / "passwd").c_str(), "/etc/passwd", nullptr, MS_BIND, nullptr) != 0 ||
        mount((dir_ / "group").c_str(), "/etc/group", nullptr, MS_BIND, nullptr) != 0) {
      return 1;
    }
    // SQLite gives the files that it makes to the group of its process.
    struct {
      User Who;
      std::string Failure;
    } const rows[] = {
        {{2000, 2000}, ""},
        {{2000, 777}, ""},
        {{2001, 2001}, "belongs to user 2001, who may not write the database"},
        {{2002, 100}, "belongs to user 2002 and may be written by group 100, unlike the database"},
        {{3000, 3000}, "belongs to user 3000, who may not write the database"},
    };
    for (const auto& row : rows) {
      for (const char* suffix : {"-wal", "-shm"}) {
        Put("-wal", {0, 777}, 0664);
        Put("-shm", {0, 777}, 0664);
        Put(suffix, row.Who, 0664, row.Failure.empty() ? "" : "bytes");
        const std::string expected =
            row.Failure.empty() ? "" : Refused(Path(suffix), row.Failure) + "\n";
        EXPECT_EQ(ReadAll(file_), expected) << row.Who.Id << suffix;
        fs::remove(Path(suffix));
      }
    }
    return testing::Test::HasFailure() ? 2 : 0;
  });
  EXPECT_EQ(with_own_users.Wait(), 0) << "1 when the users could not be changed";
}
