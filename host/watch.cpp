// watch: run cycles on a schedule and show what changes.
#include <algorithm>
#include <chrono>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "collector/status_interface.h"
#include "host/commands.h"
#include "host/document_paths.h"
#include "host/output.h"
#include "host/printable.h"
#include "host/screen.h"
#include "host/terminal.h"
#include "host/text.h"
#include "insight/snapshot.h"
#include "model/compare.h"

namespace host {
namespace {

using insight::Snapshot;
using Clock = std::chrono::steady_clock;

struct Options {
  int Interval = 2;  // seconds
  int Count = 0;     // cycles; 0: without end
  bool Changes = false;
};

// The moments at which cycles begin: an interval apart, whatever the cycles take. A cycle that
// takes longer than the interval leaves out the moments that it misses, so that two never overlap
// and none makes up for a missed one.
class Schedule {
 public:
  explicit Schedule(std::chrono::seconds interval) : interval_(interval) {}

  Clock::time_point Next() {
    const auto missed = (Clock::now() - next_) / interval_;
    next_ += interval_ * (std::max<std::int64_t>(missed, 0) + 1);
    return next_;
  }

 private:
  std::chrono::seconds interval_;
  Clock::time_point next_ = Clock::now();
};

// "2026-11-22T04:29:22+0100"
std::string TimeOf(std::chrono::system_clock::time_point time) {
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  std::tm parts = {};
  char text[64];
  if (localtime_r(&seconds, &parts) == nullptr) {
    return "-";
  }
  return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S%z", &parts)};
}

// A line for each value that is another one in `now`: time, path, before, after, row key, with tabs
// between them.
std::string ChangesOf(const Snapshot& before, const Snapshot& now) {
  std::unordered_map<std::string_view, std::string_view> keys;
  for (const insight::Row& row : now.Rows) {
    if (!row.Path.empty()) {
      keys.emplace(row.Path, row.Key);
    }
  }
  const std::string time = TimeOf(now.Began);
  std::string lines;
  QtSts::Compare(before.Document, now.Document, [&](const QtSts::Difference& difference) {
    if (ChangesInEachCycle(difference.Path)) {
      return;
    }
    const auto key = keys.find(difference.Path);
    lines += time + '\t' + difference.Path + '\t' + Printable(difference.Before) + '\t' +
             Printable(difference.After) + '\t' +
             (key == keys.end() ? "" : Printable(key->second)) + '\n';
  });
  return lines;
}

// Runs the cycles and hands each snapshot to `show`, with the one before it, which is null for the
// first. `redraw` is called when the window has changed. Returns what the last cycle returned.
template <class Show, class Redraw>
int RunCycles(const Options& options, CStatusInterface& collector, const Show& show,
              const Redraw& redraw) {
  insight::Recorder recorder(collector);
  Schedule schedule{std::chrono::seconds(options.Interval)};
  std::optional<Snapshot> before;
  for (int cycle = 1;; ++cycle) {
    Snapshot now = recorder.RunCycle();
    show(before ? &*before : nullptr, now);
    before.emplace(std::move(now));
    if (cycle == options.Count) {
      return before->Result;
    }
    const Clock::time_point next = schedule.Next();
    while (!WaitUntil(next)) {
      redraw(*before);
    }
  }
}

int WatchInLines(const Options& options, const StandardOutput& output,
                 CStatusInterface& collector) {
  return RunCycles(
      options, collector,
      [&](const Snapshot* before, const Snapshot& now) {
        if (before != nullptr) {
          output.Write(ChangesOf(*before, now));
        }
      },
      [](const Snapshot&) {});
}

int WatchOnScreen(const Options& options, const StandardOutput& output,
                  CStatusInterface& collector) {
  Screen screen(output);
  const std::string title =
      "Every " + std::to_string(options.Interval) + " s; Ctrl-C ends. Last cycle: ";
  const auto draw = [&](const Snapshot& snapshot) {
    const Look look = {.Columns = WindowOf(output.Descriptor()).Columns};
    screen.Draw(title + TimeOf(snapshot.Began), RenderText(snapshot, look));
  };
  return RunCycles(
      options, collector, [&](const Snapshot*, const Snapshot& now) { draw(now); }, draw);
}

int Watch(const Options& options) {
  const StandardOutput output;
  CStatusInterface collector;
  collector.m_Hardware.m_bLogTrackerPixel = false;
  collector.InitDatabase(false);
  const bool on_screen = !options.Changes && WantsScreen(output.Descriptor());
  const int result = on_screen ? WatchOnScreen(options, output, collector)
                               : WatchInLines(options, output, collector);
  collector.CloseDatabase();
  return result == 0 ? kAllWell : kFailed;
}

}  // namespace

Declaration DeclareWatch() {
  const auto options = std::make_shared<Options>();
  return {{{.Name = "-i,--interval",
            .Type = "SECONDS",
            .About = "From the beginning of a cycle to that of the next (2)",
            .Value = &options->Interval,
            .Least = 1,
            .Most = 86400},
           {.Name = "-n,--count",
            .Type = "N",
            .About = "Cycles to run; without it there is no end",
            .Value = &options->Count,
            .Least = 1,
            .Most = 1000000000},
           {.Name = "--changes",
            .Type = "",
            .About = "On a terminal, too, a line for each change",
            .Value = &options->Changes}},
          [options] { return Watch(*options); }};
}

}  // namespace host
