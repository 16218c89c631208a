#include "hardware/rate_limit.h"

#include <gmock/gmock.h>
#include <syslog.h>

#include <ctime>
#include <system_error>

#include "sandbox/system_log.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::uint32_t Now() { return static_cast<std::uint32_t>(time(nullptr)); }

class Limiter : public testing::Test {
 protected:
  Limiter() { Restart(0); }
  ~Limiter() override { Restart(0); }

  // As if the period had begun at `begin`, and one event had been granted.
  static void Restart(std::uint32_t begin) {
    rs.printed = begin != 0 ? 1 : 0;
    rs.missed = 0;
    rs.begin = begin;
  }

  std::vector<std::string> Logged() {
    std::vector<std::string> texts;
    for (const sandbox::SystemLog::Message& message : log_.Read()) {
      EXPECT_EQ(message.Priority, LOG_INFO) << message.Text;
      texts.push_back(message.Text);
    }
    return texts;
  }

 private:
  sandbox::SystemLog log_;
};

TEST(LimiterOfTheProcess, AllowsOneEventAnHour) {
  EXPECT_EQ(rs.interval, 3600);
  EXPECT_EQ(rs.burst, 1);
  EXPECT_EQ(rs.printed, 0);
  EXPECT_EQ(rs.missed, 0);
  EXPECT_EQ(rs.begin, 0U);
}

TEST_F(Limiter, GrantsOneEventAnHourThenCountsTheRefused) {
  EXPECT_EQ(___ratelimit(&rs, "OutputPort"), 1);
  EXPECT_NEAR(rs.begin, Now(), 2);
  EXPECT_EQ(___ratelimit(&rs, "OutputPort"), 0);
  EXPECT_EQ(rs.printed, 1);
  EXPECT_EQ(rs.missed, 1);
  EXPECT_THAT(Logged(), IsEmpty());

  rs.begin -= 3700;
  EXPECT_EQ(___ratelimit(&rs, "OutputPort"), 1);
  EXPECT_THAT(Logged(), ElementsAre("OutputPort: 1 callbacks suppressed\n"));
}

TEST_F(Limiter, CallThatEndsAPeriodLeavesTheNextToBegin) {
  Restart(Now() - 3700);
  EXPECT_EQ(___ratelimit(&rs, "OutputPort"), 1);
  EXPECT_EQ(rs.begin, 0U);
  EXPECT_EQ(rs.printed, 1);
  EXPECT_EQ(rs.missed, 0);
  EXPECT_EQ(___ratelimit(&rs, "OutputPort"), 0);
  EXPECT_NEAR(rs.begin, Now(), 2);
  EXPECT_EQ(rs.missed, 1);
}

TEST_F(Limiter, EndsAPeriodOnlyAfterItsLastSecond) {
  // The clock may move on by a second in between; then the attempt is repeated.
  std::uint32_t now;
  int granted;
  do {
    now = Now();
    Restart(now - 3600);
    granted = ___ratelimit(&rs, "OutputPort");
  } while (Now() != now);
  EXPECT_EQ(granted, 0) << "exactly one hour";
  Restart(Now() - 3601);
  EXPECT_EQ(___ratelimit(&rs, "OutputPort"), 1) << "one second more";
}

TEST_F(Limiter, SaysNothingWhenNothingWasRefused) {
  Restart(Now() - 3700);
  EXPECT_EQ(___ratelimit(&rs, "OutputPort"), 1);
  EXPECT_THAT(Logged(), IsEmpty());
}

TEST_F(Limiter, NamesTheCallerThatEndsThePeriod) {
  Restart(Now() - 3700);
  rs.missed = 12;
  EXPECT_EQ(___ratelimit(&rs, "%s"), 1);
  EXPECT_THAT(Logged(), ElementsAre("%s: 12 callbacks suppressed\n"));
  EXPECT_EQ(rs.missed, 0) << "each period counts anew";
}

TEST_F(Limiter, PeriodFromTheFutureOfAClockSetBackIsNotOver) {
  Restart(Now() + 1000);
  EXPECT_EQ(___ratelimit(&rs, "OutputPort"), 0);
}

// Seconds are added in 32 bits without sign: a period that would end beyond 2106 is over at once.
TEST_F(Limiter, EndOfAPeriodWrapsIn32Bits) {
  Restart(0xFFFFFFFF - 10);
  EXPECT_EQ(___ratelimit(&rs, "OutputPort"), 1);
  EXPECT_EQ(rs.begin, 0U);
}

TEST_F(Limiter, GrantsAsManyAsItsBurst) {
  ratelimit_state state;
  state.interval = 3600;
  state.burst = 3;
  EXPECT_EQ(___ratelimit(&state, "f"), 1);
  EXPECT_EQ(___ratelimit(&state, "f"), 1);
  EXPECT_EQ(___ratelimit(&state, "f"), 1);
  EXPECT_EQ(___ratelimit(&state, "f"), 0);
  EXPECT_EQ(state.missed, 1);
  EXPECT_EQ(rs.begin, 0U) << "states are independent of each other";
}

TEST_F(Limiter, WithoutIntervalGrantsEverything) {
  ratelimit_state state;
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(___ratelimit(&state, "f"), 1);
  }
  EXPECT_EQ(state.begin, 0U);
  EXPECT_EQ(state.printed, 0);
}

TEST_F(Limiter, WithoutBurstGrantsNothing) {
  for (const int burst : {0, -1}) {
    SCOPED_TRACE(burst);
    ratelimit_state state;
    state.interval = 3600;
    state.burst = burst;
    EXPECT_EQ(___ratelimit(&state, "f"), 0);
    EXPECT_EQ(___ratelimit(&state, "f"), 0);
    EXPECT_EQ(state.missed, 2);
  }
}

TEST_F(Limiter, WithoutBurstGrantsNothingEvenToACountBelowZero) {
  ratelimit_state state;
  state.interval = 3600;
  state.printed = -1;
  EXPECT_EQ(___ratelimit(&state, "f"), 0);
  EXPECT_EQ(state.printed, -1);
}

TEST_F(Limiter, ThrowsWhenItCannotLock) {
  ratelimit_state state;
  state.interval = 1;
  state.lock.native_handle()->__data.__kind = 0x7F;  // no kind of mutex
  EXPECT_THROW(___ratelimit(&state, "f"), std::system_error);
  state.interval = 0;
  EXPECT_EQ(___ratelimit(&state, "f"), 1) << "without interval it does not lock";
  state.lock.native_handle()->__data.__kind = 0;
}

TEST_F(Limiter, GivesItsLockBack) {
  ___ratelimit(&rs, "granted");
  ___ratelimit(&rs, "refused");
  ASSERT_TRUE(rs.lock.try_lock());
  rs.lock.unlock();
}

}  // namespace
