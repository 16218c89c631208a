// watch: run cycles on a schedule and show what changes.
#include <algorithm>
#include <chrono>
#include <ctime>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "collector/status_interface.h"
#include "host/commands.h"
#include "host/database.h"
#include "host/document_paths.h"
#include "host/output.h"
#include "host/printable.h"
#include "host/schedule.h"
#include "host/screen.h"
#include "host/terminal.h"
#include "host/text.h"
#include "host/text_template.h"
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

// The row that each path comes from in `now`; of several in one field the one that has another
// value than before.
std::unordered_map<std::string_view, std::string_view> KeysOf(const Snapshot& before,
                                                              const Snapshot& now) {
  std::unordered_map<std::string_view, std::string_view> values;
  for (const insight::Row& row : before.Rows) {
    values.emplace(row.Key, row.Value);
  }
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
  return keys;
}

// The value at `path` as Compare has it; a list, which stands for all that it holds, has none.
std::string ValueAt(const Snapshot& snapshot, const std::string& path) {
  if (!snapshot.IsReported(path)) {
    return kNotReported;
  }
  const QtSts::TreeValue* const value = snapshot.Document.Root().FindValue(path);
  if (value == nullptr) {
    return "reported";
  }
  const bool is_text = value->Kind() == QtSts::ValueKind::kText;
  return is_text ? '"' + value->Written() + '"' : value->Written();
}

// A line for each value that is another one in `now`, or is reported in one of them only: time,
// path, before, after, row key, with tabs between them. A value that is not reported is none,
// whatever stands there.
std::string ChangesOf(const Snapshot& before, const Snapshot& now) {
  const auto keys = KeysOf(before, now);
  const std::string time = TimeOf(now.Began);
  std::string lines;
  const auto add = [&](const std::string& path, const std::string& was, const std::string& is) {
    const auto key = keys.find(path);
    lines += time + '\t' + path + '\t' + Printable(was) + '\t' + Printable(is) + '\t' +
             (key == keys.end() ? "" : Printable(key->second)) + '\n';
  };
  QtSts::Compare(before.Document, now.Document, [&](const QtSts::Difference& difference) {
    if (!ChangesInEachCycle(difference.Path) && before.IsReported(difference.Path) &&
        now.IsReported(difference.Path)) {
      add(difference.Path, difference.Before, difference.After);
    }
  });
  std::vector<std::string> others;
  std::ranges::set_symmetric_difference(before.NotReported, now.NotReported,
                                        std::back_inserter(others));
  for (const std::string& path : others) {
    add(path, ValueAt(before, path), ValueAt(now, path));
  }
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
int RunCycles(const Options& options, const StandardOutput& output, CStatusInterface& collector,
              const Show& show, const Redraw& redraw) {
  Database database(collector);
  insight::Recorder recorder(collector);
  Schedule schedule{std::chrono::seconds(options.Interval)};
  Cycles cycles;
  for (int cycle = 1;; ++cycle) {
    cycles.Before = std::move(cycles.Now);
    if (cycles.Before) {
      database.OpenAnewIfNeeded(cycles.Before->Result != 0);
    }
    cycles.Now.emplace(recorder.RunCycle());
    show(cycles);
    if (cycle == options.Count) {
      return cycles.Now->Result;
    }
    const Clock::time_point next = schedule.Next();
    while (!WaitUntil(next, output)) {
      redraw(cycles);
    }
  }
}

// What is wrong with the database is said when that becomes another thing.
int WatchInLines(const Options& options, const StandardOutput& output, CStatusInterface& collector,
                 const DatabaseTrouble& trouble) {
  std::string said;
  return RunCycles(
      options, output, collector,
      [&](const Cycles& cycles) {
        if (std::string words = trouble.InWords(); words != said) {
          trouble.Report();
          said = std::move(words);
        }
        if (cycles.Before) {
          output.Write(ChangesOf(*cycles.Before, *cycles.Now));
        }
        output.PassOn();
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

// "Every 2 s; Ctrl-C ends. Last cycle: 2026-11-22T04:29:22+0100", in a narrow window without the
// date.
std::string TitleOf(const Options& options, const std::string& time, std::size_t columns) {
  constexpr std::size_t kDate = 11;  // bytes of "2026-11-22T"
  constexpr std::size_t kClock = 8;
  std::string title = "Every " + std::to_string(options.Interval) + " s; Ctrl-C ends.";
  const std::string with_time = title + " Last cycle: ";
  for (std::string text :
       {with_time + time, with_time + time.substr(std::min(kDate, time.size()), kClock)}) {
    if (text.size() <= columns) {
      return text;
    }
  }
  return title;
}

int WatchOnScreen(const Options& options, const StandardOutput& output,
                  CStatusInterface& collector) {
  Screen screen(output);
  const auto draw = [&](const Cycles& cycles) {
    const Look look = {.Columns = WindowOf(output.Descriptor()).Columns};
    const std::string text = RenderText(*cycles.Now, look);
    screen.Draw(TitleOf(options, TimeOf(cycles.Now->Began), look.Columns), text,
                cycles.Before ? RenderText(*cycles.Before, look) + TimesIn(text) : "");
  };
  return RunCycles(options, output, collector, draw, draw);
}

int Watch(const Options& options) {
  const StandardOutput output;
  CStatusInterface collector;
  collector.m_Hardware.m_bLogTrackerPixel = false;
  const DatabaseTrouble trouble(Opened::kForReading);
  const bool on_screen = !options.Changes && WantsScreen(output.Descriptor());
  const int result = on_screen ? WatchOnScreen(options, output, collector)
                               : WatchInLines(options, output, collector, trouble);
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
