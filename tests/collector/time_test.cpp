// The time fields, and the file with the time at which the configuration was last changed.

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "sandbox/files.h"
#include "tests/collector/cycle_fixture.h"

namespace {

using testing::MatchesRegex;

constexpr const char* kTimestamp =
    "/var/www/localhost/htdocs/korvane/syscontrol/1.0/configuration/conftimestamp";

class TimeTest : public CycleTest {
 protected:
  ~TimeTest() override { unsetenv("TZ"); }

  // Stamps the document in time zone `zone`.
  void GetTime(const char* zone) {
    setenv("TZ", zone, 1);
    collector_.GetTime();
  }

  std::string LocalTime(const char* zone) {
    GetTime(zone);
    return status_.LocalTime;
  }

  std::string Timestamp() {
    collector_.GetTime();
    return status_.ConfigurationTimestamp;
  }
};

std::string Utc(std::time_t time) {
  char text[32];
  std::tm utc{};
  gmtime_r(&time, &utc);
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &utc);
  return text;
}

TEST_F(TimeTest, IsLocalWithItsOffsetAndUtcWithout) {
  constexpr struct {
    const char* Zone;  // its sign is the opposite
    int Seconds;
    const char* Offset;
  } kRows[] = {
      {"UTC0", 0, "+00:00"},
      {"<+01>-1", 3600, "+01:00"},
      {"<-05>5", -18000, "-05:00"},
      {"<+0530>-5:30", 19800, "+05:30"},
      {"<+0545>-5:45", 20700, "+05:45"},
      {"<-0330>3:30", -12600, "-03:30"},
      {"<-1130>11:30", -41400, "-11:30"},
      {"<+14>-14", 50400, "+14:00"},
      {"<+000130>-0:01:30", 90, "+00:01"},
      // Deliberately without its sign: the hours carry it, and these are none.
      {"<-0030>0:30", -1800, "+00:30"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.Zone);
    std::time_t before = 0;
    do {  // again when the second changed in between
      before = std::time(nullptr);
      GetTime(row.Zone);
    } while (std::time(nullptr) != before);
    EXPECT_EQ(collector_.m_UTCTime, Utc(before));
    EXPECT_EQ(status_.LocalTime, Utc(before + row.Seconds) + row.Offset);
    EXPECT_FALSE(status_.DaylightSaving);
  }
}

TEST_F(TimeTest, FollowsAChangedTimeZone) {
  EXPECT_THAT(LocalTime("<+0545>-5:45"), testing::EndsWith("+05:45"));
  EXPECT_THAT(LocalTime("<-0330>3:30"), testing::EndsWith("-03:30"));
  EXPECT_THAT(LocalTime("UTC0"), testing::EndsWith("+00:00"));
}

// The C library has one broken-down time for all callers of localtime and gmtime. What a host had
// looked up there used to change.
TEST_F(TimeTest, LeavesTheBrokenDownTimeOfTheHostAlone) {
  for (auto* const look_up : {&std::localtime, &std::gmtime}) {
    constexpr std::time_t kLongAgo = 40000000;
    const std::tm* const held = look_up(&kLongAgo);
    collector_.GetTime();
    EXPECT_EQ(held->tm_year, 71);
  }
}

TEST_F(TimeTest, ReportsDaylightSaving) {
  GetTime("WINTER0SUMMER,0/0,J365/25");  // summer all the year
  EXPECT_TRUE(status_.DaylightSaving);
  EXPECT_THAT(status_.LocalTime, testing::EndsWith("+01:00"));
  GetTime("WINTER0");
  EXPECT_FALSE(status_.DaylightSaving);
  EXPECT_THAT(status_.LocalTime, testing::EndsWith("+00:00"));
}

TEST_F(TimeTest, HasTheseForms) {
  GetTime("<+01>-1");
  EXPECT_THAT(collector_.m_UTCTime, MatchesRegex("[0-9]{4}(-[0-9]{2}){2}T([0-9]{2}:){2}[0-9]{2}"));
  EXPECT_THAT(status_.LocalTime,
              MatchesRegex("[0-9]{4}(-[0-9]{2}){2}T([0-9]{2}:){2}[0-9]{2}[+]01:00"));
}

TEST_F(TimeTest, NeedsNoDatabaseAndReportsNothing) {
  EXPECT_EQ(ErrorsOf([&] { collector_.GetTime(); }), "");
}

TEST_F(TimeTest, OfTheConfigurationIsTheFileAsItStands) {
  sandbox::WriteFile(kTimestamp, "2026-11-15T10:22:15\n");
  EXPECT_EQ(Timestamp(), "2026-11-15T10:22:15\n");
  sandbox::WriteFile(kTimestamp, "no time at all");
  EXPECT_EQ(Timestamp(), "no time at all");
  sandbox::WriteFile(kTimestamp, "");
  EXPECT_EQ(Timestamp(), "");
}

TEST_F(TimeTest, OfTheConfigurationStaysWithoutAFile) {
  EXPECT_EQ(Timestamp(), "2000-01-01T00:00:00");
  sandbox::WriteFile(kTimestamp, "2026-11-15T10:22:15\n");
  EXPECT_EQ(Timestamp(), "2026-11-15T10:22:15\n");
  sandbox::RemoveFile(kTimestamp);
  EXPECT_EQ(Timestamp(), "2026-11-15T10:22:15\n");
  sandbox::MakeUnopenable(kTimestamp);
  EXPECT_EQ(Timestamp(), "2026-11-15T10:22:15\n");
}

TEST_F(TimeTest, OfTheConfigurationIsEmptyWhenTheFileOpensButCannotBeRead) {
  sandbox::MakeFolder(kTimestamp);
  EXPECT_EQ(Timestamp(), "");
}

TEST_F(TimeTest, OfTheConfigurationHasAtMost512Bytes) {
  std::string text;
  while (text.size() < 600) {
    text += "2026-11-15T10:22:15 ";
  }
  for (const std::size_t size : {511U, 512U, 513U, 600U}) {
    sandbox::WriteFile(kTimestamp, text.substr(0, size));
    EXPECT_EQ(Timestamp(), text.substr(0, std::min<std::size_t>(size, 512))) << size;
  }
}

TEST_F(TimeTest, OfTheConfigurationEndsAtAZeroByte) {
  sandbox::WriteFile(kTimestamp, std::string_view("2026\0-11", 8));
  EXPECT_EQ(Timestamp(), "2026");
  sandbox::WriteFile(kTimestamp, std::string_view("\0", 1));
  EXPECT_EQ(Timestamp(), "");
}

// A pipe in place of the file used to stop the cycle until somebody wrote.
TEST_F(TimeTest, OfTheConfigurationDoesNotWaitForAPipe) {
  sandbox::WriteFile(kTimestamp, "");
  sandbox::RemoveFile(kTimestamp);
  ASSERT_EQ(mkfifo(kTimestamp, 0644), 0);
  EXPECT_EQ(Timestamp(), "");
}

// Whoever could write the folder of the configuration, such as a web server, could read in the
// document every file that the host may read.
TEST_F(TimeTest, OfTheConfigurationIsNotReadThroughALinkOfAnotherUser) {
  sandbox::WriteFile("/secret", "secret");
  sandbox::WriteFile(kTimestamp, "");
  sandbox::RemoveFile(kTimestamp);
  sandbox::MakeLink(kTimestamp, "/secret");
  EXPECT_EQ(Timestamp(), "secret") << "one's own";
  constexpr uid_t kSomebody = 33;
  if (lchown(kTimestamp, kSomebody, kSomebody) != 0) {
    GTEST_SKIP() << "no other users: " << std::strerror(errno);
  }
  sandbox::WriteFile("/secret", "other");
  EXPECT_EQ(Timestamp(), "secret") << "as without a file";
}

}  // namespace
