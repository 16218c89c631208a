#include "collector/observer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <stdexcept>
#include <thread>

#include "collector/state/report.h"
#include "tests/collector/observed.h"

namespace {

using observe::CurrentObserver;
using observe::SetObserver;
using testing::ElementsAre;

observe::CycleEnds EndWith(int result) {
  observe::CycleEnds end;
  end.Result = result;
  return end;
}

void ReportEnd(int result) {
  observe::Report([&] { return EndWith(result); });
}

// Asks, and fails with EBADF, as reading from no file does.
int AskInVain() {
  observe::Asks question;
  question.What = observe::Call::kRead;
  question.Source = "nothing";
  return observe::Ask(question, [] {
    errno = EBADF;
    return -1;
  });
}

class ObserverTest : public testing::Test {
 protected:
  ~ObserverTest() override { SetObserver(nullptr); }
};

class Throwing : public observe::Observer {
 public:
  void See(const observe::Event& /*event*/) override {
    ++Calls;
    throw std::runtime_error("of the observer");
  }
  int Calls = 0;
};

}  // namespace

TEST_F(ObserverTest, IsNobodyAtFirst) {
  EXPECT_EQ(CurrentObserver(), nullptr);
  ReportEnd(0);
}

TEST_F(ObserverTest, SeesWhatIsReportedUntilItIsReplaced) {
  Observed first;
  ReportEnd(1);
  Throwing second;
  EXPECT_EQ(SetObserver(&second), &first);
  EXPECT_EQ(CurrentObserver(), &second);
  ReportEnd(2);
  EXPECT_THAT(first.All, ElementsAre("cycle ends 1"));
  EXPECT_EQ(second.Calls, 1);
}

TEST_F(ObserverTest, FindsEventsByTheirType) {
  const observe::CycleEnds end = EndWith(3);
  const observe::Event& event = end;
  ASSERT_NE(event.As<observe::CycleEnds>(), nullptr);
  EXPECT_EQ(event.As<observe::CycleEnds>()->Result, 3);
  EXPECT_EQ(event.As<observe::CycleBegins>(), nullptr);
}

TEST_F(ObserverTest, ThatThrowsEndsTheObservation) {
  Throwing throwing;
  SetObserver(&throwing);
  EXPECT_NO_THROW(ReportEnd(0));
  EXPECT_EQ(CurrentObserver(), nullptr);
  ReportEnd(0);
  EXPECT_EQ(throwing.Calls, 1);
}

TEST_F(ObserverTest, MayRemoveItselfOrNameAnother) {
  Observed first;
  Observed second;
  SetObserver(&first);
  first.Then = [&](const observe::Event&) { SetObserver(&second); };
  second.Then = [&](const observe::Event&) { SetObserver(nullptr); };
  for (int result = 1; result <= 3; ++result) {
    ReportEnd(result);
  }
  EXPECT_THAT(first.All, ElementsAre("cycle ends 1"));
  EXPECT_THAT(second.All, ElementsAre("cycle ends 2"));
}

TEST_F(ObserverTest, ThatThrowsAfterItNamedAnotherLeavesThatOneInPlace) {
  Observed first;
  Observed second;
  SetObserver(&first);
  first.Then = [&](const observe::Event&) {
    SetObserver(&second);
    throw std::runtime_error("afterwards");
  };
  ReportEnd(1);
  ReportEnd(2);
  EXPECT_THAT(second.All, ElementsAre("cycle ends 2"));
}

// An observer that ran a cycle of its own would otherwise see that one's events, and run another.
TEST_F(ObserverTest, DoesNotSeeWhatItCallsItself) {
  Observed observer;
  observer.Then = [](const observe::Event&) { ReportEnd(2); };
  ReportEnd(1);
  ReportEnd(3);
  EXPECT_THAT(observer.All, ElementsAre("cycle ends 1", "cycle ends 3"));
}

TEST_F(ObserverTest, SeesTheQuestionBeforeTheCallAndItsErrorAfterwards) {
  Observed observer;
  AskInVain();
  EXPECT_THAT(observer.All, ElementsAre("asks read nothing, offset 0, limit 0",
                                        "answers read nothing: -1, Bad file descriptor"));
}

TEST_F(ObserverTest, LeavesTheErrorOfACallAsItWas) {
  Observed observer;
  observer.Then = [](const observe::Event&) { errno = EIO; };
  errno = 0;
  EXPECT_EQ(AskInVain(), -1);
  EXPECT_EQ(errno, EBADF);
}

TEST_F(ObserverTest, DoesNotHoldUpTheEndOfItsThread) {
  Observed observer;
  observer.Then = [](const observe::Event&) { pthread_exit(nullptr); };
  bool went_on = false;
  std::thread([&] {
    ReportEnd(1);
    went_on = true;
  }).join();
  EXPECT_FALSE(went_on);
  observer.Then = nullptr;
  ReportEnd(2);
  EXPECT_THAT(observer.All, ElementsAre("cycle ends 1", "cycle ends 2"));
}
