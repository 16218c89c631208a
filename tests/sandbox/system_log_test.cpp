#include "sandbox/system_log.h"

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "sandbox/files.h"
#include "sandbox/scenario.h"

namespace sandbox {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

TEST(SystemLog, AMessageArrivesWithPriorityFacilityAndText) {
  SystemLog log;
  syslog(LOG_INFO, "%s: %d callbacks suppressed\n", "OutputPort", 3);
  const std::vector<SystemLog::Message> messages = log.Read();
  ASSERT_THAT(messages, SizeIs(1));
  EXPECT_EQ(LOG_INFO, messages[0].Priority);
  EXPECT_EQ(LOG_USER, messages[0].Facility);
  EXPECT_EQ("OutputPort: 3 callbacks suppressed\n", messages[0].Text);
}

TEST(SystemLog, OtherPrioritiesAndFacilitiesAreSeparated) {
  SystemLog log;
  openlog("a program", LOG_PID, LOG_DAEMON);
  syslog(LOG_ERR, "broken: badly");
  closelog();
  const std::vector<SystemLog::Message> messages = log.Read();
  ASSERT_THAT(messages, SizeIs(1));
  EXPECT_EQ(LOG_ERR, messages[0].Priority);
  EXPECT_EQ(LOG_DAEMON, messages[0].Facility);
  EXPECT_EQ("broken: badly", messages[0].Text);
}

TEST(SystemLog, EachMessageIsReadOnce) {
  SystemLog log;
  syslog(LOG_INFO, "one");
  EXPECT_THAT(log.Read(), SizeIs(1));
  EXPECT_THAT(log.Read(), IsEmpty());
}

TEST(SystemLog, APileOfMessagesWaitsForTheReader) {
  SystemLog log;
  const std::filesystem::path queue_length = "/proc/sys/net/unix/max_dgram_qlen";
  if (!std::filesystem::exists(queue_length) || std::stoi(ReadFile(queue_length)) < 200) {
    GTEST_SKIP() << "this kernel lets only the machine's own root lengthen the queue";
  }
  for (int number = 0; number < 200; ++number) {
    syslog(LOG_INFO, "message %d", number);
  }
  const std::vector<SystemLog::Message> messages = log.Read();
  ASSERT_THAT(messages, SizeIs(200));
  EXPECT_EQ("message 199", messages[199].Text);
}

TEST(SystemLog, OtherProcessesLogHereToo) {
  SystemLog log;
  const pid_t child = fork();
  if (child == 0) {
    syslog(LOG_WARNING, "from the child");
    _exit(0);
  }
  waitpid(child, nullptr, 0);
  const std::vector<SystemLog::Message> messages = log.Read();
  ASSERT_THAT(messages, SizeIs(1));
  EXPECT_EQ("from the child", messages[0].Text);
}

TEST(SystemLog, ANewOneReceivesAfterAnOldOneIsGone) {
  {
    SystemLog former;
    syslog(LOG_INFO, "to the former");
    EXPECT_THAT(former.Read(), SizeIs(1));
  }
  EXPECT_FALSE(std::filesystem::exists("/dev/log"));
  syslog(LOG_INFO, "to nobody");
  SystemLog log;
  syslog(LOG_INFO, "to the new one");
  const std::vector<SystemLog::Message> messages = log.Read();
  ASSERT_THAT(messages, SizeIs(1));
  EXPECT_EQ("to the new one", messages[0].Text);
}

TEST(SystemLog, OutlivesTheChangeOfTheScenario) {
  SystemLog log;
  Scenario().Apply();
  syslog(LOG_INFO, "still here");
  EXPECT_THAT(log.Read(), SizeIs(1));
}

}  // namespace
}  // namespace sandbox
