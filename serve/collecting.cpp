#include "serve/collecting.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <system_error>
#include <utility>

#include "collector/status_interface.h"
#include "host/database.h"
#include "host/document_paths.h"
#include "host/failure_text.h"
#include "host/schedule.h"
#include "host/trouble.h"
#include "model/xml.h"

namespace serve {
namespace {

// More changes than this are news for nobody who reads them one by one.
constexpr std::size_t kMostChanges = 500;

int MakeEventDescriptor() {
  const int descriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (descriptor == -1) {
    throw std::system_error(errno, std::generic_category(), "eventfd");
  }
  return descriptor;
}

void AddChanges(const Cycle& before, Cycle* cycle) {
  QtSts::Compare(before.Snapshot.Document, cycle->Snapshot.Document,
                 [cycle](const QtSts::Difference& difference) {
                   if (host::ChangesInEachCycle(difference.Path)) {
                     return;
                   }
                   if (cycle->Changes.size() < kMostChanges) {
                     cycle->Changes.push_back(difference);
                   } else {
                     ++cycle->FurtherChanges;
                   }
                 });
}

// What the history knows of the findings counts.
void AddToHistory(History* history, Cycle* cycle) {
  const auto beginnings = history->Add(cycle->Snapshot);
  for (std::size_t at = 0; at < beginnings.size(); ++at) {
    if (beginnings[at]) {
      cycle->FindingsSince[at] = SystemTime(std::chrono::seconds(beginnings[at]->Time));
      cycle->FindingsBefore[at] = beginnings[at]->Before;
    }
  }
}

std::shared_ptr<const Cycle> MakeCycle(const Cycle* before, insight::Snapshot snapshot,
                                       const QtSts::CStatus& status, std::string trouble,
                                       History* history) {
  auto cycle = std::make_shared<Cycle>(
      Cycle{.Number = (before == nullptr ? 0 : before->Number) + 1,
            .Failed = before == nullptr ? 0 : before->Failed,
            .Snapshot = std::move(snapshot),
            .Xml = std::make_shared<const std::string>(QtSts::WriteDocument(status)),
            .Trouble = std::move(trouble),
            .LastSuccess = before == nullptr ? std::nullopt : before->LastSuccess});
  cycle->First = before == nullptr ? cycle->Snapshot.Began : before->First;
  if (cycle->Snapshot.Result == 0) {
    cycle->LastSuccess = cycle->Snapshot.Began;
  } else {
    ++cycle->Failed;
  }
  AddBeginnings(before, cycle.get());
  AddToHistory(history, cycle.get());
  if (before != nullptr) {
    AddChanges(*before, cycle.get());
  }
  return cycle;
}

}  // namespace

Collecting::Collecting(std::chrono::seconds interval, const host::StandardOutput& output,
                       History* history)
    : interval_(interval),
      output_(output),
      history_(history),
      published_(MakeEventDescriptor()),
      thread_([this] { Run(); }) {}

Collecting::~Collecting() {
  if (!Stop({})) {
    std::fflush(nullptr);
    _exit(EXIT_FAILURE);
  }
  thread_.join();
  close(published_);
}

bool Collecting::Stop(std::chrono::milliseconds at_most) {
  std::unique_lock lock(mutex_);
  stops_ = true;
  changed_.notify_all();
  return changed_.wait_for(lock, at_most, [this] { return ended_; });
}

State Collecting::Look() {
  std::uint64_t count = 0;
  const ssize_t ignored = read(published_, &count, sizeof count);
  static_cast<void>(ignored);  // it may be readable or not
  const std::lock_guard lock(mutex_);
  State state = {.Latest = latest_, .Hanging = Hanging(), .Failure = failure_};
  if (state.Latest != looked_.Latest || state.Hanging != looked_.Hanging ||
      state.Failure != looked_.Failure) {
    state.Version = ++version_;
    looked_ = std::move(state);
  }
  return looked_;
}

std::optional<Hang> Collecting::Hanging() const {
  const std::chrono::seconds most = std::max(interval_, kShortestHang);
  if (!running_ || Clock::now() - running_->Since <= most) {
    return std::nullopt;
  }
  return Hang{last_asked_ == nullptr ? "starting" : last_asked_->InWords(), running_->Began};
}

void Collecting::Begin() {
  const std::lock_guard lock(mutex_);
  running_ = {Clock::now(), std::chrono::system_clock::now()};
}

void Collecting::Publish(std::shared_ptr<const Cycle> cycle, std::string failure) {
  {
    const std::lock_guard lock(mutex_);
    latest_.swap(cycle);  // what was there goes after the lock
    failure_ = std::move(failure);
    running_.reset();
  }
  const std::uint64_t one = 1;
  const ssize_t ignored = write(published_, &one, sizeof one);
  static_cast<void>(ignored);  // it only fails when it is readable already
}

bool Collecting::WaitUntil(Clock::time_point next) {
  std::unique_lock lock(mutex_);
  return !changed_.wait_until(lock, next, [this] { return stops_; });
}

void Collecting::RunCycles() {
  host::Schedule schedule(interval_);
  CStatusInterface collector;
  collector.m_Hardware.m_bLogTrackerPixel = false;
  const host::DatabaseTrouble trouble(host::Opened::kForReading);
  std::string said;
  insight::Recorder recorder(collector);
  std::optional<host::Database> database;
  bool failed = false;
  std::shared_ptr<const Cycle> latest;
  do {
    std::string failure;
    try {
      Begin();
      if (database) {
        database->OpenAnewIfNeeded(failed);
      } else {
        database.emplace(collector);
      }
      insight::Snapshot snapshot = recorder.RunCycle();
      latest = MakeCycle(latest.get(), std::move(snapshot), collector.m_Status, trouble.InWords(),
                         history_);
      failed = latest->Snapshot.Result != 0;
      if (latest->Trouble != said) {
        trouble.Report();
        said = latest->Trouble;
      }
    } catch (const std::exception& error) {
      failure = host::InWords(error);
      failed = true;
    }
    try {
      PassOnLines();
    } catch (const std::exception& error) {
      failure = host::InWords(error);
      failed = true;
    }
    Publish(latest, std::move(failure));
  } while (WaitUntil(schedule.Next()));
}

// The names of network devices are left out. Other lines are passed on when they change.
void Collecting::PassOnLines() {
  std::string lines = host::WithoutDeviceNames(output_.Take());
  if (lines != lines_) {
    std::fputs(lines.c_str(), stderr);
  }
  lines_ = std::move(lines);
}

void Collecting::Run() {
  {
    const host::LastAsked last_asked;
    {
      const std::lock_guard lock(mutex_);
      last_asked_ = &last_asked;
    }
    RunCycles();
    const std::lock_guard lock(mutex_);
    last_asked_ = nullptr;
  }
  const std::lock_guard lock(mutex_);
  ended_ = true;
  changed_.notify_all();
}

}  // namespace serve
