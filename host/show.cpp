// show: run collection cycles and show the last document.
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "collector/status_interface.h"
#include "host/column_order.h"
#include "host/commands.h"
#include "host/json.h"
#include "host/output.h"
#include "host/terminal.h"
#include "host/text.h"
#include "host/trouble.h"
#include "insight/snapshot.h"
#include "model/json.h"
#include "model/xml.h"

namespace host {
namespace {

constexpr const char* kText = "text";
constexpr const char* kXml = "xml";
constexpr const char* kJson = "json";

struct Options {
  std::string Format = kText;
  int Cycles = 1;
  std::string Output = "-";  // standard output
  std::string With;
  std::string Sections;
  bool Brief = false;
  std::string Coloured = kColourNames.front().Name;
  bool NoPager = false;
};

Colour WhenColoured(const Options& options) {
  return std::ranges::find(kColourNames, options.Coloured, &ColourName::Name)->When;
}

// The names in "sensors,points". Throws std::runtime_error for one that is none.
std::vector<std::string> ParseSections(const std::string& text) {
  const std::vector<std::string> known = SectionNames();
  std::vector<std::string> names;
  std::istringstream rest(text);
  for (std::string name; std::getline(rest, name, ',');) {
    if (std::ranges::count(known, name) == 0) {
      std::string message = "--section: no section \"" + name + "\"; there are: ";
      for (const std::string& each : known) {
        message.append(each == known.front() ? "" : ", ").append(each);
      }
      throw std::runtime_error(message);
    }
    names.push_back(name);
  }
  return names;
}

void RequireFormat(const Options& options, const char* format, bool used, const char* option) {
  if (used && options.Format != format) {
    const std::string about = std::string(option) + " is for --format " + format;
    throw std::runtime_error(options.Format == kText ? about + "; add --format " + format
                                                     : about + ", not for " + options.Format +
                                                           "; leave out one of the two");
  }
}

bool ToStandardOutput(const Options& options) { return options.Output == "-"; }

struct Result {
  int OfCycle = 0;
  std::string Document;
};

// Programs read the document alone: their cycles are not observed.
Result RunPlain(const Options& options, const StandardOutput& output, CStatusInterface& collector) {
  Result result;
  for (int cycle = 0; cycle < options.Cycles; ++cycle) {
    output.PassOn();  // of the cycle before
    result.OfCycle = collector.QueryDatabase();
  }
  result.Document = options.Format == kXml ? QtSts::WriteDocument(collector.m_Status)
                                           : QtSts::WriteJson(collector.m_Status);
  return result;
}

insight::Snapshot RunObserved(const Options& options, const StandardOutput& output,
                              CStatusInterface& collector) {
  insight::Recorder recorder(collector);
  for (int cycle = 1; cycle < options.Cycles; ++cycle) {
    recorder.RunCycle();
    output.PassOn();
  }
  insight::Snapshot snapshot = recorder.RunCycle();
  NameColumnTrouble(collector, &snapshot);
  return snapshot;
}

Look LookFor(const Options& options, const StandardOutput& output) {
  Look look = {.Brief = options.Brief, .Sections = ParseSections(options.Sections)};
  if (ToStandardOutput(options)) {
    look.Columns = WindowOf(output.Descriptor()).Columns;
    look.Whole = isatty(output.Descriptor()) == 0;
    look.Colour = WantsColour(output.Descriptor(), WhenColoured(options));
  } else {
    look.Whole = true;
    look.Colour = WhenColoured(options) == Colour::kAlways;
  }
  return look;
}

void Put(const Options& options, const StandardOutput& output, const std::string& document) {
  if (!ToStandardOutput(options)) {
    WriteFile(options.Output, document);
    return;
  }
  const bool paged = options.Format == kText && !options.NoPager;
  if (!paged || !ShowInPager(output.Descriptor(), document)) {
    output.Write(document);
  }
}

int RunCycles(const Options& options, const StandardOutput& output) {
  const Look look = LookFor(options, output);
  CStatusInterface collector;
  // The limiter of the reports is as old as the process, and syslog() waits for a full log.
  collector.m_Hardware.m_bLogTrackerPixel = false;
  const DatabaseTrouble trouble(Opened::kForReading);
  collector.InitDatabase(false);
  Result result;
  if (options.Format != kText && options.With.empty()) {
    result = RunPlain(options, output, collector);
  } else {
    const insight::Snapshot snapshot = RunObserved(options, output, collector);
    result = {snapshot.Result,
              options.Format == kText ? RenderText(snapshot, look) : RenderJson(snapshot)};
  }
  collector.CloseDatabase();
  Put(options, output, result.Document);
  trouble.Report();  // after the document, which people read first
  return result.OfCycle;
}

int Show(const Options& options) {
  RequireFormat(options, kJson, !options.With.empty(), "--with");
  RequireFormat(options, kText, !options.Sections.empty(), "--section");
  RequireFormat(options, kText, options.Brief, "--brief");
  const StandardOutput output;
  return RunCycles(options, output) == 0 ? kAllWell : kFailed;
}

}  // namespace

Declaration DeclareShow() {
  const auto options = std::make_shared<Options>();
  std::vector<std::string> colours;
  for (const ColourName& colour : kColourNames) {
    colours.emplace_back(colour.Name);
  }
  return {{{.Name = "-f,--format",
            .Type = "NAME",
            .About = "text (default), xml or json",
            .Value = &options->Format,
            .Choices = {kText, kXml, kJson}},
           {.Name = "-c,--cycles",
            .Type = "N",
            .About = "Cycles to run; the last one is shown",
            .Value = &options->Cycles,
            .Least = 1,
            .Most = 1000000},
           {.Name = "-o,--output",
            .Type = "FILE",
            .About = "Write to FILE as a whole; -: standard output",
            .Value = &options->Output},
           {.Name = "--with",
            .Type = "NAME",
            .About = "insight: in JSON also sources, rows, findings",
            .Value = &options->With,
            .Choices = {"insight"}},
           {.Name = "--section",
            .Type = "NAMES",
            .About = "Sections of the text, between commas",
            .Value = &options->Sections,
            .Offers = SectionNames()},
           {.Name = "--brief",
            .Type = "",
            .About = "A line for each finding, no other section",
            .Value = &options->Brief},
           {.Name = "--color",
            .Type = "WHEN",
            .About = "auto (default), always or never",
            .Value = &options->Coloured,
            .Choices = colours},
           {.Name = "--no-pager",
            .Type = "",
            .About = "On a terminal, write the text at once",
            .Value = &options->NoPager}},
          [options] { return Show(*options); }};
}

}  // namespace host
