// A controller on which every source says something else than the document begins with, and what
// changes when one of them does not.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <iosfwd>
#include <map>
#include <set>
#include <string>

#include "insight/snapshot.h"
#include "sandbox/scenario.h"

inline constexpr char kRegisters[] = "/proc/driver/frame_control/registers";
inline constexpr char kRouting[] = "/proc/driver/video_mux/registers";

// What a source comes to.
struct Verdict {
  insight::SourceState State = insight::SourceState::kOk;
  int Error = 0;
  std::string Reason = {};
  std::string StoppedBy = {};

  bool operator==(const Verdict&) const = default;
};
void PrintTo(const Verdict& verdict, std::ostream* out);

// The demo, with each answer, file and row changed that says what the document begins with.
sandbox::Scenario Talkative();

// The same with whatever has two values only, or hides another thing, the other way round.
sandbox::Scenario Contrary();

// Makes the sandbox this controller, without the rows that stand in place of what a probe stores.
void Apply(const sandbox::Scenario& scenario);

// One cycle of a fresh host.
insight::Snapshot Cycle();

const insight::Source& Find(const insight::Snapshot& snapshot, const std::string& id);
Verdict VerdictOf(const insight::Snapshot& snapshot, const std::string& id);

// What changes between two cycles, and what sources stop feeding.
class Losses {
 public:
  void Add(const insight::Snapshot& before, const insight::Snapshot& after);

  // What has changed is what is no longer fed, no more, no fewer.
  void ExpectChangesAreUnfed() const;

  const std::set<std::string>& Unfed() const { return unfed_; }

 private:
  // With an element goes what nobody ever stores in it; that need not be named.
  enum class Change { kOtherValue, kGoneAsItBegan };

  std::map<std::string, Change> changed_;
  std::set<std::string> unfed_;
};

// Applies both controllers one after the other, with a cycle before `lose` and one after it, and
// compares what changes in either with what is no longer fed. The last cycle, and in `unfed` what
// is no longer fed.
insight::Snapshot Lose(const std::function<void()>& lose, std::set<std::string>* unfed = nullptr);
