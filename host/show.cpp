// show: run collection cycles and show the last document.
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "collector/status_interface.h"
#include "host/commands.h"
#include "host/json.h"
#include "host/output.h"
#include "host/terminal.h"
#include "host/text.h"
#include "host/trouble.h"
#include "model/tree.h"
#include "model/xml.h"

namespace host {
namespace {

std::string Text(QtSts::CStatus& status, const Look& look) {
  return RenderText(QtSts::DocumentTree(status), look);
}

std::string Xml(QtSts::CStatus& status, const Look& /*look*/) {
  return QtSts::WriteDocument(status);
}

std::string Json(QtSts::CStatus& status, const Look& /*look*/) {
  return RenderJson(QtSts::DocumentTree(status));
}

constexpr struct {
  const char* Name;
  std::string (*Render)(QtSts::CStatus& status, const Look& look);
} kFormats[] = {{"text", &Text}, {"xml", &Xml}, {"json", &Json}};

struct Options {
  std::string Format = kFormats[0].Name;
  int Cycles = 1;
  std::string Output;  // empty: standard output
};

std::string Render(const Options& options, QtSts::CStatus& status, const Look& look) {
  for (const auto& format : kFormats) {
    if (options.Format == format.Name) {
      return format.Render(status, look);
    }
  }
  throw std::logic_error("no format " + options.Format);
}

int Show(const Options& options) {
  const StandardOutput output;
  CStatusInterface collector;
  // The limiter of the reports is as old as the process, and syslog() waits for a full log.
  collector.m_Hardware.m_bLogTrackerPixel = false;
  const DatabaseTrouble trouble(Opened::kForReading);
  collector.InitDatabase(false);
  int result = 0;
  for (int cycle = 0; cycle < options.Cycles; ++cycle) {
    result = collector.QueryDatabase();
  }
  const Look look = {
      .Colour = options.Output.empty() && WantsColour(output.Descriptor(), Colour::kAuto),
      .AllRowsRead = result == 0};
  const std::string document = Render(options, collector.m_Status, look);
  collector.CloseDatabase();
  trouble.Report();
  if (options.Output.empty()) {
    output.Write(document);
  } else {
    WriteFile(options.Output, document);
  }
  return result == 0 ? kAllWell : kFailed;
}

}  // namespace

Declaration DeclareShow() {
  const auto options = std::make_shared<Options>();
  std::vector<std::string> names;
  for (const auto& format : kFormats) {
    names.emplace_back(format.Name);
  }
  return {{{.Name = "-f,--format",
            .Type = "NAME",
            .About = "text (default), xml or json",
            .Value = &options->Format,
            .Choices = names},
           {.Name = "-c,--cycles",
            .Type = "N",
            .About = "Cycles to run; the last one is shown",
            .Value = &options->Cycles,
            .Least = 1,
            .Most = 1000000},
           {.Name = "-o,--output",
            .Type = "FILE",
            .About = "Write to FILE, whole or not at all",
            .Value = &options->Output}},
          [options] { return Show(*options); }};
}

}  // namespace host
