// The history of documents that are made here, over restarts, boots and clocks that jump.
#include "serve/history.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "model/can_sensors.h"
#include "model/document.h"
#include "serve/history_file.h"
#include "serve/history_json.h"

namespace {

using insight::Snapshot;
using serve::Episode;
using serve::History;
using serve::HistoryData;
using serve::UnixSeconds;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr UnixSeconds kNoon = 1800000000;
constexpr const char* kBoot = "boot";

struct Fan {
  std::uint64_t Address;
  std::uint32_t Rpm;
};

// A cycle that began then, by both clocks.
Snapshot CycleOf(const std::vector<Fan>& fans, UnixSeconds system, std::int64_t steady) {
  QtSts::CStatus status;
  for (const Fan& fan : fans) {
    auto sensor = std::make_unique<QtSts::CCANFanRpmSensor>();
    sensor->Connected = true;
    sensor->Address = fan.Address;
    sensor->CurrentRpm = fan.Rpm;
    status.Sensors.Add(sensor.release());
  }
  Snapshot snapshot{
      .Document = QtSts::DocumentTree(status),
      .Began = std::chrono::system_clock::time_point(std::chrono::seconds(system)),
      .BeganSteady = std::chrono::steady_clock::time_point(std::chrono::seconds(steady))};
  for (std::size_t at = 0; at < fans.size(); ++at) {
    if (fans[at].Rpm == 0) {
      insight::Finding& finding = snapshot.Findings.emplace_back();
      finding.Id = "fan-stopped";
      finding.Message = "fan stands still";
      finding.Path = "Sensors[" + std::to_string(at) + "]/CurrentRpm";
    }
  }
  return snapshot;
}

class AHistory : public testing::Test {
 protected:
  // Ten seconds after the cycle before, by both clocks.
  auto Cycle(const std::vector<Fan>& fans) {
    system_ += 10;
    steady_ += 10;
    return history_->Add(CycleOf(fans, system_, steady_));
  }

  void Restart(const std::string& boot = kBoot) {
    const serve::HistoryImage image =
        history_->Look([](const HistoryData& data) { return serve::HistoryImage(data); });
    std::string bytes;
    image.Write([&bytes](std::string_view part) { bytes += part; });
    history_ = std::make_unique<History>(std::chrono::seconds(10), boot);
    history_->Restore(serve::ParseHistory(bytes, 10));
  }

  // The answer to a question for one path, after a cycle with these fans.
  std::string Answer(const std::vector<Fan>& fans, std::string_view path) {
    Cycle(fans);
    const Snapshot latest = CycleOf(fans, system_, steady_);
    const serve::Identities identities(latest.Document);
    std::string_view unknown;
    return history_
        ->Look([&](const HistoryData& data) {
          return serve::HistoryOf(data, identities, {path}, &unknown);
        })
        .value_or("nothing");
  }

  // Those that there are, in order of their beginnings.
  std::vector<Episode> Findings() {
    return history_->Look([](const HistoryData& data) {
      return std::vector<Episode>(data.Findings.All().begin(), data.Findings.All().end());
    });
  }

  UnixSeconds system_ = kNoon;
  std::int64_t steady_ = 1000;
  std::unique_ptr<History> history_ = std::make_unique<History>(std::chrono::seconds(10), kBoot);
};

TEST_F(AHistory, HasTheNumbersThatWereRead) {
  Cycle({{39, 1200}});
  Cycle({{39, 0}});
  EXPECT_EQ(Answer({{39, 900}}, "Sensors[0]/CurrentRpm"),
            "{\n  \"Step\": 10,\n  \"Times\": [1800000010,1800000020,1800000030],\n"
            "  \"Series\": [\n    {\n      \"Path\": \"Sensors[0]/CurrentRpm\",\n"
            "      \"Values\": [1200,0,900]\n    }\n  ]\n}\n");
  EXPECT_EQ(Answer({{39, 900}}, "Sensors[1]/CurrentRpm"), "nothing");
}

TEST_F(AHistory, FollowsAnElementThatMoves) {
  Cycle({{38, 1000}, {39, 1200}});
  Cycle({{39, 1300}});
  EXPECT_THAT(Answer({{37, 700}, {40, 800}, {39, 1400}}, "Sensors[2]/CurrentRpm"),
              HasSubstr("\"Values\": [1200,1300,1400]"));
  EXPECT_THAT(Answer({{38, 1}, {39, 2}}, "Sensors[0]/CurrentRpm"),
              HasSubstr("\"Values\": [1000,null,null,1]"));
}

TEST_F(AHistory, HasWhatIsGoneByItsIdentity) {
  Cycle({{38, 1000}, {39, 1200}});
  EXPECT_THAT(Answer({{38, 1000}}, "Sensors[CANFanRpmSensor,Address:39,Bus:0]/CurrentRpm"),
              HasSubstr("\"Values\": [1200,null]"));
}

TEST_F(AHistory, DistinguishesElementsThatAreAlike) {
  Cycle({{38, 1000}, {38, 1200}});
  EXPECT_THAT(Answer({{38, 1000}, {38, 1300}}, "Sensors[1]/CurrentRpm"),
              HasSubstr("\"Values\": [1200,1300]"));
}

TEST_F(AHistory, HasNothingBetweenTheEndOfTheProgramAndItsNextStart) {
  Cycle({{39, 1200}});
  Restart();
  system_ += 600;
  steady_ += 600;
  const std::string answer = Answer({{39, 1300}}, "Sensors[0]/CurrentRpm");
  EXPECT_THAT(answer, HasSubstr("\"Times\": [1800000010,1800000011,1800000620]"));
  EXPECT_THAT(answer, HasSubstr("\"Values\": [1200,null,1300]"));
}

TEST_F(AHistory, HasNothingWhileACycleHangs) {
  Cycle({{39, 1200}});
  system_ += 600;
  steady_ += 600;
  EXPECT_THAT(Answer({{39, 1300}}, "Sensors[0]/CurrentRpm"),
              HasSubstr("\"Values\": [1200,null,1300]"));
}

// ---- Findings

TEST_F(AHistory, KnowsWhenAFanBeganToFailAndWhenItEnded) {
  EXPECT_TRUE(Cycle({{39, 1200}}).empty());
  const auto began = Cycle({{39, 0}});
  ASSERT_TRUE(began.at(0).has_value());
  EXPECT_EQ(began[0]->Time, kNoon + 20);
  EXPECT_FALSE(began[0]->Before);
  Cycle({{39, 0}});
  EXPECT_EQ(Findings().at(0).End, std::nullopt);
  Cycle({{39, 1200}});
  ASSERT_EQ(Findings().size(), 1U);
  EXPECT_EQ(Findings()[0].Begin, kNoon + 20);
  EXPECT_EQ(Findings()[0].End, kNoon + 40);
  EXPECT_EQ(Findings()[0].Message, "fan stands still");
}

TEST_F(AHistory, HasTheWorstThatAFindingWas) {
  const auto cycle = [this](insight::Severity level, const char* message) {
    Snapshot snapshot = CycleOf({{39, 0}}, system_ += 10, steady_ += 10);
    snapshot.Findings.at(0).Level = level;
    snapshot.Findings.at(0).Message = message;
    history_->Add(snapshot);
  };
  cycle(insight::Severity::kWarning, "70 degrees");
  cycle(insight::Severity::kCritical, "91 degrees");
  cycle(insight::Severity::kWarning, "71 degrees");
  Cycle({{39, 1200}});
  ASSERT_EQ(Findings().size(), 1U);
  EXPECT_EQ(Findings()[0].Begin, kNoon + 10);
  EXPECT_EQ(Findings()[0].Level, insight::Severity::kCritical);
  EXPECT_EQ(Findings()[0].Message, "91 degrees");
}

TEST_F(AHistory, KnowsAFindingAgainAfterARestart) {
  Cycle({{39, 1200}});
  Cycle({{39, 0}});
  Restart();
  system_ += 3600;
  steady_ += 3600;
  EXPECT_EQ(Cycle({{39, 0}}).at(0)->Time, kNoon + 20);
  Restart("another");
  system_ += 3600;
  steady_ = 5;
  const auto again = Cycle({{7, 0}, {39, 0}});
  EXPECT_EQ(again.at(1)->Time, kNoon + 20);  // it has moved
  EXPECT_FALSE(again[1]->Before);
  EXPECT_EQ(again[0]->Time, system_);  // it began when nobody looked
  EXPECT_TRUE(again[0]->Before);
}

TEST_F(AHistory, SaysThatAFindingBeganBeforeTheFirstCycle) {
  EXPECT_TRUE(Cycle({{39, 0}}).at(0)->Before);
}

// A locked database used to end all findings of rows.
TEST_F(AHistory, EndsNoFindingInACycleThatCouldNotSeeIt) {
  Cycle({{39, 1200}});
  Cycle({{39, 0}});
  Snapshot failed = CycleOf({}, system_ += 10, steady_ += 10);
  failed.Result = 1;
  history_->Add(failed);
  EXPECT_EQ(Cycle({{39, 0}}).at(0)->Time, kNoon + 20);
  Snapshot silent = CycleOf({{39, 5}}, system_ += 10, steady_ += 10);
  silent.NotReported = {"Sensors"};
  history_->Add(silent);
  EXPECT_EQ(Cycle({{39, 0}}).at(0)->Time, kNoon + 20);
  EXPECT_EQ(Findings().size(), 1U);
}

TEST_F(AHistory, ForgetsFindingsThatEndedADayAgo) {
  Cycle({{39, 0}});
  Cycle({{39, 1}});
  system_ += serve::kHistorySeconds - 10;
  steady_ += serve::kHistorySeconds - 10;
  Cycle({{39, 1}});
  EXPECT_EQ(Findings().size(), 1U);
  Cycle({{39, 1}});
  EXPECT_EQ(Findings().size(), 0U);
}

TEST_F(AHistory, ForgetsTheOldestOfTooManyFindings) {
  for (std::size_t count = 0; count < serve::HistoryFindings::kMost + 10; ++count) {
    Cycle({{39, 0}, {40, 0}});
    Cycle({{39, 1}, {40, 0}});
  }
  const std::vector<Episode> findings = Findings();
  EXPECT_EQ(findings.size(), serve::HistoryFindings::kMost);
  EXPECT_EQ(findings.front().Begin, kNoon + 10);  // one that has not ended
  EXPECT_EQ(findings.back().End, system_);
}

// They used to be looked through once more for each finding that there is no room for.
TEST_F(AHistory, LooksForRoomOncePerCycle) {
  const std::vector<Fan> fans(3 * serve::HistoryFindings::kMost, Fan{39, 0});
  const auto looked_at = [this] {
    return history_->Look([](const HistoryData& data) { return data.Findings.LookedAt(); });
  };
  Cycle(fans);
  EXPECT_EQ(Findings().size(), serve::HistoryFindings::kMost);
  EXPECT_LE(looked_at(), serve::HistoryFindings::kMost);
  Cycle(fans);
  EXPECT_GT(looked_at(), 0U);
  EXPECT_LE(looked_at(), 2 * serve::HistoryFindings::kMost);
}

TEST_F(AHistory, KnowsManyPathsAsItKnowsEach) {
  const Snapshot snapshot = CycleOf({{38, 1}, {39, 1}, {39, 1}}, system_, steady_);
  const serve::Identities identities(snapshot.Document);
  const std::vector<std::string_view> paths = {
      "",  "GUID", "Sensors[2]", "Sensors[1]/CurrentRpm", "Sensors[3]/CurrentRpm",
      "]", "x[0]", "Sensors[1]", "Sensors[0]/Points[0]",  "Outputs[0]/Dimming/DimmingLevel"};
  const std::vector<std::string> many = identities.OfPaths(paths);
  ASSERT_EQ(many.size(), paths.size());
  for (std::size_t at = 0; at < paths.size(); ++at) {
    EXPECT_EQ(many[at], identities.OfPath(paths[at])) << paths[at];
  }
  EXPECT_EQ(many[3], "Sensors[CANFanRpmSensor,Address:39,Bus:0]/CurrentRpm");
}

// ---- Clocks

TEST_F(AHistory, IsMovedWhenAClockIsSetThatBeganIn1970) {
  system_ = 20;
  Cycle({{39, 1200}});
  Cycle({{39, 0}});
  system_ += kNoon;
  EXPECT_EQ(Cycle({{39, 0}}).at(0)->Time, kNoon + 40);
  EXPECT_THAT(Answer({{39, 0}}, "Sensors[0]/CurrentRpm"),
              HasSubstr("\"Times\": [1800000030,1800000040,1800000050,1800000060]"));
}

TEST_F(AHistory, IsMovedWhenAClockIsSetBack) {
  Cycle({{39, 1200}});
  Cycle({{39, 0}});
  system_ -= 1000000;
  EXPECT_EQ(Cycle({{39, 0}}).at(0)->Time, kNoon + 20 - 1000000);
  EXPECT_THAT(Answer({{39, 0}}, "Sensors[0]/CurrentRpm"),
              HasSubstr("\"Times\": [1799000010,1799000020,1799000030,1799000040]"));
}

TEST_F(AHistory, IsMovedWhenTheClockIsSetWhileTheProgramDoesNotRun) {
  system_ = 20;
  Cycle({{39, 1200}});
  Cycle({{39, 0}});
  Restart();
  system_ += kNoon + 600;
  steady_ += 600;
  EXPECT_EQ(Cycle({{39, 0}}).at(0)->Time, kNoon + 40);
}

TEST_F(AHistory, KeepsWhatIsOfYesterdayUntilTheClockIsSet) {
  Cycle({{39, 1200}});
  Cycle({{39, 0}});
  Restart("another");
  const UnixSeconds began = kNoon + 20;
  system_ = 5;
  steady_ = 5;
  const std::string unset = Answer({{39, 0}}, "Sensors[0]/CurrentRpm");
  EXPECT_THAT(unset, HasSubstr("\"Times\": [15]"));  // those of 2027 are still to come
  system_ += kNoon + 3600;
  const std::string set = Answer({{39, 0}}, "Sensors[0]/CurrentRpm");
  EXPECT_THAT(set,
              HasSubstr("\"Times\": [1800000010,1800000020,1800000021,1800003615,1800003625]"));
  EXPECT_THAT(set, HasSubstr("\"Values\": [1200,0,null,0,0]"));
  EXPECT_EQ(Findings().at(0).Begin, began);
}

// A controller whose clock is never set: two boots have the same times.
TEST_F(AHistory, HasNoTimesOfABootWhoseClockWasNeverSet) {
  system_ = 20;
  Cycle({{39, 1200}});
  Cycle({{39, 0}});
  Restart("another");
  system_ = 20;
  steady_ = 20;
  EXPECT_THAT(Answer({{39, 0}}, "Sensors[0]/CurrentRpm"), HasSubstr("\"Times\": [30]"));
  EXPECT_EQ(Findings().size(), 1U);
  EXPECT_TRUE(Findings().at(0).Before);
}

// The clock was an hour ahead, and has been right since the next boot.
TEST_F(AHistory, HasTimesThatGrowWhateverTheClockWasInAnotherBoot) {
  Cycle({{39, 1}});
  system_ += 3600;
  Restart("ahead");
  Cycle({{39, 2}});
  Restart("right");
  system_ -= 3600;
  Cycle({{39, 3}});
  system_ += 4000;
  steady_ += 4000;
  EXPECT_THAT(Answer({{39, 4}}, "Sensors[0]/CurrentRpm"),
              HasSubstr("\"Times\": [1800000010,1800000011,1800000030,1800000031,1800004040]"));
}

TEST_F(AHistory, FollowsAClockThatRunsSlowly) {
  for (int cycle = 0; cycle < 100; ++cycle) {
    Cycle({{39, 1200}});
    ++system_;
  }
  EXPECT_THAT(Answer({{39, 1200}}, "Sensors[0]/CurrentRpm"),
              HasSubstr("\"Times\": [1800000010,1800000021,1800000032,"));
}

}  // namespace
