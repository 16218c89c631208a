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
#include "host/schedule.h"
#include "host/screen.h"
#include "host/terminal.h"
#include "host/text.h"
#include "host/trouble.h"
#include "insight/snapshot.h"
#include "model/compare.h"

namespace host {
namespace {

using insight::Snapshot;
using Clock = Schedule::Clock;

struct Options {
  int Interval = 2;  // seconds
  int Count = 0;     // cycles; 0: without end
  bool Changes = false;
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
  std::unordered_map<std::string_view, std::string_view> values;
  for (const insight::Row& row : before.Rows) {
    values.emplace(row.Key, row.Value);
  }
  // Of several rows in one field the one that has another value.
  std::unordered_map<std::string_view, std::string_view> keys;
  for (const insight::Row& row : now.Rows) {
    const auto value = values.find(row.Key);
    if (row.Path.empty()) {
      continue;
    }
    if (value == values.end() || value->second != row.Value) {
      keys.insert_or_assign(row.Path, row.Key);
    } else {
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

// The last two cycles; before the second one Before is nothing.
struct Cycles {
  std::optional<Snapshot> Before;
  std::optional<Snapshot> Now;
};

// Runs the cycles; `show` gets the last two after each, `redraw` when the window has changed.
// Returns what the last cycle returned.
template <class Show, class Redraw>
int RunCycles(const Options& options, CStatusInterface& collector, const Show& show,
              const Redraw& redraw) {
  insight::Recorder recorder(collector);
  Schedule schedule{std::chrono::seconds(options.Interval)};
  Cycles cycles;
  for (int cycle = 1;; ++cycle) {
    cycles.Before = std::move(cycles.Now);
    cycles.Now.emplace(recorder.RunCycle());
    show(cycles);
    if (cycle == options.Count) {
      return cycles.Now->Result;
    }
    const Clock::time_point next = schedule.Next();
    while (!WaitUntil(next)) {
      redraw(cycles);
    }
  }
}

// What is wrong with the database is said when that becomes another thing.
int WatchInLines(const Options& options, const StandardOutput& output, CStatusInterface& collector,
                 const DatabaseTrouble& trouble) {
  std::string said;
  return RunCycles(
      options, collector,
      [&](const Cycles& cycles) {
        if (cycles.Before) {
          output.Write(ChangesOf(*cycles.Before, *cycles.Now));
        }
        if (std::string words = trouble.InWords(); words != said) {
          trouble.Report();
          said = std::move(words);
        }
      },
      [](const Cycles&) {});
}

// Lines of times, which are other ones in each cycle, so that they are no news.
std::string TimesIn(const std::string& text) {
  std::string times;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    const std::string_view line = std::string_view(text).substr(begin, end - begin);
    if (line.starts_with("  Local time  ") || line.starts_with("  Uptime  ") ||
        line.find(", database last changed ") != std::string_view::npos) {
      times.append(line).append("\n");
    }
    begin = end + 1;
  }
  return times;
}

int WatchOnScreen(const Options& options, const StandardOutput& output,
                  CStatusInterface& collector) {
  Screen screen(output);
  const std::string title =
      "Every " + std::to_string(options.Interval) + " s; Ctrl-C ends. Last cycle: ";
  const auto draw = [&](const Cycles& cycles) {
    const Look look = {.Columns = WindowOf(output.Descriptor()).Columns};
    const std::string text = RenderText(*cycles.Now, look);
    screen.Draw(title + TimeOf(cycles.Now->Began), text,
                cycles.Before ? RenderText(*cycles.Before, look) + TimesIn(text) : "");
  };
  return RunCycles(options, collector, draw, draw);
}

int Watch(const Options& options) {
  const StandardOutput output;
  CStatusInterface collector;
  collector.m_Hardware.m_bLogTrackerPixel = false;
  const DatabaseTrouble trouble(Opened::kForReading);
  collector.InitDatabase(false);
  const bool on_screen = !options.Changes && WantsScreen(output.Descriptor());
  const int result = on_screen ? WatchOnScreen(options, output, collector)
                               : WatchInLines(options, output, collector, trouble);
  collector.CloseDatabase();
  if (on_screen) {
    trouble.Report();  // the screen that said it is gone
  }
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
