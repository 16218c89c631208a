#include "host/check_report.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <stdexcept>

#include "host/commands.h"
#include "host/permission.h"
#include "host/plugin_text.h"
#include "host/printable.h"
#include "insight/findings.h"
#include "insight/readings.h"

namespace host {
namespace {

using insight::Finding;
using insight::Severity;
using insight::Snapshot;

constexpr std::size_t kMostFindings = 30;  // in the further lines

// ---- Performance data

std::string Number(double number) {
  char buffer[400];
  return {
      buffer,
      std::to_chars(std::begin(buffer), std::end(buffer), number, std::chars_format::fixed, 3).ptr};
}

// "3.250" as "3.25", "12.000" as "12".
std::string Short(double number) {
  std::string text = Number(number);
  text.erase(text.find_last_not_of('0') + 1);
  return text.ends_with('.') ? text.substr(0, text.size() - 1) : text;
}

// One item: label=value unit;warning;critical;least;most.
std::string Item(const std::string& label, double value, const std::string& unit,
                 const insight::Limit& limit, const char* least, const char* most) {
  std::string item = label + "=" + Short(value) + unit + ";" + Written(limit.Warning) + ";" +
                     Written(limit.Critical) + ";" + least + ";" + most;
  item.erase(item.find_last_not_of(';') + 1);
  return item + " ";
}

enum class Pick { kLowest, kHighest };

// Of the readings of a limit, one stands for all.
constexpr struct {
  const char* Label;
  const char* Limit;
  Pick Which;
  const char* Least;  // what the reading can be at least and at most
  const char* Most;
} kItems[] = {
    {"database-age", "database-age", Pick::kHighest, "0", ""},
    {"temperature", "temperature", Pick::kHighest, "-60", "150"},
    {"temperature-lowest", "temperature", Pick::kLowest, "-60", "150"},
    {"humidity", "humidity", Pick::kHighest, "0", "100"},
    {"memory-free", "memory-free", Pick::kLowest, "0", ""},
    {"storage-free", "storage-free", Pick::kLowest, "0", "100"},
    {"fan-speed", "fan-speed", Pick::kLowest, "0", ""},
    {"airflow", "airflow", Pick::kLowest, "0", ""},
    {"link-errors", "link-errors", Pick::kHighest, "0", ""},
    {"link-transitions", "link-transitions", Pick::kHighest, "0", ""},
    {"sync-losses", "sync-losses", Pick::kHighest, "0", ""},
    {"device-errors", "device-errors", Pick::kHighest, "0", ""},
    {"signal-losses", "signal-losses", Pick::kHighest, "0", ""},
    {"output-voltage", "output-voltage", Pick::kLowest, "0", ""},
    {"input-voltage", "input-voltage", Pick::kLowest, "0", ""},
    {"supply-volts", "supply-volts", Pick::kLowest, "0", ""},
    {"isolation-volts", "isolation-volts", Pick::kLowest, "0", ""},
    {"brightness", "brightness", Pick::kLowest, "0", ""},
};

const char* UnitOf(std::string_view limit) {
  const auto table = insight::LimitTable();
  return std::ranges::find(table, limit, &insight::LimitInfo::Name)->Unit;
}

std::string Items(const Snapshot& snapshot, const insight::Limits& limits) {
  const std::vector<insight::Reading> readings = insight::Readings(snapshot);
  std::string text;
  for (const auto& item : kItems) {
    std::vector<double> values;
    for (const insight::Reading& reading : readings) {
      if (reading.Name == item.Limit) {
        values.push_back(reading.Value);
      }
    }
    if (!values.empty()) {
      const auto [lowest, highest] = std::ranges::minmax_element(values);
      text += Item(item.Label, item.Which == Pick::kLowest ? *lowest : *highest, UnitOf(item.Limit),
                   limits.Of(item.Limit), item.Least, item.Most);
    }
  }
  return text;
}

// ---- Text

constexpr struct {
  Severity Level;
  int Status;
  const char* Word;
} kStates[] = {{Severity::kCritical, kPluginCritical, "CRITICAL"},
               {Severity::kUnknown, kPluginUnknown, "UNKNOWN"},
               {Severity::kWarning, kPluginWarning, "WARNING"}};

// "1 critical, 2 unknown, 3 warnings".
std::string Counts(const std::vector<Finding>& findings) {
  std::string text;
  for (const auto& state : kStates) {
    const auto count =
        static_cast<std::size_t>(std::ranges::count(findings, state.Level, &Finding::Level));
    if (count != 0) {
      const std::string name = insight::NameOf(state.Level);
      const std::string many = state.Level == Severity::kWarning ? name + "s" : name;
      text += (text.empty() ? "" : ", ") + Counted(count, name, many);
    }
  }
  return text;
}

std::string What(const Finding& finding) {
  return finding.Message + (finding.Where.empty() ? "" : ": " + finding.Where);
}

// Which group or permission this user lacks; "" when it is not that.
std::string Lacking(const Snapshot& snapshot, const Finding& finding) {
  const auto source = std::ranges::find(snapshot.Sources, finding.Source, &insight::Source::Id);
  if (finding.Id != "source-denied" || source == snapshot.Sources.end() ||
      !source->Name.starts_with('/')) {
    return "";
  }
  // Nodes and register dumps of drivers are opened for both.
  const std::string& path = source->Name;
  const bool node = path.starts_with("/dev/") && !path.starts_with("/dev/shm/");
  return WhyDenied(path, node || path.starts_with("/proc/driver/") ? R_OK | W_OK : R_OK);
}

// "fan-stopped", or what leaves a finding of a source out.
std::string NameOf(const Finding& finding) {
  return finding.Id.starts_with("source-") ? finding.Id + ":" + finding.Source : finding.Id;
}

std::string Line(const Snapshot& snapshot, const Finding& finding) {
  std::string line = insight::NameOf(finding.Level) + std::string(": ") + What(finding);
  const std::string lacking = Lacking(snapshot, finding);
  line += lacking.empty() ? "" : "; " + lacking;
  line += "; see " + finding.Hint + " (" + NameOf(finding);
  line += finding.Path.empty() ? "" : ", " + finding.Path;
  line += finding.Key.empty() ? "" : ", row " + finding.Key;
  return PluginText(line + ")") + "\n";
}

std::string AllWell(const Snapshot& snapshot) {
  std::string text = Counted(snapshot.Rows.size(), "row", "rows");
  if (snapshot.Database.Unchanged) {
    text += ", database last changed " + std::to_string(snapshot.Database.Unchanged->count()) +
            " s ago";
  }
  return text;
}

std::string FirstLine(const Snapshot& snapshot, const std::vector<Finding>& findings) {
  if (findings.empty()) {
    return "OK - " + AllWell(snapshot);
  }
  const auto* const state =
      std::ranges::find(kStates, findings.front().Level, &std::decay_t<decltype(*kStates)>::Level);
  return PluginText(state->Word + (" - " + Counts(findings)) + ": " + What(findings.front()));
}

}  // namespace

Ignored::Ignored(const std::string& text) {
  const std::size_t colon = text.find(':');
  id_ = text.substr(0, colon);
  which_ = colon == std::string::npos ? "" : text.substr(colon + 1);
  const auto table = insight::FindingTable();
  if (std::ranges::find(table, id_, &insight::FindingInfo::Id) == table.end()) {
    throw std::invalid_argument("there is no finding " + id_ +
                                "; statuscollector(1) lists those that there are");
  }
  if (id_.starts_with("source-") && which_.empty()) {
    throw std::invalid_argument(id_ + " needs the name of a source: " + id_ + ":travex");
  }
}

bool Ignored::Fits(const Finding& finding) const {
  return finding.Id == id_ && (which_.empty() || which_ == finding.Source ||
                               which_ == finding.Path || which_ == finding.Key);
}

Report CheckReport(const Snapshot& snapshot, const insight::Limits& limits,
                   const std::vector<Ignored>& ignored, const std::string& database_trouble) {
  std::vector<Finding> findings = snapshot.Findings;
  const std::size_t left_out = std::erase_if(findings, [&](const Finding& finding) {
    return std::ranges::any_of(ignored, [&](const Ignored& one) { return one.Fits(finding); });
  });
  const std::chrono::duration<double> took = snapshot.Took;
  std::string text = FirstLine(snapshot, findings) + " | " + Items(snapshot, limits) +
                     Item("rows", static_cast<double>(snapshot.Rows.size()), "", {}, "0", "") +
                     Item("findings", static_cast<double>(findings.size()), "", {}, "0", "") +
                     Item("duration", took.count(), "s", {}, "0", "");
  text.back() = '\n';
  for (const Finding& finding : findings) {
    if (&finding - findings.data() == kMostFindings) {
      text += "and " + std::to_string(findings.size() - kMostFindings) + " more\n";
      break;
    }
    text += Line(snapshot, finding);
  }
  text += database_trouble.empty() ? "" : PluginText(database_trouble) + "\n";
  text += left_out == 0 ? "" : Counted(left_out, "finding", "findings") + " ignored\n";
  const auto* const state = findings.empty()
                                ? std::end(kStates)
                                : std::ranges::find(kStates, findings.front().Level,
                                                    &std::decay_t<decltype(*kStates)>::Level);
  return {state == std::end(kStates) ? static_cast<int>(kPluginOk) : state->Status, text};
}

}  // namespace host
