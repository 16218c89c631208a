// check: one cycle, reported by the conventions of monitoring plugins.
#include <chrono>
#include <cstdio>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "collector/status_interface.h"
#include "host/check_report.h"
#include "host/column_order.h"
#include "host/commands.h"
#include "host/failure_text.h"
#include "host/output.h"
#include "host/plugin_text.h"
#include "host/trouble.h"
#include "host/watchdog.h"
#include "insight/snapshot.h"

namespace host {
namespace {

struct Options {
  std::vector<std::string> Warning;   // NAME=RANGE
  std::vector<std::string> Critical;  // likewise
  std::vector<std::string> Ignore;
  int Timeout = 10;  // seconds
};

std::string NamesOfLimits() {
  std::string names;
  for (const insight::LimitInfo& info : insight::LimitTable()) {
    names += (names.empty() ? "" : ", ") + std::string(info.Name);
  }
  return names;
}

// "temperature="
std::vector<std::string> BeginningsOfLimits() {
  std::vector<std::string> beginnings;
  for (const insight::LimitInfo& info : insight::LimitTable()) {
    beginnings.push_back(std::string(info.Name) + "=");
  }
  return beginnings;
}

// Sets `range` of the limit that each text names. Throws std::invalid_argument.
void Set(insight::Limits* limits, const std::vector<std::string>& texts,
         insight::Range insight::Limit::*range) {
  for (const std::string& text : texts) {
    const std::size_t equals = text.find('=');
    const std::string name = text.substr(0, equals);
    const auto parsed =
        equals == std::string::npos ? std::nullopt : insight::ParseRange(text.substr(equals + 1));
    try {
      insight::Limit& limit = limits->Of(name);
      if (!parsed) {
        throw std::invalid_argument(text +
                                    " is not NAME=RANGE; ranges are 10, 10:, ~:10, 10:20 "
                                    "and @10:20");
      }
      limit.*range = *parsed;
    } catch (const std::out_of_range&) {
      throw std::invalid_argument("there is no limit " + name + "; there are " + NamesOfLimits());
    }
  }
}

Report Run(const Options& options, const StandardOutput& output) {
  insight::Limits limits;
  Set(&limits, options.Warning, &insight::Limit::Warning);
  Set(&limits, options.Critical, &insight::Limit::Critical);
  std::vector<Ignored> ignored;
  for (const std::string& text : options.Ignore) {
    ignored.emplace_back(text);
  }
  const Watchdog watchdog(std::chrono::seconds(options.Timeout), output.Descriptor(),
                          kPluginUnknown);
  const DatabaseTrouble trouble(Opened::kForReading);
  CStatusInterface collector;
  collector.m_Hardware.m_bLogTrackerPixel = false;
  collector.InitDatabase(false);
  insight::Snapshot snapshot = insight::Recorder(collector).RunCycle(limits);
  NameColumnTrouble(collector, &snapshot);
  collector.CloseDatabase();
  return CheckReport(snapshot, limits, ignored, trouble.InWords());
}

// What cannot be known is unknown, whatever the reason; a client shows standard output.
Report RunOrSayWhy(const Options& options, const StandardOutput& output) {
  try {
    return Run(options, output);
  } catch (const std::exception& failure) {
    const std::string why = PluginText(InWords(failure));
    std::fprintf(stderr, "statuscollector: %s\n", why.c_str());
    return {kPluginUnknown, "UNKNOWN - " + why + "\n"};
  }
}

int Check(const Options& options) {
  try {
    const StandardOutput output;
    const Report report = RunOrSayWhy(options, output);
    output.Write(report.Text);
    return report.Status;
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "statuscollector: %s\n", PluginText(InWords(failure)).c_str());
    return kPluginUnknown;
  }
}

}  // namespace

Declaration DeclareCheck() {
  const auto options = std::make_shared<Options>();
  return {{{.Name = "-w,--warning",
            .Type = "NAME=RANGE",
            .About = "Warn when a reading is outside of RANGE",
            .Value = &options->Warning,
            .Offers = BeginningsOfLimits()},
           {.Name = "-c,--critical",
            .Type = "NAME=RANGE",
            .About = "Be critical when it is outside of RANGE",
            .Value = &options->Critical,
            .Offers = BeginningsOfLimits()},
           {.Name = "-i,--ignore",
            .Type = "ID",
            .About = "Leave out findings: ID or ID:WHICH",
            .Value = &options->Ignore},
           {.Name = "-t,--timeout",
            .Type = "S",
            .About = "Seconds after which the state is unknown; default 10",
            .Value = &options->Timeout,
            .Least = 1,
            .Most = 3600}},
          [options] { return Check(*options); }};
}

}  // namespace host
